// hostrun/macho/file.h - what a desktop bundle's file says, checked. Nothing is mapped.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "hostrun/macho/bytes.h"

namespace hostrun::macho {

struct Section {
  std::string name;
  std::uint32_t address;
  std::uint32_t size;
};

// Addresses are those of the file: loading adds one number to all of them.
struct Segment {
  std::string name;
  std::uint32_t address;  // address, size and offset are multiples of a page
  std::uint32_t size;
  std::uint32_t fileOffset;
  std::uint32_t fileSize;    // at most `size`; the rest is zero
  std::uint32_t protection;  // kRead, kWrite, kExecute
  std::vector<Section> sections;

  bool Holds(std::uint32_t at, std::uint32_t count) const {
    return at >= address && at - address <= size && count <= size - (at - address);
  }
};

// A word that gets the address of a symbol.
struct Bind {
  std::uint32_t address;
  std::string symbol;    // with the underscore that the desktop's C puts in front
  std::int32_t library;  // from 1: its place in the list; 0, -1, -2: the bundle, the program, whoever has it
  std::int32_t addend;
};

struct Export {
  std::string symbol;
  std::uint32_t address;
};

// A bundle's file for the Intel 80386, of which every offset and size has been checked: each word that is
// rebased or bound lies wholly inside of a segment.
struct File {
  std::vector<std::uint8_t> bytes;
  std::vector<Segment> segments;  // at least one, by ascending addresses, not overlapping
  std::vector<std::string> libraries;
  std::optional<std::uint32_t> oldestSystem;  // 10.6.0 is 0x000A0600
  std::vector<std::uint32_t> rebases;         // words that hold an address of the file
  std::vector<Bind> binds;
  std::vector<Export> exports;

  // The segment that holds all of these bytes; null if none does.
  const Segment* SegmentAround(std::uint32_t address, std::uint32_t size) const;
};

// Whether these are the first bytes of a file of this format, for whichever processor. One that is not for
// the i386 is refused by ReadFile.
bool IsMachO(Bytes bytes);

// Throws FormatError for a file that is cut short, contradicts itself, or asks for what can't be given:
// another processor, code that runs on loading, variables of each thread, weak definitions.
File ReadFile(std::vector<std::uint8_t> bytes);

}  // namespace hostrun::macho
