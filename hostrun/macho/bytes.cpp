// hostrun/macho/bytes.cpp - reads a file's bytes and never beyond them.
#include "hostrun/macho/bytes.h"

#include <array>
#include <cstdio>

namespace hostrun::macho {

std::string Hex(std::uint32_t value) {
  std::array<char, 16> text{};
  std::snprintf(text.data(), text.size(), "0x%x", static_cast<unsigned>(value));
  return text.data();
}

Bytes Part(Bytes bytes, std::uint32_t offset, std::uint32_t size, const char* what) {
  if (offset > bytes.size() || size > bytes.size() - offset) {
    throw FormatError(std::string(what) + " inside of its " + std::to_string(bytes.size()) + " bytes",
                      std::to_string(size) + " bytes at " + Hex(offset));
  }
  return bytes.subspan(offset, size);
}

void CheckPlain(std::string_view name, const char* what) {
  for (const char letter : name) {
    if (letter >= ' ' && letter <= '~') continue;
    throw FormatError(std::string("names in plain letters in ") + what,
                      "the byte " + Hex(static_cast<std::uint8_t>(letter)));
  }
}

void Cursor::GoTo(std::uint32_t offset) {
  Part(bytes_, offset, 0, what_);
  at_ = offset;
}

void Cursor::Skip(std::uint32_t count) {
  Part(bytes_, at_, count, what_);
  at_ += count;
}

std::uint8_t Cursor::Byte() {
  const std::uint8_t byte = Part(bytes_, at_, 1, what_)[0];
  ++at_;
  return byte;
}

std::uint32_t Cursor::Word() {
  const auto word = RecordAt<std::uint32_t>(bytes_, at_, what_);
  at_ += sizeof word;
  return word;
}

// The number in the low bits, sign-extended from the last byte's second highest bit in Signed.
std::uint64_t Cursor::Wide() {
  constexpr unsigned kMostBits = 64;
  std::uint64_t value = 0;
  for (unsigned shift = 0; shift < kMostBits; shift += 7) {
    const std::uint8_t byte = Byte();
    value |= std::uint64_t{byte & 0x7FU} << shift;
    if ((byte & 0x80U) == 0) return value;
  }
  throw FormatError(std::string("numbers of at most 64 bits in ") + what_, "a longer one");
}

std::uint32_t Cursor::Unsigned() {
  const std::uint64_t value = Wide();
  if (value > UINT32_MAX) throw FormatError(std::string("numbers of 32 bits in ") + what_, "a larger one");
  return static_cast<std::uint32_t>(value);
}

std::uint32_t Cursor::UnsignedStep() {
  return static_cast<std::uint32_t>(Wide());
}

std::int32_t Cursor::Signed() {
  const std::uint32_t start = at_;
  std::uint64_t value = Wide();
  const unsigned bits = 7 * (at_ - start);
  const bool negative = (bytes_[at_ - 1] & 0x40U) != 0;
  if (negative && bits < 64) value |= ~std::uint64_t{0} << bits;
  const auto wide = static_cast<std::int64_t>(value);
  if (wide < INT32_MIN || wide > INT32_MAX)
    throw FormatError(std::string("numbers of 32 bits in ") + what_, "a larger one");
  return static_cast<std::int32_t>(wide);
}

std::string Cursor::Text() {
  std::string text;
  while (const std::uint8_t byte = Byte()) {
    if (text.size() == kLongestText) {
      throw FormatError("names of at most " + std::to_string(kLongestText) + " bytes in " + what_,
                        "a longer one");
    }
    text += static_cast<char>(byte);
  }
  CheckPlain(text, what_);
  return text;
}

}  // namespace hostrun::macho
