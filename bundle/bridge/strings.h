// bundle/bridge/strings.h - strings between host and platform. Every string the host gets is UTF-8; nothing
// is normalised.
#pragma once

#include "bundle/bridge/holdings.h"
#include "bundle/host/types.h"
#include "bundle/platform/cocoa.h"

namespace qvx {

// String data goes back to the host or, where the host takes none, is freed.
template <>
void GiveBack(REALstringData record);

// Platform strings and URLs are platform objects.
inline id AsPlatformObject(CFTypeRef object) {
  return reinterpret_cast<id>(const_cast<void*>(object));
}

// Hands the caller's reference to the autorelease pool and answers the object, which is not nil.
inline id Autoreleased(CFTypeRef object, Holdings& holdings) {
  const unsigned held = holdings.Hold(object);
  msg::autorelease(AsPlatformObject(object));
  holdings.ForgetLast(held);
  return AsPlatformObject(object);
}

// What a conversion into a platform value has borrowed from the host, and the bytes it reads meanwhile.
// Release gives back the string's lock, then the object's, then the string data; the holdings give back what
// is left on every other way out.
class HostDataScope {
 public:
  explicit HostDataScope(Holdings& holdings) : holdings_(holdings) {}

  // Locks the string or object while its bytes are read. It is unlocked on every way out, also where the host
  // has no service to lock it or that service throws.
  void LockString(REALstring string) {
    string_ = Held(holdings_, string);
    REALLockString(string);
  }
  void LockObject(REALobject object) {
    object_ = Held(holdings_, object);
    REALLockObject(object);
  }
  // Reads the string's bytes as they are stored, through REALGetStringData.
  void ReadStringData(REALstring string);
  void Release() {
    string_.Release();
    object_.Release();
    data_.Release();
  }

  const char* bytes = nullptr;
  std::int32_t length = 0;

 private:
  Holdings& holdings_;
  Held<REALstring> string_;
  Held<REALobject> object_;
  Held<REALstringData> data_;
};

// From this version on strings are read and built by the host's newer services.
inline bool HostHasNewStrings() {
  return rbversion >= 2012.0;
}

// A platform string of a host string's bytes, where the host makes none of its own; autoreleased.
[[gnu::cold]] id NewNSStringOfBytes(REALstring s, Holdings& holdings);

// The platform string for a host string, autoreleased; nil for null and for text the platform refuses.
[[gnu::always_inline]] inline id NewNSString(REALstring s, Holdings& holdings) {
  if (s == nullptr) return nullptr;
  const void* copy = HostHasNewStrings() ? REALCopyStringCFString(s) : nullptr;
  // On new hosts this asks the same service a second time. Deliberate.
  if (copy == nullptr) copy = REALGetStringCFString(s, 0);
  return copy != nullptr ? Autoreleased(copy, holdings) : NewNSStringOfBytes(s, holdings);
}

// A new host string for a platform string; the caller owns its one reference. Null for nil, for an empty
// string, and for text that can't be had as UTF-8.
REALstring NSStringRB(id s, Holdings& holdings);

// A new host string of `byteLength` bytes in `encoding`; the caller owns its one reference. UTF-16 and UTF-32
// come back as UTF-8, 8-bit text that is plain ASCII is tagged so. Null for no bytes, for a length of 2^31 or
// more, and when memory runs out ("OutOfMemoryException" is raised then).
REALstring REALBuildUnicodeString(const void* data, std::int64_t byteLength, std::uint32_t encoding,
                                  Holdings& holdings);

// Fills `out` with the string's bytes in `encoding`, or as stored for 0xFFFF; true on success, and the caller
// then owes REALDisposeStringData (or free where the host lacks it). On a host without "PluginGetStringData"
// and for 0xFFFF, `out->length` must hold the string's byte length on entry: the buffer is sized by it, and
// no more than that is copied.
bool REALGetStringData(REALstring s, std::uint32_t encoding, REALstringData* out, Holdings& holdings);

}  // namespace qvx
