// bench/host.cpp - a small host: the services at little cost, on the heap where a host would be.
#include "bench/host.h"

#include <cstdlib>
#include <cstring>
#include <unordered_map>

namespace bench {

namespace {

Host* active;

struct Instance {
  HostObject header;
  std::uint32_t unused[3];
  std::byte data[16];
};
static_assert(offsetof(Instance, data) == kInstanceDataOffset);

struct Array {
  HostObject header;
  std::int32_t count;
  std::int32_t capacity;
  union {
    double* doubles;
    qvx::REALobject* objects;
  };
  bool holdsObjects;
};

struct Block {
  HostObject header;
  void* bytes;
  std::int32_t size;
};

struct String {
  HostObject header;
  std::uint32_t encoding;
  std::int32_t length;
  char bytes[1];
};

template <typename Type>
Type* As(void* handle) {
  return static_cast<Type*>(handle);
}

template <typename Type>
Type* New(HostObject::Kind kind, std::size_t size = sizeof(Type)) {
  auto* const made = static_cast<Type*>(std::malloc(size));
  if (made == nullptr) std::abort();
  made->header = {1, kind, nullptr};
  return made;
}

void Free(HostObject* object) {
  switch (object->kind) {
    case HostObject::Kind::kInstance:
      if (object->definition != nullptr) {
        object->definition->destructor(reinterpret_cast<qvx::REALobject>(object));
      }
      break;
    case HostObject::Kind::kArray: {
      auto* const array = reinterpret_cast<Array*>(object);
      for (std::int32_t i = 0; array->holdsObjects && i < array->count; ++i) Unlock(array->objects[i]);
      std::free(array->doubles);
      break;
    }
    case HostObject::Kind::kBlock:
      std::free(reinterpret_cast<Block*>(object)->bytes);
      break;
    case HostObject::Kind::kString:
      break;
  }
  std::free(object);
}

const qvx::REALclassDefinition* Address(const qvx::REALclassDefinition* definition) {
  return definition;
}
const qvx::REALclassDefinition* Address(const qvx::REALclassDefinition& definition) {
  return &definition;
}

template <typename Definitions>
qvx::REALobject NewInstanceAmong(const Definitions& definitions, const char* className) {
  auto* const instance = New<Instance>(HostObject::Kind::kInstance);
  std::memset(instance->data, 0, sizeof instance->data);
  for (const auto& each : definitions) {
    const qvx::REALclassDefinition* const definition = Address(each);
    if (std::strcmp(definition->name, className) != 0) continue;
    instance->header.definition = definition;
    definition->constructor(reinterpret_cast<qvx::REALobject>(instance));
    break;
  }
  return reinterpret_cast<qvx::REALobject>(instance);
}

// ---- Services ----

long double GetRBVersion() {
  return active->version;
}
std::int32_t RegisterPluginVersion(std::int32_t version) {
  return version;
}
void RegisterClass(qvx::REALclassDefinition* definition) {
  definition->dataOffset = kInstanceDataOffset;
  active->definitions.push_back(definition);
}

void RaiseException(void* /*exception*/) {
  ++active->raised;
}
qvx::REALboolean SetPropValueInt(void* /*object*/, const char* /*property*/, std::int32_t /*value*/) {
  return 1;
}
qvx::REALboolean SetPropValueString(void* /*object*/, const char* /*property*/, void* /*value*/) {
  return 1;
}

std::uint32_t GetStringEncoding(void* string) {
  return As<String>(string)->encoding;
}
const void* GetStringCFString(void* string) {
  return active->platform->CFStringCreateWithCString(nullptr, As<String>(string)->bytes, qvx::kEncodingUTF8);
}

void* NewMemoryBlock(std::int32_t size) {
  auto* const block = New<Block>(HostObject::Kind::kBlock);
  block->bytes = std::malloc(static_cast<std::size_t>(size));
  block->size = size;
  return block;
}
void* MemoryBlockPointer(void* block) {
  return As<Block>(block)->bytes;
}
std::int32_t MemoryBlockSize(void* block) {
  return As<Block>(block)->size;
}

void* CreateArray(std::int32_t type, std::int32_t upperBound) {
  auto* const array = New<Array>(HostObject::Kind::kArray);
  array->count = upperBound + 1;
  array->capacity = array->count;
  array->holdsObjects = type == static_cast<std::int32_t>(qvx::REALArrayType::kObject);
  array->doubles =
      array->count == 0
          ? nullptr
          : static_cast<double*>(std::calloc(static_cast<std::size_t>(array->count), sizeof(double)));
  return array;
}
std::int32_t UpperBound(void* array) {
  return As<Array>(array)->count - 1;
}
void Grow(Array* array) {
  if (array->count < array->capacity) return;
  array->capacity = array->capacity == 0 ? 8 : array->capacity * 2;
  array->doubles = static_cast<double*>(
      std::realloc(array->doubles, static_cast<std::size_t>(array->capacity) * sizeof(double)));
}
// The bundle only ever appends.
void InsertDouble(void* array, std::int32_t /*index*/, double value) {
  Grow(As<Array>(array));
  As<Array>(array)->doubles[As<Array>(array)->count++] = value;
}
void InsertObject(void* array, std::int32_t /*index*/, qvx::REALobject value) {
  Grow(As<Array>(array));
  Lock(value);
  As<Array>(array)->objects[As<Array>(array)->count++] = value;
}
void GetDouble(void* array, std::int32_t index, double* out) {
  *out = As<Array>(array)->doubles[index];
}
void* InsertProcedure(void* array) {
  return As<Array>(array)->holdsObjects ? reinterpret_cast<void*>(&InsertObject)
                                        : reinterpret_cast<void*>(&InsertDouble);
}
void* GetProcedure(void* /*array*/) {
  return reinterpret_cast<void*>(&GetDouble);
}

template <typename Function>
void* Service(Function* function) {
  return reinterpret_cast<void*>(function);
}

bool StartsWith(const char* text, std::string_view start) {
  return text != nullptr && std::strncmp(text, start.data(), start.size()) == 0;
}

}  // namespace

void Activate(Host& host) {
  active = &host;
}

void* Resolve(const char* name) {
  static const std::unordered_map<std::string_view, void*> services = {
      {"REALGetRBVersion", Service(&GetRBVersion)},
      {"RegisterPluginVersion", Service(&RegisterPluginVersion)},
      {"PluginRegisterClass", Service(&RegisterClass)},
      {"PluginNewInstance", Service(&NewInstance)},
      {"REALLockObject", Service(&Lock)},
      {"REALUnlockObject", Service(&Unlock)},
      {"REALLockString", Service(&Lock)},
      {"REALUnlockString", Service(&Unlock)},
      {"RuntimeRaiseException", Service(&RaiseException)},
      {"REALSetPropValueInt", Service(&SetPropValueInt)},
      {"REALSetPropValueString", Service(&SetPropValueString)},
      {"REALGetStringCFString", Service(&GetStringCFString)},
      {"REALBuildString", Service(&BuildString)},
      {"REALGetStringEncoding", Service(&GetStringEncoding)},
      {"REALSetStringEncoding", Service(&SetStringEncoding)},
      {"newMemoryBlock", Service(&NewMemoryBlock)},
      {"memoryBlockGetPtr", Service(&MemoryBlockPointer)},
      {"memoryBlockGetSize", Service(&MemoryBlockSize)},
      {"RuntimeArrayCreateSingleDimBoundedArray", Service(&CreateArray)},
      {"RuntimeUBound", Service(&UpperBound)},
      {"RuntimeArrayDirectGetInsertProc", Service(&InsertProcedure)},
      {"RuntimeArrayDirectGetGetProc", Service(&GetProcedure)},
  };
  const auto found = services.find(name);
  return found != services.end() ? found->second : nullptr;
}

void* NewHostExceptionFor(id /*exception*/) {
  return NewInstance("NSExceptionQVX");
}

qvx::REALproc Host::Find(std::string_view className, std::string_view name) const {
  for (const qvx::REALclassDefinition* definition : definitions) {
    if (className != definition->name) continue;
    for (std::int32_t i = 0; i < definition->propertyCount; ++i) {
      if (name == definition->properties[i].name) return definition->properties[i].getter;
    }
    for (std::int32_t i = 0; i < definition->methodCount; ++i) {
      if (StartsWith(definition->methods[i].declaration, name)) return definition->methods[i].function;
    }
    for (std::int32_t i = 0; i < definition->sharedMethodCount; ++i) {
      if (StartsWith(definition->sharedMethods[i].declaration, name)) {
        return definition->sharedMethods[i].function;
      }
    }
  }
  return nullptr;
}

qvx::REALobject NewInstance(const char* className) {
  return NewInstanceAmong(active->definitions, className);
}

qvx::REALobject NewPrescribedInstance(const char* className) {
  return NewInstanceAmong(active->prescribed, className);
}

void Lock(void* handle) {
  if (handle != nullptr) ++As<HostObject>(handle)->references;
}

void Unlock(void* handle) {
  if (handle != nullptr && --As<HostObject>(handle)->references == 0) Free(As<HostObject>(handle));
}

qvx::REALstring BuildString(const void* bytes, std::int32_t length) {
  const auto size = static_cast<std::size_t>(length);
  auto* const string = New<String>(HostObject::Kind::kString, sizeof(String) + size);
  string->encoding = qvx::kEncodingUnknown;
  string->length = length;
  std::memcpy(string->bytes, bytes, size);
  string->bytes[size] = 0;
  return reinterpret_cast<qvx::REALstring>(string);
}

void SetStringEncoding(qvx::REALstring string, std::uint32_t encoding) {
  As<String>(string)->encoding = encoding;
}

qvx::REALstring NewString(std::string_view text) {
  const qvx::REALstring string = BuildString(text.data(), static_cast<std::int32_t>(text.size()));
  SetStringEncoding(string, qvx::kEncodingUTF8);
  return string;
}

qvx::REALarray NewArrayOfDoubles(const std::vector<double>& values) {
  void* const array = CreateArray(static_cast<std::int32_t>(qvx::REALArrayType::kDouble), -1);
  for (const double value : values) InsertDouble(array, 0, value);
  return static_cast<qvx::REALarray>(array);
}

qvx::REALmemoryBlock NewBlock(const void* bytes, std::int32_t size) {
  void* const block = NewMemoryBlock(size);
  std::memcpy(As<Block>(block)->bytes, bytes, static_cast<std::size_t>(size));
  return static_cast<qvx::REALmemoryBlock>(block);
}

id& NativeOf(qvx::REALobject instance) {
  return *reinterpret_cast<id*>(reinterpret_cast<char*>(instance) + kInstanceDataOffset);
}

}  // namespace bench
