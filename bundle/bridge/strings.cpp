// bundle/bridge/strings.cpp - strings between host and platform.
#include "bundle/bridge/strings.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>

#include "bundle/bridge/exceptions.h"
#include "bundle/host/services.h"
#include "bundle/platform/messages.h"

namespace qvx {

namespace {

constexpr std::int64_t kLargestBuffer = std::numeric_limits<std::int32_t>::max();

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
bool GetStringDataByFallback(REALstring s, std::uint32_t encoding, REALstringData* out, Holdings& holdings) {
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
  Held converted(holdings, REALConvertString(s, encoding));
  if (!converted) return false;
  const std::int32_t length = LenB(converted.Get());
  REALstringData copy = {};
  const bool filled = FillStringData(StringGetCString(converted.Get()), length, length, encoding, &copy);
  Held buffer(holdings, copy.data);
  converted.Release();
  buffer.Detach();
  if (filled) *out = copy;
  return filled;
}

// A temporary host string, re-encoded: gives up `temporary` and answers a new reference. Asks for the
// conversion even of null.
REALstring ConvertedToUTF8(Held<REALstring>& temporary, Holdings& holdings) {
  Held converted(holdings, REALConvertString(temporary.Get(), kEncodingUTF8));
  temporary.Release();
  return converted.Detach();
}

REALstring BuildWithEncodingAsUTF8(const void* data, std::int32_t length, std::uint32_t encoding,
                                   Holdings& holdings) {
  Held temporary(holdings, REALBuildStringWithEncoding(data, length, encoding));
  return ConvertedToUTF8(temporary, holdings);
}

REALstring BuildUTF16OnOldHost(const void* data, std::int32_t length, Holdings& holdings) {
  Held temporary(holdings, originalREALBuildString(data, length));
  if (!temporary) return nullptr;
  REALSetStringEncoding(temporary.Get(), kEncodingUTF16);
  return ConvertedToUTF8(temporary, holdings);
}

// Old hosts don't know UTF-32: each unit becomes the UTF-16 unit of its low 16 bits. Deliberately no
// surrogate pairs: a code point above U+FFFF loses its high bits.
REALstring BuildUTF32OnOldHost(const char* data, std::int32_t length, Holdings& holdings) {
  constexpr std::int32_t kLongestOnStack = 799;
  const std::int32_t count = length / 4;
  UniChar onStack[200];
  Held<char*> onHeap;
  UniChar* units = onStack;
  if (length > kLongestOnStack) {
    onHeap = ZeroedMemory(static_cast<std::size_t>(count) * 2 + 4, holdings);
    if (!onHeap) return nullptr;
    units = reinterpret_cast<UniChar*>(onHeap.Get());
  }
  for (std::int32_t i = 0; i < count; ++i) {
    std::uint32_t unit;
    std::memcpy(&unit, data + static_cast<std::ptrdiff_t>(i) * 4, sizeof unit);
    units[i] = static_cast<UniChar>(unit);
  }
  Held temporary(holdings, originalREALBuildString(units, count * 2));
  if (temporary) REALSetStringEncoding(temporary.Get(), kEncodingUTF16);
  const REALstring converted = ConvertedToUTF8(temporary, holdings);
  onHeap.Release();
  return converted;
}

[[gnu::always_inline]] inline REALstring BuildString(const char* data, std::int32_t length,
                                                     std::uint32_t encoding, Holdings& holdings) {
  Held string(holdings, originalREALBuildString(data, length));
  if (!string) return nullptr;
  REALSetStringEncoding(string.Get(), encoding);
  return string.Detach();
}

// Out of the way of every string in UTF-8, with its buffer on the stack.
[[gnu::noinline, gnu::cold]] REALstring BuildInOtherEncoding(const char* data, std::int32_t length,
                                                             std::uint32_t encoding, Holdings& holdings) {
  switch (encoding) {
    case kEncodingUTF16:
      return HostHasNewStrings() ? BuildWithEncodingAsUTF8(data, length, encoding, holdings)
                                 : BuildUTF16OnOldHost(data, length, holdings);
    case kEncodingUTF32:
      return HostHasNewStrings() ? BuildWithEncodingAsUTF8(data, length, encoding, holdings)
                                 : BuildUTF32OnOldHost(data, length, holdings);
    case kEncodingMacRoman:
    case kEncodingWindowsLatin1:
    case kEncodingUnknown: {
      const bool plain =
          std::all_of(data, data + length, [](char byte) { return static_cast<unsigned char>(byte) < 0x80; });
      if (plain) encoding = kEncodingASCII;
      break;
    }
    default:
      break;
  }
  return BuildString(data, length, encoding, holdings);
}

// "OutOfMemoryException", whose own message is a string that may fail the same way: then it is raised
// without.
constinit bool raisingOutOfMemory = false;

// The mark is held like anything else that an exception on the way must not leave behind.
struct OutOfMemoryMark {};
void GiveBack(OutOfMemoryMark /*mark*/) {
  raisingOutOfMemory = false;
}

void RaiseOutOfMemoryForString(Holdings& holdings) {
  if (raisingOutOfMemory) return;
  Held mark(holdings, OutOfMemoryMark{});
  raisingOutOfMemory = true;
  RaiseException("OutOfMemoryException", "Failed to allocate memory for a string.", holdings);
  mark.Release();
}

}  // namespace

template <>
void GiveBack(REALstringData record) {
  if (REALDisposeStringData.Find() != nullptr) {
    REALDisposeStringData(&record);
  } else {
    std::free(record.data);
  }
}

void HostDataScope::ReadStringData(REALstring string) {
  REALstringData record = {};
  bool filled = false;
  if (PluginGetStringData.Find() != nullptr) {
    filled = REALGetStringData(string, kEncodingUnknown, &record, holdings_);
  } else if (HasFallbackServices()) {
    // The fallback sizes its buffer by this length; a host that has the service is not asked for more.
    record.length = LenB(string);
    filled = GetStringDataByFallback(string, kEncodingUnknown, &record, holdings_);
  }
  if (!filled) return;
  data_ = Held(holdings_, record);
  bytes = record.data;
  length = record.length;
}

id NewNSStringOfBytes(REALstring s, Holdings& holdings) {
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
                                         std::max<CFIndex>(scope.length / 2, 0))
          : CFStringCreateWithCString(nullptr, scope.bytes, encoding);
  Held<CFTypeRef> held(holdings, string);
  scope.Release();
  held.Detach();
  // nil is sent the message too.
  return string != nullptr ? Autoreleased(string, holdings) : msg::autorelease(nullptr);
}

