// hostrun/language/bind_calls.cpp - settles calls: which method or routine, and how each argument is passed.
#include <algorithm>

#include "hostrun/host/registry.h"
#include "hostrun/host/suggest.h"
#include "hostrun/host/text.h"
#include "hostrun/language/binder.h"
#include "hostrun/language/code_arrays.h"
#include "hostrun/language/code_calls.h"
#include "hostrun/language/code_conversions.h"
#include "hostrun/language/code_operators.h"
#include "hostrun/language/code_values.h"
#include "hostrun/language/statements/statements.h"

namespace hostrun {

// A method of a class, a global function or a routine of the program.
struct Binder::Callee {
  const Signature* signature;
  const Method* method;
  const Routine* routine;
};

namespace {

// Bound, not converted yet.
using Arguments = std::vector<CodePtr>;

// "no", "2", "1 to 3", "1 or more": how many arguments it takes.
std::string CountText(const Signature& signature) {
  const std::size_t least = signature.RequiredCount();
  const std::size_t most = signature.parameters.size();
  if (signature.TakesAnyCount()) return std::to_string(least) + " or more";
  if (least == most) return most == 0 ? "no" : std::to_string(most);
  return std::to_string(least) + " to " + std::to_string(most);
}

std::string Plural(const std::string& count) {
  return count + (count == "1" ? " argument" : " arguments");
}

bool FitsCount(const Signature& signature, std::size_t count) {
  if (count < signature.RequiredCount()) return false;
  return signature.TakesAnyCount() || count <= signature.parameters.size();
}

// What passing it costs; -1: it can't be. By reference only a place of exactly that type can.
int ArgumentCost(const Code& argument, const Parameter& parameter) {
  if (!parameter.byref) return ConversionCost(argument, *parameter.type);
  return argument.type == parameter.type && dynamic_cast<const Place*>(&argument) != nullptr ? 0 : -1;
}

// The sum over all arguments, or -1 when one does not fit. A parameter array costs one more than none.
int CallCost(const Signature& signature, const Arguments& arguments) {
  if (!FitsCount(signature, arguments.size())) return -1;
  int sum = 0;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const bool packed = signature.TakesAnyCount() && i + 1 >= signature.parameters.size();
    const int cost = packed ? ConversionCost(*arguments[i], *signature.parameters.back().type->element)
                            : ArgumentCost(*arguments[i], signature.parameters[i]);
    if (cost < 0) return -1;
    sum += cost;
  }
  return signature.TakesAnyCount() ? sum + 1 : sum;
}

// "(Integer, String)", for errors.
std::string TypesOf(const Arguments& arguments) {
  std::string text = "(";
  for (const CodePtr& argument : arguments) {
    if (text.size() > 1) text += ", ";
    text += argument->type->name;
  }
  return text + ")";
}

// The arguments as the signature wants them: converted, packed, defaults filled in.
std::vector<Argument> Settle(Position at, const Signature& signature, Arguments arguments) {
  std::vector<Argument> settled;
  for (std::size_t i = 0; i < signature.parameters.size(); ++i) {
    const Parameter& parameter = signature.parameters[i];
    if (parameter.paramArray) {
      Arguments rest(std::make_move_iterator(arguments.begin() +
                                             static_cast<std::ptrdiff_t>(std::min(i, arguments.size()))),
                     std::make_move_iterator(arguments.end()));
      auto packed = std::make_unique<ArrayLiteral>(at, std::move(rest));
      packed->Become(parameter.type->element);
      settled.push_back({parameter.type, std::move(packed), nullptr});
    } else if (i >= arguments.size()) {
      settled.push_back({parameter.type,
                         std::make_unique<ConstantCode>(at, parameter.type, *parameter.defaultValue),
                         nullptr});
    } else if (parameter.byref) {
      settled.push_back({parameter.type, nullptr, ToPlace(std::move(arguments[i]))});
    } else {
      settled.push_back({parameter.type, MakeConversion(std::move(arguments[i]), parameter.type), nullptr});
    }
  }
  return settled;
}

// Which argument does not fit, and why; `at` becomes its position. Empty when all do.
std::string WhyNot(const Signature& signature, const Arguments& arguments, Position& at) {
  if (!FitsCount(signature, arguments.size())) {
    return signature.name + " wants " + Plural(CountText(signature)) + ", found " +
           std::to_string(arguments.size()) + ": " + signature.Text();
  }
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const bool packed = signature.TakesAnyCount() && i + 1 >= signature.parameters.size();
    const Parameter& parameter = packed ? signature.parameters.back() : signature.parameters[i];
    const Type& wanted = packed ? *parameter.type->element : *parameter.type;
    if (packed ? ConversionCost(*arguments[i], wanted) >= 0 : ArgumentCost(*arguments[i], parameter) >= 0)
      continue;
    at = arguments[i]->at;
    std::string text =
        "argument " + std::to_string(i + 1) + " (" + parameter.name + ") of " + signature.name + " wants ";
    if (parameter.byref) text += "a variable of type ";
    text += wanted.name + ", found ";
    if (parameter.byref && arguments[i]->type == parameter.type) return text + "a value that is no variable";
    return text + arguments[i]->type->name;
  }
  return {};
}

