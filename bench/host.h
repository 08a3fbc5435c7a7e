// bench/host.h - a small host: the services at little cost, on the heap where a host would be.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "bench/platform.h"
#include "bundle/host/records.h"

namespace bench {

// What every handle starts with. Strings are not objects, but are counted the same way.
struct HostObject {
  enum class Kind : std::int32_t { kInstance, kArray, kBlock, kString };
  std::int32_t references;
  Kind kind;
  const qvx::REALclassDefinition* definition;  // of an instance of one of the bundle's classes
};

inline constexpr std::size_t kInstanceDataOffset = 24;

// The host as one bundle sees it. Several bundles may be loaded, each with its own; services act on the
// active one.
struct Host {
  const Platform* platform;
  double version;
  std::vector<qvx::REALclassDefinition*> definitions;
  // The same classes with the constructor and the destructor of the prescribed paths.
  std::vector<qvx::REALclassDefinition> prescribed{};
  int raised = 0;

  // The function of the property, method or shared method whose name or declaration starts so.
  qvx::REALproc Find(std::string_view className, std::string_view name) const;
};

void Activate(Host& host);

// The resolver to hand to a bundle.
void* Resolve(const char* name);

// A host exception for a platform one; for the sibling parts.
void* NewHostExceptionFor(id exception);

// Direct ways in, for the limits and for what the rows need. What is new has one reference.
qvx::REALobject NewInstance(const char* className);
qvx::REALobject NewPrescribedInstance(const char* className);
void Lock(void* handle);
void Unlock(void* handle);
qvx::REALstring BuildString(const void* bytes, std::int32_t length);
void SetStringEncoding(qvx::REALstring string, std::uint32_t encoding);
qvx::REALstring NewString(std::string_view text);
qvx::REALarray NewArrayOfDoubles(const std::vector<double>& values);
qvx::REALmemoryBlock NewBlock(const void* bytes, std::int32_t size);
id& NativeOf(qvx::REALobject instance);

}  // namespace bench
