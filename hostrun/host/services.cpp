// hostrun/host/services.cpp - the services that a plugin finds by name, one function each, one table.
#include "hostrun/host/services.h"

#include <cstdlib>
#include <cstring>
#include <string_view>
#include <tuple>

#include "hostrun/host/arrays.h"
#include "hostrun/host/call.h"
#include "hostrun/host/exceptions.h"
#include "hostrun/host/folder_items.h"
#include "hostrun/host/memory_blocks.h"
#include "hostrun/host/platform_library.h"
#include "hostrun/host/registry.h"
#include "hostrun/host/service_list.h"
#include "hostrun/host/strings.h"
#include "hostrun/host/text.h"

namespace hostrun {
namespace {

HostIdentity identity;
constinit std::int32_t announcedLayout = 0;
constinit ServiceWrapper wrapService = nullptr;

// A service is entered from a bundle: what goes wrong inside gives `neutral`, and an exception surfaces when
// the bundle's function has returned.
template <class R, class F>
R Serve(R neutral, F body) {
  try {
    return body();
  } catch (const HostException& exception) {
    SetPendingException(exception.object());
  } catch (const std::exception& error) {
    if (!LacksMemory(error)) throw;
    // The caller sees the neutral result and says what it could not have.
  }
  return neutral;
}

long double GetVersion() {
  return static_cast<long double>(identity.version);
}

std::int32_t RegisterVersion(std::int32_t version) {
  announcedLayout = version;
  return 0;
}

void RegisterClass(qvx::REALclassDefinition* definition) {
  if (definition != nullptr) TheRegistry().Register(*definition, Origin::Bundle);
}

Object* NewInstance(const char* className) {
  return Serve<Object*>(nullptr, [=]() -> Object* {
    Class* const cls = className == nullptr ? nullptr : TheRegistry().FindClass(className);
    return cls == nullptr ? nullptr : NewObject(*cls);
  });
}

void Raise(Object* exception) {
  if (exception == nullptr) return;
  if (IsKindOf(exception, TheRegistry().ClassNamed("RuntimeException"))) {
    SetPendingException(exception);
  } else {
    const ObjectRef instead =
        NewException("RuntimeException", "Raised a " + exception->cls->name + ", which is no exception.");
    SetPendingException(instead.get());
  }
}

template <class Convert>
bool SetPropertyByName(Object* object, const char* name, const Type& type, Convert value) {
  return Serve(false, [&] {
    if (object == nullptr || name == nullptr) return false;
    const Property* const property = object->cls->PropertyNamed(name, false);
    if (property == nullptr || property->setter.function == nullptr || property->type != &type) return false;
    SetProperty(*property, object, value());
    return true;
  });
}

bool SetInteger(Object* object, const char* property, std::int32_t value) {
  return SetPropertyByName(object, property, *TypeOf(Kind::Integer), [=] { return Value::Integer(value); });
}

bool SetString(Object* object, const char* property, HostString* value) {
  return SetPropertyByName(object, property, *TypeOf(Kind::String), [=] { return Value::Share(value); });
}

bool GetStringData(HostString* string, std::uint32_t encoding, qvx::REALstringData* out) {
  return Serve(false, [=] {
    if (out == nullptr) return false;
    const bool asStored = encoding == qvx::kEncodingUnknown;
    const StringRef converted =
        asStored ? StringRef::Share(string) : StringRef::Adopt(ConvertString(string, encoding));
    const std::string_view bytes = BytesOf(converted.get());
    auto* const data = static_cast<char*>(std::calloc(1, bytes.size() + 4));
    if (data == nullptr) return false;
    std::memcpy(data, bytes.data(), bytes.size());
    *out = {data, static_cast<std::int32_t>(bytes.size()), encoding};
    return true;
  });
}

void DisposeStringData(qvx::REALstringData* record) {
  if (record == nullptr) return;
  std::free(record->data);
  record->data = nullptr;
  record->length = 0;
}

const char* GetCString(HostString* string) {
  return string == nullptr ? "" : string->text();
}

void* LoadGlobalMethod(const char* declaration) {
  const Method* const method = declaration == nullptr ? nullptr : TheRegistry().FindFunction(declaration);
  return method == nullptr ? nullptr : reinterpret_cast<void*>(method->function);
}

// One function for both forms of the call: the second argument only says how old hosts normalised, and cdecl
// leaves it to the caller. Null when the bytes are no text in their encoding.
const void* GetCFString(HostString* string) {
  if (ThePlatform().newString == nullptr) return nullptr;
  return Serve<const void*>(nullptr, [=]() -> const void* {
    const auto text = DecodeStrictly(BytesOf(string), EncodingOf(string));
    if (!text) return nullptr;
    const std::u16string units = Utf16(*text);
    return ThePlatform().newString(nullptr, reinterpret_cast<const std::uint16_t*>(units.data()),
                                   static_cast<long>(units.size()));
  });
}

HostString* BuildWithEncoding(const void* bytes, std::int32_t length, std::uint32_t encoding) {
  return Serve<HostString*>(nullptr, [=]() -> HostString* {
    if (bytes == nullptr || length <= 0) return nullptr;
    return NewString({static_cast<const char*>(bytes), static_cast<std::size_t>(length)}, encoding);
  });
}

HostString* Build(const void* bytes, std::int32_t length) {
  return BuildWithEncoding(bytes, length, qvx::kEncodingUnknown);
}

std::uint32_t GetEncoding(HostString* string) {
  return EncodingOf(string);
}

void SetEncoding(HostString* string, std::uint32_t encoding) {
  if (string != nullptr) string->encoding = encoding;
}

HostString* Convert(HostString* string, std::uint32_t encoding) {
  return Serve<HostString*>(nullptr, [=] { return ConvertString(string, encoding); });
}

Object* NewBlock(std::int32_t size) {
  return Serve<Object*>(nullptr, [=] { return NewMemoryBlock(size); });
}

void* BlockPointer(Object* block) {
  return block == nullptr ? nullptr : MemoryBlockBytes(block);
}
std::int32_t BlockSize(Object* block) {
  return block == nullptr ? 0 : MemoryBlockSize(block);
}

Object* CreateArray(qvx::REALArrayType elementType, std::int32_t upperBound) {
  return Serve<Object*>(nullptr, [=]() -> Object* {
    switch (elementType) {
      case qvx::REALArrayType::kDouble:
        return NewArray(*TypeOf(Kind::Double), upperBound);
      case qvx::REALArrayType::kObject:
        return NewArray(*TypeOf(Kind::Object), upperBound);
    }
    return nullptr;
  });
}

std::int32_t ArrayUpperBound(Object* array) {
  return array == nullptr ? -1 : UpperBound(array);
}

void InsertDouble(Object* array, std::int32_t index, double value) {
  Serve(0, [=] { return InsertElement(array, index, Value::Double(value)), 0; });
}

void InsertObject(Object* array, std::int32_t index, Object* value) {
  Serve(0, [=] { return InsertElement(array, index, Value::Share(value)), 0; });
}

static_assert(IsProcedure<decltype(InsertDouble)>("RuntimeArrayDirectGetInsertProc"));
static_assert(IsProcedure<decltype(InsertObject)>("RuntimeArrayDirectGetInsertProc"));
void* InsertProcedure(Object* array) {
  if (array == nullptr) return nullptr;
  return ArrayDataOf(array).element->kind == Kind::Double ? reinterpret_cast<void*>(&InsertDouble)
                                                          : reinterpret_cast<void*>(&InsertObject);
}

void ReadDouble(Object* array, std::int32_t index, double* out) {
  Serve(0, [=] { return *out = ElementAt(array, index).AsReal(), 0; });
}

static_assert(IsProcedure<decltype(ReadDouble)>("RuntimeArrayDirectGetGetProc"));
void* ReadProcedure(Object* array) {
  if (array == nullptr || ArrayDataOf(array).element->kind != Kind::Double) return nullptr;
  return reinterpret_cast<void*>(&ReadDouble);
}

bool FileReference(Object* item, ::FSRef* reference, ::HFSUniStr255* leafName) {
  return Serve(false, [=] { return item != nullptr && FolderItemReference(item, reference, leafName); });
}

// A function of this host by the name that plugins find it by. Only a name and a type of the list compile.
template <class R, class... A>
struct Service {
  const char* name;
  R (*function)(A...);