// What stands in the brackets of a call or a New.
std::vector<const Expression*> ArgumentsOf(const Expression& call) {
  std::vector<const Expression*> arguments;
  for (std::size_t i = call.kind == Expression::Kind::Call ? 1 : 0; i < call.children.size(); ++i) {
    arguments.push_back(call.children[i].get());
  }
  return arguments;
}

}  // namespace

std::vector<CodePtr> Binder::BindArguments(const std::vector<const Expression*>& arguments) {
  std::vector<CodePtr> bound;
  for (const Expression* const argument : arguments) {
    bound.push_back(BindValue(*argument));
    bound.back()->at = argument->at;
  }
  return bound;
}

Class* Binder::ClassOf(const Expression& expression) const {
  if (expression.kind != Expression::Kind::Name || FindVariable(expression.name) != nullptr) return nullptr;
  return TheRegistry().FindClass(expression.name);
}

CodePtr Binder::CallOneOf(const Expression& name, const std::vector<Callee>& candidates, CodePtr selfCode,
                          std::vector<CodePtr> arguments) {
  const Callee* best = nullptr;
  int bestCost = 0;
  for (const Callee& candidate : candidates) {
    const int cost = CallCost(*candidate.signature, arguments);
    if (cost >= 0 && (best == nullptr || cost < bestCost)) {
      best = &candidate;
      bestCost = cost;
    }
  }
  if (best == nullptr) {
    Position at = name.at;
    const bool oneFits = std::count_if(candidates.begin(), candidates.end(), [&](const Callee& candidate) {
                           return FitsCount(*candidate.signature, arguments.size());
                         }) == 1;
    for (const Callee& candidate : candidates) {
      if (candidates.size() == 1 || (oneFits && FitsCount(*candidate.signature, arguments.size()))) {
        const std::string why = WhyNot(*candidate.signature, arguments, at);
        Fail(at, why);
      }
    }
    std::string forms;
    for (const Callee& candidate : candidates)
      forms += (forms.empty() ? "" : "; ") + candidate.signature->Text();
    Fail(at, "no form of " + name.name + " takes " + TypesOf(arguments) + "; there are: " + forms);
  }
  std::vector<Argument> settled = Settle(name.at, *best->signature, std::move(arguments));
  const Type& result = *best->signature->result;
  const Type& held = result.kind == Kind::Array ? *result.element : result;
  if (held.kind == Kind::Object && !held.cls->defined) {
    Fail(name.at, name.name + " gives " + result.name + ", a class that this host does not have");
  }
  if (best->routine != nullptr)
    return std::make_unique<UserCall>(name.at, *best->routine, std::move(settled));
  return std::make_unique<NativeCall>(name.at, *best->method, std::move(selfCode), std::move(settled));
}

