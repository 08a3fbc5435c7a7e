// tests/hostrun/macho/test_file.h - a small desktop bundle, built by hand, to be spoilt by a test.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "hostrun/macho/format.h"

// A good one as it is made: three segments of a page each. __TEXT holds a function that answers 42, with its
// unwind table; __DATA a pointer to it, and a word for a symbol. A test changes members, then asks for the
// bytes.
struct TestFile {
  static constexpr std::uint32_t kText = 0;
  static constexpr std::uint32_t kData = 0x1000;
  static constexpr std::uint32_t kLinkEdit = 0x2000;
  static constexpr std::uint32_t kFunction = 0x800;  // addresses, and offsets in the file
  static constexpr std::uint32_t kFrames = 0x900;
  static constexpr std::uint32_t kPointer = kData;
  static constexpr std::uint32_t kSymbol = kData + 4;
  static constexpr int kAnswer = 42;

  TestFile();
  std::vector<std::uint8_t> Bytes() const;

  hostrun::macho::Header header{};
  std::vector<hostrun::macho::SegmentCommand> segments;  // __TEXT, __DATA, __LINKEDIT
  hostrun::macho::SectionRecord frames{};                // in __TEXT
  std::vector<std::string> libraries;
  std::string moreCommands;  // behind the others
  std::uint32_t moreCount = 0;
  std::string frameBytes;  // what lies at kFrames
  // Operations, byte by byte.
  std::string rebases;
  std::string binds;
  std::string lazyBinds;
  std::string weakBinds;
  std::string exports;
};

// Any value as the bytes that it has in a file.
template <class T>
std::string Raw(const T& value) {
  return {reinterpret_cast<const char*>(&value), sizeof value};
}

// Bytes of their own, and text with its zero.
inline std::string Codes(std::initializer_list<unsigned> codes) {
  std::string bytes;
  for (const unsigned code : codes) bytes += static_cast<char>(code);
  return bytes;
}
inline std::string Text(const std::string& text) {
  return text + '\0';
}

// Unwind records: the common one with these letters of augmentation, their data and instructions; the same
// with pointers relative to themselves only; and one for the test's function.
std::string AugmentedRecord(const std::string& letters, const std::string& data,
                            const std::string& instructions);
std::string CommonRecord(const std::string& instructions);
std::string FunctionRecord(const std::string& instructions);
