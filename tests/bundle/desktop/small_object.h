// tests/bundle/desktop/small_object.h - an object written by hand, to change and to break.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "bundle/desktop/final_link/format.h"
#include "bundle/desktop/final_link/object.h"

namespace small {

struct Section {
  std::string segment;
  std::string name;
  std::uint32_t flags = 0;
  std::uint32_t address = 0;
  std::string bytes = {};
  std::uint32_t zeros = 0;      // the size of a zero-filled section
  std::uint32_t alignment = 2;  // the exponent of a power of two
  std::vector<desktop::RelocationEntry> relocations = {};
  std::uint32_t firstIndirect = 0;
};

struct Symbol {
  std::string name;
  std::uint8_t type;
  std::uint8_t section;
  std::uint16_t description;
  std::uint32_t value;
};

// An object as its parts; Bytes() is the file.
struct Object {
  desktop::Header header;
  std::vector<Section> sections;
  std::vector<Symbol> symbols;
  std::vector<std::uint32_t> indirect;

  desktop::Bytes Bytes() const;
};

// A relocation by symbol or section, and one by an address.
desktop::RelocationEntry Plain(std::uint32_t offset, std::uint32_t number, bool distance, bool external,
                               unsigned kind = 0, unsigned length = 2);
desktop::RelocationEntry Scattered(std::uint32_t offset, std::uint32_t value, unsigned kind,
                                   unsigned length = 2);

// The places of the good object's sections and symbols, to change them by.
enum Sections : std::size_t { kText, kStrings, kFrames, kData, kPointers, kBss };
enum Symbols : std::size_t { kEntry, kHelper, kStrlen, kGuard, kSpace };

// Its entry calls a helper and strlen, reads a string and ___stack_chk_guard; its data point to the helper,
// to the string and to NSCalibratedRGBColorSpace.
Object GoodObject();

// Adds a section for debuggers, at kDebugAt: two words, the address of the helper and 7.
inline constexpr std::uint32_t kDebugAt = 0x100;
void AddDebug(Object& object);

}  // namespace small
