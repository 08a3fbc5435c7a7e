// bundle/desktop/final_link/layout.h - where everything in the bundle's memory goes.
//
//   __TEXT   load commands, stubs, then the object's sections of __TEXT as one block
//   __DATA   pointers to symbols of libraries, the object's sections of __DATA, zero-filled ones last
//
// The file begins at address 0; up to the end of what __DATA has in the file, an address is also an offset in
// it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "bundle/desktop/final_link/imports.h"
#include "bundle/desktop/final_link/object.h"

namespace desktop {

inline constexpr std::uint32_t kStubSize = 12;

struct OutputSection {
  std::string name;
  std::uint32_t flags;
  std::uint32_t address;
  std::uint32_t size;
  std::uint32_t alignment;          // in bytes
  std::optional<std::size_t> from;  // an index into the object's sections; none: it is made here

  bool IsZeroFilled() const {
    return (flags & kSectionKindMask) == static_cast<std::uint32_t>(SectionKind::ZeroFill);
  }
  std::uint32_t End() const { return address + size; }
};

struct Layout {
  std::vector<OutputSection> text;
  std::vector<OutputSection> data;
  std::uint32_t stubs;        // the address of the first stub
  std::uint32_t pointers;     // the address of the first pointer
  std::uint32_t textEnd;      // whole pages; __DATA begins here
  std::uint32_t dataFileEnd;  // whole pages; the link information begins here in the file
  std::uint32_t dataEnd;      // whole pages; the link information begins here in memory
  std::vector<std::int64_t>
      movedBy;  // how far each of the object's sections moves; 0 for pointers, which are dropped

  // Where an address of the object ends up. Refuses one that is in no section; `what` says whose it is.
  std::uint32_t Place(const Object& object, const Imports& imports, std::uint32_t address,
                      const std::string& what) const;
  std::uint32_t StubOf(const Imports& imports, std::size_t import) const;
  std::uint32_t PointerTo(std::size_t import) const;
};

// Lays out the object behind load commands of `commandsEnd` bytes. Refuses sections of other segments, and an
// order of sections that would take the block of __TEXT apart. The object has a section of __TEXT;
// `commandsEnd` is a multiple of 4.
Layout LayOut(const Object& object, const Imports& imports, std::uint32_t commandsEnd);

// How many sections of __TEXT and __DATA the bundle will have.
struct SectionCounts {
  std::uint32_t text;
  std::uint32_t data;
};
SectionCounts CountSections(const Object& object);

}  // namespace desktop
