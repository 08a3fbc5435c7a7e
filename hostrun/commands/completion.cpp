// hostrun/commands/completion.cpp - what the beginning of a word may become.
#include "hostrun/commands/completion.h"

#include <iterator>
#include <set>
#include <string_view>

#include "hostrun/host/registry.h"
#include "hostrun/host/suggest.h"
#include "hostrun/host/text.h"

namespace hostrun {
namespace {

constexpr std::string_view kKeywords[] = {
    "And",  "As",    "ByRef",  "Case",  "Catch", "Const",  "Continue", "Dim",     "Do",   "DownTo",
    "Each", "Else",  "ElseIf", "End",   "Enum",  "Exit",   "False",    "Finally", "For",  "Function",
    "If",   "In",    "Is",     "IsA",   "Loop",  "Mod",    "New",      "Next",    "Nil",  "Not",
    "Or",   "Print", "Quit",   "Raise", "ReDim", "Return", "Select",   "Static",  "Step", "Sub",
    "Then", "To",    "True",   "Try",   "Until", "Var",    "Wend",     "While",   "Xor"};

void AddMembers(std::set<std::string>& names, const Class& cls, bool shared) {
  for (const std::string& name : MemberNamesOf(cls, shared)) names.insert(name);
}

}  // namespace

std::vector<std::string> CompleteWord(const Binder& binder, const std::string& beginning) {
  std::set<std::string> names;
  const std::size_t dot = beginning.rfind('.');
  const std::string owner = dot == std::string::npos ? "" : beginning.substr(0, dot);
  if (dot == std::string::npos) {
    names.insert(std::begin(kKeywords), std::end(kKeywords));
    for (const std::string& name : ClassNames()) names.insert(name);
    for (const Method& function : TheRegistry().functions()) names.insert(function.signature.name);
    for (const std::string& name : binder.Names()) names.insert(name);
  } else if (const Type* const type = binder.TypeOfName(owner); type != nullptr) {
    if (type->kind == Kind::Object) AddMembers(names, *type->cls, false);
  } else if (const Class* const cls = TheRegistry().FindClass(owner); cls != nullptr) {
    AddMembers(names, *cls, true);
  }
  const std::string prefix = dot == std::string::npos ? "" : owner + ".";
  std::vector<std::string> found;
  for (const std::string& name : names) {
    const std::string whole = prefix + name;
    if (SameName(whole.substr(0, beginning.size()), beginning)) found.push_back(whole);
  }
  return found;
}

}  // namespace hostrun
