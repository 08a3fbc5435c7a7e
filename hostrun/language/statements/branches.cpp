// hostrun/language/statements/branches.cpp - If and Select Case.
#include <algorithm>
#include <array>

#include "hostrun/language/binder.h"
#include "hostrun/language/code_operators.h"
#include "hostrun/language/parser.h"
#include "hostrun/language/statements/statements.h"
#include "hostrun/language/steps.h"

namespace hostrun {
namespace {

struct StepBranch {
  CodePtr condition;  // null: always
  StepBlock body;
};

// Runs the body of the first branch whose condition is true.
class Branches final : public Step {
 public:
  Branches(Position position, std::vector<StepBranch> branches)
      : Step(position), branches_(std::move(branches)) {}
  Flow Run(Activation& activation) const override {
    for (const StepBranch& branch : branches_) {
      if (!branch.condition || branch.condition->Whole(activation) != 0) return branch.body.Run(activation);
    }
    return Flow::Next;
  }

 private:
  std::vector<StepBranch> branches_;
};

// --- If

struct IfBranch {
  ExpressionPtr condition;  // null: Else
  Block body;
};

struct If final : Statement {
  using Statement::Statement;
  std::vector<IfBranch> branches;

  void Bind(Binder& binder, StepBlock& into) const override {
    std::vector<StepBranch> bound;
    for (const IfBranch& branch : branches) {
      CodePtr condition = branch.condition ? binder.BindCondition(*branch.condition) : nullptr;
      bound.push_back({std::move(condition), binder.BindBlock(branch.body)});
    }
    into.Add<Branches>(at, std::move(bound));
  }
};

// Behind Then, all on one line.
void ParseShortIf(Parser& parser, If& statement) {
  const auto parseBranch = [&parser](Block& body) {
    body.push_back(parser.ParseNestedStatement());
    while (parser.TakeOperator(":") && !parser.AtWord("else")) {
      if (!parser.AtEndOfStatement()) body.push_back(parser.ParseNestedStatement());
    }
  };
  parseBranch(statement.branches.front().body);
  if (parser.TakeWord("else")) parseBranch(statement.branches.emplace_back().body);
}

// Whether what stands there is an If that goes on below its line.
bool AtLongIf(const Parser& parser) {
  if (!parser.AtWord("if")) return false;
  std::size_t last = 0;
  while (parser.Peek(last + 1).kind != TokenKind::EndOfLine) ++last;
  return parser.AtWord("then", last);
}

StatementPtr ParseIf(Parser& parser) {
  auto statement = parser.Begin<If>();
  IfBranch& first = statement->branches.emplace_back();
  first.condition = parser.ParseExpression();
  parser.WantWord("then", "after the condition");
  if (!parser.AtEndOfStatement()) {
    ParseShortIf(parser, *statement);
    return statement;
  }
  first.body = parser.ParseBlock({"elseif", "else", "end if"});
  bool otherwise = false;
  std::string hint;
  while (parser.AtWord("elseif") || parser.AtWord("else")) {
    if (otherwise) parser.Fail("'End If' after Else");
    IfBranch& branch = statement->branches.emplace_back();
    if (parser.Take().lower == "elseif") {
      branch.condition = parser.ParseExpression();
      parser.WantWord("then", "after the condition");
    } else {
      otherwise = true;
      if (AtLongIf(parser)) {
        hint =
            "; Else If in " + Parser::LineOf(parser.Peek().at) + " begins an If of its own, ElseIf does not";
      }
    }
    branch.body = parser.ParseBlock({"elseif", "else", "end if"});
  }
  if (parser.Peek().kind == TokenKind::EndOfFile && !hint.empty()) {
    throw ProgramError(parser.Peek().at, "wanted 'End If' for " + Parser::LineOf(statement->at) +
                                             ", found the end of the program" + hint);
  }
  parser.WantEnd("if", statement->at);
  return statement;
}

// --- Select Case

// One of the values behind Case.
struct CaseTest {
  Position at;
  std::string op;  // "=" or what stands behind Is
  ExpressionPtr low;
  ExpressionPtr high;  // null: no range
};

struct CaseBranch {
  std::vector<CaseTest> tests;  // none: Case Else
  Block body;
};

// The value goes into a variable of its own; each Case becomes a condition on it.
struct Select final : Statement {
  using Statement::Statement;
  ExpressionPtr value;
  std::vector<CaseBranch> branches;

