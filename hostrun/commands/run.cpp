// hostrun/commands/run.cpp - "hostrun PROGRAM.bas": runs a program through the bundle.
#include "hostrun/commands/run.h"

#include <cstdio>
#include <filesystem>
#include <memory>
#include <stdexcept>

#include "hostrun/commands/commands.h"
#include "hostrun/commands/start.h"
#include "hostrun/commands/terminal.h"
#include "hostrun/host/functions.h"
#include "hostrun/host/platform_library.h"
#include "hostrun/language/program.h"

namespace hostrun {
namespace {

int RunSource(const RunOptions& options, const Source& source) {
  try {
    return options.execute ? options.execute(source) : RunProgram(Compile(source), source);
  } catch (const ProgramErrors& errors) {
    return Refuse(source.Describe(errors));
  }
}

std::vector<std::string> ArgumentsOf(const RunOptions& options) {
  std::vector<std::string> arguments = options.arguments;
  if (!options.statements.empty() && !options.program.empty())
    arguments.insert(arguments.begin(), options.program);
  return arguments;
}

}  // namespace

bool NamesNoProgram(const std::string& program) {
  return program != kStandardInput && !std::filesystem::path(program).has_extension() &&
         !std::filesystem::exists(program);
}

int RefuseNoProgram(const std::string& program, const std::string& hint) {
  return Refuse(program + ": wanted a program file or a command, found neither" + hint +
                "; hostrun --help lists the commands");
}

void AddRunOptions(CommandLine& line, RunOptions& options) {
  AddHostOptions(line, options.host);
  line.AddFlag("--leaks", options.leaksAreErrors,
               "End with status 1 when anything is still alive at the end");
  line.Add("-e,--execute", options.statements,
           "Run these statements instead of a program file; may be repeated, each is a line")
      .Takes("STATEMENTS")
      .OneEach();
  line.Add("program", options.program, "The program to run; - reads it from standard input")
      .Takes("PROGRAM.bas");
  line.Add("arguments", options.arguments,
           "What Arguments gives the program; behind -- also what begins with a dash")
      .Takes("[ARGUMENT...]");
}

Source SourceOf(const RunOptions& options) {
  if (!options.statements.empty()) {
    std::string text;
    for (const std::string& line : options.statements) text += line + "\n";
    return {"-e", std::move(text)};
  }
  if (options.program.empty()) {
    const std::string command = options.command;
    throw std::runtime_error(command +
                             ": a program is required: wanted PROGRAM.bas, - or -e STATEMENTS, found none; " +
                             command + " --help says more");
  }
  return options.program == kStandardInput ? Source::FromStandardInput() : Source::FromFile(options.program);
}

int Run(const RunOptions& options, const Source& source) {
  try {
    Problem problem = StartHost(options.host);
    if (!problem && options.started) problem = options.started();
    if (problem) return Refuse(*problem);
    SetProgramArguments(ArgumentsOf(options));
    int status = kExitFine;
    {
      const PoolScope pool;
      status = RunSource(options, source);
      TurnRunLoop();
    }
    const LiveCounts live = CountLive();
    if (live.Any()) {
      std::fprintf(stderr, "still alive at the end:\n%s", DescribeLive(live).c_str());
      if (options.leaksAreErrors && status == kExitFine) status = kExitException;
    }
    return status;
  } catch (const std::exception& error) {
    return Refuse(error.what());
  }
}

int Run(const RunOptions& options) {
  try {
    return Run(options, SourceOf(options));
  } catch (const std::exception& error) {
    return Refuse(error.what());
  }
}

Action RunCommand(CommandLine& line) {
  const auto options = std::make_shared<RunOptions>();
  AddRunOptions(line, *options);
  return [options] {
    const bool named = options->statements.empty() && !options->program.empty();
    return named && NamesNoProgram(options->program) ? RefuseNoProgram(options->program, "") : Run(*options);
  };
}

}  // namespace hostrun
