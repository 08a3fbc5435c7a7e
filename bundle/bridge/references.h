// bundle/bridge/references.h - owned host references.
//
// A platform exception jumps over destructors: an owned reference lives either where no platform message is
// sent, or outside of the exception frame.
#pragma once

#include <type_traits>

#include "bundle/host/services.h"

namespace qvx {

// Gives one reference back to the host.
inline void GiveBack(REALobject object) {
  REALUnlockObject(object);
}
inline void GiveBack(REALstring string) {
  REALUnlockString(string);
}
inline void GiveBack(REALarray array) {
  REALUnlockObject(AsObject(array));
}
inline void GiveBack(REALmemoryBlock block) {
  REALUnlockObject(AsObject(block));
}

// One reference to a host value, or none. Release gives it back; the destructor does the same while a C++
// exception unwinds.
template <typename Handle>
class HostReference {
 public:
  HostReference() = default;
  // Takes over the caller's reference.
  explicit HostReference(Handle handle) : handle_(handle) {}
  HostReference(const HostReference&) = delete;
  HostReference& operator=(const HostReference&) = delete;
  ~HostReference() {
    if (handle_ != nullptr) [[unlikely]] {
      ReleaseWhileUnwinding();
    }
  }

  explicit operator bool() const { return handle_ != nullptr; }
  Handle Get() const { return handle_; }
  // Where a new reference is stored; nothing may be held.
  Handle& Slot() { return handle_; }
  void Release() {
    if (handle_ != nullptr) GiveBack(Detach());
  }
  // The reference is the caller's from now on.
  Handle Detach() {
    const Handle handle = handle_;
    handle_ = nullptr;
    return handle;
  }

 private:
  [[gnu::noinline]] void ReleaseWhileUnwinding() {
    try {
      Release();
    } catch (...) {  // NOLINT(bugprone-empty-catch): the first exception goes on
    }
  }

  Handle handle_ = nullptr;
};

// A plain value in a HostReference's place.
template <typename Value>
class PlainValue {
 public:
  explicit PlainValue(Value value) : value_(value) {}
  Value& Slot() { return value_; }
  void Release() {}
  Value Detach() { return value_; }

 private:
  Value value_;
};

// What holds a function's result until it is returned: a reference for a handle, else the value itself.
template <typename Result>
using ResultHolder = std::conditional_t<std::is_pointer_v<Result>, HostReference<Result>, PlainValue<Result>>;

}  // namespace qvx
