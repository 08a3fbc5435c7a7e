// hostrun/host/registry.cpp - the classes that the host knows, as their definition records declare them.
#include "hostrun/host/registry.h"

#include <algorithm>
#include <cstring>

#include "hostrun/host/text.h"

namespace hostrun {
namespace {

constexpr std::int32_t kLastOldLayout = 9;
constexpr std::uint32_t kLeastClassData = 16;  // every object has room for a native pointer
constexpr std::int32_t kMostRecords = 10000;

// Record `index` of an array whose records take `size` bytes, of which the known ones are copied out.
template <class Record>
Record RecordAt(const Record* records, std::int32_t index, std::size_t size) {
  Record record{};
  const char* const at = reinterpret_cast<const char*>(records) + static_cast<std::size_t>(index) * size;
  std::memcpy(&record, at, std::min(size, sizeof(Record)));
  return record;
}

// Reads the arrays of one definition.
class Importer {
 public:
  Importer(Class& cls, bool old, std::vector<std::string>& problems)
      : cls_(cls), old_(old), problems_(problems) {}

  void Methods(const qvx::REALmethodDefinition* records, std::int32_t count, bool shared) {
    const std::size_t size = old_ ? qvx::kOldMethodSize : sizeof(qvx::REALmethodDefinition);
    for (std::int32_t i = 0; i < Checked(records, count, shared ? "shared methods" : "methods"); ++i) {
      const auto record = RecordAt(records, i, size);
      try {
        Method method = MethodOf(record.declaration, record.function, shared);
        method.flags = record.flags;
        (shared ? cls_.sharedMethods : cls_.methods).push_back(std::move(method));
      } catch (const DeclarationError& error) {
        Problem(record.declaration, error.what());
      }
    }
  }

  void Properties(const qvx::REALproperty* records, std::int32_t count, bool shared) {
    const std::size_t size = old_ ? qvx::kOldPropertySize : sizeof(qvx::REALproperty);
    for (std::int32_t i = 0; i < Checked(records, count, shared ? "shared properties" : "properties"); ++i) {
      const auto record = RecordAt(records, i, size);
      if (record.name == nullptr || record.type == nullptr || record.getter == nullptr) {
        Problem(record.name, "wanted a name, a type and a getter, found a null pointer");
        continue;
      }
      try {
        cls_.properties.push_back(PropertyOf(record, shared));
      } catch (const DeclarationError& error) {
        Problem(record.name, error.what());
      }
    }
  }

  void Constants(const qvx::REALconstant* records, std::int32_t count) {
    const std::size_t size = old_ ? qvx::kOldConstantSize : sizeof(qvx::REALconstant);
    for (std::int32_t i = 0; i < Checked(records, count, "constants"); ++i) {
      const auto record = RecordAt(records, i, size);
      if (record.declaration == nullptr) {
        Problem(nullptr, "wanted a declaration, found a null pointer");
        continue;
      }
      try {
        ConstantDeclaration declared = ParseConstant(record.declaration);
        cls_.constants.push_back(
            {std::move(declared.name), record.declaration, declared.type, std::move(declared.value)});
      } catch (const DeclarationError& error) {
        Problem(record.declaration, error.what());
      }
    }
  }

 private:
  std::int32_t Checked(const void* records, std::int32_t count, const char* what) {
    if (records == nullptr) return 0;
    if (count >= 0 && count <= kMostRecords) return count;
    Problem(what,
            "wanted a count from 0 to " + std::to_string(kMostRecords) + ", found " + std::to_string(count));
    return 0;
  }

  Method MethodOf(const char* declaration, qvx::REALproc function, bool shared) const {
    if (declaration == nullptr) throw DeclarationError("wanted a declaration, found a null pointer");
    if (function == nullptr) throw DeclarationError("wanted a function, found a null pointer");
    Method method;
    method.signature = ParseSignature(declaration);
    method.declaration = declaration;
    method.function = function;
    method.owner = &cls_;
    method.shared = shared;
    method.origin = cls_.origin;
    return method;
  }

  Property PropertyOf(const qvx::REALproperty& record, bool shared) const {
    Property property;
    property.name = record.name;
    property.typeName = record.type;
    const std::string declaration = property.name + "(parameter as integer) as " + property.typeName;
    property.getter = MethodOf(declaration.c_str(), record.getter, shared);
    property.type = property.getter.signature.result;
    if (record.setter != nullptr) {
      const std::string setter = property.name + "(parameter as integer, value as " + property.typeName + ")";
      property.setter = MethodOf(setter.c_str(), record.setter, shared);
    }
    property.flags = record.flags;
    property.parameter = record.parameter;
    property.owner = &cls_;
    property.shared = shared;
    return property;
  }

  void Problem(const char* member, const std::string& text) {
    problems_.push_back(cls_.name + ": " +
                        (member == nullptr ? "a member" : "\"" + std::string(member) + "\"") + ": " + text);
  }

