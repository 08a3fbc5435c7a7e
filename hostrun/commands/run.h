// hostrun/commands/run.h - "hostrun PROGRAM.bas": runs a program through the bundle.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "hostrun/commands/command_line.h"
#include "hostrun/host/host.h"
#include "hostrun/host/problem.h"
#include "hostrun/language/source.h"

namespace hostrun {

// Where a program is named: it comes from standard input.
inline constexpr const char* kStandardInput = "-";

struct RunOptions {
  const char* command = "hostrun";  // as it is called
  HostOptions host;
  bool leaksAreErrors = false;
  std::vector<std::string> statements;  // instead of a program
  std::string program;                  // with statements: the first argument
  std::vector<std::string> arguments;
  // Where set, runs the program, and gives its exit status; may throw ProgramErrors.
  std::function<int(const Source& source)> execute;
  std::function<Problem()> started;  // where set, called once the bundle has registered; may refuse the run
};

// The options of a run, for a command that runs a program. `options` outlives the use of `line`.
void AddRunOptions(CommandLine& line, RunOptions& options);

// Neither a file nor something that could be the name of one: most likely a command that is spelled wrong.
bool NamesNoProgram(const std::string& program);
// Says so; `hint` says what may have been meant. Gives the exit status.
int RefuseNoProgram(const std::string& program, const std::string& hint);

// The program that is named. Throws std::runtime_error: there is none, or it can't be read.
Source SourceOf(const RunOptions& options);

// Starts the host, runs the program and reports on stderr what it leaves alive. Gives the exit status.
int Run(const RunOptions& options, const Source& source);
// The same for the program that is named.
int Run(const RunOptions& options);

}  // namespace hostrun
