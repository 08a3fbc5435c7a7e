// hostrun/language/bind_statements.cpp - settles statements and routines.
#include <algorithm>

#include "hostrun/host/registry.h"
#include "hostrun/host/text.h"
#include "hostrun/language/binder.h"

namespace hostrun {

class Binder::ScopeGuard {
 public:
  ScopeGuard(Binder& binder, StepBlock* block) : binder_(binder), block_(block) {
    binder_.scopes_.emplace_back();
  }
  ScopeGuard(const ScopeGuard&) = delete;
  ScopeGuard& operator=(const ScopeGuard&) = delete;
  ~ScopeGuard() {
    for (const auto& [name, variable] : binder_.scopes_.back()) {
      if (block_ == nullptr || !variable.type->IsCounted()) continue;
      if (variable.where == Variable::Where::Local) block_->endingLocals.push_back(variable.slot);
      if (variable.where == Variable::Where::Global) block_->endingGlobals.push_back(variable.slot);
    }
    binder_.scopes_.pop_back();
  }

 private:
  Binder& binder_;
  StepBlock* block_;
};

BoundProgram Binder::Bind(const ProgramText& text) {
  for (const RoutineDeclaration& declaration : text.routines) DeclareRoutine(declaration);
  BindInto(program_.body, text.body);
  for (std::size_t i = 0; i < text.routines.size(); ++i) BindRoutine(text.routines[i], *program_.routines[i]);
  return std::move(program_);
}

void Binder::DeclareRoutine(const RoutineDeclaration& declaration) {
  auto routine = std::make_unique<Routine>();
  routine->at = declaration.at;
  routine->signature.name = declaration.name;
  routine->signature.result = declaration.function ? TypeFor(declaration.result) : TypeOf(Kind::Nothing);
  for (const RoutineParameter& parameter : declaration.parameters) {
    Parameter bound;
    bound.name = parameter.name;
    bound.type = TypeFor(parameter.type);
    bound.byref = parameter.byref;
    bound.paramArray = parameter.paramArray;
    if (parameter.initial) {
      if (parameter.byref) Fail(parameter.at, "a by-reference parameter can't have a default");
      CodePtr initial = Convert(BindConstant(*parameter.initial, "a default"), bound.type,
                                "the default of " + parameter.name);
      Frame none{nullptr, nullptr};
      bound.defaultValue = initial->Eval(none);
    } else if (!routine->signature.parameters.empty() && routine->signature.parameters.back().defaultValue &&
               !parameter.paramArray) {
      Fail(parameter.at, "wanted a default for " + parameter.name + ", as the parameter before it has one");
    }
    routine->signature.parameters.push_back(std::move(bound));
  }
  const auto [first, last] = routinesByName_.equal_range(LowerName(declaration.name));
  for (auto at = first; at != last; ++at) {
    const std::vector<Parameter>& others = at->second->signature.parameters;
    const std::vector<Parameter>& own = routine->signature.parameters;
    if (std::equal(own.begin(), own.end(), others.begin(), others.end(),
                   [](const Parameter& a, const Parameter& b) { return a.type == b.type; })) {
      Fail(declaration.at, "wanted a new routine, found " + declaration.name + ", which line " +
                               std::to_string(at->second->at.line) + " declares with the same parameters");
    }
  }
  routinesByName_.emplace(LowerName(declaration.name), routine.get());
  program_.routines.push_back(std::move(routine));
}

void Binder::BindRoutine(const RoutineDeclaration& declaration, Routine& routine) {
  routine_ = &routine;
  const ScopeGuard scope(*this, nullptr);
  for (std::size_t i = 0; i < declaration.parameters.size(); ++i) {
    Variable& variable = DeclareVariable(declaration.parameters[i].at, declaration.parameters[i].name,
                                         routine.signature.parameters[i].type);
    if (routine.signature.parameters[i].byref) variable.where = Variable::Where::Reference;
  }
  BindInto(routine.body, declaration.body);
  routine_ = nullptr;
}

StepBlock Binder::BindBlock(const Block& block) {
  StepBlock bound;
  {
    const ScopeGuard scope(*this, &bound);
    BindInto(bound, block);
  }
  return bound;
}

void Binder::BindInto(StepBlock& into, const Block& block) {
  for (const StatementPtr& statement : block) BindStatement(into, *statement);
}

void Binder::BindStatement(StepBlock& into, const Statement& statement) {
  const auto add = [&into](StepPtr step) { into.steps.push_back(std::move(step)); };
  const Position at = statement.at;
  switch (statement.kind) {
    case Statement::Kind::Declare:
      return BindDeclare(into, statement);
    case Statement::Kind::Const:
      return BindConst(statement);
    case Statement::Kind::Assign:
    case Statement::Kind::Compound:
      return add(BindAssign(statement));
    case Statement::Kind::Call:
      return add(BindCallStatement(statement));
    case Statement::Kind::Print: {
      std::vector<CodePtr> items;
      for (const ExpressionPtr& item : statement.arguments) items.push_back(BindValue(*item));
      return add(MakePrint(at, std::move(items)));
    }
    case Statement::Kind::If:
      return add(BindIf(statement));
    case Statement::Kind::Select:
      return add(BindSelect(statement));
    case Statement::Kind::For:
      return add(BindFor(statement));
    case Statement::Kind::ForEach:
      return add(BindForEach(statement));
    case Statement::Kind::While:
    case Statement::Kind::Do:
      return add(BindLoop(statement));
    case Statement::Kind::Exit:
    case Statement::Kind::Continue:
      return add(BindJump(statement));
    case Statement::Kind::Return:
      return add(BindReturn(statement));
    case Statement::Kind::Try:
      return add(BindTry(statement));
    case Statement::Kind::Raise:
      return add(
          MakeRaise(at, BindConverted(*statement.first, &WantClass(at, "RuntimeException").type, "Raise")));
    case Statement::Kind::ReDim: {
      CodePtr array = BindValue(*statement.first);
      if (array->type->kind != Kind::Array)
        Fail(statement.first->at, "ReDim wants an array, found " + array->type->name);
      return add(MakeReDim(at, std::move(array),
                           BindConverted(*statement.second, TypeOf(Kind::Integer), "an upper bound")));
    }
    case Statement::Kind::Quit: {
      CodePtr status =
          statement.first ? BindConverted(*statement.first, TypeOf(Kind::Integer), "Quit") : nullptr;
      return add(MakeQuit(at, std::move(status)));
    }
  }
}

void Binder::BindDeclare(StepBlock& into, const Statement& statement) {
  for (const Declarator& declarator : statement.declarators) {
    const Type* type = declarator.type.name.empty() ? nullptr : TypeFor(declarator.type);
    CodePtr initial;
    if (declarator.initial) {
      initial = BindValue(*declarator.initial);
      initial->at = declarator.initial->at;
      if (type == nullptr) type = initial->type;
      if (type->kind == Kind::Nil)
        Fail(declarator.at, "wanted a type for " + declarator.name + ": Nil says none");
      if (declarator.type.array && type->kind != Kind::Array) {
        Fail(declarator.at, "wanted an array for " + declarator.name + ", found " + type->name);
      }
      initial = Convert(std::move(initial), type, declarator.name);
      // NOLINTNEXTLINE(clang-analyzer-core.NullDereference): the parser wants a type or a value
    } else if (type->kind == Kind::Array) {
      CodePtr bound = declarator.bound
                          ? BindConverted(*declarator.bound, TypeOf(Kind::Integer),
                                          "the upper bound of " + declarator.name)
                          : MakeConstant(declarator.at, TypeOf(Kind::Integer), Value::Integer(-1));
      initial = MakeNewArray(declarator.at, type->element, std::move(bound));
    } else {
      initial = MakeConstant(declarator.at, type, Value::DefaultOf(*type));
    }
    const Variable& variable = DeclareVariable(declarator.at, declarator.name, type);
    into.steps.push_back(
        MakeAssign(declarator.at, MakeVariable(declarator.at, variable), std::move(initial)));
  }
}

void Binder::BindConst(const Statement& statement) {
  for (const Declarator& declarator : statement.declarators) {
    if (!declarator.initial)
      Fail(declarator.at, "wanted '=' and a value for the constant " + declarator.name);
    CodePtr code = BindConstant(*declarator.initial, "the constant " + declarator.name);
    if (!declarator.type.name.empty())
      code = Convert(std::move(code), TypeFor(declarator.type), declarator.name);
    Frame none{nullptr, nullptr};
    Variable& constant = Declare(declarator.at, declarator.name, code->type, Variable::Where::Constant);
    constant.value = code->Eval(none);
  }
}

CodePtr Binder::BindPlace(const Expression& expression) {
  if (expression.kind == Expression::Kind::Call) {
    CodePtr setter = BindAssignsCall(expression);
    if (setter) return setter;
  }
  if (expression.kind == Expression::Kind::Name) {
    const Variable* const variable = FindVariable(expression.name);
    if (variable == nullptr) {
      Fail(expression.at,
           "wanted a variable before '=', found " + expression.name + ", which is not declared as one");
    }
    if (variable->where == Variable::Where::Constant) {
      Fail(expression.at, "wanted a variable before '=', found the constant " + expression.name);
    }
  }
  if (expression.kind == Expression::Kind::Member && ClassOf(*expression.children[0]) == nullptr) {
    const CodePtr object = BindValue(*expression.children[0]);
    const Property* const property = object->type->kind == Kind::Object
                                         ? object->type->cls->PropertyNamed(expression.name, false)
                                         : nullptr;
    if (property != nullptr && property->setter.function == nullptr) {
      Fail(expression.at,
           "wanted something to assign to, found " + expression.name + ", which can only be read");
    }
  }
  CodePtr place = BindExpression(expression);
  if (dynamic_cast<Place*>(place.get()) == nullptr) {
    Fail(expression.at, "wanted a variable, an element or a property before '=', found a value");
  }
  return place;
}

StepPtr Binder::BindAssign(const Statement& statement) {
  CodePtr place = BindPlace(*statement.first);
  const Type* const type = place->type;
  CodePtr value = BindValue(*statement.second);
  if (statement.kind == Statement::Kind::Compound) {
    const std::string right = value->type->name;
    value = MakeBinary(statement.at, statement.name, BindValue(*statement.first), std::move(value));
    if (!value)
      Fail(statement.at, "'" + statement.name + "=' does not work on " + type->name + " and " + right);
  } else {
    value->at = statement.second->at;
  }
  return MakeAssign(statement.at, std::move(place), Convert(std::move(value), type, "the assignment"));
}

StepPtr Binder::BindCallStatement(const Statement& statement) {
  const Expression& call = *statement.first;
  // A property or a variable alone does nothing: more likely a mistake.
  if (call.kind == Expression::Kind::Name && FindVariable(call.name) != nullptr) {
    Fail(statement.at, "wanted a statement, found the variable " + call.name + " alone");
  }
  if (call.kind != Expression::Kind::Name && call.kind != Expression::Kind::Member &&
      call.kind != Expression::Kind::Call) {
    Fail(statement.at, "wanted a statement, found a value");
  }
  return MakeEvaluate(statement.at, BindExpression(call));
}

StepPtr Binder::BindIf(const Statement& statement) {
  std::vector<StepBranch> branches;
  for (const Branch& branch : statement.branches) {
    CodePtr condition = branch.condition ? BindCondition(*branch.condition) : nullptr;
    branches.push_back({std::move(condition), BindBlock(branch.body)});
  }
  return MakeBranches(statement.at, std::move(branches));
}

// The value goes into a variable of its own; each Case becomes a condition on it.
StepPtr Binder::BindSelect(const Statement& statement) {
  StepBlock whole;
  {
    const ScopeGuard scope(*this, &whole);
    BindSelectInto(whole, statement);
  }
  return MakeSequence(statement.at, std::move(whole));
}

void Binder::BindSelectInto(StepBlock& whole, const Statement& statement) {
  CodePtr value = BindValue(*statement.first);
  if (value->type->kind == Kind::Nil) Fail(statement.first->at, "Select Case wants a value, found Nil");
  const Variable variable = DeclareVariable(statement.at, "select case", value->type);
  whole.steps.push_back(MakeAssign(statement.at, MakeVariable(statement.at, variable), std::move(value)));
  const auto compare = [&](const CaseTest& test, const std::string& op, const Expression& other) {
    CodePtr right = BindValue(other);
    const std::string found = right->type->name;
    CodePtr made = MakeBinary(test.at, op, MakeVariable(test.at, variable), std::move(right));
    if (!made) Fail(test.at, "wanted a value to compare with " + variable.type->name + ", found " + found);
    return made;
  };
  std::vector<StepBranch> branches;
  for (const Branch& branch : statement.branches) {
    CodePtr condition;
    for (const CaseTest& test : branch.tests) {
      CodePtr one;
      if (test.kind == CaseTest::Kind::Range) {
        one = MakeBinary(test.at, "and", compare(test, ">=", *test.low), compare(test, "<=", *test.high));
      } else {
        one = compare(test, test.kind == CaseTest::Kind::Equal ? "=" : test.op, *test.low);
      }
      condition =
          condition ? MakeBinary(test.at, "or", std::move(condition), std::move(one)) : std::move(one);
    }
    branches.push_back({std::move(condition), BindBlock(branch.body)});
  }
  whole.steps.push_back(MakeBranches(statement.at, std::move(branches)));
}

CodePtr Binder::LoopVariable(const Statement& statement, const Type* fallback) {
  const Variable* variable = statement.type.name.empty() ? FindVariable(statement.name) : nullptr;
  if (variable != nullptr && variable->where == Variable::Where::Constant) {
    Fail(statement.at, "wanted a variable after For, found the constant " + statement.name);
  }
  if (variable == nullptr) {
    const Type* const type = statement.type.name.empty() ? fallback : TypeFor(statement.type);
    variable = &DeclareVariable(statement.at, statement.name, type);
  }
  return MakeVariable(statement.at, *variable);
}

StepPtr Binder::BindFor(const Statement& statement) {
  StepBlock whole;
  {
    const ScopeGuard scope(*this, &whole);
    ForLoop loop{++loopCount_, nullptr, nullptr, nullptr, nullptr, statement.down, {}};
    CodePtr first = BindValue(*statement.first);
    loop.variable =
        LoopVariable(statement, first->type->IsReal() ? TypeOf(Kind::Double) : TypeOf(Kind::Integer));
    const Type* const type = loop.variable->type;
    if (!type->IsNumber()) Fail(statement.at, "wanted a number as the variable of For, found " + type->name);
    loop.first = Convert(std::move(first), type, "the first value of For");
    loop.last = BindConverted(*statement.second, type, "the last value of For");
    if (statement.third) loop.step = BindConverted(*statement.third, type, "Step");
    loops_.push_back({loop.number, "for"});
    loop.body = BindBlock(statement.body);
    loops_.pop_back();
    whole.steps.push_back(MakeFor(statement.at, std::move(loop)));
  }
  return MakeSequence(statement.at, std::move(whole));
}

StepPtr Binder::BindForEach(const Statement& statement) {
  StepBlock whole;
  {
    const ScopeGuard scope(*this, &whole);
    CodePtr array = BindValue(*statement.first);
    if (array->type->kind != Kind::Array) {
      Fail(statement.first->at, "For Each wants an array, found " + array->type->name);
    }
    CodePtr variable = LoopVariable(statement, array->type->element);
    if (variable->type != array->type->element) {
      Fail(statement.at, "For Each wants a variable of type " + array->type->element->name + ", found " +
                             variable->type->name);
    }
    const int number = ++loopCount_;
    loops_.push_back({number, "for"});
    StepBlock body = BindBlock(statement.body);
    loops_.pop_back();
    whole.steps.push_back(
        MakeForEach(statement.at, number, std::move(variable), std::move(array), std::move(body)));
  }
  return MakeSequence(statement.at, std::move(whole));
}

StepPtr Binder::BindLoop(const Statement& statement) {
  const auto condition = [&](const ExpressionPtr& expression) -> CodePtr {
    if (!expression) return nullptr;
    CodePtr code = BindCondition(*expression);
    return statement.until ? MakeUnary(statement.at, "not", std::move(code)) : std::move(code);
  };
  CodePtr top = condition(statement.first);
  CodePtr bottom = condition(statement.second);
  const int number = ++loopCount_;
  loops_.push_back({number, statement.kind == Statement::Kind::While ? "while" : "do"});
  StepBlock body = BindBlock(statement.body);
  loops_.pop_back();
  return MakeWhile(statement.at, number, std::move(top), std::move(body), std::move(bottom));
}

StepPtr Binder::BindJump(const Statement& statement) {
  const bool leaving = statement.kind == Statement::Kind::Exit;
  if (statement.name == "routine") {
    if (routine_ == nullptr)
      Fail(statement.at, "wanted Exit Sub or Exit Function inside of a routine, found it outside");
    CodePtr value;
    if (routine_->signature.result->kind != Kind::Nothing) {
      value = MakeConstant(statement.at, routine_->signature.result,
                           Value::DefaultOf(*routine_->signature.result));
    }
    return MakeReturn(statement.at, std::move(value));
  }
  // NOLINTNEXTLINE(modernize-loop-convert): clang 14 knows no reversed view of this library
  for (auto loop = loops_.rbegin(); loop != loops_.rend(); ++loop) {
    if (statement.name == "loop" || statement.name == loop->word) {
      return MakeJump(statement.at, leaving ? Flow::Exit : Flow::Continue, loop->number);
    }
  }
  const std::string word = leaving ? "Exit" : "Continue";
  Fail(statement.at, "wanted " + word + " inside of a loop" +
                         (statement.name == "loop" ? "" : " of that kind") + ", found it outside");
}

StepPtr Binder::BindReturn(const Statement& statement) {
  const Type* const result = routine_ == nullptr ? TypeOf(Kind::Nothing) : routine_->signature.result;
  if (result->kind == Kind::Nothing) {
    if (statement.first) Fail(statement.first->at, "wanted no value after Return here, found one");
    return MakeReturn(statement.at, nullptr);
  }
  if (!statement.first)
    Fail(statement.at, "wanted a value of type " + result->name + " after Return, found none");
  return MakeReturn(statement.at, BindConverted(*statement.first, result, "Return"));
}

StepPtr Binder::BindTry(const Statement& statement) {
  StepBlock body = BindBlock(statement.body);
  std::vector<CatchBranch> catches;
  for (const Branch& branch : statement.branches) {
    CatchBranch caught{nullptr, nullptr, {}};
    Class& base = WantClass(branch.at, "RuntimeException");
    Class& cls = branch.type.name.empty() ? base : WantClass(branch.type.at, branch.type.name);
    if (!cls.IsA(base)) Fail(branch.type.at, "Catch wants an exception's class, found " + cls.name);
    caught.cls = &cls;
    {
      const ScopeGuard scope(*this, &caught.body);
      if (!branch.variable.empty()) {
        caught.variable = MakeVariable(branch.at, DeclareVariable(branch.at, branch.variable, &cls.type));
      }
      BindInto(caught.body, branch.body);
    }
    catches.push_back(std::move(caught));
  }
  return MakeTry(statement.at, std::move(body), std::move(catches), BindBlock(statement.last));
}

}  // namespace hostrun
