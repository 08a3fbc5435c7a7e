// tests/bundle/scripted/host_services.cpp - the services that the scripted host's resolver answers.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>

#include "tests/bundle/scripted/event_log.h"
#include "tests/bundle/scripted/exception_frames.h"
#include "tests/bundle/scripted/host.h"
#include "tests/bundle/scripted/native_object.h"
#include "tests/bundle/scripted/stack.h"
#include "tests/bundle/scripted/text.h"

namespace scripted {
namespace {

// The exception that a service raises this time, or null.
NativeObject* Raised(const char* name) {
  const Outside outside;
  const auto found = TheHost().raising.find(name);
  if (found == TheHost().raising.end()) return nullptr;
  NativeObject* const raised = found->second;
  TheHost().raising.erase(found);
  return raised;
}

// A service as the bundle calls it: with a 16-byte aligned stack, and with nothing alive that the raising of
// a platform exception would jump over.
template <auto service>
struct Door;
template <typename Result, typename... Arguments, Result (*service)(Arguments...)>
struct Door<service> {
  static inline const char* name = nullptr;

  [[gnu::noinline, gnu::force_align_arg_pointer]] static Result Enter(Arguments... arguments) {
    CheckStack(name, __builtin_dwarf_cfa());
    if (NativeObject* const raised = Raised(name)) Deliver(raised);
    return service(arguments...);
  }
};

template <auto service>
void* DoorOf(const char* name) {
  Door<service>::name = name;
  return reinterpret_cast<void*>(&Door<service>::Enter);
}

// Notes a call; throws for a bad-alloc fault, answers whether the service shall answer null or false.
bool Note(const char* name, std::initializer_list<std::string> arguments) {
  std::string text = std::string(name) + "(";
  bool first = true;
  for (const std::string& argument : arguments) {
    if (!first) text += ", ";
    first = false;
    text += argument;
  }
  const Fault fault = Log().Record(EventKind::kService, name, text + ")");
  if (fault == Fault::kBadAlloc) throw std::bad_alloc();
  if (const auto found = TheHost().before.find(name); found != TheHost().before.end()) found->second();
  return fault == Fault::kNull;
}

// Only AL of a truth value is defined; the rest of the register is rubbish.
std::uint32_t Truth(bool value) {
  return 0x5A5A5A00U | (value ? 1U : 0U);
}

std::string NameOf(const void* handle) {
  return handle == nullptr ? "null" : Describe(handle);
}

std::string BytesOf(const void* bytes, std::int32_t length) {
  if (bytes == nullptr || length < 0) return "null";
  return Quoted({static_cast<const char*>(bytes), static_cast<std::size_t>(length)});
}

long double GetRBVersion() {
  const Outside outside;
  if (Note("REALGetRBVersion", {})) return 0.0L;
  return TheHost().version;
}

std::int32_t RegisterPluginVersion(std::int32_t version) {
  const Outside outside;
  Note("RegisterPluginVersion", {std::to_string(version)});
  TheHost().announcedVersions.push_back(version);
  return -1;
}

void RegisterClass(qvx::REALclassDefinition* definition) {
  const Outside outside;
  Note("PluginRegisterClass", {definition->name});
  RegisteredClass read = ReadDefinition(definition);
  TheHost().registered.push_back(std::move(read));
  definition->dataOffset = kClassDataOffset;
}

void* NewInstance(const char* className) {
  const Outside outside;
  if (Note("PluginNewInstance", {Quoted(className)})) return nullptr;
  if (TheHost().missingClasses.contains(className)) return nullptr;
  return TheHost().NewInstance(className).Handle();
}

void LockObject(void* object) {
  const Outside outside;
  Note("REALLockObject", {NameOf(object)});
  if (object == nullptr) return;
  HostObject& locked = TheHost().Object(object);
  ++locked.references;
  ++locked.locks;
}

void UnlockObject(void* object) {
  const Outside outside;
  Note("REALUnlockObject", {NameOf(object)});
  if (object == nullptr) return;
  HostObject& unlocked = TheHost().Object(object);
  ++unlocked.unlocks;
  TheHost().Release(unlocked);
}

void LockString(void* string) {
  const Outside outside;
  Note("REALLockString", {NameOf(string)});
  if (string == nullptr) return;
  HostString& locked = TheHost().String(string);
  ++locked.references;
  ++locked.locks;
}

void UnlockString(void* string) {
  const Outside outside;
  Note("REALUnlockString", {NameOf(string)});
  if (string == nullptr) return;
  HostString& unlocked = TheHost().String(string);
  ++unlocked.unlocks;
  TheHost().Release(unlocked);
}

void RaiseException(void* object) {
  const Outside outside;
  Note("RuntimeRaiseException", {NameOf(object)});
  if (object == nullptr) {
    Log().Violation("null was raised as a host exception");
    return;
  }
  HostObject& exception = TheHost().Object(object);
  ++exception.references;  // the host keeps it until it is raised
  ++exception.owned;
  TheHost().raised.push_back({exception.className, exception.properties["Message"],
                              exception.properties["ErrorNumber"], object, exception.Native()});
}

std::uint32_t SetPropValueInt(void* object, const char* property, std::int32_t value) {
  const Outside outside;
  const bool null = Note("REALSetPropValueInt", {NameOf(object), Quoted(property), std::to_string(value)});
  if (null || object == nullptr) return Truth(false);
  TheHost().Object(object).properties[property] = std::to_string(value);
  return Truth(true);
}

std::uint32_t SetPropValueString(void* object, const char* property, void* string) {
  const Outside outside;
  const bool null = Note("REALSetPropValueString", {NameOf(object), Quoted(property), NameOf(string)});
  if (null || object == nullptr) return Truth(false);
  TheHost().Object(object).properties[property] = TheHost().Text(string);
  return Truth(true);
}

std::uint32_t GetStringData(void* string, std::uint32_t encoding, qvx::REALstringData* out) {
  const Outside outside;
  if (Note("PluginGetStringData", {NameOf(string), Hexadecimal(encoding)}) || string == nullptr)
    return Truth(false);
  const HostString& host = TheHost().String(string);
  std::string bytes = host.bytes;
  if (encoding != qvx::kEncodingUnknown && encoding != host.encoding) {
    const auto text = Decode(bytes, host.encoding);
    const auto converted = text ? Encode(*text, encoding) : std::nullopt;
    if (!converted) return Truth(false);
    bytes = *converted;
  }
  auto* const data = static_cast<char*>(std::calloc(bytes.size() + 4, 1));
  std::memcpy(data, bytes.data(), bytes.size());  // NOLINT(bugprone-not-null-terminated-result): zeroed above
  *out = {data, static_cast<std::int32_t>(bytes.size()), encoding};
  TheHost().liveStringData.push_back(data);
  return Truth(true);
}

void DisposeStringData(qvx::REALstringData* data) {
  const Outside outside;
  Note("PluginDisposeStringData", {BytesOf(data->data, data->length)});
  std::erase(TheHost().liveStringData, data->data);
  std::free(data->data);
  *data = {nullptr, 0, 0};
}

const char* StringGetCString(void* string) {
  const Outside outside;
  if (Note("StringGetCString", {NameOf(string)}) || string == nullptr) return nullptr;
  return TheHost().String(string).bytes.c_str();
}

std::int32_t LenB(void* string) {
  const Outside outside;
  if (Note("LenB", {NameOf(string)}) || string == nullptr) return 0;
  const auto length = static_cast<std::int32_t>(TheHost().String(string).bytes.size());
  return TheHost().lengthOfEveryString.value_or(length);
}

void* LoadGlobalMethod(const char* declaration) {
  const Outside outside;
  if (Note("REALLoadGlobalMethod", {Quoted(declaration)})) return nullptr;
  if (std::strcmp(declaration, "LenB( s as string ) as integer") != 0 || TheHost().missing.contains("LenB")) {
    return nullptr;
  }
  return DoorOf<&LenB>("LenB");
}

// One function behind both wrappers: a caller that passes no flag leaves the second argument undefined.
const void* GetStringCFString(void* string, char flag) {
  const Outside outside;
  TheHost().flagOfLastString = flag;
  if (Note("REALGetStringCFString", {NameOf(string)}) || string == nullptr) return nullptr;
  const HostString& host = TheHost().String(string);
  const auto text = Decode(host.bytes, host.encoding);
  return text ? Owned(MakeText(*text)) : nullptr;
}

void* BuildString(const void* bytes, std::int32_t length) {
  const Outside outside;
  if (Note("REALBuildString", {BytesOf(bytes, length)})) return nullptr;
  return &TheHost().MakeString({static_cast<const char*>(bytes), static_cast<std::size_t>(length)},
                               qvx::kEncodingUnknown);
}

void* BuildStringWithEncoding(const void* bytes, std::int32_t length, std::uint32_t encoding) {
  const Outside outside;
  if (Note("REALBuildStringWithEncoding", {BytesOf(bytes, length), Hexadecimal(encoding)})) return nullptr;
  return &TheHost().MakeString({static_cast<const char*>(bytes), static_cast<std::size_t>(length)}, encoding);
}

std::uint32_t GetStringEncoding(void* string) {
  const Outside outside;
  if (Note("REALGetStringEncoding", {NameOf(string)}) || string == nullptr) return 0;
  return TheHost().String(string).encoding;
}

void SetStringEncoding(void* string, std::uint32_t encoding) {
  const Outside outside;
  Note("REALSetStringEncoding", {NameOf(string), Hexadecimal(encoding)});
  if (string != nullptr) TheHost().String(string).encoding = encoding;
}

void* ConvertString(void* string, std::uint32_t encoding) {
  const Outside outside;
  if (Note("REALConvertString", {NameOf(string), Hexadecimal(encoding)}) || string == nullptr) return nullptr;
  const HostString& host = TheHost().String(string);
  const auto text = Decode(host.bytes, host.encoding);
  if (!text) return nullptr;
  auto bytes = Encode(*text, encoding);
  if (!bytes) bytes = Encode(u"?", encoding);
  return bytes ? &TheHost().MakeString(*bytes, encoding) : nullptr;
}

void* NewMemoryBlock(std::int32_t size) {
  const Outside outside;
  if (Note("newMemoryBlock", {std::to_string(size)}) || size > 0x1000000) return nullptr;
  HostObject& block = TheHost().Make(HandleKind::kBlock, "block");
  block.bytes.resize(static_cast<std::size_t>(size));
  return block.Handle();
}

void* MemoryBlockGetPtr(void* block) {
  const Outside outside;
  if (Note("memoryBlockGetPtr", {NameOf(block)}) || block == nullptr) return nullptr;
  HostObject& host = TheHost().Object(block);
  return host.hasPointer ? host.bytes.data() : nullptr;
}

std::int32_t MemoryBlockGetSize(void* block) {
  const Outside outside;
  if (Note("memoryBlockGetSize", {NameOf(block)}) || block == nullptr) return 0;
  const HostObject& host = TheHost().Object(block);
  return host.claims ? host.claimedSize : static_cast<std::int32_t>(host.bytes.size());
}

void* CreateArray(std::int32_t elementType, std::int32_t upperBound) {
  const Outside outside;
  if (Note("RuntimeArrayCreateSingleDimBoundedArray",
           {std::to_string(elementType), std::to_string(upperBound)})) {
    return nullptr;
  }
  HostObject& array = TheHost().Make(HandleKind::kArray, "array");
  array.elementType = elementType;
  return array.Handle();
}

std::int32_t UBound(void* array) {
  const Outside outside;
  if (Note("RuntimeUBound", {NameOf(array)})) return -1;
  if (array == nullptr) return TheHost().upperBoundOfNull;
  const HostObject& host = TheHost().Object(array);
  return static_cast<std::int32_t>(host.elementType == 2 ? host.numbers.size() : host.objects.size()) - 1;
}

void InsertNumber(void* array, std::int32_t index, double value) {
  const Outside outside;
  if (Note("insert", {NameOf(array), std::to_string(index), Number(value)})) return;
  std::vector<double>& numbers = TheHost().Object(array).numbers;
  numbers.insert(
      numbers.begin() + std::min<std::ptrdiff_t>(index, static_cast<std::ptrdiff_t>(numbers.size())), value);
}

void InsertObject(void* array, std::int32_t index, void* object) {
  const Outside outside;
  if (Note("insert", {NameOf(array), std::to_string(index), NameOf(object)})) return;
  if (object != nullptr) {
    ++TheHost().Object(object).references;
    ++TheHost().Object(object).owned;
  }
  std::vector<void*>& objects = TheHost().Object(array).objects;
  objects.insert(
      objects.begin() + std::min<std::ptrdiff_t>(index, static_cast<std::ptrdiff_t>(objects.size())), object);
}

void ReadNumber(void* array, std::int32_t index, double* out) {
  const Outside outside;
  if (Note("read", {NameOf(array), std::to_string(index)})) return;
  *out = TheHost().Object(array).numbers.at(static_cast<std::size_t>(index));
}

void* GetInsertProc(void* array) {
  const Outside outside;
  if (Note("RuntimeArrayDirectGetInsertProc", {NameOf(array)}) || array == nullptr) return nullptr;
  return TheHost().Object(array).elementType == 2 ? DoorOf<&InsertNumber>("insert")
                                                  : DoorOf<&InsertObject>("insert");
}

void* GetGetProc(void* array) {
  const Outside outside;
  if (Note("RuntimeArrayDirectGetGetProc", {NameOf(array)}) || array == nullptr) return nullptr;
  return DoorOf<&ReadNumber>("read");
}

std::uint32_t FSRefFromFolderItem(void* item, FSRef* ref, HFSUniStr255* leafName) {
  const Outside outside;
  const bool null = Note("REALFSRefFromFolderItem", {NameOf(item), leafName == nullptr ? "no name" : "name"});
  if (null || item == nullptr) return Truth(false);
  const HostObject& host = TheHost().Object(item);
  const std::string& path = leafName == nullptr ? host.ownPath : host.parentPath;
  if (path.empty()) return Truth(false);
  TheHost().PutPath(ref, path);
  if (leafName != nullptr) {
    const std::uint16_t length = leafName->length;
    const bool clear =
        length == 0 && std::ranges::all_of(leafName->unicode, [](UniChar unit) { return unit == 0; });
    if (!clear) Log().Violation("the name buffer was not cleared before the host filled it");
    leafName->length = static_cast<std::uint16_t>(host.leafName.size());
    std::memcpy(leafName->unicode, host.leafName.data(), host.leafName.size() * 2);
  }
  return Truth(true);
}

struct ServiceEntry {
  const char* name;
  void* function;
};

template <auto service>
ServiceEntry Entry(const char* name) {
  return {name, DoorOf<service>(name)};
}

}  // namespace

void* Host::Resolve(const char* name) {
  CheckStack("the resolver", __builtin_dwarf_cfa());
  const Outside outside;
  static const std::vector<ServiceEntry> services = {
      Entry<&GetRBVersion>("REALGetRBVersion"),
      Entry<&RegisterPluginVersion>("RegisterPluginVersion"),
      Entry<&RegisterClass>("PluginRegisterClass"),
      Entry<&scripted::NewInstance>("PluginNewInstance"),
      Entry<&LockObject>("REALLockObject"),
      Entry<&UnlockObject>("REALUnlockObject"),
      Entry<&LockString>("REALLockString"),
      Entry<&scripted::UnlockString>("REALUnlockString"),
      Entry<&RaiseException>("RuntimeRaiseException"),
      Entry<&SetPropValueInt>("REALSetPropValueInt"),
      Entry<&SetPropValueString>("REALSetPropValueString"),
      Entry<&GetStringData>("PluginGetStringData"),
      Entry<&DisposeStringData>("PluginDisposeStringData"),
      Entry<&StringGetCString>("StringGetCString"),
      Entry<&LoadGlobalMethod>("REALLoadGlobalMethod"),
      Entry<&GetStringCFString>("REALGetStringCFString"),
      Entry<&BuildString>("REALBuildString"),
      Entry<&BuildStringWithEncoding>("REALBuildStringWithEncoding"),
      Entry<&GetStringEncoding>("REALGetStringEncoding"),
      Entry<&SetStringEncoding>("REALSetStringEncoding"),
      Entry<&ConvertString>("REALConvertString"),
      Entry<&NewMemoryBlock>("newMemoryBlock"),
      Entry<&MemoryBlockGetPtr>("memoryBlockGetPtr"),
      Entry<&MemoryBlockGetSize>("memoryBlockGetSize"),
      Entry<&CreateArray>("RuntimeArrayCreateSingleDimBoundedArray"),
      Entry<&UBound>("RuntimeUBound"),
      Entry<&GetInsertProc>("RuntimeArrayDirectGetInsertProc"),
      Entry<&GetGetProc>("RuntimeArrayDirectGetGetProc"),
      Entry<&FSRefFromFolderItem>("REALFSRefFromFolderItem"),
  };
  const Fault fault = Log().Record(EventKind::kResolve, name, "resolve " + std::string(name));
  const auto found = std::ranges::find_if(
      services, [&](const ServiceEntry& entry) { return std::strcmp(entry.name, name) == 0; });
  if (found == services.end()) {
    Log().Violation("the resolver was asked for \"" + std::string(name) + "\", which no host has");
    return nullptr;
  }
  if (fault == Fault::kMissing || TheHost().missing.contains(name)) return nullptr;
  return found->function;
}

}  // namespace scripted
