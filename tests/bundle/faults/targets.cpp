// tests/bundle/faults/targets.cpp - every function of the bundle that a host can call, read from its
// declarations.
#include "tests/bundle/faults/targets.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "tests/bundle/scripted/host.h"

namespace faults {
namespace {

using scripted::RegisteredClass;

std::string Lowered(std::string_view text) {
  std::string lowered(text);
  std::ranges::transform(lowered, lowered.begin(),
                         [](unsigned char character) { return static_cast<char>(std::tolower(character)); });
  return lowered;
}

std::string Trimmed(std::string_view text) {
  const std::size_t start = text.find_first_not_of(' ');
  if (start == std::string_view::npos) return {};
  return std::string(text.substr(start, text.find_last_not_of(' ') - start + 1));
}

[[noreturn]] void Unknown(const char* what, std::string_view text) {
  std::fprintf(stderr, "wanted a known %s in a declaration, found \"%.*s\"\n", what,
               static_cast<int>(text.size()), text.data());
  std::exit(2);
}

Kind KindOf(const std::string& type) {
  if (type == "nscolorqvx") return Kind::kColor;
  if (type == "nscolorlistqvx") return Kind::kColorList;
  if (type == "nscolorspaceqvx") return Kind::kColorSpace;
  if (type == "variant") return Kind::kVariant;
  if (type == "string") return Kind::kString;
  if (type == "memoryblock") return Kind::kBlock;
  if (type == "folderitem") return Kind::kItem;
  if (type == "integer") return Kind::kInteger;
  if (type == "double") return Kind::kDouble;
  Unknown("parameter type", type);
}

Result ResultOf(const std::string& type) {
  if (type.empty()) return Result::kNothing;
  if (type == "integer" || type == "color") return Result::kInteger;
  if (type == "double") return Result::kDouble;
  if (type == "boolean") return Result::kBoolean;
  if (type == "string") return Result::kString;
  if (type == "memoryblock") return Result::kBlock;
  if (type == "double()") return Result::kNumbers;
  if (type.ends_with("qvx()")) return Result::kObjects;
  if (type.ends_with("qvx") || type == "variant") return Result::kObject;
  Unknown("result type", type);
}

// One parameter: "[byref|paramarray] name[()] as type[=default]".
Parameter ParseParameter(std::string_view text) {
  const std::size_t as = text.find(" as ");
  std::string name = Trimmed(text.substr(0, as));
  std::string type = Lowered(Trimmed(text.substr(as + 4)));
  type = type.substr(0, type.find('='));
  if (name.starts_with("byref ")) return {Kind::kOutput, name.substr(6)};
  if (name.starts_with("paramarray ")) return {Kind::kNumbers, name.substr(11)};
  if (name.ends_with("()")) return {Kind::kNumbers, name.substr(0, name.size() - 2)};
  return {KindOf(type), name};
}

void ParseDeclaration(std::string_view declaration, Target& target) {
  std::string_view rest = declaration;
  const std::size_t nameEnd = declaration.find_first_of("( ");
  target.name = declaration.substr(0, nameEnd);
  if (nameEnd != std::string_view::npos && declaration[nameEnd] == '(') {
    // The list ends at the last parenthesis that is not an array's.
    std::size_t close = declaration.rfind(')');
    if (declaration[close - 1] == '(' && close == declaration.size() - 1)
      close = declaration.rfind(')', close - 1);
    std::string_view list = declaration.substr(nameEnd + 1, close - nameEnd - 1);
    while (!list.empty()) {
      const std::size_t comma = list.find(',');
      target.parameters.push_back(ParseParameter(list.substr(0, comma)));
      list = comma == std::string_view::npos ? std::string_view() : list.substr(comma + 1);
    }
    rest = declaration.substr(close + 1);
  } else {
    rest = nameEnd == std::string_view::npos ? std::string_view() : declaration.substr(nameEnd);
  }
  const std::size_t as = rest.find("as ");
  target.result =
      ResultOf(as == std::string_view::npos ? std::string() : Lowered(Trimmed(rest.substr(as + 3))));
}

void AddClass(const RegisteredClass& registered, std::vector<Target>& targets) {
  const std::string className = reinterpret_cast<const char*>(registered.words[1]);
  const Parameter self{KindOf(Lowered(className)), "self"};
  const auto add = [&](Role role, const RegisteredClass::Entry& entry) {
    Target target;
    target.role = role;
    target.className = className;
    target.declaration = className + "." + entry.declaration;
    target.function = entry.function;
    if (role != Role::kSharedMethod) target.parameters.push_back(self);
    if (role == Role::kProperty) {
      target.name = entry.declaration;
      target.parameters.push_back({Kind::kParameter, "parameter"});
      target.result = ResultOf(Lowered(reinterpret_cast<const char*>(entry.words[2])));
    } else {
      ParseDeclaration(entry.declaration, target);
    }
    targets.push_back(std::move(target));
  };
  for (const auto& entry : registered.properties) add(Role::kProperty, entry);
  for (const auto& entry : registered.methods) add(Role::kMethod, entry);
  for (const auto& entry : registered.sharedMethods) add(Role::kSharedMethod, entry);

  Target constructor{Role::kConstructor,
                     className,
                     "constructor",
                     className + " constructor",
                     reinterpret_cast<void*>(registered.live->constructor),
                     {self},
                     Result::kNothing};
  Target destructor{Role::kDestructor,
                    className,
                    "destructor",
                    className + " destructor",
                    reinterpret_cast<void*>(registered.live->destructor),
                    {self},
                    Result::kNothing};
  targets.push_back(std::move(constructor));
  targets.push_back(std::move(destructor));
}

}  // namespace

std::vector<Target> AllTargets() {
  std::vector<Target> targets;
  for (const RegisteredClass& each : scripted::TheHost().registered) AddClass(each, targets);
  Target entry;
  entry.name = entry.declaration = "REALPluginMain";
  targets.push_back(std::move(entry));
  return targets;
}

}  // namespace faults
