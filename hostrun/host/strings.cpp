// hostrun/host/strings.cpp - the host's strings: counted, tagged with an encoding, in both record forms.
#include "hostrun/host/strings.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>

#include "hostrun/host/position.h"
#include "hostrun/host/text.h"

namespace hostrun {
namespace {

constexpr std::size_t kTerminator = 4;  // zero bytes, enough to end UTF-32

constinit bool oldRecords = false;
constinit std::int32_t liveStrings = 0;
constinit HostString* firstLive = nullptr;

bool Is7Bit(std::string_view bytes) {
  return std::all_of(bytes.begin(), bytes.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

bool IsByteEncoding(std::uint32_t encoding) {
  return encoding != qvx::kEncodingUTF16 && encoding != qvx::kEncodingUTF32;
}

template <class Fold>
int Compare(const HostString* a, const HostString* b, Fold fold) {
  if (a == b) return 0;
  const std::string_view x = BytesOf(a);
  const std::string_view y = BytesOf(b);
  const auto sign = [](auto left, auto right) { return left < right ? -1 : 1; };
  if (IsByteEncoding(EncodingOf(a)) && IsByteEncoding(EncodingOf(b)) && Is7Bit(x) && Is7Bit(y)) {
    const std::size_t count = std::min(x.size(), y.size());
    for (std::size_t i = 0; i < count; ++i) {
      const char32_t left = fold(static_cast<unsigned char>(x[i]));
      const char32_t right = fold(static_cast<unsigned char>(y[i]));
      if (left != right) return sign(left, right);
    }
    return x.size() == y.size() ? 0 : sign(x.size(), y.size());
  }
  std::u32string left = CodePointsOf(a);
  std::u32string right = CodePointsOf(b);
  std::transform(left.begin(), left.end(), left.begin(), fold);
  std::transform(right.begin(), right.end(), right.begin(), fold);
  return left == right ? 0 : sign(left, right);
}

}  // namespace

void UseOldStringRecords(bool old) {
  oldRecords = old;
}

HostString* NewString(std::string_view bytes, std::uint32_t encoding) {
  if (bytes.empty()) return nullptr;
  void* const memory = std::malloc(sizeof(HostString) + 1 + bytes.size() + kTerminator);
  if (memory == nullptr) throw std::bad_alloc();
  auto* const string = new (memory) HostString{};
  string->references = 1;
  string->encoding = encoding;
  string->length = static_cast<std::int32_t>(bytes.size());
  string->buffer = static_cast<char*>(memory) + sizeof(HostString);
  string->buffer[0] = static_cast<char>(std::min<std::size_t>(bytes.size(), 255));
  std::memcpy(string->buffer + 1, bytes.data(), bytes.size());
  std::memset(string->buffer + 1 + bytes.size(), 0, kTerminator);
  if (oldRecords) {
    string->old.buffer = string->buffer;
    string->old.length = string->length;
  }
  string->line = currentPosition.line;
  string->next = firstLive;
  if (firstLive != nullptr) firstLive->previous = string;
  firstLive = string;
  ++liveStrings;
  return string;
}

void LockString(HostString* string) {
  if (string != nullptr) ++string->references;
}

void UnlockString(HostString* string) {
  if (string == nullptr || --string->references > 0) return;
  (string->previous == nullptr ? firstLive : string->previous->next) = string->next;
  if (string->next != nullptr) string->next->previous = string->previous;
  std::free(string);
  --liveStrings;
}

std::string_view BytesOf(const HostString* string) {
  if (string == nullptr) return {};
  return {string->text(), static_cast<std::size_t>(string->length)};
}

std::uint32_t EncodingOf(const HostString* string) {
  return string == nullptr ? qvx::kEncodingUTF8 : string->encoding;
}

std::u32string CodePointsOf(const HostString* string) {
  return Decode(BytesOf(string), EncodingOf(string));
}

std::string Utf8Of(const HostString* string) {
  if (EncodingOf(string) == qvx::kEncodingUTF8) return std::string(BytesOf(string));
  return Encode(CodePointsOf(string), qvx::kEncodingUTF8);
}

HostString* ConvertString(const HostString* string, std::uint32_t encoding) {
  if (string == nullptr) return nullptr;
  if (string->encoding == encoding) return NewString(BytesOf(string), encoding);
  return NewString(Encode(CodePointsOf(string), encoding), encoding);
}

HostString* JoinStrings(HostString* a, HostString* b) {
  if (a == nullptr || b == nullptr) {
    HostString* const only = a == nullptr ? b : a;
    LockString(only);
    return only;
  }
  if (a->encoding == b->encoding) return NewString(std::string(BytesOf(a)).append(BytesOf(b)), a->encoding);
  return NewString(Utf8Of(a) + Utf8Of(b));
}

int CompareStrings(const HostString* a, const HostString* b) {
  return Compare(a, b, LowerCase);
}

int CompareStringsExactly(const HostString* a, const HostString* b) {
  return Compare(a, b, [](char32_t c) { return c; });
}

std::int32_t LiveStrings() {
  return liveStrings;
}

const HostString* FirstLiveString() {
  return firstLive;
}

void GiveStringsToHost() {
  for (HostString* string = firstLive; string != nullptr; string = string->next) string->line = kLineOfHost;
}

}  // namespace hostrun
