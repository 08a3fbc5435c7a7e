// tests/bundle/desktop/debug_file_test.cpp - the file for debuggers beside a bundle linked from an object
// written by hand.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <utility>

#include "bundle/desktop/final_link/link.h"
#include "bundle/desktop/final_link/load_commands.h"
#include "tests/bundle/desktop/small_object.h"

namespace {

desktop::Linked LinkedWithDebug() {
  small::Object object = small::GoodObject();
  small::AddDebug(object);
  return desktop::Link(object.Bytes(), "_Entry");
}

template <typename Record>
Record At(const desktop::Bytes& bytes, std::size_t offset) {
  Record record;
  std::memcpy(&record, &bytes.at(offset + sizeof record - 1) - (sizeof record - 1), sizeof record);
  return record;
}

// The header of a section of `file`, whichever command it stands in.
desktop::SectionHeader SectionOf(const desktop::Bytes& file, const std::string& name) {
  std::size_t offset = sizeof(desktop::Header);
  for (std::uint32_t command = 0; command < At<desktop::Header>(file, 0).commandCount; ++command) {
    const auto segment = At<desktop::SegmentCommand>(file, offset);
    const bool holdsSections = segment.start.kind == desktop::CommandKind::Segment;
    for (std::uint32_t index = 0; holdsSections && index < segment.sectionCount; ++index) {
      const auto section =
          At<desktop::SectionHeader>(file, offset + sizeof segment + index * sizeof(desktop::SectionHeader));
      if (name == std::string(section.name.data(), strnlen(section.name.data(), section.name.size())))
        return section;
    }
    offset += segment.start.size;
  }
  ADD_FAILURE() << "no section " << name;
  return {};
}

desktop::SegmentCommand SegmentOf(const desktop::Bytes& file, const std::string& name) {
  std::size_t offset = sizeof(desktop::Header);
  for (std::uint32_t command = 0; command < At<desktop::Header>(file, 0).commandCount; ++command) {
    const auto segment = At<desktop::SegmentCommand>(file, offset);
    if (segment.start.kind == desktop::CommandKind::Segment && name == segment.name.data()) return segment;
    offset += segment.start.size;
  }
  ADD_FAILURE() << "no segment " << name;
  return {};
}

TEST(DebugFile, ChangesNothingInTheBundle) {
  EXPECT_EQ(LinkedWithDebug().bundle, desktop::Link(small::GoodObject().Bytes(), "_Entry").bundle);
}

TEST(DebugFile, HasTheUuidOfItsBundle) {
  const desktop::Linked linked = LinkedWithDebug();
  EXPECT_EQ(desktop::UuidOf(linked.debug), desktop::UuidOf(linked.bundle));
}

TEST(DebugFile, SaysInItsHeaderWhatItIs) {
  const desktop::Linked linked = LinkedWithDebug();
  const auto header = At<desktop::Header>(linked.debug, 0);
  EXPECT_EQ(header.processorSubtype, 3U);
  EXPECT_EQ(static_cast<std::uint32_t>(header.fileType), 10U);
  EXPECT_EQ(header.commandCount, 5U);
  EXPECT_EQ(header.flags, 0U);
  const auto table =
      At<desktop::SymbolTableCommand>(linked.debug, sizeof(desktop::Header) + sizeof(desktop::UuidCommand));
  EXPECT_EQ(sizeof header + header.commandsSize, table.symbolOffset);
}

TEST(DebugFile, HoldsTheAddressesOfTheBundle) {
  const desktop::Linked linked = LinkedWithDebug();
  const desktop::SectionHeader lines = SectionOf(linked.debug, "__debug_line");
  const std::uint32_t code = SectionOf(linked.bundle, "__text").address;
  EXPECT_EQ(lines.size, 8U);
  EXPECT_EQ(At<std::uint32_t>(linked.debug, lines.fileOffset), code + 0x20);
  EXPECT_EQ(At<std::uint32_t>(linked.debug, lines.fileOffset + 4), 7U);
  EXPECT_EQ(linked.debug.size(), lines.fileOffset + lines.size);
}

TEST(DebugFile, HasTheSectionsOfTheBundleWithoutWhatIsInThem) {
  const desktop::Linked linked = LinkedWithDebug();
  for (const char* const name : {"__symbol_stub", "__text", "__nl_symbol_ptr", "__data", "__bss"}) {
    EXPECT_EQ(SectionOf(linked.debug, name).address, SectionOf(linked.bundle, name).address) << name;
    EXPECT_EQ(SectionOf(linked.debug, name).size, SectionOf(linked.bundle, name).size) << name;
    EXPECT_EQ(SectionOf(linked.debug, name).fileOffset, 0U) << name;
  }
}

TEST(DebugFile, HasTheSegmentsOfTheBundleWithoutWhatIsInThem) {
  const desktop::Linked linked = LinkedWithDebug();
  for (const char* const name : {"__TEXT", "__DATA"}) {
    const desktop::SegmentCommand segment = SegmentOf(linked.debug, name);
    EXPECT_EQ(segment.address, SegmentOf(linked.bundle, name).address) << name;
    EXPECT_EQ(segment.memorySize, SegmentOf(linked.bundle, name).memorySize) << name;
    EXPECT_EQ(segment.fileOffset, 0U) << name;
    EXPECT_EQ(segment.fileSize, 0U) << name;
    EXPECT_EQ(segment.initialProtection, 1U) << name;
    EXPECT_EQ(segment.maximumProtection, 7U) << name;
  }
  for (const char* const name : {"__symbol_stub", "__nl_symbol_ptr", "__bss"})
    EXPECT_EQ(SectionOf(linked.debug, name).flags & 0xFF, 0U) << name;
}

TEST(DebugFile, PutsTheSectionsForDebuggersBehindTheBundlesMemoryInWholePages) {
  small::Object object = small::GoodObject();
  small::AddDebug(object);
  small::Section second = object.sections.back();
  second.name = "__debug_info";
  second.address += 8;
  second.bytes = std::string(0x1000, 'x');
  second.relocations.clear();
  object.sections.push_back(second);
  const desktop::Linked linked = desktop::Link(object.Bytes(), "_Entry");
  const desktop::SegmentCommand data = SegmentOf(linked.bundle, "__DATA");
  const desktop::SegmentCommand debug = SegmentOf(linked.debug, "__DWARF");
  const desktop::SectionHeader lines = SectionOf(linked.debug, "__debug_line");
  const desktop::SectionHeader info = SectionOf(linked.debug, "__debug_info");
  EXPECT_EQ(debug.address, data.address + data.memorySize);
  EXPECT_EQ(debug.memorySize, 0x2000U);
  EXPECT_EQ(debug.fileSize, 0x1008U);
  EXPECT_EQ(debug.sectionCount, 2U);
  EXPECT_EQ(lines.fileOffset, debug.fileOffset);
  EXPECT_EQ(lines.address, debug.address);
  EXPECT_EQ(info.fileOffset, debug.fileOffset + 8);
  EXPECT_EQ(info.address, debug.address + 8);
  EXPECT_EQ(info.size, 0x1000U);
  EXPECT_STREQ(lines.segment.data(), "__DWARF");
  EXPECT_EQ(lines.flags, desktop::kForDebuggersOnly);
  EXPECT_EQ(info.flags, desktop::kForDebuggersOnly);
}

TEST(DebugFile, NamesWhatTheObjectDefinesByAddress) {
  small::Object object = small::GoodObject();
  std::swap(object.symbols[small::kEntry], object.symbols[small::kHelper]);
  const desktop::Linked linked = desktop::Link(object.Bytes(), "_Entry");
  const auto table =
      At<desktop::SymbolTableCommand>(linked.debug, sizeof(desktop::Header) + sizeof(desktop::UuidCommand));
  ASSERT_EQ(table.symbolCount, 2U);
  const std::uint32_t code = SectionOf(linked.bundle, "__text").address;
  const char* const names[] = {"_Entry", "_Helper"};
  for (std::uint32_t index = 0; index < 2; ++index) {
    const auto symbol =
        At<desktop::SymbolEntry>(linked.debug, table.symbolOffset + index * sizeof(desktop::SymbolEntry));
    EXPECT_EQ(symbol.value, code + index * 0x20);
    EXPECT_STREQ(reinterpret_cast<const char*>(&linked.debug.at(table.stringOffset + symbol.name)),
                 names[index]);
    EXPECT_EQ(symbol.section, 2U);  // behind the stubs
    EXPECT_GT(symbol.name, 0U);     // where none would be
    EXPECT_EQ(symbol.description, 0U);
    EXPECT_EQ(symbol.type, index == 0 ? 0x0F : 0x0E);  // only the entry is external
  }
}

// " ", the names of entry and helper, and a zero behind each.
TEST(DebugFile, FillsUpNamesToAWordAndNoFurther) {
  for (const std::string entry : {"_E", "_En", "_Ent", "_Entr", "_Entry"}) {
    small::Object object = small::GoodObject();
    object.symbols[small::kEntry].name = entry;
    const desktop::Linked linked = desktop::Link(object.Bytes(), entry);
    const auto table =
        At<desktop::SymbolTableCommand>(linked.debug, sizeof(desktop::Header) + sizeof(desktop::UuidCommand));
    EXPECT_EQ(table.stringSize, entry.size() < 6 ? 16U : 20U) << entry;
    EXPECT_EQ(linked.debug.size(), table.stringOffset + table.stringSize) << entry;
  }
}

// Pointers are made anew: what the object calls one has no place of its own.
TEST(DebugFile, NamesNoPointerOfTheObject) {
  small::Object object = small::GoodObject();
  small::AddDebug(object);
  object.symbols.push_back({"_Pointer", desktop::kInSection, small::kPointers + 1, 0, 0x3C});
  const desktop::Linked linked = desktop::Link(object.Bytes(), "_Entry");
  const auto table =
      At<desktop::SymbolTableCommand>(linked.debug, sizeof(desktop::Header) + sizeof(desktop::UuidCommand));
  EXPECT_EQ(table.symbolCount, 2U);
}

}  // namespace
