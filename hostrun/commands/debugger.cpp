// hostrun/commands/debugger.cpp - runs a program and halts it: breakpoints, steps, frames, exceptions.
#include "hostrun/commands/debugger.h"

#include <algorithm>
#include <csignal>
#include <map>
#include <stdexcept>
#include <tuple>

#include "hostrun/host/exceptions.h"
#include "hostrun/host/interrupts.h"
#include "hostrun/host/registry.h"
#include "hostrun/host/show.h"
#include "hostrun/host/standard_input.h"
#include "hostrun/host/text.h"
#include "hostrun/language/parser.h"
#include "hostrun/language/program.h"

namespace hostrun {
namespace {

volatile std::sig_atomic_t pauseAsked = 0;
void AskToPause(int) {
  pauseAsked = 1;
}

using Where = Binder::Variable::Where;

bool IsVariable(const Binder::Variable& variable) {
  // What a program can't name is no variable to people.
  return variable.where != Where::Constant && variable.where != Where::Enumeration &&
         variable.name.find(' ') == std::string::npos;
}

}  // namespace

// While an expression is evaluated: the program does not notice, and is not halted.
class Debugger::Aside {
 public:
  explicit Aside(Debugger& debugger)
      : debugger_(debugger),
        position_(currentPosition),
        result_(std::move(machine.result)),
        target_(machine.target) {
    debugger_.aside_ = true;
  }
  Aside(const Aside&) = delete;
  Aside& operator=(const Aside&) = delete;
  ~Aside() {
    debugger_.aside_ = false;
    currentPosition = position_;
    machine.result = std::move(result_);
    machine.target = target_;
  }

