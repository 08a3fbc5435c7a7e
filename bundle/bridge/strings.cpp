// bundle/bridge/strings.cpp - strings between host and platform.
#include "bundle/bridge/strings.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <new>

#include "bundle/bridge/exceptions.h"
#include "bundle/bridge/references.h"
#include "bundle/host/services.h"
#include "bundle/platform/messages.h"

namespace qvx {

namespace {

constexpr std::int64_t kLargestBuffer = std::numeric_limits<std::int32_t>::max();

// From this version on strings are read and built by the host's newer services.
bool HostHasNewStrings() {
  return rbversion >= 2012.0;
}

struct Free {
  void operator()(void* memory) const { std::free(memory); }
};
using Buffer = std::unique_ptr<char, Free>;

void DisposeStringData(REALstringData& record) {
  if (REALDisposeStringData.Find() != nullptr) {
    REALDisposeStringData(&record);
  } else {
    std::free(record.data);
  }
}

// Copies `length` bytes and four zero bytes into a new buffer of `capacity` + 4 bytes. False without bytes or
// memory.
bool FillStringData(const char* bytes, std::int32_t length, std::int32_t capacity, std::uint32_t encoding,
                    REALstringData* out) {
  constexpr std::size_t kTerminator = 4;
  if (length < 0 || (bytes == nullptr && length > 0)) return false;
  const auto size = static_cast<std::size_t>(length);
  char* const buffer = static_cast<char*>(std::malloc(static_cast<std::size_t>(capacity) + kTerminator));
  if (buffer == nullptr) return false;
  if (size > 0) std::memcpy(buffer, bytes, size);
  std::memset(buffer + size, 0, kTerminator);
  *out = {buffer, length, encoding};
  return true;
}

// Whether the host has both services of the fallback. Asks for the bytes first, and for both in any case.
bool HasFallbackServices() {
  const bool hasBytes = StringGetCString.Find() != nullptr;
  const bool hasLength = LenB.Find() != nullptr;
  return hasBytes && hasLength;
}

// REALGetStringData on a host without "PluginGetStringData" and with the services of the fallback.
bool GetStringDataByFallback(REALstring s, std::uint32_t encoding, REALstringData* out) {
  if (encoding == kEncodingUnknown) {
    // Deliberate: the buffer is sized by what the caller put into `out`, not by what is copied. A host that
    // answers a longer length now than it did to the caller gets no more bytes copied than fit.
    const std::int32_t capacity = std::max(out->length, 0);
    const std::int32_t length = std::min(LenB(s), capacity);
    return FillStringData(StringGetCString(s), length, capacity, encoding, out);
  }
  if (REALGetStringEncoding(s) == encoding) {
    const std::int32_t length = LenB(s);
    return FillStringData(StringGetCString(s), length, length, encoding, out);
  }
  HostReference<REALstring> converted(REALConvertString(s, encoding));
  if (!converted) return false;
  const std::int32_t length = LenB(converted.Get());
  REALstringData copy = {};
  const bool filled = FillStringData(StringGetCString(converted.Get()), length, length, encoding, &copy);
  Buffer owner(copy.data);
  converted.Release();
  owner.release();  // NOLINT(bugprone-unused-return-value): `out` owns it now
  if (filled) *out = copy;
  return filled;
}

// A temporary host string, re-encoded: gives up `temporary` and answers a new reference. Asks for the
// conversion even of null.
REALstring ConvertedToUTF8(HostReference<REALstring>& temporary) {
  HostReference<REALstring> converted(REALConvertString(temporary.Get(), kEncodingUTF8));
  temporary.Release();
  return converted.Detach();
}

REALstring BuildWithEncodingAsUTF8(const void* data, std::int32_t length, std::uint32_t encoding) {
  HostReference<REALstring> temporary(REALBuildStringWithEncoding(data, length, encoding));
  return ConvertedToUTF8(temporary);
}

REALstring BuildUTF16OnOldHost(const void* data, std::int32_t length) {
  HostReference<REALstring> temporary(originalREALBuildString(data, length));
  if (!temporary) return nullptr;
  REALSetStringEncoding(temporary.Get(), kEncodingUTF16);
  return ConvertedToUTF8(temporary);
}

// Old hosts don't know UTF-32: each unit becomes the UTF-16 unit of its low 16 bits. Deliberately no
// surrogate pairs: a code point above U+FFFF loses its high bits.
REALstring BuildUTF32OnOldHost(const char* data, std::int32_t length) {
  constexpr std::int32_t kLongestOnStack = 799;
  const std::int32_t count = length / 4;
  UniChar onStack[200];
  Buffer onHeap;
  UniChar* units = onStack;
  if (length > kLongestOnStack) {
    onHeap.reset(static_cast<char*>(std::calloc(1, static_cast<std::size_t>(count) * 2 + 4)));
    if (onHeap == nullptr) return nullptr;
    units = reinterpret_cast<UniChar*>(onHeap.get());
  }
  for (std::int32_t i = 0; i < count; ++i) {
    std::uint32_t unit;
    std::memcpy(&unit, data + static_cast<std::ptrdiff_t>(i) * 4, sizeof unit);
    units[i] = static_cast<UniChar>(unit);
  }
  HostReference<REALstring> temporary(originalREALBuildString(units, count * 2));
  if (temporary) REALSetStringEncoding(temporary.Get(), kEncodingUTF16);
  return ConvertedToUTF8(temporary);
}

REALstring BuildString(const char* data, std::int32_t length, std::uint32_t encoding) {
  HostReference<REALstring> string(originalREALBuildString(data, length));
  if (!string) return nullptr;
  REALSetStringEncoding(string.Get(), encoding);
  return string.Detach();
}

REALstring BuildInEncoding(const char* data, std::int32_t length, std::uint32_t encoding) {
  switch (encoding) {
    case kEncodingUTF16:
      return HostHasNewStrings() ? BuildWithEncodingAsUTF8(data, length, encoding)
                                 : BuildUTF16OnOldHost(data, length);
    case kEncodingUTF32:
      return HostHasNewStrings() ? BuildWithEncodingAsUTF8(data, length, encoding)
                                 : BuildUTF32OnOldHost(data, length);
    case kEncodingMacRoman:
    case kEncodingWindowsLatin1:
    case kEncodingUnknown: {
      const bool plain =
          std::all_of(data, data + length, [](char byte) { return static_cast<unsigned char>(byte) < 0x80; });
      return BuildString(data, length, plain ? kEncodingASCII : encoding);
    }
    default:
      return BuildString(data, length, encoding);
  }
}

// "OutOfMemoryException", whose own message is a string that may fail the same way: then it is raised
// without.
void RaiseOutOfMemoryForString() {
  static constinit bool raising = false;
  if (raising) return;
  struct Raising {
    Raising() { raising = true; }
    ~Raising() { raising = false; }
  } const once;
  RaiseException("OutOfMemoryException", "Failed to allocate memory for a string.");
}

}  // namespace

id Autoreleased(CFTypeRef object, Holdings& holdings) {
  Holdings::Item* const held = holdings.HoldReference(object);
  msg::autorelease(AsPlatformObject(object));
  holdings.Forget(held);
  return AsPlatformObject(object);
}

void HostDataScope::LockString(REALstring string) {
  if (REALLockString.Find() == nullptr) return;
  REALLockString(string);
  string_ = holdings_.Hold(
      string, [](Holdings::Item& item) { REALUnlockString(static_cast<REALstring>(item.handle)); });
}

void HostDataScope::LockObject(REALobject object) {
  if (REALLockObject.Find() == nullptr) return;
  REALLockObject(object);
  object_ = holdings_.HoldObject(object);
}

void HostDataScope::ReadStringData(REALstring string) {
  Holdings::Item* const item = holdings_.Reserve();
  if (item == nullptr) return;
  bool filled = false;
  if (PluginGetStringData.Find() != nullptr) {
    filled = REALGetStringData(string, kEncodingUnknown, &item->data);
  } else if (HasFallbackServices()) {
    // The fallback sizes its buffer by this length; a host that has the service is not asked for more.
    item->data.length = LenB(string);
    filled = GetStringDataByFallback(string, kEncodingUnknown, &item->data);
  }
  if (!filled) {
    holdings_.Forget(item);
    return;
  }
  item->giveBack = [](Holdings::Item& held) { DisposeStringData(held.data); };
  data_ = item;
  bytes = item->data.data;
  length = item->data.length;
}

void HostDataScope::Release() {
  holdings_.Release(string_);
  holdings_.Release(object_);
  holdings_.Release(data_);
}

id NewNSString(REALstring s, Holdings& holdings) {
  if (s == nullptr) return nullptr;
  if (HostHasNewStrings()) {
    if (const void* copy = REALCopyStringCFString(s)) return Autoreleased(copy, holdings);
  }
  // On new hosts this asks the same service a second time. Deliberate.
  if (const void* copy = REALGetStringCFString(s, 0)) return Autoreleased(copy, holdings);

  std::uint32_t encoding = REALGetStringEncoding(s);
  if (encoding == kEncodingUnknown) encoding = kEncodingMacRoman;

  HostDataScope scope(holdings);
  if (HostHasNewStrings()) {
    scope.ReadStringData(s);
  } else {
    scope.LockString(s);
    // Old hosts hand out their own record as the handle.
    const auto* const record = reinterpret_cast<const OldStringRecord*>(s);
    if (record->buffer != nullptr) {
      scope.bytes = record->buffer + 1;
      scope.length = record->length;
    }
  }

  const CFStringRef string =
      encoding == kEncodingUTF16
          ? CFStringCreateWithCharacters(nullptr, reinterpret_cast<const UniChar*>(scope.bytes),
                                         std::max(scope.length, 0) / 2)
          : CFStringCreateWithCString(nullptr, scope.bytes, encoding);
  Holdings::Item* const held = holdings.HoldReference(string);
  scope.Release();
  holdings.Forget(held);
  return Autoreleased(string, holdings);
}

REALstring NSStringRB(id s, Holdings& holdings) {
  constexpr CFIndex kLongestOnStack = 99;
  constexpr std::int64_t kBytesPerUnit = 6;
  const auto string = reinterpret_cast<CFStringRef>(s);
  if (string == nullptr) return nullptr;
  const CFIndex length = CFStringGetLength(string);
  if (length <= 0) return nullptr;

  if (length <= kLongestOnStack) {
    char buffer[601] = {};
    if (CFStringGetCString(string, buffer, sizeof buffer - 1, kEncodingUTF8) == 0) return nullptr;
    return REALBuildUnicodeString(buffer, static_cast<std::int64_t>(std::strlen(buffer)), kEncodingUTF8);
  }

  const std::int64_t size = length * kBytesPerUnit;
  if (size > kLargestBuffer) return nullptr;
  char* const buffer = static_cast<char*>(std::calloc(1, static_cast<std::size_t>(size)));
  if (buffer == nullptr) return nullptr;
  Holdings::Item* const held = holdings.HoldMemory(buffer);
  REALstring result = nullptr;
  if (CFStringGetCString(string, buffer, static_cast<CFIndex>(size), kEncodingUTF8) != 0) {
    result = REALBuildUnicodeString(buffer, static_cast<std::int64_t>(std::strlen(buffer)), kEncodingUTF8);
  }
  holdings.Release(held);
  return result;
}

REALstring REALBuildUnicodeString(const void* data, std::int64_t byteLength, std::uint32_t encoding) {
  if (data == nullptr || byteLength <= 0 || byteLength > kLargestBuffer) return nullptr;
  try {
    return BuildInEncoding(static_cast<const char*>(data), static_cast<std::int32_t>(byteLength), encoding);
  } catch (const std::bad_alloc&) {
    RaiseOutOfMemoryForString();
    return nullptr;
  }
}

bool REALGetStringData(REALstring s, std::uint32_t encoding, REALstringData* out) {
  if (PluginGetStringData.Find() != nullptr) return PluginGetStringData(s, encoding, out) != 0;
  if (!HasFallbackServices() || s == nullptr) return false;
  return GetStringDataByFallback(s, encoding, out);
}

}  // namespace qvx
