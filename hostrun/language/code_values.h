// hostrun/language/code_values.h - variables and colours.
#pragma once

#include <string>

#include "hostrun/language/code.h"

namespace hostrun {

// A variable in a slot of its own. Where: how the slot is found.
template <class Where>
class Variable final : public Place {
 public:
  Variable(Position position, const Type* t, std::size_t slot) : Place(position, t), slot_(slot) {}
  Value Eval(Activation& activation) const override { return Where::Find(activation, slot_); }
  double Real(Activation& activation) const override { return Where::Find(activation, slot_).AsReal(); }
  std::int64_t Whole(Activation& activation) const override {
    return Where::Find(activation, slot_).AsInt64();
  }
  bool StaysInPlace() const override { return true; }
  Value* Locate(Activation& activation) const override { return &Where::Find(activation, slot_); }
  void Store(Activation& activation, Value value) const override {
    Where::Find(activation, slot_) = std::move(value);
  }

 private:
  std::size_t slot_;
};
struct InLocals {
  static Value& Find(Activation& activation, std::size_t slot) { return activation.locals[slot]; }
};
struct InGlobals {
  static Value& Find(Activation& activation, std::size_t slot) { return activation.globals[slot]; }
};
struct BehindReference {
  static Value& Find(Activation& activation, std::size_t slot) { return *activation.locals[slot].place(); }
};
using LocalVariable = Variable<InLocals>;
using GlobalVariable = Variable<InGlobals>;
using ReferenceParameter = Variable<BehindReference>;

// color.name; null when a Color has no such member.
CodePtr MakeColorMember(Position at, const std::string& name, CodePtr color);

}  // namespace hostrun
