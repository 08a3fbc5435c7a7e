// bundle/desktop/final_link/load_commands.cpp - the head of the bundle's file.
#include "bundle/desktop/final_link/load_commands.h"

#include <bit>
#include <cstddef>
#include <cstring>
#include <string_view>

#include "bundle/desktop/final_link/reader.h"

namespace desktop {

namespace {

constexpr std::uint32_t kOldestSystem = 10U << 16 | 6U << 8;
constexpr std::uint32_t kFirstVersion = 1U << 16;  // of a library: every one that exists will do
constexpr std::uint32_t kSegmentCount = 3;

// The commands besides segments and libraries, in the order that they are written in.
constexpr std::uint32_t kOtherCommands = 5;
constexpr std::uint32_t kOtherSizes = sizeof(DynamicLoaderInfoCommand) + sizeof(SymbolTableCommand) +
                                      sizeof(DynamicSymbolTableCommand) + sizeof(UuidCommand) +
                                      sizeof(OldestSystemCommand);

std::uint32_t LoadLibrarySize(const std::string& path) {
  return sizeof(LoadLibraryCommand) + RoundUp(path.size() + 1, sizeof(std::uint32_t));
}

class CommandWriter {
 public:
  template <typename Record>
  void Append(const Record& record) {
    const auto* const first = reinterpret_cast<const std::uint8_t*>(&record);
    bytes_.insert(bytes_.end(), first, first + sizeof record);
  }

  void AppendSections(const std::vector<OutputSection>& sections, std::string_view segment,
                      std::uint32_t& indirect) {
    for (const OutputSection& section : sections) {
      SectionHeader header = HeaderOf(section, segment);
      header.fileOffset = section.IsZeroFilled() ? 0 : section.address;
      const auto kind = static_cast<SectionKind>(section.flags & kSectionKindMask);
      if (kind == SectionKind::Stubs) header.stubSize = kStubSize;
      const std::uint32_t unit = kind == SectionKind::Stubs ? kStubSize : kPointerSize;
      if (kind == SectionKind::Stubs || kind == SectionKind::Pointers) {
        header.firstIndirect = indirect;
        indirect += section.size / unit;
      }
      Append(header);
    }
  }

  void AppendLibrary(const std::string& path) {
    const std::uint32_t size = LoadLibrarySize(path);
    const std::size_t end = bytes_.size() + size;
    Append(LoadLibraryCommand{
        {CommandKind::LoadLibrary, size}, sizeof(LoadLibraryCommand), 0, kFirstVersion, kFirstVersion});
    bytes_.insert(bytes_.end(), path.begin(), path.end());
    bytes_.resize(end);
  }

  Bytes Take() { return std::move(bytes_); }

