// bundle/desktop/final_link/debug_file.cpp - the file that turns the bundle's addresses into names and lines.
#include "bundle/desktop/final_link/debug_file.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "bundle/desktop/final_link/load_commands.h"
#include "bundle/desktop/final_link/opcodes.h"
#include "bundle/desktop/final_link/reader.h"
#include "bundle/desktop/final_link/refusal.h"

namespace desktop {

namespace {

template <typename Record>
void Append(Bytes& bytes, const Record& record) {
  const auto* const first = reinterpret_cast<const std::uint8_t*>(&record);
  bytes.insert(bytes.end(), first, first + sizeof record);
}

class DebugFileMaker {
 public:
  DebugFileMaker(const Object& object, const Imports& imports, const Layout& layout)
      : object_(object), imports_(imports), layout_(layout) {}

  Bytes Make(const Bytes& bundle) {
    CollectSymbols();
    const std::uint32_t commandsSize = CommandsSize();
    const std::uint32_t symbolOffset = commandsSize;
    const auto symbolCount = static_cast<std::uint32_t>(symbols_.size());
    const auto stringOffset = symbolOffset + symbolCount * static_cast<std::uint32_t>(sizeof(SymbolEntry));
    const std::uint32_t debugOffset = stringOffset + static_cast<std::uint32_t>(strings_.size());

    Append(file_, Header{kMagic32, kProcessorI386, kProcessorI386All, FileType::Debug, kSegmentCount + 2,
                         commandsSize - static_cast<std::uint32_t>(sizeof(Header)), 0});
    Append(file_, UuidCommand{{CommandKind::Uuid, sizeof(UuidCommand)}, UuidOf(bundle)});
    Append(file_, SymbolTableCommand{{CommandKind::SymbolTable, sizeof(SymbolTableCommand)},
                                     symbolOffset,
                                     symbolCount,
                                     stringOffset,
                                     static_cast<std::uint32_t>(strings_.size())});
    AppendEmptySegment("__TEXT", 0, layout_.textEnd, layout_.text);
    AppendEmptySegment("__DATA", layout_.textEnd, layout_.dataEnd, layout_.data);
    AppendDebugSegment(debugOffset);
    for (const SymbolEntry& symbol : symbols_) Append(file_, symbol);
    file_.insert(file_.end(), strings_.begin(), strings_.end());
    for (const InputSection& section : object_.debug) {
      const Bytes bytes = Moved(section);
      file_.insert(file_.end(), bytes.begin(), bytes.end());
    }
    return std::move(file_);
  }

 private:
  static constexpr std::uint32_t kSegmentCount = 3;

  std::uint32_t CommandsSize() const {
    const std::size_t sections = layout_.text.size() + layout_.data.size() + object_.debug.size();
    return static_cast<std::uint32_t>(sizeof(Header) + sizeof(UuidCommand) + sizeof(SymbolTableCommand) +
                                      kSegmentCount * sizeof(SegmentCommand) +
                                      sections * sizeof(SectionHeader));
  }

  // Sections are counted from 1, those of __TEXT first.
  std::uint8_t NumberOf(std::size_t from) const {
    std::uint8_t number = 1;
    for (const auto* const sections : {&layout_.text, &layout_.data}) {
      for (const OutputSection& section : *sections) {
        if (section.from == from) return number;
        ++number;
      }
    }
    return 0;
  }

  // All that the object defines, by address.
  void CollectSymbols() {
    std::vector<const InputSymbol*> defined;
    for (const InputSymbol& symbol : object_.symbols) {
      if (symbol.section && NumberOf(*symbol.section) != 0) defined.push_back(&symbol);
    }
    std::ranges::stable_sort(defined, {}, &InputSymbol::value);
    AppendText(strings_, " ");  // no symbol's name begins at 0, which stands for none
    for (const InputSymbol* const symbol : defined) {
      const auto name = static_cast<std::uint32_t>(strings_.size());
      AppendText(strings_, symbol->name);
      const std::uint8_t external = symbol->exported ? kExternal : 0;
      symbols_.push_back({name, static_cast<std::uint8_t>(kInSection | external), NumberOf(*symbol->section),
                          0, static_cast<std::uint32_t>(symbol->value + layout_.movedBy[*symbol->section])});
    }
    strings_.resize(RoundUp(strings_.size(), sizeof(std::uint32_t)));
  }

  // A segment as the bundle has it in memory, with nothing of it in this file.
  void AppendEmptySegment(std::string_view name, std::uint32_t address, std::uint32_t end,
                          const std::vector<OutputSection>& sections) {
    SegmentCommand segment = Segment(name, sections.size());
    segment.address = address;
    segment.memorySize = end - address;
    Append(file_, segment);
    for (const OutputSection& section : sections) {
      SectionHeader header = HeaderOf(section, name);
      header.flags &= ~kSectionKindMask;  // neither stubs nor pointers are here to be read
      Append(file_, header);
    }
  }

  // Behind the bundle's memory, so that no address is in two sections.
  void AppendDebugSegment(std::uint32_t offset) {
    SegmentCommand segment = Segment("__DWARF", object_.debug.size());
    segment.address = layout_.dataEnd;
    segment.fileOffset = offset;
    for (const InputSection& section : object_.debug) segment.fileSize += section.size;
    segment.memorySize = RoundUp(segment.fileSize, kPageSize);
    Append(file_, segment);
    std::uint32_t before = 0;
    for (const InputSection& section : object_.debug) {
      SectionHeader header{};
      header.name = Name(section.name);
      header.segment = Name("__DWARF");
      header.address = segment.address + before;
      header.size = section.size;
      header.fileOffset = offset + before;
      header.flags = kForDebuggersOnly;
      Append(file_, header);
      before += section.size;
    }
  }

  static SegmentCommand Segment(std::string_view name, std::size_t sectionCount) {
    SegmentCommand segment{};
    segment.start = {CommandKind::Segment,
                     static_cast<std::uint32_t>(sizeof segment + sectionCount * sizeof(SectionHeader))};
    segment.name = Name(name);
    segment.maximumProtection = kAll;
    segment.initialProtection = kRead;
    segment.sectionCount = static_cast<std::uint32_t>(sectionCount);
    return segment;
  }

  // A section for debuggers, with the addresses of the bundle in place of the object's.
  Bytes Moved(const InputSection& section) const {
    Bytes bytes = section.bytes;
    for (const Relocation& relocation : section.relocations) {
      const std::string what = "the relocation at " + Hex(relocation.offset) + " of " + section.Title();
      if (relocation.kind != Relocation::Kind::Address) {
        RefuseFor(what, " of an address in the object, found another kind");
      }
      auto held = RecordAt<std::uint32_t>(&bytes[relocation.offset]);
      held += layout_.Place(object_, imports_, relocation.target, what) - relocation.target;
      std::memcpy(&bytes[relocation.offset], &held, sizeof held);
    }
    return bytes;
  }

  const Object& object_;
  const Imports& imports_;
  const Layout& layout_;
  std::vector<SymbolEntry> symbols_;
  Bytes strings_;
  Bytes file_;
};

}  // namespace

Bytes DebugFile(const Object& object, const Imports& imports, const Layout& layout, const Bytes& bundle) {
  return DebugFileMaker(object, imports, layout).Make(bundle);
}

}  // namespace desktop
