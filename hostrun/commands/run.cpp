// hostrun/commands/run.cpp - "hostrun PROGRAM.bas": runs a program through the bundle.
#include "hostrun/commands/run.h"

#include <cstdio>
#include <filesystem>
#include <memory>

#include "hostrun/commands/commands.h"
#include "hostrun/commands/start.h"
#include "hostrun/commands/terminal.h"
#include "hostrun/host/functions.h"
#include "hostrun/host/platform_library.h"
#include "hostrun/language/program.h"

namespace hostrun {
namespace {

int RunSource(const Source& source) {
  try {
    return RunProgram(Compile(source), source);
  } catch (const ProgramError& error) {
    return Refuse(source.Describe(error.at(), error.what()));
  }
}

}  // namespace

void AddRunOptions(CLI::App& app, RunOptions& options) {
  AddHostOptions(app, options.host);
  app.add_flag("--leaks", options.leaksAreErrors,
               "End with status 1 when anything is still alive at the end");
  app.add_option("program", options.program, "The program to run")->option_text("PROGRAM.bas")->required();
  app.add_option("arguments", options.arguments,
                 "What Arguments gives the program; behind -- also what begins with a dash")
      ->option_text("[ARGUMENT...]");
}

int Run(const RunOptions& options) {
  try {
    // Most likely a command that is spelled wrong.
    if (!std::filesystem::path(options.program).has_extension() &&
        !std::filesystem::exists(options.program)) {
      return Refuse(options.program +
                    ": wanted a program file or a command, found neither; hostrun --help lists the commands");
    }
    const Source source = Source::FromFile(options.program);
    Problem problem = StartHost(options.host);
    if (!problem && options.started) problem = options.started();
    if (problem) return Refuse(*problem);
    SetProgramArguments(options.arguments);
    int status = kExitFine;
    {
      const PoolScope pool;
      status = RunSource(source);
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

Action RunCommand(CLI::App& app) {
  const auto options = std::make_shared<RunOptions>();
  AddRunOptions(app, *options);
  return [options] { return Run(*options); };
}

}  // namespace hostrun
