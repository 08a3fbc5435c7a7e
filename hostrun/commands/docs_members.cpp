// hostrun/commands/docs_members.cpp - joins registered members and their descriptions, and says what does not
// match.
#include "hostrun/commands/docs_members.h"

#include <algorithm>

#include "hostrun/host/functions.h"
#include "hostrun/host/registry.h"
#include "hostrun/host/text.h"

namespace hostrun {
namespace {

// The members of one class against its text.
class Comparison {
 public:
  Comparison(const Class& cls, const ClassText& text, const std::string& fileName,
             std::vector<std::string>& found)
      : cls_(cls), text_(text), fileName_(fileName), found_(found) {}

  void Compare() {
    for (const Member& member : MembersOf(cls_)) registered_[member.Key()] = 0;
    for (const GroupText& group : text_.groups) {
      for (const MemberText& member : group.members) Look(group, member);
    }
    for (const auto& [key, count] : registered_) {
      if (count == 0)
        found_.push_back(fileName_ + ": " + cls_.name + ": no description of the registered member " + key);
    }
  }

 private:
  void Look(const GroupText& group, const MemberText& member) {
    const std::string place = fileName_ + ":" + std::to_string(member.line) + ": " + cls_.name + ": ";
    const auto at = registered_.find(member.declaration);
    if (at == registered_.end()) {
      found_.push_back(place + "a description of " + member.declaration + ", which is not registered");
      return;
    }
    if (++at->second > 1) found_.push_back(place + "a second description of " + member.declaration);
    if (member.said.paragraphs.empty()) found_.push_back(place + "no text for " + member.declaration);
    if (!member.said.nil && !group.said.nil)
      found_.push_back(place + "no \"nil:\" for " + member.declaration);
    if (!member.said.raises && !group.said.raises)
      found_.push_back(place + "no \"raises:\" for " + member.declaration);
  }

  const Class& cls_;
  const ClassText& text_;
  const std::string& fileName_;
  std::vector<std::string>& found_;
  std::map<std::string, int> registered_;  // to the number of descriptions
};

}  // namespace

const std::string& Member::Key() const {
  return method != nullptr ? method->declaration : Name();
}

const std::string& Member::Name() const {
  if (method != nullptr) return method->signature.name;
  return property != nullptr ? property->name : constant->name;
}

const char* Member::Kind() const {
  if (property != nullptr) return property->setter.function == nullptr ? "property, read only" : "property";
  if (constant != nullptr) return "constant";
  if (method->shared) return "shared method";
  return SameName(method->signature.name, "Constructor") ? "constructor" : "method";
}

std::string Member::Signature() const {
  if (method != nullptr) return method->declaration;
  return property != nullptr ? property->name + " as " + property->typeName : constant->declaration;
}

std::string Member::Defaults() const {
  std::string text;
  if (method == nullptr) return text;
  for (const Parameter& parameter : method->signature.parameters) {
    if (!parameter.defaultValue) continue;
    text += (text.empty() ? "" : ", ") + parameter.name + " is " + DisplayText(*parameter.defaultValue);
  }
  return text.empty() ? text : text + " where left out";
}

std::string Member::ParameterNames() const {
  std::string text;
  if (method == nullptr) return text;
  for (const Parameter& parameter : method->signature.parameters) {
    text += (text.empty() ? "" : ", ") + parameter.name;
    if (parameter.paramArray) text += "...";
    if (!parameter.paramArray && parameter.type->kind == Kind::Array) text += "()";
  }
  return text;
}

const Class* ClassOf(const ClassText& text) {
  const Class* const cls = TheRegistry().FindClass(text.name);
  const bool known = cls != nullptr && cls->defined && (cls->origin != Origin::Bundle) == text.ofHost;
  return known ? cls : nullptr;
}

std::vector<const Class*> BundleClasses() {
  std::vector<const Class*> classes;
  for (const auto& cls : TheRegistry().classes()) {
    if (cls->defined && cls->origin == Origin::Bundle) classes.push_back(cls.get());
  }
  return classes;
}

std::vector<Member> MembersOf(const Class& cls) {
  std::vector<Member> members;
  const auto add = [&members](auto Member::*field, const auto& all) {
    for (const auto& one : all) members.emplace_back().*field = &one;
  };
  add(&Member::property, cls.properties);
  add(&Member::method, cls.methods);
  add(&Member::method, cls.sharedMethods);
  add(&Member::constant, cls.constants);
  return members;
}

std::vector<std::string> Mismatches(const std::vector<ClassText>& texts, const std::string& fileName) {
  std::vector<std::string> found;
  const std::vector<const Class*> classes = BundleClasses();
  for (const Class* const cls : classes) {
    const auto text =
        std::find_if(texts.begin(), texts.end(), [cls](const ClassText& t) { return t.name == cls->name; });
    if (text == texts.end()) {
      found.push_back(fileName + ": no description of the registered class " + cls->name);
    } else {
      Comparison(*cls, *text, fileName, found).Compare();
    }
  }
  for (const ClassText& text : texts) {
    const Class* const cls = ClassOf(text);
    if (text.ofHost && cls != nullptr) Comparison(*cls, text, fileName, found).Compare();
    if (!text.ofHost && cls == nullptr) {
      found.push_back(fileName + ":" + std::to_string(text.line) + ": a description of " + text.name +
                      ", which is not registered");
    }
  }
  return found;
}

}  // namespace hostrun
