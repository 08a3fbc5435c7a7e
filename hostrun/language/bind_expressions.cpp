// hostrun/language/bind_expressions.cpp - settles expressions.
#include <algorithm>
#include <iterator>

#include "hostrun/host/registry.h"
#include "hostrun/host/suggest.h"
#include "hostrun/host/text.h"
#include "hostrun/language/binder.h"
#include "hostrun/language/code_conversions.h"
#include "hostrun/language/code_operators.h"
#include "hostrun/language/code_values.h"

namespace hostrun {

// Inner scopes hide outer ones.
const Binder::Variable* Binder::FindVariable(const std::string& name) const {
  const std::string lower = LowerName(name);
  // NOLINTNEXTLINE(modernize-loop-convert): clang 14 knows no reversed view of this library
  for (auto scope = scopes_.rbegin(); scope != scopes_.rend(); ++scope) {
    const auto found = scope->find(lower);
    if (found != scope->end()) return &found->second;
  }
  if (refused_.contains(lower)) throw Consequence();
  return nullptr;
}

std::vector<std::string> Binder::TypeNames() const {
  std::vector<std::string> names = ClassNames();
  for (const Kind kind : {Kind::Boolean, Kind::Integer, Kind::Int64, Kind::Single, Kind::Double, Kind::Color,
                          Kind::String, Kind::Variant}) {
    names.push_back(TypeOf(kind)->name);
  }
  return names;
}

std::vector<std::string> Binder::KnownNames() const {
  std::vector<std::string> names;
  for (const Scope& scope : scopes_) {
    for (const auto& [lower, variable] : scope) names.push_back(variable.name);
  }
  for (const auto& [lower, routine] : routinesByName_) names.push_back(routine->signature.name);
  for (const Method& function : TheRegistry().functions()) names.push_back(function.signature.name);
  for (const std::string& name : ClassNames()) names.push_back(name);
  return names;
}

void Binder::FailUnknown(Position at, const std::string& name, const std::string& message,
                         std::vector<std::string> names) {
  if (collecting_) refused_.insert(LowerName(name));
  std::ranges::move(KnownNames(), std::back_inserter(names));
  Fail(at, message + DidYouMean(name, names));
}

Binder::Variable& Binder::Declare(Position at, const std::string& name, const Type* type,
                                  Variable::Where where) {
  const auto [place, added] =
      scopes_.back().try_emplace(LowerName(name), Variable{where, type, 0, {}, name, routine_, CountStops()});
  if (!added) Fail(at, "wanted a new name, found " + name + ", which is declared in this block already");
  return place->second;
}

Binder::Variable& Binder::DeclareVariable(Position at, const std::string& name, const Type* type) {
  const bool local = routine_ != nullptr;
  Variable& variable = Declare(at, name, type, local ? Variable::Where::Local : Variable::Where::Global);
  std::vector<const Type*>& slots = local ? routine_->locals : program_.globals;
  variable.slot = slots.size();
  slots.push_back(type);
  return variable;
}

std::size_t Binder::NewGlobal(const Type* type) {
  program_.globals.push_back(type);
  return program_.globals.size() - 1;
}

Binder::Variable& Binder::DeclareStatic(Position at, const std::string& name, const Type* type) {
  Variable& variable = Declare(at, name, type, Variable::Where::Static);
  variable.slot = NewGlobal(type);
  return variable;
}

void Binder::DeclareConstant(Position at, const std::string& name, const Code& value) {
  Variable& constant = Declare(at, name, value.type, Variable::Where::Constant);
  constant.value = ConstantValue(value);
}

CodePtr Binder::MakeVariable(Position at, const Variable& variable) {
  if (variable.where != Variable::Where::Constant) return MakePlace(at, variable);
  return std::make_unique<ConstantCode>(at, variable.type, variable.value);
}

PlacePtr Binder::MakePlace(Position at, const Variable& variable) {
  switch (variable.where) {
    case Variable::Where::Local:
      return std::make_unique<LocalVariable>(at, variable.type, variable.slot);
    case Variable::Where::Global:
    case Variable::Where::Static:
      return std::make_unique<GlobalVariable>(at, variable.type, variable.slot);
    case Variable::Where::Reference:
      return std::make_unique<ReferenceParameter>(at, variable.type, variable.slot);
    case Variable::Where::Constant:
    case Variable::Where::Enumeration:
      break;
  }
  return nullptr;
}

Class& Binder::WantClass(Position at, const std::string& name) const {
  Class* const cls = name.starts_with('_') ? nullptr : TheRegistry().FindClass(name);
  if (cls == nullptr) {
    Fail(at, "wanted a class, found " + name + ", which is none that this host knows" +
                 DidYouMean(name, ClassNames()));
  }
  return *cls;
}

const Type* Binder::TypeFor(const TypeName& name) const {
  const Variable* const variable = FindVariable(name.name);
  if (variable != nullptr && variable->where == Variable::Where::Enumeration) {
    return name.array ? ArrayOf(variable->type) : variable->type;
  }
  const Type* type = TypeNamed(name.name);
  if (type->kind == Kind::Object) {
    if (name.name.starts_with('_') || !type->cls->defined) {
      Fail(name.at, "wanted a type, found " + name.name + ", which is none that this host knows" +
                        DidYouMean(name.name, TypeNames()));
    }
  }
  return name.array ? ArrayOf(type) : type;
}

CodePtr Binder::BindExpression(const Expression& expression) {
  switch (expression.kind) {
    case Expression::Kind::Literal:
      return std::make_unique<ConstantCode>(expression.at, TypeOf(expression.literal.kind()),
                                            expression.literal);
    case Expression::Kind::Name:
      return BindName(expression);
    case Expression::Kind::Member:
      return BindMember(expression, nullptr);
    case Expression::Kind::Call:
      return BindCall(expression);
    case Expression::Kind::Unary: {
      CodePtr operand = BindValue(*expression.children[0]);
      const std::string found = operand->type->name;
      CodePtr made = MakeUnary(expression.at, expression.name, std::move(operand));
      if (!made) Fail(expression.at, "'" + expression.name + "' does not work on " + found);
      return made;
    }
    case Expression::Kind::Binary:
      return BindBinary(expression);
    case Expression::Kind::IsA: {
      CodePtr object = BindValue(*expression.children[0]);
      if (!object->type->IsCounted() || object->type->kind == Kind::String) {
        Fail(expression.at, "wanted an object before IsA, found " + object->type->name);
      }
      return std::make_unique<InstanceTest>(expression.at, std::move(object),
                                            WantClass(expression.at, expression.name));
    }
    case Expression::Kind::New:
      return BindNew(expression);
  }
  return nullptr;
}

CodePtr Binder::BindValue(const Expression& expression) {
  CodePtr code = BindExpression(expression);
  if (code->type->kind == Kind::Nothing) Fail(expression.at, "wanted a value, found a call that gives none");
  return code;
}

// A name alone: a variable, or a call without arguments.
CodePtr Binder::BindName(const Expression& name) {
  if (const Variable* const variable = FindVariable(name.name)) {
    if (variable->where != Variable::Where::Enumeration) return MakeVariable(name.at, *variable);
    Fail(name.at, "wanted a value, found the enumeration " + name.name + "; name one of its members");
  }
  const std::string lower = LowerName(name.name);
  if (routinesByName_.contains(lower) || !TheRegistry().FunctionsNamed(lower).empty())
    return BindNamedCall(name, {});
  if (TheRegistry().FindClass(name.name) != nullptr) {
    Fail(name.at, "wanted a value, found the class " + name.name + "; name one of its members");
  }
  FailUnknown(name.at, name.name,
              "wanted a variable, a function or a class, found " + name.name + ", which is not declared");
}

CodePtr Binder::BindBinary(const Expression& binary) {
  CodePtr left = BindValue(*binary.children[0]);
  CodePtr right = BindValue(*binary.children[1]);
  const std::string l = left->type->name;
  const std::string r = right->type->name;
  CodePtr made = MakeBinary(binary.at, binary.name, std::move(left), std::move(right));
  if (!made) FailOperator(binary.at, binary.name, l, r);
  return made;
}

void Binder::FailOperator(Position at, const std::string& op, const std::string& left,
                          const std::string& right) {
  std::string message = "'" + op + "' does not work on " + left + " and " + right;
  const bool text = left == "String" || right == "String";
  if (op.starts_with('&') || (op.starts_with('+') && text)) message += "; Str(...) makes text of a number";
  Fail(at, message);
}

CodePtr Binder::Convert(CodePtr code, const Type* type, const std::string& what) {
  if (ConversionCost(*code, *type) < 0) {
    std::string message = what + " wants " + type->name + ", found " + code->type->name;
    const bool narrowing =
        type->kind == Kind::Object && code->type->kind == Kind::Object && type->cls->IsA(*code->type->cls);
    if (narrowing) message += "; " + type->name + "(...) makes sure of it";
    Fail(code->at, message);
  }
  return MakeConversion(std::move(code), type);
}

CodePtr Binder::BindConverted(const Expression& expression, const Type* type, const std::string& what) {
  CodePtr code = BindValue(expression);
  code->at = expression.at;
  return Convert(std::move(code), type, what);
}

CodePtr Binder::BindCondition(const Expression& expression) {
  return BindConverted(expression, TypeOf(Kind::Boolean), "a condition");
}

CodePtr Binder::BindConstant(const Expression& expression, const std::string& what) {
  CodePtr code = BindValue(expression);
  if (!code->IsConstant())
    Fail(expression.at, what + " wants a constant, found a value that only running gives");
  return code;
}

PlacePtr Binder::BindPlace(const Expression& expression) {
  if (expression.kind == Expression::Kind::Call) {
    PlacePtr setter = BindAssignsCall(expression);
    if (setter) return setter;
  }
  if (expression.kind == Expression::Kind::Name) {
    const Variable* const variable = FindVariable(expression.name);
    if (ClassOf(expression) != nullptr)
      Fail(expression.at, "wanted a variable before '=', found the class " + expression.name);
    if (variable == nullptr) {
      FailUnknown(
          expression.at, expression.name,
          "wanted a variable before '=', found " + expression.name + ", which is not declared as one");
    }
    if (variable->where == Variable::Where::Constant || variable->where == Variable::Where::Enumeration) {
      const bool constant = variable->where == Variable::Where::Constant;
      Fail(expression.at, std::string("wanted a variable before '=', found the ") +
                              (constant ? "constant " : "enumeration ") + expression.name);
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
  PlacePtr place = ToPlace(BindExpression(expression));
  if (!place) {
    Fail(expression.at, "wanted a variable, an element or a property before '=', found a value");
  }
  return place;
}

}  // namespace hostrun
