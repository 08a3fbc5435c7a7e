// hostrun/language/code_conversions.h - from one type to another.
#pragma once

#include "hostrun/host/registry.h"
#include "hostrun/language/code.h"

namespace hostrun {

// How badly a value of what `from` gives fits where `to` is wanted: 0 exactly, larger is worse, -1 not at
// all.
int ConversionCost(const Code& from, const Type& to);
// Precondition: ConversionCost is not -1. A constant stays one.
CodePtr MakeConversion(CodePtr from, const Type* to);
// Class(value): the same object, or IllegalCastException when it runs. Null when it can never succeed.
CodePtr MakeCast(Position at, CodePtr from, const Type* to);

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
