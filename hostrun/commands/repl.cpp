// hostrun/commands/repl.cpp - "hostrun repl": runs statements as they are typed and shows values.
#include <unistd.h>

#include <cstdio>
#include <memory>
#include <optional>

#include "hostrun/commands/commands.h"
#include "hostrun/commands/completion.h"
#include "hostrun/commands/line_editor.h"
#include "hostrun/commands/repl_commands.h"
#include "hostrun/commands/start.h"
#include "hostrun/commands/terminal.h"
#include "hostrun/host/call.h"
#include "hostrun/host/interrupts.h"
#include "hostrun/host/output.h"
#include "hostrun/host/platform_library.h"
#include "hostrun/host/show.h"
#include "hostrun/host/standard_input.h"
#include "hostrun/language/code.h"
#include "hostrun/language/program.h"
#include "hostrun/language/session.h"

namespace hostrun {
namespace {

constexpr const char* kReplName = "hostrun repl";
constexpr const char* kMorePrompt = "... ";

// --- input

// Takes lines and runs what they complete, and shows the value of what stands alone.
class Loop {
 public:
  explicit Loop(bool trueColour)
      : session_("input", [trueColour](const Value& value) {
          std::printf("%s\n", ReadableText(value, trueColour).c_str());
        }) {}

  const Binder& binder() const { return session_.binder(); }
  // With the number that errors give the line.
  std::string prompt() const {
    return open_.empty() ? std::to_string(session_.nextLine()) + "> " : kMorePrompt;
  }
  int status() const { return session_.status(); }

  // False: the program asked to end. `pasted`: an empty line may belong to a block, else it gives up on one
  // that is not closed.
  bool Take(const std::string& line, bool pasted) {
    if (open_.empty() && line.starts_with(':')) return RunReplCommand(line);
    open_ += line + "\n";
    return Run(!line.empty() || pasted || open_ == "\n");
  }
  void Drop() { open_.clear(); }
  // At the end of the input: a block that is still open is run as it stands, so that its error is shown.
  void Finish() {
    if (!open_.empty()) Run(false);
  }

 private:
  bool Run(bool more) {
    const PoolScope pool;
    const Session::State state = session_.Run(open_, more);
    TurnRunLoop();
    FlushOutput();
    if (state != Session::State::WantsMore) open_.clear();
    return state != Session::State::Ended;
  }

  Session session_;
  std::string open_;  // lines of a block that is not closed
};

// An interrupt ends what is running, not the process.
void AskToInterrupt(int) {
  interruptAsked = 1;
}

int ReadTerminal(Loop& loop) {
  const InterruptHandler guard(&AskToInterrupt);
  SetInputInterrupt({[] { return interruptAsked != 0; }, &EndIfInterrupted});
  LineEditor editor("history", [&loop](const std::string& beginning, bool) {
    return CompleteWord(loop.binder(), beginning);
  });
  std::printf("hostrun on a host of version %g. Tab completes, :help explains, Ctrl-D ends.\n",
              TheHostIdentity().version);
  for (;;) {
    FlushOutput();
    const LineEditor::Input input = editor.Read(loop.prompt().c_str());
    if (input.end == LineEditor::End::EndOfInput) break;
    if (input.end == LineEditor::End::Cancelled) {
      std::printf("\n");
      loop.Drop();
    } else if (!loop.Take(input.line, input.pasted)) {
      return loop.status();
    }
  }
  std::printf("\n");
  loop.Finish();
  return loop.status();
}

int ReadPipe(Loop& loop) {
  while (const std::optional<std::string> line = ReadInputLine()) {
    if (!loop.Take(*line, true) || OutputAbandoned()) return loop.status();
  }
  loop.Finish();
  return loop.status();
}

int Repl(const HostOptions& options) {
  const Problem problem = StartHost(options);
  if (problem) return Refuse(kReplName, *problem);
  Loop loop(TakesTrueColour(stdout));
  return isatty(STDIN_FILENO) != 0 ? ReadTerminal(loop) : ReadPipe(loop);
}

}  // namespace

Action ReplCommand(CommandLine& line) {
  const auto options = std::make_shared<HostOptions>();
  AddHostOptions(line, *options);
  line.SetFooter(
      "Type statements or expressions; a value that stands alone is shown. What is declared stays, and may "
      "be declared\n"
      "anew. Blocks go over several lines; at a terminal an empty line gives one up. :help, :doc "
      "CLASS.MEMBER and\n"
      ":quit are for the repl itself; Ctrl-C interrupts. Errors do not end the "
      "session.\n"
      "Without a terminal, lines are read from stdin and there is no prompt.\n\n"
      "Example:\n  echo 'NSColorQVX.orangeColor' | hostrun repl\n\n"
      "Exit status: 0, or what Quit gives; 2 an error of use.");
  return [options] { return Repl(*options); };
}

}  // namespace hostrun