  consteval Service(const char* hostName, R (*itsFunction)(A...)) : name(hostName), function(itsFunction) {
    if (!IsService<R(A...)>(name))
      throw "wanted a name in bundle/host/services.inc and a function of its type";
  }
};

constexpr std::tuple kServices{Service("REALGetRBVersion", &GetVersion),
                               Service("RegisterPluginVersion", &RegisterVersion),
                               Service("PluginRegisterClass", &RegisterClass),
                               Service("PluginNewInstance", &NewInstance),
                               Service("REALLockObject", &LockObject),
                               Service("REALUnlockObject", &UnlockObject),
                               Service("REALLockString", &LockString),
                               Service("REALUnlockString", &UnlockString),
                               Service("RuntimeRaiseException", &Raise),
                               Service("REALSetPropValueInt", &SetInteger),
                               Service("REALSetPropValueString", &SetString),
                               Service("PluginGetStringData", &GetStringData),
                               Service("PluginDisposeStringData", &DisposeStringData),
                               Service("StringGetCString", &GetCString),
                               Service("REALLoadGlobalMethod", &LoadGlobalMethod),
                               Service("REALGetStringCFString", &GetCFString),
                               Service("REALBuildString", &Build),
                               Service("REALBuildStringWithEncoding", &BuildWithEncoding),
                               Service("REALGetStringEncoding", &GetEncoding),
                               Service("REALSetStringEncoding", &SetEncoding),
                               Service("REALConvertString", &Convert),
                               Service("newMemoryBlock", &NewBlock),
                               Service("memoryBlockGetPtr", &BlockPointer),
                               Service("memoryBlockGetSize", &BlockSize),
                               Service("RuntimeArrayCreateSingleDimBoundedArray", &CreateArray),
                               Service("RuntimeUBound", &ArrayUpperBound),
                               Service("RuntimeArrayDirectGetInsertProc", &InsertProcedure),
                               Service("RuntimeArrayDirectGetGetProc", &ReadProcedure),
                               Service("REALFSRefFromFolderItem", &FileReference)};

consteval bool ServesAll() {
  bool all = true;
  ForEachService([&]<class>(const char*, std::string_view name) {
    all =
        all && std::apply([=](const auto&... service) { return ((service.name == name) || ...); }, kServices);
  });
  return all;
}
static_assert(ServesAll(), "wanted a function for each service in bundle/host/services.inc");

constexpr double kFirstWithOpaqueStrings = 2012.0;

}  // namespace

void SetHostIdentity(HostIdentity newIdentity) {
  identity = std::move(newIdentity);
  UseOldStringRecords(identity.version < kFirstWithOpaqueStrings);
  SetResultsUnlocked(identity.withheld.contains("REALLockObject"));
}

const HostIdentity& TheHostIdentity() {
  return identity;
}

void* ResolveService(const char* name) {
  if (name == nullptr || identity.withheld.contains(name)) return nullptr;
  void* found = nullptr;
  const auto answer = [&](const auto& service) {
    if (std::strcmp(service.name, name) != 0) return false;
    void* const function = reinterpret_cast<void*>(service.function);
    found = wrapService == nullptr ? function : wrapService(service.name, function);
    return true;
  };
  std::apply([&](const auto&... services) { return (answer(services) || ...); }, kServices);
  return found;
}

void SetServiceWrapper(ServiceWrapper wrap) {
  wrapService = wrap;
}

std::int32_t AnnouncedLayout() {
  return announcedLayout;
}

}  // namespace hostrun
