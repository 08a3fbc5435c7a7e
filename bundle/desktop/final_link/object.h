// bundle/desktop/final_link/object.h - an object as an assembler gives it, read and checked.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "bundle/desktop/final_link/format.h"

namespace desktop {

using Bytes = std::vector<std::uint8_t>;

// A 4-byte field that depends on where things end up.
struct Relocation {
  enum class Kind : std::uint8_t {
    Address,         // holds the address of a target in a section
    Distance,        // holds how far a target in a section is from the field's end
    Difference,      // holds how far `target` is from `base`, both in sections
    SymbolAddress,   // holds the address of `symbol`, plus what it holds
    SymbolDistance,  // holds how far `symbol` is from the field's end, plus what it holds
  };
  Kind kind;
  std::uint32_t offset;    // in its section
  std::uint32_t target{};  // an address of the object
  std::uint32_t base{};    // an address of the object
  std::size_t symbol{};    // an index into the object's symbols
};

struct InputSection {
  std::string name;
  std::string segment;
  SectionKind kind;
  std::uint32_t flags;
  std::uint32_t address;
  std::uint32_t size;
  std::uint32_t alignment;  // in bytes
  Bytes bytes;              // none of a zero-filled section
  std::vector<Relocation> relocations;
  std::vector<std::size_t> symbols;  // of a section of pointers: what each points to

  std::string Title() const { return segment + "," + name; }
  std::uint64_t End() const { return std::uint64_t{address} + size; }
  bool Holds(std::uint32_t place) const { return place >= address && place < End(); }
};

struct InputSymbol {
  std::string name;
  bool exported;
  std::optional<std::size_t> section;  // none: it is in no section of the object, but in a library
  std::uint32_t value;
};

struct Object {
  std::vector<InputSection> sections;  // in the order of their addresses, without those for debuggers
  std::vector<InputSection> debug;     // the sections for debuggers, of the segment __DWARF
  std::vector<InputSymbol> symbols;

  // The section that holds an address of the object. Refuses an address in none; `what` says whose it is.
  std::size_t SectionAt(std::uint32_t address, const std::string& what) const;
};

// Reads an object for 32-bit x86. Refuses what is damaged, and every kind of command, section, symbol and
// relocation that the link does not know how to carry over.
Object ReadObject(std::span<const std::uint8_t> file);

}  // namespace desktop
