// hostrun/language/statements/jumps.cpp - Exit, Continue, Return and Quit.
#include "hostrun/language/binder.h"
#include "hostrun/language/code_operators.h"
#include "hostrun/language/parser.h"
#include "hostrun/language/statements/statements.h"
#include "hostrun/language/steps.h"

namespace hostrun {
namespace {

// Leaves or repeats the loop of that number.
class Jump final : public Step {
 public:
  Jump(Position position, Flow flow, int loop) : Step(position), flow_(flow), loop_(loop) {}
  Flow Run(Activation&) const override {
    machine.target = loop_;
    return flow_;
  }

 private:
  Flow flow_;
  int loop_;
};

// Ends the program. `status` is null for 0.
class QuitStep final : public Step {
 public:
  QuitStep(Position position, CodePtr status) : Step(position), status_(std::move(status)) {}
  Flow Run(Activation& activation) const override {
    throw QuitRequest{status_ ? static_cast<int>(status_->Whole(activation)) : 0};
  }

 private:
  CodePtr status_;
};

// Exit and Continue.
struct LoopJump final : Statement {
  using Statement::Statement;
  bool leaving = false;            // Exit
  bool routine = false;            // Exit Sub, Exit Function
  std::string_view loop = "loop";  // for, while, do; loop: the innermost of any kind

  void Bind(Binder& binder, StepBlock& into) const override {
    if (routine) return BindExitRoutine(binder, into);
    const int target = binder.FindLoop(loop);
    if (target == 0) {
      Binder::Fail(at, std::string("wanted ") + (leaving ? "Exit" : "Continue") + " inside of a loop" +
                           (loop == "loop" ? "" : " of that kind") + ", found it outside");
    }
    into.Add<Jump>(at, leaving ? Flow::Exit : Flow::Continue, target);
  }

 private:
  void BindExitRoutine(Binder& binder, StepBlock& into) const {
    const Routine* const left = binder.routine();
    if (left == nullptr) {
      Binder::Fail(at, "wanted Exit Sub or Exit Function inside of a routine, found it outside");
    }
    const Type* const result = left->signature.result;
    CodePtr value;
    if (result->kind != Kind::Nothing)
      value = std::make_unique<ConstantCode>(at, result, Value::DefaultOf(*result));
    into.Add<Return>(at, std::move(value));
  }
};

StatementPtr ParseLoopJump(Parser& parser) {
  const bool leaving = parser.AtWord("exit");
  auto jump = parser.Begin<LoopJump>();
  jump->leaving = leaving;
  for (const std::string_view loop : {"for", "while", "do"}) {
    if (parser.TakeWord(loop)) jump->loop = loop;
  }
  jump->routine = leaving && (parser.TakeWord("sub") || parser.TakeWord("function"));
  return jump;
}

struct ReturnStatement final : Statement {
  using Statement::Statement;
  ExpressionPtr value;  // null: none

  void Bind(Binder& binder, StepBlock& into) const override {
    const Type* const result =
        binder.routine() == nullptr ? TypeOf(Kind::Nothing) : binder.routine()->signature.result;
    if (result->kind == Kind::Nothing) {
      if (value) Binder::Fail(value->at, "wanted no value after Return here, found one");
      into.Add<Return>(at, nullptr);
      return;
    }
    if (!value) Binder::Fail(at, "wanted a value of type " + result->name + " after Return, found none");
    into.Add<Return>(at, binder.BindConverted(*value, result, "Return"));
  }
};

struct Quit final : Statement {
  using Statement::Statement;
  ExpressionPtr status;  // null: 0

  void Bind(Binder& binder, StepBlock& into) const override {
    into.Add<QuitStep>(at, status ? binder.BindConverted(*status, TypeOf(Kind::Integer), "Quit") : nullptr);
  }
};

ExpressionPtr ParseOptionalValue(Parser& parser) {
  return parser.AtEndOfStatement() || parser.AtWord("else") ? nullptr : parser.ParseExpression();
}

StatementPtr ParseReturn(Parser& parser) {
  auto statement = parser.Begin<ReturnStatement>();
  statement->value = ParseOptionalValue(parser);
  return statement;
}

StatementPtr ParseQuit(Parser& parser) {
  auto statement = parser.Begin<Quit>();
  statement->status = ParseOptionalValue(parser);
  return statement;
}

constexpr StatementForm kJumpForms[] = {
    {"exit", &ParseLoopJump},
    {"continue", &ParseLoopJump},
    {"return", &ParseReturn},
    {"quit", &ParseQuit, true},
};

}  // namespace

std::span<const StatementForm> JumpStatements() {
  return kJumpForms;
}

}  // namespace hostrun