REALstring NSStringRB(id s, Holdings& holdings) {
  constexpr CFIndex kLongestOnStack = 99;
  constexpr CFIndex kBytesPerUnit = 6;
  const auto string = reinterpret_cast<CFStringRef>(s);
  if (string == nullptr) return nullptr;
  const CFIndex length = CFStringGetLength(string);
  if (length <= 0) return nullptr;

  if (length <= kLongestOnStack) {
    char buffer[601] = {};
    if (CFStringGetCString(string, buffer, sizeof buffer - 1, kEncodingUTF8) == 0) return nullptr;
    return REALBuildUnicodeString(buffer, static_cast<std::int64_t>(std::strlen(buffer)), kEncodingUTF8,
                                  holdings);
  }

  if (length > kLargestBuffer / kBytesPerUnit) return nullptr;
  const CFIndex size = length * kBytesPerUnit;
  Held buffer = ZeroedMemory(static_cast<std::size_t>(size), holdings);
  if (!buffer) return nullptr;
  REALstring result = nullptr;
  if (CFStringGetCString(string, buffer.Get(), size, kEncodingUTF8) != 0) {
    result = REALBuildUnicodeString(buffer.Get(), static_cast<std::int64_t>(std::strlen(buffer.Get())),
                                    kEncodingUTF8, holdings);
  }
  buffer.Release();
  return result;
}

REALstring REALBuildUnicodeString(const void* data, std::int64_t byteLength, std::uint32_t encoding,
                                  Holdings& holdings) {
  if (data == nullptr || byteLength <= 0 || byteLength > kLargestBuffer) return nullptr;
  const unsigned heldBefore = holdings.Count();
  try {
    const auto* const bytes = static_cast<const char*>(data);
    const auto length = static_cast<std::int32_t>(byteLength);
    return encoding == kEncodingUTF8 ? BuildString(bytes, length, encoding, holdings)
                                     : BuildInOtherEncoding(bytes, length, encoding, holdings);
  } catch (const std::bad_alloc&) {
    holdings.GiveBackDownTo(heldBefore);
    RaiseOutOfMemoryForString(holdings);
    return nullptr;
  }
}

bool REALGetStringData(REALstring s, std::uint32_t encoding, REALstringData* out, Holdings& holdings) {
  if (PluginGetStringData.Find() != nullptr) return PluginGetStringData(s, encoding, out) != 0;
  if (!HasFallbackServices() || s == nullptr) return false;
  return GetStringDataByFallback(s, encoding, out, holdings);
}

}  // namespace qvx
