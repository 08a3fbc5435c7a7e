// hostrun/commands/debug_console.h - the commands of "hostrun debug", and what they show.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "hostrun/commands/debugger.h"
#include "hostrun/language/source.h"

namespace hostrun {

// Takes commands whenever the program is halted. Writes to stdout what they show, to stderr what is wrong
// with them.
class DebugConsole {
 public:
  // The next line; nothing at the end of the input, which quits.
  using ReadLine = std::function<std::optional<std::string>()>;

  // Throws ProgramErrors. `source` outlives this.
  DebugConsole(const Source& source, Debugger::StopOn stopOn, bool trueColour, ReadLine readLine);

  // Runs the program, as often as the user wants. Gives the exit status of the last run; 0 where it was left
  // before its end.
  int Run();

  // For completion: the commands at the beginning of a line, behind it the names of the program.
  std::vector<std::string> Complete(const std::string& beginning, bool first);

 private:
  using Going = Debugger::Going;
  struct Command;
  static const std::vector<Command>& Commands();

  Going Converse();
  // How to go on, once a command says so.
  std::optional<Going> Take(const std::string& line);
  const Command* Find(const std::string& name) const;

  const Debugger::Frame& frame() const;
  std::string PlaceOf(std::size_t stop) const;
  std::string TextOf(const Debugger::Breakpoint& point) const;
  void ShowHalt(const Debugger::Halt& halt);
  void ShowLine(std::int32_t line) const;
  void ShowFrame();
  void ShowVariables(bool ofRoutine);
  void ListBreakpoints() const;

  // The commands. Each gets what stands behind its name.
  std::optional<Going> Break(const std::string& rest);
  std::optional<Going> Delete(const std::string& rest);
  std::optional<Going> Step(const std::string& rest);
  std::optional<Going> Next(const std::string& rest);
  std::optional<Going> Finish(const std::string& rest);
  std::optional<Going> Continue(const std::string& rest);
  std::optional<Going> Print(const std::string& rest);
  std::optional<Going> Locals(const std::string& rest);
  std::optional<Going> Globals(const std::string& rest);
  std::optional<Going> Backtrace(const std::string& rest);
  std::optional<Going> Up(const std::string& rest);
  std::optional<Going> Down(const std::string& rest);
  std::optional<Going> Frame(const std::string& rest);
  std::optional<Going> List(const std::string& rest);
  std::optional<Going> Exceptions(const std::string& rest);
  std::optional<Going> Restart(const std::string& rest);
  std::optional<Going> Help(const std::string& rest);
  std::optional<Going> Quit(const std::string& rest);

  const Source& source_;
  bool trueColour_;
  ReadLine readLine_;
  Debugger debugger_;
  std::size_t frame_ = 0;      // that is looked at: 0 is the innermost
  std::int32_t nextLine_ = 0;  // that List shows next; 0: those around the frame
  std::string repeated_;       // what an empty line means
  bool restart_ = false;
  bool quit_ = false;
};

}  // namespace hostrun
