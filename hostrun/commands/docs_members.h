// hostrun/commands/docs_members.h - joins registered members and their descriptions, and says what does not
// match.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "hostrun/commands/docs_text.h"

namespace hostrun {

struct Class;
struct Method;
struct Property;
struct Constant;

// One registered member: exactly one of the three is set. They belong to the registry, and live as long.
struct Member {
  const Method* method = nullptr;
  const Property* property = nullptr;
  const Constant* constant = nullptr;

  // The key to its description: the declaration of a method, the name of anything else.
  const std::string& Key() const;
  const std::string& Name() const;
  const char* Kind() const;
  // As a program reads it, without what only the host needs.
  std::string Signature() const;
  // What tells it from its overloads: "red, green, blue"; empty for what is no method.
  std::string ParameterNames() const;
  // "alpha is 1.0 where it is left out"; empty without defaults.
  std::string Defaults() const;
};

// Every class that the bundle registered, in the order of registration.
std::vector<const Class*> BundleClasses();
// The registered class that a text is about; null where this host does not bring it.
const Class* ClassOf(const ClassText& text);
std::vector<Member> MembersOf(const Class& cls);

// A line for each member without a description, each description without a member, each member described
// twice, and each member whose description does not say what nil gives or what it raises.
std::vector<std::string> Mismatches(const std::vector<ClassText>& texts, const std::string& fileName);

}  // namespace hostrun
