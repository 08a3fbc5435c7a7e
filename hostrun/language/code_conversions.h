// hostrun/language/code_conversions.h - from one type to another.
#pragma once

#include "hostrun/host/registry.h"
#include "hostrun/language/code.h"

namespace hostrun {

// How badly a value of what `from` gives fits where `to` is wanted: 0 exactly, larger is worse, -1 not at
// all.
int ConversionCost(const Code& from, const Type& to);
// Precondition: ConversionCost is not -1. A constant stays one. Throws ProgramError for a constant number
// that the type can't hold.
CodePtr MakeConversion(CodePtr from, const Type* to);
// The type that fits values of both, Variant where no other does. Nil goes with everything.
const Type* CommonType(const Type& a, const Type& b);
// Class(value): the same object, or IllegalCastException when it runs. Null when it can never succeed.
CodePtr MakeCast(Position at, CodePtr from, const Type* to);

// If(condition, a, b): both values are of its type.
class Choice final : public Code {
 public:
  Choice(Position position, const Type* t, CodePtr condition, CodePtr whenTrue, CodePtr whenFalse)
      : Code(position, t),
        condition_(std::move(condition)),
        whenTrue_(std::move(whenTrue)),
        whenFalse_(std::move(whenFalse)) {}
  Value Eval(Activation& activation) const override { return Chosen(activation).Eval(activation); }
  double Real(Activation& activation) const override { return Chosen(activation).Real(activation); }
  std::int64_t Whole(Activation& activation) const override { return Chosen(activation).Whole(activation); }

 private:
  const Code& Chosen(Activation& activation) const {
    return condition_->Whole(activation) != 0 ? *whenTrue_ : *whenFalse_;
  }

  CodePtr condition_;
  CodePtr whenTrue_;
  CodePtr whenFalse_;
};

// object IsA Class.
class InstanceTest final : public Code {
 public:
  InstanceTest(Position position, CodePtr object, const Class& cls)
      : Code(position, TypeOf(Kind::Boolean)), object_(std::move(object)), class_(cls) {}
  Value Eval(Activation& activation) const override {
    return Value::Boolean(IsKindOf(object_->Eval(activation).object(), class_));
  }

 private:
  CodePtr object_;
  const Class& class_;
};

}  // namespace hostrun