  void Bind(Binder& binder, StepBlock& into) const override {
    StepBlock whole;
    {
      const Binder::ScopeGuard scope(binder, &whole);
      CodePtr code = binder.BindValue(*value);
      if (code->type->kind == Kind::Nil) Binder::Fail(value->at, "Select Case wants a value, found Nil");
      const Binder::Variable variable = binder.DeclareVariable(at, "select case", code->type);
      whole.steps.push_back(MakeAssign(at, Binder::MakePlace(at, variable), std::move(code)));
      std::vector<StepBranch> bound;
      for (const CaseBranch& branch : branches) {
        CodePtr condition;
        for (const CaseTest& test : branch.tests) {
          CodePtr one = BindTest(binder, test, variable);
          condition =
              condition ? MakeBinary(test.at, "or", std::move(condition), std::move(one)) : std::move(one);
        }
        bound.push_back({std::move(condition), binder.BindBlock(branch.body)});
      }
      whole.Add<Branches>(at, std::move(bound));
    }
    into.Add<Sequence>(at, std::move(whole));
  }

 private:
  static CodePtr BindTest(Binder& binder, const CaseTest& test, const Binder::Variable& variable) {
    const auto compare = [&](const std::string& op, const Expression& other) {
      CodePtr right = binder.BindValue(other);
      const std::string found = right->type->name;
      CodePtr made = MakeBinary(test.at, op, Binder::MakePlace(test.at, variable), std::move(right));
      if (!made) {
        Binder::Fail(test.at, "wanted a value to compare with " + variable.type->name + ", found " + found);
      }
      return made;
    };
    if (!test.high) return compare(test.op, *test.low);
    CodePtr above = compare(">=", *test.low);
    return MakeBinary(test.at, "and", std::move(above), compare("<=", *test.high));
  }
};

CaseTest ParseCaseTest(Parser& parser) {
  CaseTest test{parser.Peek().at, "=", nullptr, nullptr};
  if (parser.TakeWord("is")) {
    static constexpr std::array<std::string_view, 6> kOperators = {"=", "<>", "<", ">", "<=", ">="};
    if (std::none_of(kOperators.begin(), kOperators.end(),
                     [&parser](auto op) { return parser.AtOperator(op); })) {
      parser.Fail("a comparison after Is");
    }
    test.op = parser.Take().lower;
    test.low = parser.ParseExpression();
    return test;
  }
  test.low = parser.ParseExpression();
  if (parser.TakeWord("to")) test.high = parser.ParseExpression();
  return test;
}

StatementPtr ParseSelect(Parser& parser) {
  auto statement = parser.Begin<Select>();
  parser.WantWord("case", "after Select");
  statement->value = parser.ParseExpression();
  parser.WantEndOfStatement("the value of Select Case");
  while (parser.AtEndOfStatement() && parser.Peek().kind != TokenKind::EndOfFile) parser.Take();
  bool otherwise = false;
  while (parser.AtWord("case") || parser.AtWord("else")) {
    if (otherwise) parser.Fail("'End Select' after Case Else");
    CaseBranch branch;
    if (parser.Take().lower == "else" || parser.TakeWord("else")) {
      otherwise = true;
    } else {
      do {
        branch.tests.push_back(ParseCaseTest(parser));
      } while (parser.TakeOperator(","));
    }
    parser.WantEndOfStatement("Case");
    branch.body = parser.ParseBlock({"case", "else", "end select"});
    statement->branches.push_back(std::move(branch));
  }
  if (statement->branches.empty() && !parser.AtWord("end")) {
    parser.Fail("'Case' or 'End Select' for " + Parser::LineOf(statement->at));
  }
  parser.WantEnd("select", statement->at);
  return statement;
}

constexpr StatementForm kBranchForms[] = {
    {"if", &ParseIf},
    {"select", &ParseSelect},
};

}  // namespace

std::span<const StatementForm> BranchStatements() {
  return kBranchForms;
}

}  // namespace hostrun
