// bundle/host/records.h - the definition records that registration hands to the host. Every byte position is
// the host's.
//
// The structs are the current layout (versions 10 to 13). Hosts of layout version 9 and below know shorter
// records: the first kOld... bytes of the same ones.
#pragma once

#include "bundle/host/types.h"

namespace qvx {

using REALproc = void (*)();

struct REALmethodDefinition {
  REALproc function;
  REALproc second;  // a second function, always null here
  const char* declaration;
  std::uint32_t flags;
  std::uint32_t reserved[2];  // current layout only
};

struct REALproperty {
  const char* group;
  const char* name;
  const char* type;
  std::uint32_t flags;
  REALproc getter;  // takes (host object, int32 parameter)
  REALproc setter;  // null: read-only
  std::uint32_t parameter;
  std::uint32_t reserved[3];
  std::uint32_t reservedCurrent[2];  // current layout only
};

struct REALconstant {
  const char* declaration;
  std::uint32_t reserved[2];
  std::uint32_t reservedCurrent[2];  // current layout only
};

struct REALevent {
  const char* declaration;
  void* implementation;
  std::uint32_t reservedCurrent[2];  // current layout only
};

// The old layout ends with sharedMethodCount.
struct REALclassDefinition {
  std::int32_t version = 0;
  const char* name = nullptr;
  const char* superName = nullptr;
  std::int32_t dataSize = 0;
  std::uint32_t dataOffset = 0;  // 0 here; the host stores where the class data starts in an instance
  void (*constructor)(REALobject) = nullptr;
  void (*destructor)(REALobject) = nullptr;
  REALproperty* properties = nullptr;
  std::int32_t propertyCount = 0;
  REALmethodDefinition* methods = nullptr;
  std::int32_t methodCount = 0;
  REALevent* events = nullptr;
  std::int32_t eventCount = 0;
  void* eventInstances = nullptr;
  std::int32_t eventInstanceCount = 0;
  const char* interfaces = nullptr;
  std::uint32_t zero[2]{};  // the old layout requires 0
  REALconstant* constants = nullptr;
  std::int32_t constantCount = 0;
  std::uint32_t flags = 0;
  REALproperty* sharedProperties = nullptr;
  std::int32_t sharedPropertyCount = 0;
  REALmethodDefinition* sharedMethods = nullptr;
  std::int32_t sharedMethodCount = 0;
  std::uint32_t reserved[4]{};
};

inline constexpr std::size_t kOldMethodSize = 16;
inline constexpr std::size_t kOldPropertySize = 40;
inline constexpr std::size_t kOldConstantSize = 12;
inline constexpr std::size_t kOldEventSize = 8;
inline constexpr std::size_t kOldClassSize = 100;

inline constexpr std::uint32_t kClassFlags = 4;
inline constexpr std::uint32_t kMethodFlags = 4;
inline constexpr std::uint32_t kConstructorFlags = 4 + 128;
inline constexpr std::uint32_t kPropertyFlags = 6;

static_assert(sizeof(void*) == 4, "the host's records hold 32-bit pointers");

static_assert(sizeof(REALmethodDefinition) == 24);
static_assert(offsetof(REALmethodDefinition, declaration) == 8);
static_assert(offsetof(REALmethodDefinition, flags) == 12);
static_assert(offsetof(REALmethodDefinition, reserved) == kOldMethodSize);

static_assert(sizeof(REALproperty) == 48);
static_assert(offsetof(REALproperty, name) == 4);
static_assert(offsetof(REALproperty, type) == 8);
static_assert(offsetof(REALproperty, flags) == 12);
static_assert(offsetof(REALproperty, getter) == 16);
static_assert(offsetof(REALproperty, setter) == 20);
static_assert(offsetof(REALproperty, parameter) == 24);
static_assert(offsetof(REALproperty, reservedCurrent) == kOldPropertySize);

static_assert(sizeof(REALconstant) == 20);
static_assert(offsetof(REALconstant, reservedCurrent) == kOldConstantSize);

static_assert(sizeof(REALevent) == 16);
static_assert(offsetof(REALevent, implementation) == 4);
static_assert(offsetof(REALevent, reservedCurrent) == kOldEventSize);

static_assert(sizeof(REALclassDefinition) == 116);
static_assert(offsetof(REALclassDefinition, name) == 4);
static_assert(offsetof(REALclassDefinition, superName) == 8);
static_assert(offsetof(REALclassDefinition, dataSize) == 12);
static_assert(offsetof(REALclassDefinition, dataOffset) == 16);
static_assert(offsetof(REALclassDefinition, constructor) == 20);
static_assert(offsetof(REALclassDefinition, destructor) == 24);
static_assert(offsetof(REALclassDefinition, properties) == 28);
static_assert(offsetof(REALclassDefinition, methods) == 36);
static_assert(offsetof(REALclassDefinition, events) == 44);
static_assert(offsetof(REALclassDefinition, eventInstances) == 52);
static_assert(offsetof(REALclassDefinition, interfaces) == 60);
static_assert(offsetof(REALclassDefinition, zero) == 64);
static_assert(offsetof(REALclassDefinition, constants) == 72);
static_assert(offsetof(REALclassDefinition, flags) == 80);
static_assert(offsetof(REALclassDefinition, sharedProperties) == 84);
static_assert(offsetof(REALclassDefinition, sharedMethods) == 92);
static_assert(offsetof(REALclassDefinition, reserved) == kOldClassSize);

}  // namespace qvx
