// hostrun/language/steps.cpp - the statements of a running program.
#include "hostrun/language/steps.h"

#include <chrono>
#include <cmath>
#include <cstdio>
#include <exception>
#include <new>

#include "hostrun/host/arrays.h"
#include "hostrun/host/call.h"
#include "hostrun/host/functions.h"
#include "hostrun/host/platform_library.h"
#include "hostrun/host/registry.h"

namespace hostrun {
namespace {

// Between statements the platform's run loop gets a turn: when the bundle was called, and not too often.
void TurnRunLoopIfDue() {
  static constexpr std::uint64_t kCallsBetweenLooks = 64;
  static constexpr std::chrono::milliseconds kBetweenTurns{20};
  static std::uint64_t callsAtLastLook = 0;
  static std::chrono::steady_clock::time_point lastTurn;
  if (BundleCalls() - callsAtLastLook < kCallsBetweenLooks) return;
  callsAtLastLook = BundleCalls();
  const auto now = std::chrono::steady_clock::now();
  if (now - lastTurn < kBetweenTurns) return;
  lastTurn = now;
  TurnRunLoop();
}

class Assign final : public Step {
 public:
  Assign(Position position, CodePtr place, CodePtr value)
      : Step(position), place_(std::move(place)), value_(std::move(value)) {}
  Flow Run(Frame& frame) const override {
    static_cast<const Place&>(*place_).Store(frame, value_->Eval(frame));
    return Flow::Next;
  }

 private:
  CodePtr place_;
  CodePtr value_;
};

// A Double in a variable of its own: the value goes straight in.
class AssignReal final : public Step {
 public:
  AssignReal(Position position, CodePtr place, CodePtr value)
      : Step(position), place_(std::move(place)), value_(std::move(value)) {}
  Flow Run(Frame& frame) const override {
    const double number = value_->Real(frame);
    static_cast<const Place&>(*place_).Locate(frame)->SetReal(number);
    return Flow::Next;
  }

 private:
  CodePtr place_;
  CodePtr value_;
};

class Evaluate final : public Step {
 public:
  Evaluate(Position position, CodePtr code) : Step(position), code_(std::move(code)) {}
  Flow Run(Frame& frame) const override {
    code_->Eval(frame);
    return Flow::Next;
  }

 private:
  CodePtr code_;
};

std::function<void(const std::vector<Value>&)> printObserver;

class Print final : public Step {
 public:
  Print(Position position, std::vector<CodePtr> items) : Step(position), items_(std::move(items)) {}
  Flow Run(Frame& frame) const override {
    std::string line;
    std::vector<Value> observed;
    for (const CodePtr& item : items_) {
      if (&item != &items_.front()) line += ' ';
      const Value value = item->Eval(frame);
      line += DisplayText(value);
      if (printObserver) observed.push_back(value);
    }
    line += '\n';
    if (printObserver) printObserver(observed);
    std::fwrite(line.data(), 1, line.size(), stdout);
    return Flow::Next;
  }

 private:
  std::vector<CodePtr> items_;
};

class Branches final : public Step {
 public:
  Branches(Position position, std::vector<StepBranch> branches)
      : Step(position), branches_(std::move(branches)) {}
  Flow Run(Frame& frame) const override {
    for (const StepBranch& branch : branches_) {
      if (!branch.condition || branch.condition->Whole(frame) != 0) return branch.body.Run(frame);
    }
    return Flow::Next;
  }

 private:
  std::vector<StepBranch> branches_;
};

class Sequence final : public Step {
 public:
  Sequence(Position position, StepBlock block) : Step(position), block_(std::move(block)) {}
  Flow Run(Frame& frame) const override { return block_.Run(frame); }

 private:
  StepBlock block_;
};

// Whether the loop `number` goes on after its body ended with `flow`; changes `flow` to how the loop itself
// ends.
bool GoesOn(Flow& flow, int number) {
  if (flow == Flow::Next) return true;
  const bool meant = flow != Flow::Return && machine.target == number;
  const bool again = meant && flow == Flow::Continue;
  if (meant) flow = Flow::Next;
  return again;
}

template <class Number>
class For final : public Step {
 public:
  For(Position position, ForLoop loop) : Step(position), loop_(std::move(loop)) {}
  Flow Run(Frame& frame) const override {
    const auto& variable = static_cast<const Place&>(*loop_.variable);
    Number current = Read(*loop_.first, frame);
    const Number last = Read(*loop_.last, frame);
    Number step = loop_.step ? Read(*loop_.step, frame) : Number{1};
    if (loop_.down) step = -step;
    for (;; current += step) {
      variable.Store(frame, Boxed(current));
      if (step >= 0 ? current > last : current < last) return Flow::Next;
      Flow flow = loop_.body.Run(frame);
      if (!GoesOn(flow, loop_.number)) return flow;
      current = Read(variable, frame);  // the body may have changed it
    }
  }

