// hostrun/language/code_calls.h - calls: into records and into the program itself.
#pragma once

#include <memory>
#include <vector>

#include "hostrun/host/registry.h"
#include "hostrun/host/words.h"
#include "hostrun/language/code.h"

namespace hostrun {

// One argument, already of the parameter's type: by value or, with a place, by reference.
struct Argument {
  const Type* type;
  CodePtr value;   // null: by reference
  PlacePtr place;  // null: by value
};

// What one call site knows before it runs: the method, and how each argument is passed. Everything that need
// not be found out again at each call belongs here. `method` must outlive it, as those of the registry do.
class CallPlan {
 public:
  CallPlan(const Method& method, std::vector<Argument> arguments);

  // Evaluates the arguments in order and calls. `self` is null for shared methods and global functions.
  Value Call(Activation& activation, Object* self, Position at) const;

  const Method& method() const { return method_; }

 private:
  struct Planned {
    Argument argument;
    Pass pass;
  };
  const Method& method_;
  std::vector<Planned> arguments_;
  std::vector<const Place*> references_;  // those by reference, in order
};

// A method of a record. `self` is null for shared methods and global functions.
class NativeCall final : public Code {
 public:
  NativeCall(Position position, const Method& method, CodePtr self, std::vector<Argument> arguments);
  Value Eval(Activation& activation) const override;

 private:
  CodePtr self_;
  CallPlan plan_;
};

// Reads through one method and writes through another.
class PropertyAccess final : public Place {
 public:
  // A property of a record; `self` is null for a shared one.
  PropertyAccess(Position position, const Property& property, CodePtr self);
  // A place that can only be assigned to: `setter` takes `leading`, already converted, and then the value.
  PropertyAccess(Position position, const Method& setter, CodePtr self, std::vector<CodePtr> leading);

  Value Eval(Activation& activation) const override;
  void Store(Activation& activation, Value value) const override;

 private:
  Value Self(Activation& activation) const;

  CodePtr self_;
  std::unique_ptr<CallPlan> getter_;  // null: can't be read
  const Method& setter_;
  std::vector<CodePtr> leading_;  // what the setter takes before the value
};

// A new instance. `constructor` may be null: then nothing is called but what the class itself brings.
class NewInstance final : public Code {
 public:
  NewInstance(Position position, Class& cls, const Method* constructor, std::vector<Argument> arguments);
  Value Eval(Activation& activation) const override;

 private:
  Class& class_;
  std::unique_ptr<CallPlan> plan_;
};

// A routine of the program. `routine` may be bound later than its calls.
class UserCall final : public Code {
 public:
  UserCall(Position position, const Routine& routine, std::vector<Argument> arguments);
  Value Eval(Activation& activation) const override;

 private:
  const Routine& routine_;
  std::vector<Argument> arguments_;
};

}  // namespace hostrun
