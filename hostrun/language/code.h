// hostrun/language/code.h - a program as it runs: every name, type and call is settled.
//
// Two families of nodes: Code gives a value, Step does something. A node owns the nodes below it, is not
// changed while it runs, and is run as often as control reaches it; what differs from run to run lies in the
// Activation and in `machine`. What a program raises leaves Eval and Run as a HostException, what ends it as
// a QuitRequest.
#pragma once

#include <csignal>
#include <memory>
#include <string>
#include <vector>

#include "hostrun/host/declaration.h"
#include "hostrun/host/exceptions.h"
#include "hostrun/host/position.h"
#include "hostrun/host/types.h"
#include "hostrun/host/value.h"

namespace hostrun {

struct Routine;

// The variables of one call of a routine. It owns none of them: they outlive it.
struct Activation {
  Value* locals;   // null at the program's own level
  Value* globals;  // the same for all calls
};

// An expression. Every evaluation gives a value of `type`, or Nil where `type` is counted.
class Code {
 public:
  Code(Position position, const Type* t) : at(position), type(t) {}
  virtual ~Code() = default;
  Code(const Code&) = delete;
  Code& operator=(const Code&) = delete;

  virtual Value Eval(Activation& activation) const = 0;
  // The same without the detour over Value, for types that are numbers, Boolean (0 and 1) or Color (its
  // bits).
  virtual double Real(Activation& activation) const { return Eval(activation).AsReal(); }
  virtual std::int64_t Whole(Activation& activation) const { return Eval(activation).AsInt64(); }
  // Looks at no variable and calls nothing: its value is the same each time.
  virtual bool IsConstant() const { return false; }

  Position at;  // what an exception that it raises shows
  const Type* type;
};
using CodePtr = std::unique_ptr<Code>;

// An expression that can be assigned to.
class Place : public Code {
 public:
  using Code::Code;
  // A variable stays where it is for the whole call; anything else has no fixed place, and Locate gives null.
  virtual bool StaysInPlace() const { return false; }
  virtual Value* Locate(Activation&) const { return nullptr; }
  // `value` is of type `type`.
  virtual void Store(Activation& activation, Value value) const = 0;
};
using PlacePtr = std::unique_ptr<Place>;

// The same expression seen as a place; null when it is none, and gone then.
PlacePtr ToPlace(CodePtr code);

// Where control goes after a statement. Exit and Continue name the number of their loop in `machine.target`,
// Return leaves its value in `machine.result`.
enum class Flow : std::uint8_t { Next, Exit, Continue, Return };

// A statement, or a part of one.
class Step {
 public:
  explicit Step(Position position) : at(position) {}
  virtual ~Step() = default;
  Step(const Step&) = delete;
  Step& operator=(const Step&) = delete;
  virtual Flow Run(Activation& activation) const = 0;

  Position at;  // noted before it runs
};
using StepPtr = std::unique_ptr<Step>;

// Statements in order, and the variables that end with them: they hold nothing any more when Run returns. An
// exception leaves them as they are; they go with their call, or with the program.
class StepBlock {
 public:
  Flow Run(Activation& activation) const;

  // Adds a new step of kind S.
  template <class S, class... Arguments>
  void Add(Position at, Arguments&&... arguments) {
    steps.push_back(std::make_unique<S>(at, std::forward<Arguments>(arguments)...));
  }

  std::vector<StepPtr> steps;
  std::vector<std::size_t> endingLocals;  // of counted types
  std::vector<std::size_t> endingGlobals;

 private:
  Flow RunSteps(Activation& activation) const;
};

// A Sub or Function of the program. Calls of it may be bound before its body is.
struct Routine {
  Signature signature;  // an optional parameter's default is a constant
  Position at;
  std::vector<const Type*> locals;  // all slots, parameters first
  StepBlock body;
};

// What is shared by all that runs.
struct Machine {
  struct Call {
    const Routine* routine;
    Position at;  // of the call
  };
  std::vector<Call> calls;           // innermost last
  Value result;                      // of a Return on its way
  int target = 0;                    // the loop meant by Exit or Continue on its way
  const char* stackLimit = nullptr;  // a routine is entered only while the stack is above it
};
inline Machine machine;

// Notes the position, then raises a new exception of that class.
[[noreturn]] void RaiseAt(Position at, std::string_view className, std::string_view message);
// From here on, what is made or raised shows this position.
inline void Note(Position at) {
  currentPosition = at;
}

// Set by a signal handler: what runs is to end before its next statement, with an InterruptRequest.
inline volatile std::sig_atomic_t interruptAsked = 0;
struct InterruptRequest {};
inline void EndIfInterrupted() {
  if (interruptAsked != 0) throw InterruptRequest();
}

// Thrown: the program asked to end, with that exit status.
struct QuitRequest {
  int status;
};

}  // namespace hostrun
