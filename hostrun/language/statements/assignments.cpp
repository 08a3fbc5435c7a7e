// hostrun/language/statements/assignments.cpp - assignments, and calls that stand alone.
#include "hostrun/language/binder.h"
#include "hostrun/language/code_operators.h"
#include "hostrun/language/parser.h"
#include "hostrun/language/statements/statements.h"
#include "hostrun/language/steps.h"

namespace hostrun {
namespace {

// A call for its effect; what it gives is dropped.
class Evaluate final : public Step {
 public:
  Evaluate(Position position, CodePtr code) : Step(position), code_(std::move(code)) {}
  Flow Run(Activation& activation) const override {
    code_->Eval(activation);
    return Flow::Next;
  }

 private:
  CodePtr code_;
};

struct Assignment final : Statement {
  using Statement::Statement;
  ExpressionPtr place;
  std::string op;  // of a compound assignment, without its "="; else empty
  ExpressionPtr value;

  void Bind(Binder& binder, StepBlock& into) const override {
    PlacePtr bound = binder.BindPlace(*place);
    const Type* const type = bound->type;
    CodePtr code = binder.BindValue(*value);
    if (op.empty()) {
      code->at = value->at;
    } else {
      const std::string right = code->type->name;
      code = MakeBinary(at, op, binder.BindValue(*place), std::move(code));
      if (!code) Binder::FailOperator(at, op + "=", type->name, right);
    }
    into.steps.push_back(
        MakeAssign(at, std::move(bound), Binder::Convert(std::move(code), type, "the assignment")));
  }
};

struct CallStatement final : Statement {
  using Statement::Statement;
  ExpressionPtr call;

  void Bind(Binder& binder, StepBlock& into) const override {
    // A property or a variable alone does nothing: more likely a mistake.
    if (call->kind == Expression::Kind::Name && binder.FindVariable(call->name) != nullptr) {
      Binder::Fail(at, "wanted a statement, found the variable " + call->name + " alone");
    }
    if (call->kind != Expression::Kind::Name && call->kind != Expression::Kind::Member &&
        call->kind != Expression::Kind::Call) {
      Binder::Fail(at, "wanted a statement, found a value");
    }
    into.Add<Evaluate>(at, binder.BindExpression(*call));
  }
  const Expression* AsExpression() const override { return call.get(); }
};

StatementPtr MakeAssignment(Parser& parser, Position at, ExpressionPtr place, std::string_view op) {
  auto assignment = std::make_unique<Assignment>(at);
  assignment->place = std::move(place);
  assignment->op = op;
  assignment->value = parser.ParseExpression();
  return assignment;
}

// "Call" may be left out.
StatementPtr ParseCall(Parser& parser) {
  parser.Take();
  return ParseCallOrAssignment(parser);
}

constexpr StatementForm kAssignmentForms[] = {
    {"call", &ParseCall, true},
};

}  // namespace

StatementPtr ParseCallOrAssignment(Parser& parser) {
  const Position at = parser.Peek().at;
  for (const std::string_view word :
       {"end", "next", "wend", "loop", "else", "elseif", "case", "catch", "finally"}) {
    if (parser.AtWord(word)) parser.Fail("a statement, or the beginning of the block that this ends");
  }
  if (parser.Peek().kind != TokenKind::Name && !parser.AtOperator("(")) parser.Fail("a statement");
  ExpressionPtr first = parser.ParsePostfix();
  if (parser.TakeOperator("=")) return MakeAssignment(parser, at, std::move(first), "");
  for (const std::string_view op : {"+=", "-=", "*=", "/=", "\\=", "&="}) {
    if (parser.TakeOperator(op)) return MakeAssignment(parser, at, std::move(first), op.substr(0, 1));
  }
  auto statement = std::make_unique<CallStatement>(at);
  statement->call = std::move(first);
  if (parser.AtEndOfStatement() || parser.AtWord("else")) return statement;
  // Arguments without brackets.
  if (statement->call->kind == Expression::Kind::Call) parser.Fail("the end of the statement after the call");
  ExpressionPtr call = Parser::Make(Expression::Kind::Call, statement->call->at);
  call->bare = true;
  parser.Adopt(*call, std::move(statement->call));
  do {
    parser.Adopt(*call, parser.ParseExpression());
  } while (parser.TakeOperator(","));
  statement->call = std::move(call);
  return statement;
}

std::span<const StatementForm> AssignmentStatements() {
  return kAssignmentForms;
}

}  // namespace hostrun