  Class& cls_;
  bool old_;
  std::vector<std::string>& problems_;
};

}  // namespace

bool Class::IsA(const Class& other) const {
  for (const Class* cls = this; cls != nullptr; cls = cls->super) {
    if (cls == &other) return true;
  }
  return false;
}

std::vector<const Method*> Class::MethodsNamed(std::string_view member, bool sharedOnes) const {
  std::vector<const Method*> found;
  for (const Class* cls = this; cls != nullptr && found.empty(); cls = cls->super) {
    for (const Method& method : sharedOnes ? cls->sharedMethods : cls->methods) {
      if (SameName(method.signature.name, member)) found.push_back(&method);
    }
  }
  return found;
}

const Property* Class::PropertyNamed(std::string_view member, bool sharedOnes) const {
  for (const Class* cls = this; cls != nullptr; cls = cls->super) {
    for (const Property& property : cls->properties) {
      if (property.shared == sharedOnes && SameName(property.name, member)) return &property;
    }
  }
  return nullptr;
}

const Constant* Class::ConstantNamed(std::string_view member) const {
  for (const Class* cls = this; cls != nullptr; cls = cls->super) {
    for (const Constant& constant : cls->constants) {
      if (SameName(constant.name, member)) return &constant;
    }
  }
  return nullptr;
}

std::vector<const Method*> Class::Constructors() const {
  return MethodsNamed("Constructor", false);
}

Registry::Registry() = default;
Registry::~Registry() = default;

Class& Registry::ClassNamed(std::string_view name) {
  const auto known = byName_.find(LowerName(name));
  if (known != byName_.end()) return *known->second;
  classes_.push_back(std::make_unique<Class>());
  Class& cls = *classes_.back();
  cls.name = name;
  cls.type = {Kind::Object, &cls, nullptr, cls.name};
  byName_[LowerName(name)] = &cls;
  return cls;
}

Class* Registry::FindClass(std::string_view name) {
  if (lastFound_ != nullptr && name == lastFoundName_) return lastFound_;
  const auto known = byName_.find(LowerName(name));
  if (known == byName_.end() || !known->second->defined) return nullptr;
  lastFoundName_ = name;
  lastFound_ = known->second;
  return lastFound_;
}

void Registry::Register(qvx::REALclassDefinition& definition, Origin origin, Payload payload) {
  if (definition.name == nullptr || *definition.name == 0) {
    problems_.emplace_back("a class definition: wanted a name, found none");
    return;
  }
  Class& cls = ClassNamed(definition.name);
  if (cls.defined) {
    problems_.push_back(cls.name + ": registered a second time");
    return;
  }
  const bool old = definition.version <= kLastOldLayout;
  cls.name = definition.name;
  cls.order = ++registered_;
  cls.type.name = cls.name;
  cls.origin = origin;
  cls.layoutVersion = definition.version;
  cls.definition = &definition;
  cls.flags = definition.flags;
  if (definition.superName != nullptr) {
    cls.super = FindClass(definition.superName);
    if (cls.super == nullptr) {
      problems_.push_back(cls.name + ": wanted a class " + definition.superName +
                          " to descend from, found none");
    }
  }
  const std::uint32_t inherited = cls.super == nullptr ? 0 : cls.super->dataOffset + cls.super->dataSize;
  cls.dataSize = static_cast<std::uint32_t>(std::max(definition.dataSize, 0));
  cls.dataOffset = std::max<std::uint32_t>(inherited, kClassDataOffset);
  cls.payloadOffset =
      (std::max(cls.dataOffset + cls.dataSize, kClassDataOffset + kLeastClassData) + 7U) & ~7U;
  cls.payload = payload.size != 0 || cls.super == nullptr ? payload : cls.super->payload;
  definition.dataOffset = cls.dataOffset;
  cls.defined = true;

  Importer importer(cls, old, problems_);
  importer.Properties(definition.properties, definition.propertyCount, false);
  importer.Properties(definition.sharedProperties, definition.sharedPropertyCount, true);
  importer.Methods(definition.methods, definition.methodCount, false);
  importer.Methods(definition.sharedMethods, definition.sharedMethodCount, true);
  importer.Constants(definition.constants, definition.constantCount);
}

void Registry::AddFunction(std::string_view declaration, qvx::REALproc function) {
  Method method;
  method.signature = ParseSignature(declaration);
  method.declaration = declaration;
  method.function = function;
  method.shared = true;
  functions_.push_back(std::move(method));
  functionsByName_.emplace(LowerName(functions_.back().signature.name), &functions_.back());
}

std::vector<const Method*> Registry::FunctionsNamed(std::string_view name) const {
  std::vector<const Method*> found;
  const auto [first, last] = functionsByName_.equal_range(LowerName(name));
  for (auto at = first; at != last; ++at) found.push_back(at->second);
  return found;
}

const Method* Registry::FindFunction(std::string_view declaration) const {
  try {
    const Signature wanted = ParseSignature(declaration);
    for (const Method* method : FunctionsNamed(wanted.name)) {
      if (SameSignature(method->signature, wanted)) return method;
    }
  } catch (const DeclarationError&) {
    return nullptr;
  }
  return nullptr;
}

// Never destroyed: objects may outlive every scope that could own it.
Registry& TheRegistry() {
  static Registry& registry = *new Registry;
  return registry;
}

}  // namespace hostrun
