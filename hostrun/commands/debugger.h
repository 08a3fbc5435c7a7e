// hostrun/commands/debugger.h - runs a program and halts it: breakpoints, steps, frames, exceptions.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "hostrun/language/binder.h"
#include "hostrun/language/source.h"
#include "hostrun/language/stops.h"

namespace hostrun {

// There is one in a process. While the program runs, an interrupt halts it.
class Debugger final : public StopObserver {
 public:
  // How a halted program goes on: to where it is halted again, or not at all. Step: the next statement; Next:
  // the next one that is not in a call of this one; Finish: the next one behind this call.
  enum class Going : std::uint8_t { Continue, Step, Next, Finish, End };
  enum class StopOn : std::uint8_t { Never, Uncaught, Raised };
  struct StopOnName {
    const char* name;
    StopOn meant;
  };
  // As users write them.
  static constexpr StopOnName kStopOnNames[] = {
      {"raised", StopOn::Raised}, {"uncaught", StopOn::Uncaught}, {"never", StopOn::Never}};
  static constexpr const char* kInterrupted = "interrupted";
  struct Halt {
    std::string why;  // "breakpoint 1", kInterrupted; empty: a step has ended
    bool elsewhere;   // in another call than the one from which it went on
  };
  // A call that has not returned; all are of the program that is halted.
  struct Frame {
    std::size_t stop = 0;
    Activation* activation = nullptr;
  };
  struct Breakpoint {
    int number;
    std::size_t stop;
    std::string condition;  // empty: always
    CodePtr code;           // of the condition
  };
  struct Shown {
    std::string name;
    std::string type;
    std::string value;
  };

  // Throws ProgramErrors. `halted` is asked how to go on each time that the program is halted, the first time
  // before its first statement. `source` outlives this.
  Debugger(const Source& source, std::function<Going(const Halt&)> halted);

  // The whole program, from its beginning. Gives its exit status, or 0 when `halted` gave End.
  int Run();

  StopOn stopOn = StopOn::Uncaught;

  const Stops& stops() const { return stops_; }
  // The first statement at or behind the beginning of that line.
  std::optional<std::size_t> StopAtLine(std::int32_t line) const;
  // The first statement of each routine of that name.
  std::vector<std::size_t> StopsOfRoutine(const std::string& name) const;

  const std::vector<Breakpoint>& breakpoints() const { return breakpoints_; }
  // Throws ProgramError where the condition is none.
  const Breakpoint& AddBreakpoint(std::size_t stop, const std::string& condition);
  // False: there is none of that number.
  bool RemoveBreakpoint(int number);
  void RemoveBreakpoints() { breakpoints_.clear(); }

  // Of the halted program: innermost last; empty while none runs.
  const std::vector<Frame>& frames() const { return frames_; }
  // What an expression gives there, as people read it; nothing for a call that gives nothing. Throws
  // ProgramError for a text that is no expression, std::runtime_error for one that can't be evaluated.
  std::optional<std::string> Evaluate(const Frame& frame, const std::string& expression, bool trueColour);
  // The variables that can be used there: those of its routine, or those of the program's own level. Of the
  // level they are the same.
  std::vector<Shown> Variables(const Frame& frame, bool ofRoutine, bool trueColour);
  // Knows the names that can be used there, for completion.
  const Binder& BinderAt(const Frame& frame);

  void Arrive(std::size_t stop, Activation& activation) override;
  void Return(std::size_t stop, Activation& activation) override;
  void Idle() override;

 private:
  class Aside;

  void Raised(Object* exception);
  std::string WhyAt(std::size_t stop, Activation& activation);
  std::string WhyOf(const Breakpoint& breakpoint, Activation& activation);
  bool StepEnds() const;
  void DropReturned();
  void AskHowToGoOn(const std::string& why);

  const Source& source_;
  std::function<Going(const Halt&)> halted_;
  Stops stops_;
  Binder binder_;
  BoundProgram program_;
  std::vector<Breakpoint> breakpoints_;
  int lastNumber_ = 0;
  std::vector<Frame> frames_;
  Going going_ = Going::Step;
  std::size_t fromDepth_ = 0;             // of the calls, where it went on
  const Routine* fromRoutine_ = nullptr;  // where it went on
  bool aside_ = false;                    // an expression is evaluated
  bool asking_ = false;
};

}  // namespace hostrun