 private:
  Debugger& debugger_;
  Position position_;
  Value result_;
  int target_;
};

Debugger::Debugger(const Source& source, std::function<Going(const Halt&)> halted)
    : source_(source),
      halted_(std::move(halted)),
      stops_(*this),
      binder_(&stops_),
      program_(Compile(source, binder_)) {}

int Debugger::Run() {
  going_ = Going::Step;
  fromDepth_ = SIZE_MAX;
  const InterruptHandler guard(&AskToPause);
  SetRaiseObserver([this](Object* exception) { Raised(exception); });
  SetInputInterrupt({[this] { return pauseAsked != 0 && (!asking_ || aside_); }, [this] { Idle(); }});
  const int status = RunProgram(program_, source_);
  SetRaiseObserver(nullptr);
  SetInputInterrupt({});
  frames_.clear();
  return status;
}

// --- where it halts

void Debugger::Arrive(std::size_t stop, Activation& activation) {
  if (aside_) {
    if (pauseAsked != 0) throw InterruptRequest();
    return;
  }
  if (going_ == Going::End) throw QuitRequest{0};
  frames_.resize(machine.calls.size() + 1);
  frames_.back() = {stop, &activation};
  const std::string why = WhyAt(stop, activation);
  if (!why.empty() || StepEnds()) AskHowToGoOn(why);
}

void Debugger::Return(std::size_t stop, Activation& activation) {
  if (aside_) return;
  frames_.resize(machine.calls.size() + 1);
  frames_.back() = {stop, &activation};
}

void Debugger::Idle() {
  if (pauseAsked == 0) return;
  if (aside_) throw InterruptRequest();
  AskHowToGoOn(kInterrupted);
}

// Each frame stands in the statement that has led to the one above it, so that what it would catch is known
// before the exception is on its way.
void Debugger::Raised(Object* exception) {
  if (going_ == Going::End) throw QuitRequest{0};
  if (aside_ || stopOn == StopOn::Never) return;
  DropReturned();
  const bool caught = std::any_of(frames_.begin(), frames_.end(), [&](const Frame& frame) {
    return stops_.Catches(frame.stop, *exception->cls);
  });
  if (caught && stopOn == StopOn::Uncaught) return;
  AskHowToGoOn((caught ? "raised " : "uncaught ") + DescribeException(exception));
}

std::string Debugger::WhyAt(std::size_t stop, Activation& activation) {
  if (pauseAsked != 0) return kInterrupted;
  for (const Breakpoint& breakpoint : breakpoints_) {
    if (breakpoint.stop != stop) continue;
    std::string why = WhyOf(breakpoint, activation);
    if (!why.empty()) return why;
  }
  return {};
}

std::string Debugger::WhyOf(const Breakpoint& breakpoint, Activation& activation) {
  std::string why = "breakpoint " + std::to_string(breakpoint.number);
  if (!breakpoint.code) return why;
  const Aside aside(*this);
  try {
    return breakpoint.code->Whole(activation) != 0 ? why : std::string();
  } catch (const HostException& exception) {
    return why + ", whose condition raised " + DescribeException(exception.object());
  } catch (const InterruptRequest&) {
    return kInterrupted;
  }
}

bool Debugger::StepEnds() const {
  const std::size_t depth = machine.calls.size();
  switch (going_) {
    case Going::Step:
      return true;
    case Going::Next:
      return depth <= fromDepth_;
    case Going::Finish:
      return depth < fromDepth_;
    case Going::Continue:
    case Going::End:
      break;
  }
  return false;
}

// A call that has returned since the last stop has no variables any more.
void Debugger::DropReturned() {
  frames_.resize(std::min(frames_.size(), machine.calls.size() + 1));
}

void Debugger::AskHowToGoOn(const std::string& why) {
  DropReturned();
  const std::size_t depth = machine.calls.size();
  const Routine* const routine = stops_.all()[frames_.back().stop].routine;
  asking_ = true;
  going_ = halted_({why, depth != fromDepth_ || routine != fromRoutine_});
  asking_ = false;
  pauseAsked = 0;  // also one that came while it was halted
  fromDepth_ = depth;
  fromRoutine_ = routine;
  if (going_ == Going::End) throw QuitRequest{0};
}

// --- breakpoints

std::optional<std::size_t> Debugger::StopAtLine(std::int32_t line) const {
  std::optional<std::size_t> found;
  const auto place = [this](std::size_t stop) {
    const Position at = stops_.all()[stop].at;
    return std::pair(at.line, at.column);
  };
  for (std::size_t i = 0; i < stops_.all().size(); ++i) {
    if (!stops_.all()[i].runs || stops_.all()[i].at.line < line) continue;
    if (!found || place(i) < place(*found)) found = i;
  }
  return found;
}

std::vector<std::size_t> Debugger::StopsOfRoutine(const std::string& name) const {
  std::map<const Routine*, std::size_t> first;
  for (std::size_t i = 0; i < stops_.all().size(); ++i) {
    const Stops::Stop& stop = stops_.all()[i];
    if (stop.runs && stop.routine != nullptr && SameName(stop.routine->signature.name, name)) {
      first.emplace(stop.routine, i);
    }
  }
  std::vector<std::size_t> found;
  found.reserve(first.size());
  for (const auto& [routine, stop] : first) found.push_back(stop);
  std::sort(found.begin(), found.end());
  return found;
}

const Debugger::Breakpoint& Debugger::AddBreakpoint(std::size_t stop, const std::string& condition) {
  CodePtr code;
  if (!condition.empty()) {
    binder_.StandAt(stops_, stop);
    code = binder_.BindCondition(*Parser(Source("condition", condition)).ParseLoneExpression());
  }
  return breakpoints_.emplace_back(Breakpoint{++lastNumber_, stop, condition, std::move(code)});
}

bool Debugger::RemoveBreakpoint(int number) {
  return std::erase_if(breakpoints_, [number](const Breakpoint& one) { return one.number == number; }) > 0;
}

// --- values

std::optional<std::string> Debugger::Evaluate(const Frame& frame, const std::string& expression,
                                              bool trueColour) {
  binder_.StandAt(stops_, frame.stop);
  const CodePtr code = binder_.BindPart(*Parser(Source("print", expression)).ParseLoneExpression());
  const Aside aside(*this);
  pauseAsked = 0;
  try {
    const Value value = code->Eval(*frame.activation);
    if (code->type->kind == Kind::Nothing) return std::nullopt;
    return ReadableText(value, trueColour);
  } catch (const HostException& exception) {
    throw std::runtime_error("uncaught " + DescribeException(exception.object()));
  } catch (const InterruptRequest&) {
    throw std::runtime_error(kInterrupted);
  } catch (const QuitRequest&) {
    throw std::runtime_error("wanted a value, found the end of the program; it is still halted");
  } catch (const std::exception& error) {
    if (!LacksMemory(error)) throw;
    throw std::runtime_error("not enough memory");
  }
}

std::vector<Debugger::Shown> Debugger::Variables(const Frame& frame, bool ofRoutine, bool trueColour) {
  const Routine* const owner = ofRoutine ? stops_.all()[frame.stop].routine : nullptr;
  std::map<std::string, const Binder::Variable*> inner;  // of each name
  for (const auto& [variable, extent] : stops_.names()) {
    if (variable.routine != owner || !extent.Holds(frame.stop) || !IsVariable(variable)) continue;
    inner.try_emplace(LowerName(variable.name), &variable);
  }
  std::vector<const Binder::Variable*> chosen;
  chosen.reserve(inner.size());
  for (const auto& [lower, variable] : inner) chosen.push_back(variable);
  // As they were declared; a static of a routine stands among the globals.
  std::sort(chosen.begin(), chosen.end(), [](const Binder::Variable* a, const Binder::Variable* b) {
    return std::tuple(a->from, a->where == Where::Static, a->slot) <
           std::tuple(b->from, b->where == Where::Static, b->slot);
  });
  std::vector<Shown> shown;
  shown.reserve(chosen.size());
  const Aside aside(*this);
  for (const Binder::Variable* const variable : chosen) {
    const Value value = Binder::MakePlace({}, *variable)->Eval(*frame.activation);
    shown.push_back({variable->name, variable->type->name, ReadableText(value, trueColour)});
  }
  return shown;
}

const Binder& Debugger::BinderAt(const Frame& frame) {
  binder_.StandAt(stops_, frame.stop);
  return binder_;
}

}  // namespace hostrun
