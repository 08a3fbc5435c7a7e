// hostrun/language/stops.cpp - where a program can be halted, and what is known there: for a debugger.
#include "hostrun/language/stops.h"

#include <algorithm>

#include "hostrun/host/registry.h"
#include "hostrun/host/text.h"

namespace hostrun {
namespace {

class StopStep final : public Step {
 public:
  StopStep(Position position, StopObserver& observer, std::size_t number)
      : Step(position), observer_(observer), number_(number) {}
  Flow Run(Activation& activation) const override {
    observer_.Arrive(number_, activation);
    return Flow::Next;
  }

 private:
  StopObserver& observer_;
  std::size_t number_;
};

class IdleStep final : public Step {
 public:
  IdleStep(Position position, StopObserver& observer) : Step(position), observer_(observer) {}
  Flow Run(Activation&) const override {
    observer_.Idle();
    return Flow::Next;
  }

 private:
  StopObserver& observer_;
};

class LoopCondition final : public Code {
 public:
  LoopCondition(CodePtr condition, StopObserver& observer, std::size_t number)
      : Code(condition->at, condition->type),
        condition_(std::move(condition)),
        observer_(observer),
        number_(number) {}
  Value Eval(Activation& activation) const override {
    observer_.Return(number_, activation);
    return condition_->Eval(activation);
  }
  std::int64_t Whole(Activation& activation) const override {
    observer_.Return(number_, activation);
    return condition_->Whole(activation);
  }

 private:
  CodePtr condition_;
  StopObserver& observer_;
  std::size_t number_;
};

}  // namespace

std::size_t Stops::Begin(Position at, const Routine* routine) {
  all_.push_back({at, routine, true});
  return all_.size() - 1;
}

void Stops::End(StepBlock& into, std::size_t place, std::size_t number) {
  Stop& stop = all_[number];
  stop.runs = into.steps.size() > place;
  if (!stop.runs) return;
  into.steps.insert(into.steps.begin() + static_cast<std::ptrdiff_t>(place),
                    std::make_unique<StopStep>(stop.at, observer_, number));
}

void Stops::AddIdleTo(StepBlock& into) {
  into.Add<IdleStep>(all_.back().at, observer_);
}

CodePtr Stops::Watched(CodePtr condition) {
  return std::make_unique<LoopCondition>(std::move(condition), observer_, all_.size() - 1);
}

bool Stops::Catches(std::size_t stop, const Class& exception) const {
  return std::any_of(tries_.begin(), tries_.end(), [&](const Try& one) {
    return one.body.Holds(stop) && std::any_of(one.caught.begin(), one.caught.end(),
                                               [&](const Class* cls) { return exception.IsA(*cls); });
  });
}

void Binder::BindStatement(StepBlock& into, const Statement& statement) {
  if (stops_ == nullptr) return statement.Bind(*this, into);
  stops_->AddTo(into, statement.at, routine_, [&] { statement.Bind(*this, into); });
}

CodePtr Binder::BindLoopCondition(const Expression& expression) {
  CodePtr condition = BindCondition(expression);
  return stops_ == nullptr ? std::move(condition) : stops_->Watched(std::move(condition));
}

void Binder::NoteNames() {
  if (stops_ == nullptr) return;
  for (const auto& [lower, variable] : scopes_.back()) stops_->NoteName(variable);
}

std::size_t Binder::CountStops() const {
  return stops_ == nullptr ? 0 : stops_->count();
}

void Binder::NoteTry(std::size_t first, std::size_t last, const std::vector<const Class*>& caught) {
  if (stops_ != nullptr) stops_->NoteTry({first, last}, caught);
}

void Binder::StandAt(const Stops& stops, std::size_t stop) {
  collecting_ = false;
  refused_.clear();
  scopes_.assign(1, {});
  for (const Stops::Name& name : stops.names()) {
    if (name.extent.Holds(stop)) scopes_.front().try_emplace(LowerName(name.variable.name), name.variable);
  }
}

}  // namespace hostrun
