// hostrun/macho/bytes.h - reads a file's bytes and never beyond them.
#pragma once

#include <cstdint>
#include <cstring>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

namespace hostrun::macho {

// A file that can't be loaded. The text is one line: "wanted X, found Y".
class FormatError : public std::runtime_error {
 public:
  FormatError(const std::string& wanted, const std::string& found)
      : std::runtime_error("wanted " + wanted + ", found " + found) {}
};

using Bytes = std::span<const std::uint8_t>;

std::string Hex(std::uint32_t value);

// The bytes of a part. Throws FormatError where the part, called `what`, is not wholly inside.
Bytes Part(Bytes bytes, std::uint32_t offset, std::uint32_t size, const char* what);

// The record at an offset.
template <class T>
T RecordAt(Bytes bytes, std::uint32_t offset, const char* what) {
  T record;
  std::memcpy(&record, Part(bytes, offset, sizeof record, what).data(), sizeof record);
  return record;
}

// Throws FormatError for a name, of the part called `what`, that is more than letters, digits, signs and
// blanks: names come into lines of text.
void CheckPlain(std::string_view name, const char* what);

// Goes through bytes from the front. Each step throws FormatError where the bytes end before it does; `what`
// names them there.
class Cursor {
 public:
  Cursor(Bytes bytes, const char* what) : bytes_(bytes), what_(what) {}

  bool AtEnd() const { return at_ == bytes_.size(); }
  std::uint32_t at() const { return at_; }
  void GoTo(std::uint32_t offset);
  void Skip(std::uint32_t count);

  std::uint8_t Byte();
  std::uint32_t Word();
  // Numbers of seven bits a byte, the lowest first. Throw FormatError for one that 32 bits do not hold; of a
  // number that is to be added to an address the unsigned form takes the low 32 of 64 bits.
  std::uint32_t Unsigned();
  std::uint32_t UnsignedStep();
  std::int32_t Signed();
  // A name, up to a zero byte; moves behind it. At most kLongestText bytes.
  std::string Text();

  static constexpr std::uint32_t kLongestText = 1024;

 private:
  std::uint64_t Wide();

  Bytes bytes_;
  const char* what_;
  std::uint32_t at_ = 0;
};

}  // namespace hostrun::macho