 private:
  Bytes bytes_;
};

SegmentCommand Segment(std::string_view name, std::size_t sectionCount, std::uint32_t protection) {
  SegmentCommand segment{};
  segment.start.kind = CommandKind::Segment;
  segment.start.size = static_cast<std::uint32_t>(sizeof segment + sectionCount * sizeof(SectionHeader));
  segment.name = Name(name);
  segment.maximumProtection = kAll;
  segment.initialProtection = protection;
  segment.sectionCount = static_cast<std::uint32_t>(sectionCount);
  return segment;
}

void AppendSegments(CommandWriter& writer, const Layout& layout, const LinkInformation& information) {
  std::uint32_t indirect = 0;
  SegmentCommand text = Segment("__TEXT", layout.text.size(), kReadExecute);
  text.memorySize = text.fileSize = layout.textEnd;
  writer.Append(text);
  writer.AppendSections(layout.text, "__TEXT", indirect);

  SegmentCommand data = Segment("__DATA", layout.data.size(), kReadWrite);
  data.address = data.fileOffset = layout.textEnd;
  data.memorySize = layout.dataEnd - layout.textEnd;
  data.fileSize = layout.dataFileEnd - layout.textEnd;
  writer.Append(data);
  writer.AppendSections(layout.data, "__DATA", indirect);

  SegmentCommand link = Segment("__LINKEDIT", 0, kRead);
  const auto size = static_cast<std::uint32_t>(information.bytes.size());
  link.address = layout.dataEnd;
  link.memorySize = RoundUp(size, kPageSize);
  link.fileOffset = information.offset;
  link.fileSize = size;
  writer.Append(link);
}

void AppendTables(CommandWriter& writer, const LinkInformation& information, const SymbolTable& table) {
  DynamicLoaderInfoCommand info{};
  info.start = {CommandKind::DynamicLoaderInfo, sizeof info};
  info.rebaseOffset = information.rebases.offset;
  info.rebaseSize = information.rebases.size;
  info.bindOffset = information.binds.offset;
  info.bindSize = information.binds.size;
  info.exportOffset = information.exports.offset;
  info.exportSize = information.exports.size;
  writer.Append(info);

  const auto symbolCount = static_cast<std::uint32_t>(table.symbols.size());
  writer.Append(SymbolTableCommand{{CommandKind::SymbolTable, sizeof(SymbolTableCommand)},
                                   information.symbols.offset,
                                   symbolCount,
                                   information.strings.offset,
                                   information.strings.size});

  DynamicSymbolTableCommand dynamic{};
  dynamic.start = {CommandKind::DynamicSymbolTable, sizeof dynamic};
  dynamic.definedCount = table.definedCount;
  dynamic.firstUndefined = table.definedCount;
  dynamic.undefinedCount = symbolCount - table.definedCount;
  dynamic.indirectOffset = information.indirect.offset;
  dynamic.indirectCount = static_cast<std::uint32_t>(table.indirect.size());
  writer.Append(dynamic);
}

// Where the UUID is, in a file that begins with our own load commands.
std::size_t UuidOffset(const Bytes& file) {
  std::size_t offset = sizeof(Header);
  for (;;) {
    const auto start = RecordAt<CommandStart>(&file.at(offset));
    if (start.kind == CommandKind::Uuid) return offset + offsetof(UuidCommand, uuid);
    offset += start.size;
  }
}

// A hash of 64 bits (FNV-1a), its halves folded: by itself its low bits know nothing of the bytes' high ones.
std::uint64_t Hash(const Bytes& bytes, std::uint64_t start) {
  std::uint64_t hash = start;
  for (const std::uint8_t byte : bytes) hash = (hash ^ byte) * 0x100000001B3;
  return hash ^ hash >> 32;
}

}  // namespace

Name16 Name(std::string_view text) {
  Name16 name{};
  text.copy(name.data(), name.size());
  return name;
}

SectionHeader HeaderOf(const OutputSection& section, std::string_view segment) {
  SectionHeader header{};
  header.name = Name(section.name);
  header.segment = Name(segment);
  header.address = section.address;
  header.size = section.size;
  header.alignment = static_cast<std::uint32_t>(std::countr_zero(section.alignment));
  header.flags = section.flags;
  return header;
}

std::uint32_t LoadCommandsSize(const SectionCounts& sections, const Imports& imports) {
  std::uint32_t size = sizeof(Header) + kSegmentCount * sizeof(SegmentCommand) + kOtherSizes;
  size += (sections.text + sections.data) * static_cast<std::uint32_t>(sizeof(SectionHeader));
  for (const std::string& path : imports.libraries) size += LoadLibrarySize(path);
  return size;
}

Bytes LoadCommands(const Layout& layout, const Imports& imports, const LinkInformation& information,
                   const SymbolTable& table) {
  const SectionCounts counts{static_cast<std::uint32_t>(layout.text.size()),
                             static_cast<std::uint32_t>(layout.data.size())};
  CommandWriter writer;
  Header header{};
  header.magic = kMagic32;
  header.processor = kProcessorI386;
  header.processorSubtype = kProcessorI386All;
  header.fileType = FileType::Bundle;
  header.commandCount = kSegmentCount + kOtherCommands + static_cast<std::uint32_t>(imports.libraries.size());
  header.commandsSize = LoadCommandsSize(counts, imports) - static_cast<std::uint32_t>(sizeof header);
  header.flags = kNoUndefinedSymbols | kForDynamicLoader | kTwoLevelNames;
  writer.Append(header);
  AppendSegments(writer, layout, information);
  AppendTables(writer, information, table);
  writer.Append(UuidCommand{{CommandKind::Uuid, sizeof(UuidCommand)}, {}});
  writer.Append(OldestSystemCommand{
      {CommandKind::OldestSystem, sizeof(OldestSystemCommand)}, kOldestSystem, kOldestSystem});
  for (const std::string& path : imports.libraries) writer.AppendLibrary(path);
  return writer.Take();
}

void SetUuid(Bytes& file) {
  const std::uint64_t first = Hash(file, 0xCBF29CE484222325);
  const std::uint64_t second = Hash(file, first);
  std::array<std::uint8_t, 16> uuid{};
  std::memcpy(uuid.data(), &first, sizeof first);
  std::memcpy(uuid.data() + sizeof first, &second, sizeof second);
  uuid[6] &= 0x0F;
  uuid[6] |= 0x80;  // version 8: made from what its maker chose
  uuid[8] &= 0x3F;
  uuid[8] |= 0x80;
  std::memcpy(&file[UuidOffset(file)], uuid.data(), uuid.size());
}

std::array<std::uint8_t, 16> UuidOf(const Bytes& file) {
  return RecordAt<std::array<std::uint8_t, 16>>(&file[UuidOffset(file)]);
}

}  // namespace desktop
