// bridge/references.h - owned host references. For code that sends no platform message: a platform exception
// jumps over destructors, and bridge/holdings.h is for that.
#pragma once

#include "host/services.h"

namespace qvx {

// One reference to a host object or string, or none. Release gives it back; the destructor does the same
// while a C++ exception unwinds.
template <typename Handle, auto& Unlock>
class HostReference {
 public:
  HostReference() = default;
  explicit HostReference(Handle handle) : handle_(handle) {}
  HostReference(const HostReference&) = delete;
  HostReference& operator=(const HostReference&) = delete;
  ~HostReference() {
    try {
      Release();
    } catch (...) {  // NOLINT(bugprone-empty-catch): the first exception goes on
    }
  }

  explicit operator bool() const { return handle_ != nullptr; }
  Handle Get() const { return handle_; }
  // Takes over the caller's reference; nothing may be held.
  void Take(Handle handle) { handle_ = handle; }
  void Release() {
    const Handle handle = handle_;
    handle_ = nullptr;
    if (handle != nullptr) Unlock(handle);
  }

 private:
  Handle handle_ = nullptr;
};

using ObjectReference = HostReference<REALobject, REALUnlockObject>;
using StringReference = HostReference<REALstring, REALUnlockString>;

}  // namespace qvx
