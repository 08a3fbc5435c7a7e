// hostrun/language/statements/variables.cpp - Dim, Static, Const and ReDim.
#include "hostrun/host/arrays.h"
#include "hostrun/language/binder.h"
#include "hostrun/language/code_arrays.h"
#include "hostrun/language/code_operators.h"
#include "hostrun/language/parser.h"
#include "hostrun/language/statements/statements.h"
#include "hostrun/language/steps.h"

namespace hostrun {
namespace {

// One name of a Dim or a Const.
struct Declarator {
  Position at;
  std::string name;
  TypeName type;
  ExpressionPtr bound;    // Dim a(bound)
  ExpressionPtr initial;  // null: the type's default
};

struct Declaration : Statement {
  using Statement::Statement;
  std::vector<Declarator> declarators;

  std::vector<std::string> DeclaredNames() const override {
    std::vector<std::string> names;
    for (const Declarator& declarator : declarators) names.push_back(declarator.name);
    return names;
  }
};

struct Dim : Declaration {
  using Declaration::Declaration;

  void Bind(Binder& binder, StepBlock& into) const override {
    for (const Declarator& declarator : declarators) {
      CodePtr initial = BindInitial(binder, declarator);
      const Binder::Variable& variable =
          binder.DeclareVariable(declarator.at, declarator.name, initial->type);
      into.steps.push_back(
          MakeAssign(declarator.at, Binder::MakePlace(declarator.at, variable), std::move(initial)));
    }
  }

 protected:
  // The first value, of the variable's type.
  static CodePtr BindInitial(Binder& binder, const Declarator& declarator) {
    const Type* type = declarator.type.name.empty() ? nullptr : binder.TypeFor(declarator.type);
    if (declarator.initial) {
      CodePtr initial = binder.BindValue(*declarator.initial);
      initial->at = declarator.initial->at;
      if (type == nullptr) type = initial->type;
      if (type->kind == Kind::Nil) {
        Binder::Fail(declarator.at, "wanted a type for " + declarator.name + ": Nil says none");
      }
      if (declarator.type.array && type->kind != Kind::Array) {
        Binder::Fail(declarator.at, "wanted an array for " + declarator.name + ", found " + type->name);
      }
      return Binder::Convert(std::move(initial), type, declarator.name);
    }
    // NOLINTNEXTLINE(clang-analyzer-core.NullDereference): the parser wants a type or a value
    if (type->kind != Kind::Array) {
      return std::make_unique<ConstantCode>(declarator.at, type, Value::DefaultOf(*type));
    }
    const Type* const index = TypeOf(Kind::Integer);
    CodePtr bound =
        declarator.bound
            ? binder.BindConverted(*declarator.bound, index, "the upper bound of " + declarator.name)
            : std::make_unique<ConstantCode>(declarator.at, index, Value::Integer(-1));
    return std::make_unique<NewArrayCode>(declarator.at, type->element, std::move(bound));
  }
};

// Runs a step the first time that it is reached.
class OnceStep final : public Step {
 public:
  OnceStep(Position position, std::size_t done, StepPtr step)
      : Step(position), done_(done), step_(std::move(step)) {}
  Flow Run(Activation& activation) const override {
    if (activation.globals[done_].boolean()) return Flow::Next;
    step_->Run(activation);
    activation.globals[done_] = Value::Boolean(true);
    return Flow::Next;
  }

 private:
  std::size_t done_;  // among the globals
  StepPtr step_;
};

struct Static final : Dim {
  using Dim::Dim;

  void Bind(Binder& binder, StepBlock& into) const override {
    for (const Declarator& declarator : declarators) {
      CodePtr initial = BindInitial(binder, declarator);
      const Binder::Variable& variable = binder.DeclareStatic(declarator.at, declarator.name, initial->type);
      StepPtr assign =
          MakeAssign(declarator.at, Binder::MakePlace(declarator.at, variable), std::move(initial));
      into.Add<OnceStep>(declarator.at, binder.NewGlobal(TypeOf(Kind::Boolean)), std::move(assign));
    }
  }
};

// Nothing of it runs: its names stand for their values.
struct Const final : Declaration {
  using Declaration::Declaration;

