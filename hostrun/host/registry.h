// hostrun/host/registry.h - the classes that the host knows, as their definition records declare them.
#pragma once

#include <deque>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "bundle/host/records.h"
#include "hostrun/host/declaration.h"
#include "hostrun/host/objects.h"
#include "hostrun/host/types.h"
#include "hostrun/host/value.h"

namespace hostrun {

// Who registered a class: calls into a bundle cross the binary border and get a pool, a guard and a look for
// a raised exception around them.
enum class Origin : std::uint8_t { Host, Sibling, Bundle };

struct Method {
  Signature signature;
  std::string declaration;  // as registered
  qvx::REALproc function = nullptr;
  std::uint32_t flags = 0;
  Class* owner = nullptr;  // null: a global function
  bool shared = false;
  Origin origin = Origin::Host;
};

struct Property {
  std::string name;
  std::string typeName;  // as registered
  const Type* type = nullptr;
  Method getter;  // takes the object and the parameter word
  Method setter;  // also the value; no function: read-only
  std::uint32_t flags = 0;
  std::uint32_t parameter = 0;
  Class* owner = nullptr;
  bool shared = false;
};

struct Constant {
  std::string name;
  std::string declaration;  // as registered
  const Type* type = nullptr;
  Value value;
};

struct Class {
  std::string name;
  Class* super = nullptr;
  bool defined = false;    // false: only named so far
  std::int32_t order = 0;  // of registration, from 1
  Origin origin = Origin::Host;
  std::int32_t layoutVersion = 0;
  std::uint32_t flags = 0;
  qvx::REALclassDefinition* definition = nullptr;
  std::uint32_t dataSize = 0;    // of this class alone
  std::uint32_t dataOffset = 0;  // from the start of an instance
  std::uint32_t payloadOffset = 0;
  Payload payload;  // inherited from super if this class has none
  Type type{Kind::Object, nullptr, nullptr, {}};
  // In the order of registration.
  std::deque<Method> methods;
  std::deque<Method> sharedMethods;
  std::deque<Property> properties;
  std::deque<Constant> constants;

  bool IsA(const Class& other) const;
  // Members of this class and those it descends from; overloads of the nearest class that has the name.
  std::vector<const Method*> MethodsNamed(std::string_view member, bool shared) const;
  const Property* PropertyNamed(std::string_view member, bool shared) const;
  const Constant* ConstantNamed(std::string_view member) const;
  std::vector<const Method*> Constructors() const;
};

class Registry {
 public:
  Registry();
  ~Registry();
  Registry(const Registry&) = delete;
  Registry& operator=(const Registry&) = delete;

  // The class of that name; made undefined when nobody has spoken of it yet.
  Class& ClassNamed(std::string_view name);
  // Null when no such class is defined. A bundle asks for the same one at every object that it makes, so the
  // last answer is kept.
  Class* FindClass(std::string_view name);
  const std::vector<std::unique_ptr<Class>>& classes() const {
    return classes_;
  }  // in order of first mention

  // Reads the records at `definition`. The layout is that of word 0: up to 9 the old one. What can't be read
  // is left out and added to problems().
  void Register(qvx::REALclassDefinition& definition, Origin origin, Payload payload = {});

  void AddFunction(std::string_view declaration, qvx::REALproc function);
  std::vector<const Method*> FunctionsNamed(std::string_view name) const;
  // The global function of exactly that signature; null if there is none.
  const Method* FindFunction(std::string_view declaration) const;
  const std::deque<Method>& functions() const { return functions_; }

  const std::vector<std::string>& problems() const { return problems_; }

 private:
  std::vector<std::unique_ptr<Class>> classes_;
  std::map<std::string, Class*, std::less<>> byName_;
  std::string lastFoundName_;
  Class* lastFound_ = nullptr;
  std::deque<Method> functions_;
  std::multimap<std::string, const Method*, std::less<>> functionsByName_;
  std::vector<std::string> problems_;
  std::int32_t registered_ = 0;
};

// The one registry of this process: handles and services have no other way to reach it.
Registry& TheRegistry();

}  // namespace hostrun
