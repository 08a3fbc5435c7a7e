// bundle/bridge/instances.h - wrapper instances: host objects whose class data is one retained native object,
// and the cache that gives one host object per native object.
#pragma once

#include "bundle/bridge/guard.h"
#include "bundle/bridge/holdings.h"
#include "bundle/host/services.h"
#include "bundle/platform/cocoa.h"
#include "bundle/platform/messages.h"

namespace qvx {

// The class data starts this many bytes into a host object.
inline constexpr std::size_t kClassDataOffset = 24;

// The instance cache: native object to host object, without references. Owned by the sibling parts, null
// without them; a null cache is not used.
inline constinit CFMutableDictionaryRef instances = nullptr;

// Whether the sibling part's exception bridging has been prepared.
inline constinit bool ExceptionsInitialized = false;

// Fetches the instance cache and prepares exception bridging, each once, as soon as a sibling part offers it.
void FetchFromSiblings();
inline void CocoaInit() {
  if (instances == nullptr || !ExceptionsInitialized) [[unlikely]]
    FetchFromSiblings();
}

// The class data `offset` bytes into an instance, which must not be null. While it is not nil, the instance
// owns one retain of the native object.
inline id& ClassData(REALobject instance, std::size_t offset = kClassDataOffset) {
  return *reinterpret_cast<id*>(reinterpret_cast<char*>(instance) + offset);
}

// The native object of an instance of any wrapper class; nil for null and for an empty instance. Borrowed.
inline id NativeOf(REALobject instance) {
  return instance != nullptr ? ClassData(instance) : nullptr;
}

// Cache entries. Without a cache nothing is done.
inline void EnterInCache(id native, REALobject instance) {
  if (instances != nullptr) CFDictionarySetValue(instances, native, instance);
}
inline void RemoveFromCache(id native) {
  if (instances != nullptr) CFDictionaryRemoveValue(instances, native);
}

// What the destructors do: inside the guard, removes the native object from the cache, releases it and clears
// the class data. `offset` is where the class keeps its data; null instances are left alone.
inline void DestroyInstance(REALobject instance, std::size_t offset) {
  Guarded<OnNSException::kRaise, &CocoaInit>([instance, offset] {
    if (instance == nullptr) return;
    id& native = ClassData(instance, offset);
    if (native == nullptr) return;
    RemoveFromCache(native);
    msg::release(native);
    native = nullptr;
  });
}

// A new instance of a wrapper class, which retains the native object and enters the cache. Null when the host
// has no such class.
REALobject NewEnteredInstance(id native, const char* className, Holdings& holdings);

// The host object that wraps a native object, with one reference for the caller: the one in the cache, locked
// once more, or else a new instance. Null for nil.
[[gnu::always_inline]] inline REALobject NewWrapper(id native, const char* className, Holdings& holdings) {
  if (native == nullptr) return nullptr;
  if (instances != nullptr) {
    if (const void* found = CFDictionaryGetValue(instances, native)) {
      const auto wrapper = static_cast<REALobject>(const_cast<void*>(found));
      REALLockObject(wrapper);
      return wrapper;
    }
  }
  return NewEnteredInstance(native, className, holdings);
}

inline REALobject NewNSColorQVX(id color, Holdings& holdings) {
  return NewWrapper(color, "NSColorQVX", holdings);
}
inline REALobject NewNSColorSpaceQVX(id colorSpace, Holdings& holdings) {
  return NewWrapper(colorSpace, "NSColorSpaceQVX", holdings);
}
// The same for the sibling part's image class.
inline REALobject NewNSImageQVX(id image, Holdings& holdings) {
  return NewWrapper(image, "NSImageQVX", holdings);
}

}  // namespace qvx
