// hostrun/language/bind_statements.cpp - settles routines and blocks.
#include <algorithm>

#include "hostrun/host/text.h"
#include "hostrun/language/binder.h"
#include "hostrun/language/code_operators.h"
#include "hostrun/language/stops.h"

namespace hostrun {

Binder::ScopeGuard::~ScopeGuard() {
  binder_.NoteNames();
  for (const auto& [name, variable] : binder_.scopes_.back()) {
    if (block_ == nullptr || !variable.type->IsCounted()) continue;
    if (variable.where == Variable::Where::Local) block_->endingLocals.push_back(variable.slot);
    if (variable.where == Variable::Where::Global) block_->endingGlobals.push_back(variable.slot);
  }
  binder_.scopes_.pop_back();
}

void Binder::Collecting(const std::function<void()>& bind, const std::vector<std::string>& declared) {
  if (!collecting_) return bind();
  try {
    return bind();
  } catch (const ProgramError& error) {
    errors_.push_back(error);
  } catch (const Consequence&) {
    // What it follows from stands among the errors.
  }
  for (const std::string& name : declared) refused_.insert(LowerName(name));
}

// Enumerations and routines are declared first: they may be called before the line that they stand on.
BoundProgram Binder::Bind(const ProgramText& text) {
  collecting_ = true;
  for (const EnumDeclaration& declaration : text.enums) {
    Collecting([&] { DeclareEnumeration(declaration); }, {declaration.name});
  }
  std::vector<std::pair<const RoutineDeclaration*, Routine*>> routines;
  for (const RoutineDeclaration& declaration : text.routines) {
    const auto declare = [&] {
      DeclareRoutine(declaration);
      routines.emplace_back(&declaration, program_.routines.back().get());
    };
    Collecting(declare, {declaration.name});
  }
  BindInto(program_.body, text.body);
  for (const auto& [declaration, routine] : routines) {
    Collecting([&] { BindRoutine(*declaration, *routine); });
    routine_ = nullptr;
  }
  NoteNames();
  if (!errors_.empty()) throw ProgramErrors(std::move(errors_));
  return std::move(program_);
}

void Binder::DeclareEnumeration(const EnumDeclaration& declaration) {
  const Type* const type = TypeOf(Kind::Integer);
  Declare(declaration.at, declaration.name, type, Variable::Where::Enumeration);
  std::int64_t next = 0;
  for (const EnumDeclaration::Member& member : declaration.members) {
    if (member.value) {
      const CodePtr value = Convert(BindConstant(*member.value, member.name), type, member.name);
      next = ConstantValue(*value).integer();
    }
    Variable& constant =
        Declare(member.at, declaration.name + "." + member.name, type, Variable::Where::Constant);
    constant.value = Value::Integer(static_cast<std::int32_t>(next++));
  }
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
      bound.defaultValue = ConstantValue(*initial);
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
  if (stops_ != nullptr && block.empty() && !loops_.empty()) stops_->AddIdleTo(into);
  for (const StatementPtr& statement : block) {
    Collecting([&] { BindStatement(into, *statement); }, statement->DeclaredNames());
  }
}

int Binder::FindLoop(std::string_view word) const {
  // NOLINTNEXTLINE(modernize-loop-convert): clang 14 knows no reversed view of this library
  for (auto loop = loops_.rbegin(); loop != loops_.rend(); ++loop) {
    if (word == "loop" || word == loop->word) return loop->number;
  }
  return 0;
}

}  // namespace hostrun
