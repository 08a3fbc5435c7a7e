// hostrun/commands/debug.cpp - "hostrun debug": runs a program statement by statement.
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "hostrun/commands/commands.h"
#include "hostrun/commands/debug_console.h"
#include "hostrun/commands/line_editor.h"
#include "hostrun/commands/run.h"
#include "hostrun/commands/terminal.h"
#include "hostrun/host/output.h"
#include "hostrun/host/standard_input.h"

namespace hostrun {
namespace {

constexpr const char* kDebugName = "hostrun debug";
constexpr const char* kPrompt = "(debug) ";

struct DebugOptions {
  RunOptions run;
  std::string stopOn = "uncaught";

  Debugger::StopOn StopOn() const {
    return std::ranges::find(Debugger::kStopOnNames, stopOn, &Debugger::StopOnName::name)->meant;
  }
};

int DebugAtTerminal(const DebugOptions& options, const Source& source) {
  DebugConsole* console = nullptr;
  LineEditor editor("debug-history", [&console](const std::string& beginning, bool first) {
    return console->Complete(beginning, first);
  });
  const auto read = [&editor]() -> std::optional<std::string> {
    for (;;) {
      FlushOutput();
      LineEditor::Input input = editor.Read(kPrompt);
      if (input.end == LineEditor::End::Line) return std::move(input.line);
      WriteOutput("\n");
      if (input.end == LineEditor::End::EndOfInput) return std::nullopt;
    }
  };
  DebugConsole made(source, options.StopOn(), TakesTrueColour(stdout), read);
  console = &made;
  WriteOutput("The program is halted before its first statement. help lists the commands.\n");
  return made.Run();
}

int DebugOverPipe(const DebugOptions& options, const Source& source) {
  return DebugConsole(source, options.StopOn(), false, &ReadInputLine).Run();
}

int Debug(const DebugOptions& options) {
  if (options.run.statements.empty() && options.run.program == kStandardInput) {
    return Refuse(kDebugName, "wanted a program file, found -: standard input is for the commands");
  }
  RunOptions run = options.run;
  run.execute = [&options](const Source& source) {
    return isatty(STDIN_FILENO) != 0 ? DebugAtTerminal(options, source) : DebugOverPipe(options, source);
  };
  return Run(run);
}

}  // namespace

Action DebugCommand(CommandLine& line) {
  const auto options = std::make_shared<DebugOptions>();
  options->run.command = kDebugName;
  AddRunOptions(line, options->run);
  line.Find("program").Describe("The program to run");
  std::vector<std::string> names;
  for (const Debugger::StopOnName& each : Debugger::kStopOnNames) names.emplace_back(each.name);
  line.Add("--stop-on", options->stopOn,
           "Which exceptions halt the program; without this, those that nobody catches")
      .OneOf(names)
      .Takes("raised | uncaught | never");
  line.SetFooter(
      "Halts before the first statement and takes commands: break, step, next, finish, continue, print, "
      "locals,\n"
      "backtrace, list and others; help shows them. Ctrl-C halts a program that runs. Without a terminal, "
      "commands\n"
      "are read from stdin and there is no prompt.\n\n"
      "Example:\n  printf 'break 5\\ncontinue\\nlocals\\n' | hostrun debug examples/first-colors.bas\n\n"
      "Exit status: that of hostrun; 0 also when the program is left before its end.");
  return [options] { return Debug(*options); };
}

}  // namespace hostrun