CodePtr Binder::IndexInto(Position at, CodePtr array, const std::vector<const Expression*>& arguments) {
  if (arguments.size() != 1) {
    Fail(at, "wanted one index, found " + std::to_string(arguments.size()) + ": arrays have one dimension");
  }
  return std::make_unique<Element>(at, std::move(array),
                                   BindConverted(*arguments[0], TypeOf(Kind::Integer), "an index"));
}

// Without a form that takes the arguments, but with one that takes none and gives an array, they are its
// index: object.Components(0).
CodePtr Binder::CallOrIndex(const Expression& name, const std::vector<Callee>& candidates, CodePtr selfCode,
                            const std::vector<const Expression*>* arguments) {
  if (arguments != nullptr && arguments->size() == 1) {
    const bool takesOne = std::any_of(candidates.begin(), candidates.end(), [](const Callee& candidate) {
      return FitsCount(*candidate.signature, 1);
    });
    const auto plain = std::find_if(candidates.begin(), candidates.end(), [](const Callee& candidate) {
      return FitsCount(*candidate.signature, 0) && candidate.signature->result->kind == Kind::Array;
    });
    if (!takesOne && plain != candidates.end()) {
      return IndexInto(name.at, CallOneOf(name, {*plain}, std::move(selfCode), {}), *arguments);
    }
  }
  Arguments bound = arguments == nullptr ? Arguments() : BindArguments(*arguments);
  return CallOneOf(name, candidates, std::move(selfCode), std::move(bound));
}

CodePtr Binder::BindNamedCall(const Expression& name, const std::vector<const Expression*>& arguments) {
  std::vector<Callee> candidates;
  const std::string lower = LowerName(name.name);
  const auto [first, last] = routinesByName_.equal_range(lower);
  for (auto at = first; at != last; ++at) candidates.push_back({&at->second->signature, nullptr, at->second});
  if (candidates.empty()) {
    for (const Method* method : TheRegistry().FunctionsNamed(lower)) {
      candidates.push_back({&method->signature, method, nullptr});
    }
  }
  return CallOrIndex(name, candidates, nullptr, &arguments);
}

CodePtr Binder::BindCall(const Expression& call) {
  const Expression& callee = *call.children[0];
  const std::vector<const Expression*> arguments = ArgumentsOf(call);
  if (callee.kind == Expression::Kind::Member) return BindMember(callee, &arguments);
  if (callee.kind != Expression::Kind::Name) {
    CodePtr array = BindValue(callee);
    if (array->type->kind != Kind::Array)
      Fail(call.at, "wanted an array before '(', found " + array->type->name);
    return IndexInto(call.at, std::move(array), arguments);
  }
  const std::string lower = LowerName(callee.name);
  if (const Variable* const variable = FindVariable(callee.name)) {
    if (variable->type->kind != Kind::Array) {
      Fail(callee.at, "wanted an array or a function before '(', found " + callee.name +
                          ", a variable of type " + variable->type->name);
    }
    return IndexInto(callee.at, MakeVariable(callee.at, *variable), arguments);
  }
  if (routinesByName_.contains(lower)) return BindNamedCall(callee, arguments);
  if (lower == "if") return BindChoice(callee, arguments);
  if (lower == "array") return std::make_unique<ArrayLiteral>(callee.at, BindArguments(arguments));
  if (lower == "ubound" && arguments.size() == 1) {
    CodePtr array = BindValue(*arguments[0]);
    if (array->type->kind != Kind::Array)
      Fail(array->at, "UBound wants an array, found " + array->type->name);
    return std::make_unique<ArrayCall>(callee.at, *FindArrayMember("ubound"), std::move(array),
                                       std::vector<CodePtr>());
  }
  if (!TheRegistry().FunctionsNamed(lower).empty()) return BindNamedCall(callee, arguments);

  // Type(value): a conversion or a cast.
  const Type* const type = TypeNamed(callee.name);
  const bool known = type->kind != Kind::Object || (type->cls->defined && !callee.name.starts_with('_'));
  if (!known) {
    const char* const wanted =
        call.bare ? "a statement or a Sub" : "a function, an array or a class before '('";
    FailUnknown(callee.at, callee.name,
                std::string("wanted ") + wanted + ", found " + callee.name + ", which is not declared",
                call.bare ? StatementWords() : std::vector<std::string>());
  }
  if (arguments.size() != 1)
    Fail(callee.at,
         "wanted one value to see as " + type->name + ", found " + std::to_string(arguments.size()));
  CodePtr value = BindValue(*arguments[0]);
  const std::string found = value->type->name;
  CodePtr cast = MakeCast(callee.at, std::move(value), type);
  if (!cast) Fail(callee.at, "wanted a value that can be " + type->name + ", found " + found);
  return cast;
}

