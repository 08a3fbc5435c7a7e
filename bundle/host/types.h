// bundle/host/types.h - the host's values as the bundle sees them: opaque handles, string data, encodings,
// codes.
#pragma once

#include <cstddef>
#include <cstdint>

struct FSRef;
struct HFSUniStr255;

namespace qvx {

// Opaque, reference-counted handles. A handle that a service returns as "new" carries one reference for the
// caller; any other handle is borrowed.
struct REALobjectStruct;
struct REALstringStruct;
struct REALarrayStruct;
struct REALmemoryBlockStruct;
struct REALfolderItemStruct;

using REALobject = REALobjectStruct*;
using REALstring = REALstringStruct*;
using REALarray = REALarrayStruct*;
using REALmemoryBlock = REALmemoryBlockStruct*;
using REALfolderItem = REALfolderItemStruct*;

// Arrays and memory blocks are objects too and may be locked and unlocked as such.
inline REALobject AsObject(REALmemoryBlock block) {
  return reinterpret_cast<REALobject>(block);
}
inline REALobject AsObject(REALarray array) {
  return reinterpret_cast<REALobject>(array);
}

// The host's one-byte truth value. Any value but 0 is true; the upper bits of the register are undefined.
using REALboolean = std::uint8_t;

// A colour as the host keeps it: 0x00RRGGBB.
using REALcolor = std::uint32_t;

// A string's bytes. Whoever fills it owes one REALDisposeStringData.
struct REALstringData {
  char* data;
  std::int32_t length;  // bytes, without the terminator
  std::uint32_t encoding;
};
static_assert(sizeof(REALstringData) == 12);

// Encoding numbers, shared by host and platform.
inline constexpr std::uint32_t kEncodingMacRoman = 0x00000000;
inline constexpr std::uint32_t kEncodingUTF16 = 0x00000100;  // host byte order
inline constexpr std::uint32_t kEncodingWindowsLatin1 = 0x00000500;
inline constexpr std::uint32_t kEncodingASCII = 0x00000600;
inline constexpr std::uint32_t kEncodingUnknown = 0x0000FFFF;  // when reading: the bytes as stored
inline constexpr std::uint32_t kEncodingUTF8 = 0x08000100;
inline constexpr std::uint32_t kEncodingUTF32 = 0x0C000100;  // host byte order

enum class REALArrayType : std::int32_t { kDouble = 2, kObject = 4 };

// The string record of hosts older than 2012.0, as far as it is read: the text starts one byte into `buffer`.
struct OldStringRecord {
  std::uint32_t reserved0;
  const char* buffer;
  std::uint32_t reserved2;
  std::int32_t length;  // bytes
};
static_assert(sizeof(OldStringRecord) == 16);
static_assert(offsetof(OldStringRecord, buffer) == 4 && offsetof(OldStringRecord, length) == 12);

}  // namespace qvx
