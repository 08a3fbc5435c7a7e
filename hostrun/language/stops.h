// hostrun/language/stops.h - where a program can be halted, and what is known there: for a debugger.
//
// A binder that is given a Stops puts a step before each statement that tells the observer; one that is not
// adds nothing, so that a program that nobody watches runs exactly what it would run without this.
#pragma once

#include <utility>
#include <vector>

#include "hostrun/language/binder.h"

namespace hostrun {

class StopObserver {
 public:
  StopObserver() = default;
  StopObserver(const StopObserver&) = delete;
  StopObserver& operator=(const StopObserver&) = delete;
  virtual ~StopObserver() = default;

  // A statement is about to run: the number of its stop, and the variables of the call that it runs in.
  // What is thrown leaves the statement as if it had thrown it.
  virtual void Arrive(std::size_t stop, Activation& activation) = 0;
  // Control has come back from the statements of a loop to the loop itself, at that stop.
  virtual void Return(std::size_t stop, Activation& activation) = 0;
  // A loop without statements begins another round.
  virtual void Idle() = 0;
};

class Stops {
 public:
  // A statement. Those of one routine follow one another, and so do those of a block, with all inside.
  struct Stop {
    Position at;
    const Routine* routine;  // null: the program's own level
    bool runs;               // false: it only declares, and is never arrived at
  };
  // The stops from `first` up to the one before `last`.
  struct Extent {
    std::size_t first;
    std::size_t last;
    bool Holds(std::size_t stop) const { return first <= stop && stop < last; }
  };
  // A name, and where it can be used.
  struct Name {
    Binder::Variable variable;
    Extent extent;
  };

  // `observer` outlives the program.
  explicit Stops(StopObserver& observer) : observer_(observer) {}

  const std::vector<Stop>& all() const { return all_; }
  // Where two of one name can be used at a stop, the inner one comes first.
  const std::vector<Name>& names() const { return names_; }
  // Whether a Try of the routine catches, at that stop, an exception of that class.
  bool Catches(std::size_t stop, const Class& exception) const;

  // For the binder.

  std::size_t count() const { return all_.size(); }
  // Settles one statement with `bind`, which adds its steps to `into`, and puts its stop before them.
  template <class Bind>
  void AddTo(StepBlock& into, Position at, const Routine* routine, Bind bind) {
    const std::size_t number = Begin(at, routine);
    const std::size_t place = into.steps.size();
    bind();
    End(into, place, number);
  }
  // For a body without statements, of the loop that was settled last.
  void AddIdleTo(StepBlock& into);
  // The same condition, of the loop that was settled last.
  CodePtr Watched(CodePtr condition);
  void NoteName(const Binder::Variable& variable) { names_.push_back({variable, {variable.from, count()}}); }
  void NoteTry(Extent body, std::vector<const Class*> caught) { tries_.push_back({body, std::move(caught)}); }

 private:
  struct Try {
    Extent body;
    std::vector<const Class*> caught;
  };
  std::size_t Begin(Position at, const Routine* routine);
  void End(StepBlock& into, std::size_t place, std::size_t number);

  StopObserver& observer_;
  std::vector<Stop> all_;
  std::vector<Name> names_;
  std::vector<Try> tries_;
};

}  // namespace hostrun