CodePtr Binder::BindMember(const Expression& member, const std::vector<const Expression*>* arguments) {
  const Expression& object = *member.children[0];
  if (Class* const cls = ClassOf(object)) return BindSharedMember(member, *cls, arguments);
  const Variable* const named = object.kind == Expression::Kind::Name ? FindVariable(object.name) : nullptr;
  if (named != nullptr && named->where == Variable::Where::Enumeration) {
    if (arguments != nullptr) Fail(member.at, member.name + " is a constant and takes no arguments");
    return BindEnumerationMember(member);
  }
  CodePtr code = BindValue(object);
  switch (code->type->kind) {
    case Kind::Object:
      return BindInstanceMember(member, std::move(code), arguments);
    case Kind::Array:
      return BindArrayMember(member, std::move(code), arguments);
    case Kind::Color:
      if (arguments == nullptr || arguments->empty()) {
        CodePtr part = MakeColorMember(member.at, member.name, std::move(code));
        if (part) return part;
      }
      Fail(member.at,
           "wanted Red, Green, Blue, Alpha, Hue, Saturation or Value of a Color, found " + member.name);
    case Kind::String:
      return BindTextMember(member, std::move(code), arguments);
    case Kind::Variant:
      Fail(member.at,
           "wanted an object of a known class, found a Variant; write Class(value)." + member.name);
    default:
      Fail(member.at, "wanted an object before '." + member.name + "', found " + code->type->name);
  }
}

CodePtr Binder::BindInstanceMember(const Expression& member, CodePtr object,
                                   const std::vector<const Expression*>* arguments) {
  const Class& cls = *object->type->cls;
  if (const Property* const property = cls.PropertyNamed(member.name, false)) {
    CodePtr read = std::make_unique<PropertyAccess>(member.at, *property, std::move(object));
    if (arguments == nullptr || arguments->empty()) return read;
    if (read->type->kind != Kind::Array)
      Fail(member.at, member.name + " of " + cls.name + " is a property and takes no arguments");
    return IndexInto(member.at, std::move(read), *arguments);
  }
  std::vector<Callee> candidates;
  for (const Method* method : cls.MethodsNamed(member.name, false)) {
    if (!method->signature.Assigns()) candidates.push_back({&method->signature, method, nullptr});
  }
  if (!candidates.empty() && !SameName(member.name, "Constructor")) {
    return CallOrIndex(member, candidates, std::move(object), arguments);
  }
  if (cls.ConstantNamed(member.name) != nullptr || !cls.MethodsNamed(member.name, true).empty()) {
    Fail(member.at, member.name + " belongs to the class: write " + cls.name + "." + member.name);
  }
  Fail(member.at, "wanted a method or a property of " + cls.name + ", found " + member.name +
                      ", which it does not have" + DidYouMean(member.name, MemberNamesOf(cls, false)));
}

