// hostrun/language/code.h - a program as it runs: every name, type and call is settled.
#pragma once

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

// The variables of one call of a routine.
struct Frame {
  Value* locals;
  Value* globals;
};

// An expression. `type` is what every evaluation gives; a counted type also gives Nil.
class Code {
 public:
  Code(Position position, const Type* t) : at(position), type(t) {}
  virtual ~Code() = default;
  Code(const Code&) = delete;
  Code& operator=(const Code&) = delete;

  virtual Value Eval(Frame& frame) const = 0;
  // The same without the detour over Value; for numeric types. Booleans and colours count as whole numbers.
  virtual double Real(Frame& frame) const { return Eval(frame).AsReal(); }
  virtual std::int64_t Whole(Frame& frame) const { return Eval(frame).AsInt64(); }
  virtual bool IsConstant() const { return false; }

  Position at;
  const Type* type;
};
using CodePtr = std::unique_ptr<Code>;

// An expression that can be assigned to.
class Place : public Code {
 public:
  using Code::Code;
  // A variable stays where it is for the whole call; anything else has no fixed place, and Locate gives null.
  virtual bool StaysInPlace() const { return false; }
  virtual Value* Locate(Frame&) const { return nullptr; }
  virtual void Store(Frame& frame, Value value) const = 0;
};

// Where control goes after a statement. A loop that is meant by Exit or Continue is named by its number.
enum class Flow : std::uint8_t { Next, Exit, Continue, Return };

// A statement.
class Step {
 public:
  explicit Step(Position position) : at(position) {}
  virtual ~Step() = default;
  Step(const Step&) = delete;
  Step& operator=(const Step&) = delete;
  virtual Flow Run(Frame& frame) const = 0;
  Position at;
};
using StepPtr = std::unique_ptr<Step>;

// Statements in order, and the variables that end with them.
class StepBlock {
 public:
  Flow Run(Frame& frame) const;
  std::vector<StepPtr> steps;
  std::vector<std::size_t> endingLocals;  // of counted types
  std::vector<std::size_t> endingGlobals;

 private:
  Flow RunSteps(Frame& frame) const;
};

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
  std::vector<Call> calls;  // innermost last
  Value result;             // of a Return on its way
  int target = 0;           // the loop meant by Exit or Continue on its way
  const char* stackLimit = nullptr;
};
inline Machine machine;

// Raises with the position noted first.
[[noreturn]] void RaiseAt(Position at, std::string_view className, std::string_view message);
inline void Note(Position at) {
  currentPosition = at;
}

// The program asked to end.
struct QuitRequest {
  int status;
};

}  // namespace hostrun
