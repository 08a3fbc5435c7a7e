// hostrun/language/steps.h - makes the statements of a running program out of settled parts.
#pragma once

#include <functional>
#include <vector>

#include "hostrun/host/value.h"
#include "hostrun/language/code.h"

namespace hostrun {

// A place and a value of its type.
StepPtr MakeAssign(Position at, CodePtr place, CodePtr value);
StepPtr MakeEvaluate(Position at, CodePtr code);
StepPtr MakePrint(Position at, std::vector<CodePtr> items);
// Called with the values of each line that a program prints, before it is printed; empty: no one looks.
void SetPrintObserver(std::function<void(const std::vector<Value>&)> observer);

struct StepBranch {
  CodePtr condition;  // null: always
  StepBlock body;
};
// The body of the first branch whose condition is true.
StepPtr MakeBranches(Position at, std::vector<StepBranch> branches);

// Steps in order, as one.
StepPtr MakeSequence(Position at, StepBlock block);

struct ForLoop {
  int number;
  CodePtr variable;  // a Place
  CodePtr first;
  CodePtr last;
  CodePtr step;
  bool down;
  StepBlock body;
};
StepPtr MakeFor(Position at, ForLoop loop);
// The variable has the type of the array's elements.
StepPtr MakeForEach(Position at, int number, CodePtr variable, CodePtr array, StepBlock body);
// Null conditions hold.
StepPtr MakeWhile(Position at, int number, CodePtr whileTrue, StepBlock body, CodePtr againWhileTrue);

StepPtr MakeJump(Position at, Flow flow, int loop);
StepPtr MakeReturn(Position at, CodePtr value);  // null: of a Sub
StepPtr MakeRaise(Position at, CodePtr exception);
StepPtr MakeQuit(Position at, CodePtr status);  // null: 0
StepPtr MakeReDim(Position at, CodePtr array, CodePtr upperBound);

struct CatchBranch {
  const Class* cls;
  CodePtr variable;  // a Place; null: none
  StepBlock body;
};
StepPtr MakeTry(Position at, StepBlock body, std::vector<CatchBranch> catches, StepBlock last);

}  // namespace hostrun