CodePtr Binder::BindSharedMember(const Expression& member, Class& cls,
                                 const std::vector<const Expression*>* arguments) {
  if (const Constant* const constant = cls.ConstantNamed(member.name)) {
    if (arguments != nullptr) Fail(member.at, member.name + " is a constant and takes no arguments");
    return std::make_unique<ConstantCode>(member.at, constant->type, constant->value);
  }
  if (const Property* const property = cls.PropertyNamed(member.name, true)) {
    return std::make_unique<PropertyAccess>(member.at, *property, nullptr);
  }
  std::vector<Callee> candidates;
  for (const Method* method : cls.MethodsNamed(member.name, true))
    candidates.push_back({&method->signature, method, nullptr});
  if (!candidates.empty()) return CallOrIndex(member, candidates, nullptr, arguments);
  if (cls.PropertyNamed(member.name, false) != nullptr || !cls.MethodsNamed(member.name, false).empty()) {
    Fail(member.at, member.name + " belongs to instances of " + cls.name + ": wanted an object before '.'");
  }
  Fail(member.at, "wanted a shared method or a constant of " + cls.name + ", found " + member.name +
                      ", which it does not have" + DidYouMean(member.name, MemberNamesOf(cls, true)));
}

std::vector<std::string> Binder::MembersOf(const std::string& enumeration) const {
  std::vector<std::string> names;
  const std::string prefix = LowerName(enumeration) + ".";
  for (const auto& [lower, variable] : scopes_.front()) {
    if (lower.starts_with(prefix)) names.push_back(variable.name.substr(prefix.size()));
  }
  return names;
}

CodePtr Binder::BindEnumerationMember(const Expression& member) {
  const std::string& enumeration = member.children[0]->name;
  const Variable* const constant = FindVariable(enumeration + "." + member.name);
  if (constant == nullptr) {
    Fail(member.at, "wanted a member of " + enumeration + ", found " + member.name +
                        ", which it does not have" + DidYouMean(member.name, MembersOf(enumeration)));
  }
  return MakeVariable(member.at, *constant);
}

CodePtr Binder::BindTextMember(const Expression& member, CodePtr text,
                               const std::vector<const Expression*>* arguments) {
  if (!SameName(member.name, "length") && !SameName(member.name, "count")) {
    Fail(member.at, "wanted Length or Count of a String, found " + member.name +
                        "; the functions of language.md take a text as their argument");
  }
  if (arguments != nullptr && !arguments->empty())
    Fail(member.at,
         member.name + " of a String wants no arguments, found " + std::to_string(arguments->size()));
  const Method& length = *TheRegistry().FunctionsNamed("len").front();
  Arguments only;
  only.push_back(std::move(text));
  return CallOneOf(member, {{&length.signature, &length, nullptr}}, nullptr, std::move(only));
}

CodePtr Binder::BindArrayMember(const Expression& member, CodePtr array,
                                const std::vector<const Expression*>* arguments) {
  const ArrayMember* const found = FindArrayMember(member.name);
  if (found == nullptr) {
    Fail(member.at, "wanted a member of an array, found " + member.name +
                        "; there are UBound, LastIndex, Count, Length, Append, Add, Insert, AddAt, Remove, "
                        "RemoveAt, RemoveAll, "
                        "IndexOf, Pop and Sort");
  }
  const Type& type = *array->type;
  const std::size_t given = arguments == nullptr ? 0 : arguments->size();
  if (given != found->arguments.size()) {
    Fail(member.at, member.name + " of an array wants " + Plural(std::to_string(found->arguments.size())) +
                        ", found " + std::to_string(given));
  }
  if (SameName(member.name, "sort") && !type.element->IsNumber() && type.element->kind != Kind::String) {
    Fail(member.at, "Sort wants an array of numbers or strings, found " + type.name);
  }
  std::vector<CodePtr> bound;
  for (std::size_t i = 0; i < given; ++i) {
    bound.push_back(BindConverted(*(*arguments)[i], found->ArgumentType(type, i),
                                  "argument " + std::to_string(i + 1) + " of " + member.name));
  }
  return std::make_unique<ArrayCall>(member.at, *found, std::move(array), std::move(bound));
}