 private:
  static Number Read(const Code& code, Frame& frame) {
    if constexpr (std::is_same_v<Number, double>) {
      return code.Real(frame);
    } else {
      return code.Whole(frame);
    }
  }
  Value Boxed(Number n) const {
    if constexpr (std::is_same_v<Number, double>) {
      return Value::Double(n);
    } else {
      if (loop_.variable->type->kind == Kind::Int64) return Value::Int64(n);
      return Value::Integer(static_cast<std::int32_t>(n));
    }
  }
  ForLoop loop_;
};

class ForEach final : public Step {
 public:
  ForEach(Position position, int number, CodePtr variable, CodePtr array, StepBlock body)
      : Step(position),
        number_(number),
        variable_(std::move(variable)),
        array_(std::move(array)),
        body_(std::move(body)) {}
  Flow Run(Frame& frame) const override {
    const Value held = array_->Eval(frame);
    if (held.object() == nullptr) RaiseAt(array_->at, "NilObjectException", "The array is nil.");
    const std::vector<Value>& items = ArrayDataOf(held.object()).items;
    // By index: the body may change the array.
    for (std::size_t i = 0; i < items.size(); ++i) {  // NOLINT(modernize-loop-convert)
      static_cast<const Place&>(*variable_).Store(frame, items[i]);
      Flow flow = body_.Run(frame);
      if (!GoesOn(flow, number_)) return flow;
    }
    return Flow::Next;
  }

 private:
  int number_;
  CodePtr variable_;
  CodePtr array_;
  StepBlock body_;
};

class While final : public Step {
 public:
  While(Position position, int number, CodePtr top, StepBlock body, CodePtr bottom)
      : Step(position),
        number_(number),
        top_(std::move(top)),
        body_(std::move(body)),
        bottom_(std::move(bottom)) {}
  Flow Run(Frame& frame) const override {
    while (!top_ || top_->Whole(frame) != 0) {
      Flow flow = body_.Run(frame);
      if (!GoesOn(flow, number_)) return flow;
      if (bottom_ && bottom_->Whole(frame) == 0) break;
    }
    return Flow::Next;
  }

 private:
  int number_;
  CodePtr top_;
  StepBlock body_;
  CodePtr bottom_;
};

class Jump final : public Step {
 public:
  Jump(Position position, Flow flow, int loop) : Step(position), flow_(flow), loop_(loop) {}
  Flow Run(Frame&) const override {
    machine.target = loop_;
    return flow_;
  }

 private:
  Flow flow_;
  int loop_;
};

class Return final : public Step {
 public:
  Return(Position position, CodePtr value) : Step(position), value_(std::move(value)) {}
  Flow Run(Frame& frame) const override {
    machine.result = value_ ? value_->Eval(frame) : Value();
    return Flow::Return;
  }

 private:
  CodePtr value_;
};

class RaiseStep final : public Step {
 public:
  RaiseStep(Position position, CodePtr exception) : Step(position), exception_(std::move(exception)) {}
  Flow Run(Frame& frame) const override {
    const Value exception = exception_->Eval(frame);
    Note(at);
    if (exception.object() == nullptr)
      RaiseHostException("NilObjectException", "The exception to raise is nil.");
    ThrowException(ObjectRef::Share(exception.object()));
  }

 private:
  CodePtr exception_;
};

class Quit final : public Step {
 public:
  Quit(Position position, CodePtr status) : Step(position), status_(std::move(status)) {}
  Flow Run(Frame& frame) const override {
    throw QuitRequest{status_ ? static_cast<int>(status_->Whole(frame)) : 0};
  }

 private:
  CodePtr status_;
};

class ReDim final : public Step {
 public:
  ReDim(Position position, CodePtr array, CodePtr bound)
      : Step(position), array_(std::move(array)), bound_(std::move(bound)) {}
  Flow Run(Frame& frame) const override {
    const Value array = array_->Eval(frame);
    const std::int64_t bound = bound_->Whole(frame);
    Note(at);
    if (array.object() == nullptr) RaiseHostException("NilObjectException", "The array is nil.");
    ResizeArray(array.object(), bound);
    return Flow::Next;
  }

 private:
  CodePtr array_;
  CodePtr bound_;
};

class Try final : public Step {
 public:
  Try(Position position, StepBlock body, std::vector<CatchBranch> catches, StepBlock last)
      : Step(position), body_(std::move(body)), catches_(std::move(catches)), last_(std::move(last)) {}

