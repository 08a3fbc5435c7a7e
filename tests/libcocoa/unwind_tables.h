// tests/libcocoa/unwind_tables.h - unwind tables made for a test, for code that is not there.
#pragma once

#include <sys/mman.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

extern "C" {
// The compiler's run-time library.
void __register_frame_info_bases(const void* section, void* object, void* text, void* data);
void* __deregister_frame_info(const void* section);
}

namespace unwind_tables {

using Bytes = std::vector<std::uint8_t>;

inline Bytes operator+(Bytes left, const Bytes& right) {
  left.insert(left.end(), right.begin(), right.end());
  return left;
}

inline Bytes Word(std::uintptr_t value) {
  Bytes bytes;
  for (unsigned i = 0; i < sizeof value; ++i) bytes.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
  return bytes;
}

// Addresses that belong to no file, and that nothing may be read from.
class Room {
 public:
  explicit Room(std::size_t size)
      : size_(size), memory_(mmap(nullptr, size, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)) {
    if (memory_ == MAP_FAILED) throw std::runtime_error("no room for code that is not there");
  }
  ~Room() { munmap(memory_, size_); }
  Room(const Room&) = delete;
  Room& operator=(const Room&) = delete;
  std::uintptr_t begin() const { return reinterpret_cast<std::uintptr_t>(memory_); }
  std::size_t size() const { return size_; }

 private:
  std::size_t size_;
  void* memory_;
};

// What data-relative pointers are relative to.
constexpr std::uintptr_t kData = 0x5000;

// What the entries of one function say, as compilers for this machine write it unless told otherwise.
struct Entries {
  std::uintptr_t begin = 0;
  std::size_t size = 0;
  std::uint8_t version = 1;
  std::string letters = "zR";
  Bytes augmentation = {0x00};  // absolute addresses
  Bytes units = {0x01, 0x7C};   // 1 for code, -4 for data
  Bytes returnRegister = {0x08};
  Bytes common = {0x0C, 4, 4, 0x88, 1};  // the caller's esp is esp + 4; eip is stored below
  Bytes functionAugmentation = {};
  Bytes own = {};
};

// Known to the unwinder while it lives.
class Table {
 public:
  explicit Table(const Entries& entries) {
    const Bytes commonEntry = Padded(
        Word(0) + Bytes{entries.version} + Bytes(entries.letters.begin(), entries.letters.end()) + Bytes{0} +
        entries.units + entries.returnRegister + Sized(entries.augmentation) + entries.common);
    section_ = Word(commonEntry.size()) + commonEntry;
    const std::size_t distance = section_.size() + sizeof(std::uint32_t);
    const Bytes ownEntry = Padded(Word(distance) + Word(entries.begin) + Word(entries.size) +
                                  Sized(entries.functionAugmentation) + entries.own);
    section_ = section_ + Word(ownEntry.size()) + ownEntry + Word(0);
    // NOLINTNEXTLINE(performance-no-int-to-ptr)
    __register_frame_info_bases(section_.data(), object_.data(), nullptr, reinterpret_cast<void*>(kData));
  }
  ~Table() { __deregister_frame_info(section_.data()); }
  Table(const Table&) = delete;
  Table& operator=(const Table&) = delete;

 private:
  static Bytes Sized(const Bytes& bytes) { return Bytes{static_cast<std::uint8_t>(bytes.size())} + bytes; }
  static Bytes Padded(Bytes bytes) {
    while (bytes.size() % sizeof(std::uint32_t) != 0) bytes.push_back(0);
    return bytes;
  }

  Bytes section_;
  std::array<void*, 8> object_{};  // the run-time library's own
};

}  // namespace unwind_tables
