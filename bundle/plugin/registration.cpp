// bundle/plugin/registration.cpp - handing class definitions to the host, in its own layout.
#include "bundle/plugin/registration.h"

#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>

#include "bundle/host/services.h"

namespace qvx {

constinit std::int32_t CurrentREALControlVersion = 13;

namespace {

constexpr std::int32_t kNewestOldLayout = 9;
constexpr std::int32_t kClassDataAlignment = 16;

// A zero-filled array of `count` old records; null for none, and above 2^31 - 1 bytes.
char* NewOldRecords(std::int32_t count, std::size_t oldSize) {
  constexpr std::size_t kMostBytes = std::numeric_limits<std::int32_t>::max();
  if (count <= 0 || static_cast<std::size_t>(count) > kMostBytes / oldSize) return nullptr;
  return static_cast<char*>(std::calloc(static_cast<std::size_t>(count), oldSize));
}

// The first `oldSize` bytes of each record in a new array; null for none.
template <typename Record>
Record* Shrunk(const Record* records, std::int32_t count, std::size_t oldSize) {
  if (records == nullptr) return nullptr;
  char* const shrunk = NewOldRecords(count, oldSize);
  if (shrunk == nullptr) return nullptr;
  for (std::int32_t i = 0; i < count; ++i) {
    std::memcpy(shrunk + static_cast<std::size_t>(i) * oldSize, records + i, oldSize);
  }
  return reinterpret_cast<Record*>(shrunk);
}

// Deliberate: each source record is left pointing to its shrunk copy.
REALevent* ShrunkEvents(REALevent* events, std::int32_t count) {
  REALevent* const shrunk = Shrunk(events, count, kOldEventSize);
  if (shrunk == nullptr) return nullptr;
  for (std::int32_t i = 0; i < count; ++i) {
    events[i].implementation = reinterpret_cast<char*>(shrunk) + static_cast<std::size_t>(i) * kOldEventSize;
  }
  return shrunk;
}

// Fills the old layout, zero so far, from the definition in the current one.
void Downgrade(const REALclassDefinition& definition, REALclassDefinition* old) {
  old->version = CurrentREALControlVersion;
  old->name = definition.name;
  old->superName = definition.superName;
  old->dataSize = definition.dataSize;
  old->dataOffset = definition.dataOffset;
  old->constructor = definition.constructor;
  old->destructor = definition.destructor;
  old->properties = FixProperties(definition.properties, definition.propertyCount);
  old->propertyCount = definition.propertyCount;
  old->methods = Shrunk(definition.methods, definition.methodCount, kOldMethodSize);
  old->methodCount = definition.methodCount;
  old->events = ShrunkEvents(definition.events, definition.eventCount);
  old->eventCount = definition.eventCount;
  old->eventInstances = definition.eventInstances;
  old->eventInstanceCount = definition.eventInstanceCount;
  old->interfaces = definition.interfaces;
  old->constants = Shrunk(definition.constants, definition.constantCount, kOldConstantSize);
  old->constantCount = definition.constantCount;
  old->flags = definition.flags;
  old->sharedMethods = Shrunk(definition.sharedMethods, definition.sharedMethodCount, kOldMethodSize);
  old->sharedMethodCount = definition.sharedMethodCount;
  old->sharedProperties = FixProperties(definition.sharedProperties, definition.sharedPropertyCount);
  old->sharedPropertyCount = definition.sharedPropertyCount;
}

}  // namespace

REALproperty* FixProperties(const REALproperty* properties, std::int32_t count) {
  return Shrunk(properties, count, kOldPropertySize);
}

void MyREALRegisterClass(REALclassDefinition* definition) {
  while (definition->dataSize % kClassDataAlignment != 0) ++definition->dataSize;
  if (CurrentREALControlVersion > kNewestOldLayout) {
    definition->version = CurrentREALControlVersion;
    REALRegisterClass(definition);
    return;
  }
  // The scratch record ends where the old layout does; the definition's last words stay as they are.
  struct Free {
    void operator()(REALclassDefinition* memory) const { std::free(memory); }
  };
  const std::unique_ptr<REALclassDefinition, Free> scratch(
      static_cast<REALclassDefinition*>(std::calloc(1, kOldClassSize)));
  if (scratch == nullptr) return;
  Downgrade(*definition, scratch.get());
  std::memcpy(static_cast<void*>(definition), scratch.get(), kOldClassSize);
  REALRegisterClass(definition);
}

}  // namespace qvx