  // What Finally itself says by Return, Exit, Continue or an exception goes before what it interrupted.
  Flow Run(Frame& frame) const override {
    Flow flow = Flow::Next;
    std::exception_ptr thrown;
    try {
      flow = RunCaught(frame);
    } catch (const HostException&) {
      thrown = std::current_exception();
    }
    Value result = std::move(machine.result);
    const int target = machine.target;
    const Flow last = last_.Run(frame);
    if (last != Flow::Next) return last;
    if (thrown) std::rethrow_exception(thrown);
    machine.result = std::move(result);
    machine.target = target;
    return flow;
  }

 private:
  Flow RunCaught(Frame& frame) const {
    ObjectRef caught;
    const CatchBranch* handler = nullptr;
    try {
      try {
        return body_.Run(frame);
      } catch (const std::bad_alloc&) {
        RaiseHostException("OutOfMemoryException", "Not enough memory.");
      }
    } catch (const HostException& exception) {
      for (const CatchBranch& branch : catches_) {
        if (!IsKindOf(exception.object(), *branch.cls)) continue;
        handler = &branch;
        break;
      }
      if (handler == nullptr) throw;
      caught = ObjectRef::Share(exception.object());
    }
    // Outside of the handler: the exception is over, and only the variable holds its object.
    if (handler->variable) {
      static_cast<const Place&>(*handler->variable).Store(frame, Value::Adopt(caught.Detach()));
    }
    return handler->body.Run(frame);
  }

  StepBlock body_;
  std::vector<CatchBranch> catches_;
  StepBlock last_;
};

}  // namespace

Flow StepBlock::RunSteps(Frame& frame) const {
  for (const StepPtr& step : steps) {
    Note(step->at);
    const Flow flow = step->Run(frame);
    TurnRunLoopIfDue();
    if (flow != Flow::Next) return flow;
  }
  return Flow::Next;
}

Flow StepBlock::Run(Frame& frame) const {
  const Flow flow = RunSteps(frame);
  for (const std::size_t slot : endingLocals) frame.locals[slot] = Value();
  for (const std::size_t slot : endingGlobals) frame.globals[slot] = Value();
  return flow;
}

StepPtr MakeAssign(Position at, CodePtr place, CodePtr value) {
  if (place->type->kind == Kind::Double && static_cast<const Place&>(*place).StaysInPlace()) {
    return std::make_unique<AssignReal>(at, std::move(place), std::move(value));
  }
  return std::make_unique<Assign>(at, std::move(place), std::move(value));
}
StepPtr MakeEvaluate(Position at, CodePtr code) {
  return std::make_unique<Evaluate>(at, std::move(code));
}
StepPtr MakePrint(Position at, std::vector<CodePtr> items) {
  return std::make_unique<Print>(at, std::move(items));
}
void SetPrintObserver(std::function<void(const std::vector<Value>&)> observer) {
  printObserver = std::move(observer);
}
StepPtr MakeBranches(Position at, std::vector<StepBranch> branches) {
  return std::make_unique<Branches>(at, std::move(branches));
}
StepPtr MakeSequence(Position at, StepBlock block) {
  return std::make_unique<Sequence>(at, std::move(block));
}
StepPtr MakeFor(Position at, ForLoop loop) {
  if (loop.variable->type->IsInteger()) return std::make_unique<For<std::int64_t>>(at, std::move(loop));
  return std::make_unique<For<double>>(at, std::move(loop));
}
StepPtr MakeForEach(Position at, int number, CodePtr variable, CodePtr array, StepBlock body) {
  return std::make_unique<ForEach>(at, number, std::move(variable), std::move(array), std::move(body));
}
StepPtr MakeWhile(Position at, int number, CodePtr whileTrue, StepBlock body, CodePtr againWhileTrue) {
  return std::make_unique<While>(at, number, std::move(whileTrue), std::move(body),
                                 std::move(againWhileTrue));
}
StepPtr MakeJump(Position at, Flow flow, int loop) {
  return std::make_unique<Jump>(at, flow, loop);
}
StepPtr MakeReturn(Position at, CodePtr value) {
  return std::make_unique<Return>(at, std::move(value));
}
StepPtr MakeRaise(Position at, CodePtr exception) {
  return std::make_unique<RaiseStep>(at, std::move(exception));
}
StepPtr MakeQuit(Position at, CodePtr status) {
  return std::make_unique<Quit>(at, std::move(status));
}
StepPtr MakeReDim(Position at, CodePtr array, CodePtr upperBound) {
  return std::make_unique<ReDim>(at, std::move(array), std::move(upperBound));
}
StepPtr MakeTry(Position at, StepBlock body, std::vector<CatchBranch> catches, StepBlock last) {
  return std::make_unique<Try>(at, std::move(body), std::move(catches), std::move(last));
}

}  // namespace hostrun
