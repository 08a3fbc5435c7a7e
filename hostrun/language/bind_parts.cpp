// hostrun/language/bind_parts.cpp - settles a program that comes in parts.
#include "hostrun/host/text.h"
#include "hostrun/language/binder.h"

namespace hostrun {

// Puts back what a part has changed, unless it was kept.
struct Binder::Snapshot {
  explicit Snapshot(Binder& b)
      : binder(b),
        scope(b.scopes_.front()),
        routinesByName(b.routinesByName_),
        routines(b.program_.routines.size()),
        globals(b.program_.globals.size()) {}
  Snapshot(const Snapshot&) = delete;
  Snapshot& operator=(const Snapshot&) = delete;
  ~Snapshot() {
    binder.loops_.clear();
    binder.routine_ = nullptr;
    if (kept) return;
    binder.scopes_.front() = std::move(scope);
    binder.routinesByName_ = std::move(routinesByName);
    binder.program_.routines.resize(routines);
    binder.program_.globals.resize(globals);
  }

  Binder& binder;
  Scope scope;
  std::multimap<std::string, Routine*> routinesByName;
  std::size_t routines;
  std::size_t globals;
  bool kept = false;
};

void Binder::ForgetEnumeration(const std::string& lower) {
  std::erase_if(scopes_.front(), [&lower](const auto& known) {
    return known.first == lower || known.first.starts_with(lower + ".");
  });
}

StepBlock Binder::BindPart(const ProgramText& text) {
  Snapshot before(*this);
  for (const EnumDeclaration& declaration : text.enums) ForgetEnumeration(LowerName(declaration.name));
  for (const EnumDeclaration& declaration : text.enums) DeclareEnumeration(declaration);
  for (const RoutineDeclaration& routine : text.routines) routinesByName_.erase(LowerName(routine.name));
  for (const RoutineDeclaration& routine : text.routines) DeclareRoutine(routine);
  StepBlock body;
  for (const StatementPtr& statement : text.body) {
    for (const std::string& name : statement->DeclaredNames()) {
      const auto declared = scopes_.front().find(LowerName(name));
      // Within one part each name stands for one thing.
      const bool earlier = declared != scopes_.front().end() && before.scope.contains(declared->first) &&
                           before.scope.at(declared->first).slot == declared->second.slot;
      if (earlier) scopes_.front().erase(declared);
    }
    statement->Bind(*this, body);
  }
  for (std::size_t i = 0; i < text.routines.size(); ++i) {
    BindRoutine(text.routines[i], *program_.routines[before.routines + i]);
  }
  before.kept = true;
  return body;
}

CodePtr Binder::BindPart(const Expression& expression) {
  Snapshot before(*this);
  CodePtr code = BindExpression(expression);
  before.kept = true;
  return code;
}

const Type* Binder::TypeOfName(const std::string& name) const {
  const Variable* const variable = FindVariable(name);
  return variable == nullptr ? nullptr : variable->type;
}

std::vector<std::string> Binder::Names() const {
  std::vector<std::string> names;
  for (const auto& [name, variable] : scopes_.front()) names.push_back(name);
  for (const auto& [name, routine] : routinesByName_) names.push_back(routine->signature.name);
  return names;
}

}  // namespace hostrun
