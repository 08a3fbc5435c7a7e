// hostrun/language/steps.h - the steps that several statements are made of. What only one of them needs
// stands with it in statements/.
#pragma once

#include "hostrun/language/code.h"

namespace hostrun {

// Stores a value of the place's own type.
StepPtr MakeAssign(Position at, PlacePtr place, CodePtr value);

// Steps in order, as one, with variables of their own.
class Sequence final : public Step {
 public:
  Sequence(Position position, StepBlock block) : Step(position), block_(std::move(block)) {}
  Flow Run(Activation& activation) const override { return block_.Run(activation); }

 private:
  StepBlock block_;
};

// Leaves the routine, or the program's own level. `value` is null in a Sub.
class Return final : public Step {
 public:
  Return(Position position, CodePtr value) : Step(position), value_(std::move(value)) {}
  Flow Run(Activation& activation) const override {
    machine.result = value_ ? value_->Eval(activation) : Value();
    return Flow::Return;
  }

 private:
  CodePtr value_;
};

}  // namespace hostrun