// Of the two values the one that is not chosen is not evaluated.
CodePtr Binder::BindChoice(const Expression& at, const std::vector<const Expression*>& arguments) {
  if (arguments.size() != 3) {
    Fail(at.at,
         "If(...) wants a condition and two values, found " + Plural(std::to_string(arguments.size())));
  }
  CodePtr condition = BindCondition(*arguments[0]);
  CodePtr whenTrue = BindValue(*arguments[1]);
  CodePtr whenFalse = BindValue(*arguments[2]);
  const Type* type = CommonType(*whenTrue->type, *whenFalse->type);
  if (ConversionCost(*whenTrue, *type) < 0 || ConversionCost(*whenFalse, *type) < 0) {
    type = TypeOf(Kind::Variant);
  }
  return std::make_unique<Choice>(at.at, type, std::move(condition),
                                  MakeConversion(std::move(whenTrue), type),
                                  MakeConversion(std::move(whenFalse), type));
}

CodePtr Binder::BindNew(const Expression& made) {
  Class& cls = WantClass(made.at, made.name);
  Arguments arguments = BindArguments(ArgumentsOf(made));
  std::vector<Callee> candidates;
  for (const Method* method : cls.Constructors()) candidates.push_back({&method->signature, method, nullptr});
  const bool plain = std::none_of(candidates.begin(), candidates.end(),
                                  [](const Callee& candidate) { return FitsCount(*candidate.signature, 0); });
  if (arguments.empty() && plain)
    return std::make_unique<NewInstance>(made.at, cls, nullptr, std::vector<Argument>());
  if (candidates.empty())
    Fail(made.at, "New " + cls.name + " wants no arguments, found " + std::to_string(arguments.size()));
  const Callee* best = nullptr;
  int bestCost = 0;
  for (const Callee& candidate : candidates) {
    const int cost = CallCost(*candidate.signature, arguments);
    if (cost >= 0 && (best == nullptr || cost < bestCost)) best = &candidate, bestCost = cost;
  }
  if (best == nullptr) {
    std::string forms;
    for (const Callee& candidate : candidates)
      forms += (forms.empty() ? "" : "; ") + candidate.signature->Text();
    Fail(made.at, "no constructor of " + cls.name + " takes " + TypesOf(arguments) + "; there are: " + forms);
  }
  return std::make_unique<NewInstance>(made.at, cls, best->method,
                                       Settle(made.at, *best->signature, std::move(arguments)));
}

PlacePtr Binder::BindAssignsCall(const Expression& call) {
  const Expression& member = *call.children[0];
  if (member.kind != Expression::Kind::Member || ClassOf(*member.children[0]) != nullptr) return nullptr;
  CodePtr object = BindValue(*member.children[0]);
  if (object->type->kind != Kind::Object) return nullptr;
  const std::vector<const Expression*> arguments = ArgumentsOf(call);
  for (const Method* method : object->type->cls->MethodsNamed(member.name, false)) {
    const Signature& signature = method->signature;
    if (!signature.Assigns() || signature.parameters.size() != arguments.size() + 1) continue;
    std::vector<CodePtr> leading;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
      const Parameter& parameter = signature.parameters[i];
      leading.push_back(BindConverted(*arguments[i], parameter.type,
                                      "argument " + std::to_string(i + 1) + " of " + member.name));
    }
    return std::make_unique<PropertyAccess>(member.at, *method, std::move(object), std::move(leading));
  }
  return nullptr;
}

}  // namespace hostrun
