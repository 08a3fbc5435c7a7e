// tests/bundle/scripted/host.h - the scripted host: every service of the contract, real handles, and
// balances.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "bundle/host/records.h"
#include "bundle/host/types.h"
#include "bundle/platform/cocoa.h"

namespace scripted {

struct NativeObject;

// Where the class data starts in a host object.
inline constexpr std::size_t kClassDataOffset = 24;

enum class HandleKind : std::uint8_t { kObject, kArray, kBlock, kItem };

// What the host knows about a handle. The handle itself points to `memory`.
struct HostObject {
  HandleKind kind = HandleKind::kObject;
  std::string className;
  std::string name;
  int references = 1;    // of everybody
  int owned = 0;         // those that are not the bundle's: of the test, of an array, of the host's own raise
  bool foreign = false;  // made by a sibling part, which holds what it wraps
  int locks = 0;         // "REALLockObject" calls so far
  int unlocks = 0;
  bool freed = false;
  bool constructed = true;           // false for good when an exception leaves the constructor
  std::vector<std::uint8_t> memory;  // header, class data, guard bytes

  std::map<std::string, std::string> properties;  // as text, for exceptions
  std::int32_t elementType = 0;                   // arrays
  std::vector<double> numbers;
  std::vector<void*> objects;
  std::vector<std::uint8_t> bytes;  // blocks
  bool hasPointer = true;
  std::int32_t claimedSize = 0;
  bool claims = false;

  // Folder items: the references that the host can make, by path; an empty path is one it can't.
  std::string ownPath;
  std::string parentPath;
  std::u16string leafName;

  [[nodiscard]] void* Handle() { return memory.data(); }
  [[nodiscard]] NativeObject* Native() const;  // class data
  void SetNative(const NativeObject* native);
  [[nodiscard]] bool HeaderIntact() const;  // nobody wrote outside the class data
};

struct HostString {
  qvx::OldStringRecord record{};  // first: the handle points here
  std::string bytes;
  std::string storage;  // what the old record points to: one byte to skip, the text, a terminator
  std::uint32_t encoding = 0;
  int references = 1;
  int owned = 0;
  int locks = 0;
  int unlocks = 0;
  bool freed = false;
};

// A definition as it was when it was registered: word by word, and the functions found by declaration.
struct RegisteredClass {
  qvx::REALclassDefinition* live = nullptr;
  std::vector<std::uint32_t> words;
  struct Entry {
    std::string declaration;  // or the property's name
    void* function = nullptr;
    std::vector<std::uint32_t> words;
  };
  std::vector<Entry> methods;
  std::vector<Entry> sharedMethods;
  std::vector<Entry> properties;
  std::vector<Entry> constants;
};

struct RaisedException {
  std::string className;
  std::string message;
  std::string errorNumber;
  void* object = nullptr;
  NativeObject* native = nullptr;
};

class Host {
 public:
  long double version = 2015.0L;
  std::set<std::string, std::less<>> missing;         // services that the resolver does not know
  std::set<std::string, std::less<>> missingClasses;  // classes that "PluginNewInstance" does not know
  std::map<std::string, std::function<void()>, std::less<>>
      before;  // runs when a service is called; may throw
  // What a service raises, once, instead of doing its work, as a host that uses the platform itself may.
  std::map<std::string, NativeObject*, std::less<>> raising;

  std::int32_t upperBoundOfNull = -1;               // what "RuntimeUBound" answers for no array
  std::optional<std::int32_t> lengthOfEveryString;  // what "LenB" answers instead of the truth

  char flagOfLastString = 0;  // what "REALGetStringCFString" got last, undefined where it was passed none

  // The resolver, as the bundle gets it.
  static void* Resolve(const char* name);

  // Handles made by the test; every one carries a single reference, which the test owns.
  HostObject& NewObject(std::string_view className);
  HostObject& NewArray(std::int32_t elementType);
  HostObject& NewNumbers(std::vector<double> numbers);
  HostObject& NewBlock(std::vector<std::uint8_t> bytes);
  HostObject& NewItem(std::string_view ownPath, std::string_view parentPath, std::u16string_view leafName);
  qvx::REALstring NewString(std::string_view bytes, std::uint32_t encoding = qvx::kEncodingUTF8);
  // An object of a sibling's class that wraps a native object.
  void* NewForeign(std::string_view className, NativeObject* native);

  // An instance made as the host makes it: class data zeroed, constructor run.
  HostObject& Construct(std::string_view className);
  // The same, wrapping a native object that it holds once.
  HostObject& Wrap(std::string_view className, NativeObject* native);
  // The test takes over a reference that the bundle answered.
  void Adopt(const void* handle);
  // The test gives up a reference of its own. An instance is freed through its destructor.
  void Unlock(void* handle);
  void UnlockString(void* string);

  // What stands behind a handle; aborts the test for anything else.
  HostObject& Object(const void* handle);
  HostString& String(const void* handle);
  [[nodiscard]] bool IsObject(const void* handle) const;
  [[nodiscard]] bool IsString(const void* handle) const;
  std::string Text(const void* string);  // "" for the null string

  // Forgets every handle and all settings, but for the version and the registered classes.
  void ForgetHandles();

  const RegisteredClass& Class(std::string_view name);
  std::vector<RegisteredClass> registered;  // in order of registration
  std::vector<std::int32_t> announcedVersions;
  std::vector<RaisedException> raised;
  std::vector<char*> liveStringData;  // filled by "PluginGetStringData" and not disposed of

  std::string PathOf(const FSRef& ref) const;
  void PutPath(FSRef* ref, std::string_view path);

  [[nodiscard]] const std::vector<HostObject*>& Objects() const { return objects_; }
  [[nodiscard]] const std::vector<HostString*>& Strings() const { return strings_; }

  // Internal to the services.
  HostObject& Make(HandleKind kind, std::string_view className);
  HostObject& NewInstance(std::string_view className);
  void Release(HostObject& object);
  static void Release(HostString& string);
  HostString& MakeString(std::string_view bytes, std::uint32_t encoding);

 private:
  std::vector<HostObject*> objects_;
  std::vector<HostString*> strings_;
  std::map<const void*, HostObject*> byHandle_;
  std::map<const void*, HostString*> byString_;
  std::map<std::string, int, std::less<>> counters_;
  std::vector<std::string> paths_;
};

Host& TheHost();

// The log's name for a host handle, or "" for anything else.
std::string DescribeHandle(const void* pointer);

// Keeps a definition's words and functions, reading the layout of the version that stands in it.
RegisteredClass ReadDefinition(qvx::REALclassDefinition* definition);

}  // namespace scripted
