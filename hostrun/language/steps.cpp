// hostrun/language/steps.cpp - the steps that several statements are made of.
#include "hostrun/language/steps.h"

namespace hostrun {
namespace {

// Stores what any expression gives in any place.
class Assign final : public Step {
 public:
  Assign(Position position, PlacePtr place, CodePtr value)
      : Step(position), place_(std::move(place)), value_(std::move(value)) {}
  Flow Run(Activation& activation) const override {
    place_->Store(activation, value_->Eval(activation));
    return Flow::Next;
  }

 private:
  PlacePtr place_;
  CodePtr value_;
};

// A Double in a variable of its own: the value goes straight in.
class AssignReal final : public Step {
 public:
  AssignReal(Position position, PlacePtr place, CodePtr value)
      : Step(position), place_(std::move(place)), value_(std::move(value)) {}
  Flow Run(Activation& activation) const override {
    const double number = value_->Real(activation);
    place_->Locate(activation)->SetReal(number);
    return Flow::Next;
  }

 private:
  PlacePtr place_;
  CodePtr value_;
};

}  // namespace

StepPtr MakeAssign(Position at, PlacePtr place, CodePtr value) {
  if (place->type->kind == Kind::Double && place->StaysInPlace()) {
    return std::make_unique<AssignReal>(at, std::move(place), std::move(value));
  }
  return std::make_unique<Assign>(at, std::move(place), std::move(value));
}

}  // namespace hostrun
