// hostrun/host/strings.h - the host's strings: counted, tagged with an encoding, in both record forms.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "bundle/host/types.h"
#include "hostrun/host/reference.h"

namespace hostrun {

// What a string handle points to. A null handle is the empty string.
//
// Hosts older than 2012.0 let plugins read `old`: its buffer is one byte longer in front than the text. Newer
// hosts leave it zero: a plugin that still reads it finds nothing.
struct HostString {
  qvx::OldStringRecord old;
  std::int32_t references;
  std::uint32_t encoding;
  std::int32_t length;   // bytes
  char* buffer;          // one byte, the text, four zero bytes
  std::int32_t line;     // of the program, when it was made; 0 outside, kLineOfHost for what the host keeps
  HostString* previous;  // in the list of all live strings
  HostString* next;

  const char* text() const { return buffer + 1; }
};
static_assert(offsetof(HostString, old) == 0);
inline constexpr std::int32_t kLineOfHost = -1;

// The form of the strings made from now on.
void UseOldStringRecords(bool old);

// A new string with one reference; null for no bytes.
HostString* NewString(std::string_view bytes, std::uint32_t encoding = qvx::kEncodingUTF8);
void LockString(HostString* string);
void UnlockString(HostString* string);

std::string_view BytesOf(const HostString* string);
std::uint32_t EncodingOf(const HostString* string);  // UTF-8 for the empty string
std::u32string CodePointsOf(const HostString* string);
std::string Utf8Of(const HostString* string);

// A new string of the same text in another encoding; null stays null.
HostString* ConvertString(const HostString* string, std::uint32_t encoding);

// The text of both, one after the other: in their encoding if they share it, else in UTF-8.
HostString* JoinStrings(HostString* a, HostString* b);

// Below, at or above 0, without regard to case: "=" and "<" of the language.
int CompareStrings(const HostString* a, const HostString* b);
int CompareStringsExactly(const HostString* a, const HostString* b);

std::int32_t LiveStrings();
// The newest; the others follow by `next`.
const HostString* FirstLiveString();
// The strings that are alive now are the host's own.
void GiveStringsToHost();

using StringRef = Reference<HostString, &LockString, &UnlockString>;

}  // namespace hostrun