  void Bind(Binder& binder, StepBlock&) const override {
    for (const Declarator& declarator : declarators) {
      if (!declarator.initial) {
        Binder::Fail(declarator.at, "wanted '=' and a value for the constant " + declarator.name);
      }
      CodePtr code = binder.BindConstant(*declarator.initial, "the constant " + declarator.name);
      if (!declarator.type.name.empty()) {
        code = Binder::Convert(std::move(code), binder.TypeFor(declarator.type), declarator.name);
      }
      binder.DeclareConstant(declarator.at, declarator.name, *code);
    }
  }
};

Declarator ParseDeclarator(Parser& parser) {
  Declarator declarator;
  declarator.at = parser.Peek().at;
  declarator.name = parser.WantName("a variable's name");
  bool array = false;
  if (parser.TakeOperator("(")) {
    array = true;
    if (!parser.TakeOperator(")")) {
      declarator.bound = parser.ParseExpression();
      if (parser.AtOperator(",")) parser.Fail("one upper bound: arrays have one dimension");
      parser.WantOperator(")", "after the upper bound");
    }
  }
  declarator.type.at = parser.Peek().at;
  if (parser.TakeWord("as")) {
    if (parser.AtWord("new")) {
      declarator.initial = parser.ParseNew();
      declarator.type.name = declarator.initial->name;
      declarator.type.at = declarator.initial->at;
    } else {
      declarator.type = parser.ParseType();
    }
  }
  declarator.type.array = declarator.type.array || array;
  if (!declarator.initial && parser.TakeOperator("=")) declarator.initial = parser.ParseExpression();
  return declarator;
}

// "a, b As Integer": names without a type or a value share the next type.
void ParseDeclarators(Parser& parser, std::vector<Declarator>& all) {
  std::size_t untyped = 0;  // the first of those that share the next type
  do {
    all.push_back(ParseDeclarator(parser));
    const bool typed = !all.back().type.name.empty();
    if (!typed && !all.back().initial) continue;
    if (!typed && untyped + 1 < all.size()) {  // a value is nobody's type but its own variable's
      throw ProgramError(all[untyped].at,
                         "wanted 'As' and a type, or '=' and a value, for " + all[untyped].name);
    }
    for (; untyped + 1 < all.size(); ++untyped) {
      const bool wasArray = all[untyped].type.array;
      all[untyped].type = all.back().type;
      all[untyped].type.array = wasArray;
    }
    untyped = all.size();
  } while (parser.TakeOperator(","));
  if (untyped != all.size()) parser.Fail("'As' and a type, or '=' and a value, for " + all.back().name);
}

template <class Declared>
StatementPtr ParseDeclaration(Parser& parser) {
  auto statement = parser.Begin<Declared>();
  ParseDeclarators(parser, statement->declarators);
  return statement;
}

// Changes the upper bound of an array that is there.
class ReDimStep final : public Step {
 public:
  ReDimStep(Position position, CodePtr array, CodePtr bound)
      : Step(position), array_(std::move(array)), bound_(std::move(bound)) {}
  Flow Run(Activation& activation) const override {
    const Value array = array_->Eval(activation);
    const std::int64_t bound = bound_->Whole(activation);
    Note(at);
    if (array.object() == nullptr) RaiseHostException("NilObjectException", "The array is nil.");
    ResizeArray(array.object(), bound);
    return Flow::Next;
  }

 private:
  CodePtr array_;
  CodePtr bound_;
};

struct ReDim final : Statement {
  using Statement::Statement;
  ExpressionPtr array;
  ExpressionPtr bound;

  void Bind(Binder& binder, StepBlock& into) const override {
    CodePtr changed = binder.BindValue(*array);
    if (changed->type->kind != Kind::Array) {
      Binder::Fail(array->at, "ReDim wants an array, found " + changed->type->name);
    }
    into.Add<ReDimStep>(at, std::move(changed),
                        binder.BindConverted(*bound, TypeOf(Kind::Integer), "an upper bound"));
  }
};

StatementPtr ParseReDim(Parser& parser) {
  auto statement = parser.Begin<ReDim>();
  ExpressionPtr call = parser.ParsePostfix();
  if (call->kind != Expression::Kind::Call || call->children.size() != 2) {
    throw ProgramError(call->at, "wanted an array and one upper bound after ReDim");
  }
  statement->array = std::move(call->children[0]);
  statement->bound = std::move(call->children[1]);
  return statement;
}

constexpr StatementForm kVariableForms[] = {
    {"dim", &ParseDeclaration<Dim>},
    {"var", &ParseDeclaration<Dim>},
    {"static", &ParseDeclaration<Static>},
    {"const", &ParseDeclaration<Const>},
    {"redim", &ParseReDim},
};

}  // namespace

std::span<const StatementForm> VariableStatements() {
  return kVariableForms;
}

}  // namespace hostrun
