// tests/bundle/scripted/host.cpp - the scripted host's handles.
#include "tests/bundle/scripted/host.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "tests/bundle/scripted/event_log.h"
#include "tests/bundle/scripted/native_object.h"
#include "tests/bundle/scripted/platform.h"

namespace scripted {
namespace {

constexpr std::size_t kClassDataSize = 16;
constexpr std::uint8_t kGuardByte = 0xE7;
constexpr std::size_t kGuardSize = 16;

}  // namespace

Host& TheHost() {
  static auto* const host = new Host;
  return *host;
}

NativeObject* HostObject::Native() const {
  void* pointer = nullptr;
  std::memcpy(&pointer, memory.data() + kClassDataOffset, sizeof pointer);
  return scripted::Native(pointer);
}

void HostObject::SetNative(const NativeObject* native) {
  const void* const pointer = native;
  std::memcpy(memory.data() + kClassDataOffset, &pointer, sizeof pointer);
}

bool HostObject::HeaderIntact() const {
  const auto isGuard = [](std::uint8_t byte) { return byte == kGuardByte; };
  return std::all_of(memory.begin(), memory.begin() + kClassDataOffset, isGuard) &&
         std::all_of(memory.end() - kGuardSize, memory.end(), isGuard);
}

HostObject& Host::Make(HandleKind kind, std::string_view className) {
  const Outside outside;
  auto* const object = new HostObject;
  object->kind = kind;
  object->className = className;
  object->name = std::string(className) + "#" + std::to_string(++counters_[std::string(className)]);
  // The header belongs to the host: rubbish that nobody may touch. The class data is zeroed.
  object->memory.assign(kClassDataOffset + kClassDataSize + kGuardSize, kGuardByte);
  std::memset(object->memory.data() + kClassDataOffset, 0, kClassDataSize);
  objects_.push_back(object);
  byHandle_[object->Handle()] = object;
  return *object;
}

HostObject& Host::NewObject(std::string_view className) {
  HostObject& object = Make(HandleKind::kObject, className);
  object.owned = 1;
  return object;
}

HostObject& Host::NewArray(std::int32_t elementType) {
  HostObject& array = Make(HandleKind::kArray, "array");
  array.owned = 1;
  array.elementType = elementType;
  return array;
}

HostObject& Host::NewNumbers(std::vector<double> numbers) {
  HostObject& array = NewArray(2);
  array.numbers = std::move(numbers);
  return array;
}

HostObject& Host::NewBlock(std::vector<std::uint8_t> bytes) {
  HostObject& block = Make(HandleKind::kBlock, "block");
  block.owned = 1;
  block.bytes = std::move(bytes);
  return block;
}

HostObject& Host::NewItem(std::string_view ownPath, std::string_view parentPath,
                          std::u16string_view leafName) {
  HostObject& item = Make(HandleKind::kItem, "item");
  item.owned = 1;
  item.ownPath = ownPath;
  item.parentPath = parentPath;
  item.leafName = leafName;
  return item;
}

void* Host::NewForeign(std::string_view className, NativeObject* native) {
  HostObject& object = Make(HandleKind::kObject, className);
  object.foreign = true;
  object.SetNative(native);
  return object.Handle();
}

HostString& Host::MakeString(std::string_view bytes, std::uint32_t encoding) {
  const Outside outside;
  auto* const string = new HostString;
  string->bytes = bytes;
  string->encoding = encoding;
  string->storage = "\x7F" + string->bytes + std::string(4, '\0');
  if (version < 2012.0L) {
    string->record = {0xBADBAD00U, string->storage.c_str(), 0xBADBAD02U,
                      static_cast<std::int32_t>(bytes.size())};
  } else {
    // Newer hosts keep their strings otherwise: whoever reads the old record falls over.
    string->record = {0xBADBAD00U, nullptr, 0xBADBAD02U, -1};
  }
  strings_.push_back(string);
  byString_[string] = string;
  return *string;
}

qvx::REALstring Host::NewString(std::string_view bytes, std::uint32_t encoding) {
  HostString& string = MakeString(bytes, encoding);
  string.owned = 1;
  return reinterpret_cast<qvx::REALstring>(&string);
}

HostObject& Host::Construct(std::string_view className) {
  HostObject& object = NewInstance(className);
  object.owned = 1;
  return object;
}

HostObject& Host::Wrap(std::string_view className, NativeObject* native) {
  HostObject& object = Construct(className);
  object.SetNative(native);
  TakeReference(native);
  return object;
}

void Host::Adopt(const void* handle) {
  if (IsObject(handle)) ++Object(handle).owned;
  if (IsString(handle)) ++String(handle).owned;
}

HostObject& Host::NewInstance(std::string_view className) {
  HostObject& object = Make(HandleKind::kObject, className);
  for (const RegisteredClass& each : registered) {
    if (reinterpret_cast<const char*>(each.words[1]) == className) {
      object.constructed = false;
      {
        const Inside inside;
        each.live->constructor(static_cast<qvx::REALobject>(object.Handle()));
      }
      object.constructed = true;
    }
  }
  return object;
}

void Host::Release(HostObject& object) {
  if (object.freed || object.references <= 0) {
    Log().Violation(object.name + " was unlocked once too often");
    return;
  }
  if (--object.references > 0) return;
  const auto found = std::ranges::find_if(registered, [&](const RegisteredClass& each) {
    return reinterpret_cast<const char*>(each.words[1]) == object.className;
  });
  if (found != registered.end()) {
    const Inside inside;
    found->live->destructor(static_cast<qvx::REALobject>(object.Handle()));
  } else if (NativeObject* const native =
                 object.foreign || object.kind != HandleKind::kObject ? nullptr : object.Native()) {
    // The destructor of a sibling's class does as the bundle's own.
    if (ThePlatform().instances != nullptr) ThePlatform().instances->entries.erase(native);
    GiveReference(native, "the sibling's destructor");
    object.SetNative(nullptr);
  }
  for (void* const element : object.objects) Unlock(element);
  object.freed = true;
}

void Host::Release(HostString& string) {
  if (string.freed || string.references <= 0) {
    Log().Violation("a string was unlocked once too often: " + Quoted(string.bytes));
    return;
  }
  if (--string.references == 0) string.freed = true;
}

void Host::Unlock(void* handle) {
  if (handle == nullptr) return;
  --Object(handle).owned;
  Release(Object(handle));
}

void Host::UnlockString(void* string) {
  if (string == nullptr) return;
  --String(string).owned;
  Release(String(string));
}

bool Host::IsObject(const void* handle) const {
  return byHandle_.contains(handle);
}
bool Host::IsString(const void* handle) const {
  return byString_.contains(handle);
}

HostObject& Host::Object(const void* handle) {
  const auto found = byHandle_.find(handle);
  if (found == byHandle_.end()) {
    std::fprintf(stderr, "wanted a host object, found %p; a handle was mixed up\n", handle);
    std::abort();
  }
  if (found->second->freed) Log().Violation(found->second->name + " was used after it was freed");
  return *found->second;
}

HostString& Host::String(const void* handle) {
  const auto found = byString_.find(handle);
  if (found == byString_.end()) {
    std::fprintf(stderr, "wanted a host string, found %p; a handle was mixed up\n", handle);
    std::abort();
  }
  if (found->second->freed)
    Log().Violation("a string was used after it was freed: " + Quoted(found->second->bytes));
  return *found->second;
}

std::string Host::Text(const void* string) {
  return string == nullptr ? std::string() : String(string).bytes;
}

const RegisteredClass& Host::Class(std::string_view name) {
  for (const RegisteredClass& each : registered) {
    if (reinterpret_cast<const char*>(each.words[1]) == name) return each;
  }
  std::fprintf(stderr, "wanted the registered class %.*s, found none\n", static_cast<int>(name.size()),
               name.data());
  std::abort();
}

void Host::ForgetHandles() {
  for (const HostObject* const object : objects_) delete object;
  for (const HostString* const string : strings_) delete string;
  for (char* const data : liveStringData) std::free(data);
  Host fresh;
  fresh.version = version;
  fresh.registered = std::move(registered);
  *this = std::move(fresh);
}

void Host::PutPath(FSRef* ref, std::string_view path) {
  std::memset(ref, 0x5A, sizeof *ref);
  const std::size_t index = paths_.size();
  paths_.emplace_back(path);
  std::memcpy(ref->hidden, &index, sizeof index);
}

std::string Host::PathOf(const FSRef& ref) const {
  std::size_t index = 0;
  std::memcpy(&index, ref.hidden, sizeof index);
  return index < paths_.size() ? paths_[index] : "?";
}

std::string DescribeHandle(const void* pointer) {
  Host& host = TheHost();
  if (host.IsString(pointer)) return Quoted(static_cast<const HostString*>(pointer)->bytes);
  if (host.IsObject(pointer)) {
    for (const HostObject* const object : host.Objects()) {
      if (object->memory.data() == pointer) return object->name;
    }
  }
  return {};
}

RegisteredClass ReadDefinition(qvx::REALclassDefinition* definition) {
  RegisteredClass read;
  read.live = definition;
  const auto copyWords = [](const void* from, std::size_t size) {
    std::vector<std::uint32_t> words(size / 4);
    if (size > 0) std::memcpy(words.data(), from, size);
    return words;
  };
  const bool old = definition->version <= 9;
  read.words = copyWords(definition, 116);
  const auto pointerIn = [&](const std::vector<std::uint32_t>& words, std::size_t word) {
    return reinterpret_cast<void*>(static_cast<std::uintptr_t>(words[word]));
  };
  const auto readTable = [&](std::size_t word, std::size_t size, std::size_t oldSize, std::size_t function,
                             std::size_t text) {
    std::vector<RegisteredClass::Entry> entries;
    const auto* const table = static_cast<const std::uint8_t*>(pointerIn(read.words, word));
    const auto count = static_cast<std::int32_t>(read.words[word + 1]);
    const std::size_t stride = old ? oldSize : size;
    for (std::int32_t i = 0; table != nullptr && i < count; ++i) {
      RegisteredClass::Entry entry;
      entry.words = copyWords(table + static_cast<std::size_t>(i) * stride, stride);
      entry.declaration = static_cast<const char*>(pointerIn(entry.words, text));
      if (function < entry.words.size()) entry.function = pointerIn(entry.words, function);
      entries.push_back(std::move(entry));
    }
    return entries;
  };
  constexpr std::size_t kNoFunction = 99;
  read.properties = readTable(7, 48, 40, 4, 1);
  read.methods = readTable(9, 24, 16, 0, 2);
  read.constants = readTable(18, 20, 12, kNoFunction, 0);
  read.sharedMethods = readTable(23, 24, 16, 0, 2);
  return read;
}

}  // namespace scripted
