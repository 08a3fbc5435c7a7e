// tests/bundle/desktop/small_object.cpp - an object written by hand, to change and to break.
#include "tests/bundle/desktop/small_object.h"

#include <algorithm>
#include <cstring>

namespace small {

namespace {

using namespace std::string_literals;

template <typename Record>
void Append(desktop::Bytes& bytes, const Record& record) {
  const auto* const first = reinterpret_cast<const std::uint8_t*>(&record);
  bytes.insert(bytes.end(), first, first + sizeof record);
}

std::uint32_t SizeOf(const Section& section) {
  return section.zeros != 0 ? section.zeros : static_cast<std::uint32_t>(section.bytes.size());
}

std::string Word(std::uint32_t number) {
  std::string bytes(sizeof number, '\0');
  std::memcpy(bytes.data(), &number, sizeof number);
  return bytes;
}

desktop::SectionHeader HeaderOf(const Section& section) {
  desktop::SectionHeader header{};
  section.name.copy(header.name.data(), header.name.size());
  section.segment.copy(header.segment.data(), header.segment.size());
  header.address = section.address;
  header.size = SizeOf(section);
  header.alignment = section.alignment;
  header.relocationCount = static_cast<std::uint32_t>(section.relocations.size());
  header.flags = section.flags;
  header.firstIndirect = section.firstIndirect;
  return header;
}

}  // namespace

desktop::RelocationEntry Plain(std::uint32_t offset, std::uint32_t number, bool distance, bool external,
                               unsigned kind, unsigned length) {
  return {offset,
          number | std::uint32_t{distance} << 24 | length << 25 | std::uint32_t{external} << 27 | kind << 28};
}

desktop::RelocationEntry Scattered(std::uint32_t offset, std::uint32_t value, unsigned kind,
                                   unsigned length) {
  return {desktop::kScattered | offset | kind << 24 | length << 28, value};
}

desktop::Bytes Object::Bytes() const {
  using namespace desktop;
  const auto sectionCount = static_cast<std::uint32_t>(sections.size());
  const std::uint32_t segmentSize =
      static_cast<std::uint32_t>(sizeof(SegmentCommand) + sectionCount * sizeof(SectionHeader));
  const std::uint32_t commandsSize =
      segmentSize +
      static_cast<std::uint32_t>(sizeof(SymbolTableCommand) + sizeof(DynamicSymbolTableCommand));

  // What follows the commands: sections, relocations, indirect symbols, symbols, names.
  desktop::Bytes rest;
  const auto here = [&] { return static_cast<std::uint32_t>(sizeof(Header) + commandsSize + rest.size()); };
  std::vector<SectionHeader> headers;
  for (const Section& section : sections) {
    headers.push_back(HeaderOf(section));
    headers.back().fileOffset = section.zeros != 0 ? 0 : here();
    rest.insert(rest.end(), section.bytes.begin(), section.bytes.end());
    rest.resize((rest.size() + 3) / 4 * 4);
    headers.back().relocationOffset = here();
    for (const RelocationEntry& relocation : section.relocations) Append(rest, relocation);
  }
  DynamicSymbolTableCommand dynamic{};
  dynamic.start = {CommandKind::DynamicSymbolTable, sizeof dynamic};
  dynamic.indirectOffset = here();
  dynamic.indirectCount = static_cast<std::uint32_t>(indirect.size());
  for (const std::uint32_t symbol : indirect) Append(rest, symbol);
  SymbolTableCommand table{};
  table.start = {CommandKind::SymbolTable, sizeof table};
  table.symbolOffset = here();
  table.symbolCount = static_cast<std::uint32_t>(symbols.size());
  std::string names(1, '\0');
  for (const Symbol& symbol : symbols) {
    Append(rest, SymbolEntry{static_cast<std::uint32_t>(names.size()), symbol.type, symbol.section,
                             symbol.description, symbol.value});
    names += symbol.name + '\0';
  }
  table.stringOffset = here();
  table.stringSize = static_cast<std::uint32_t>(names.size());
  rest.insert(rest.end(), names.begin(), names.end());

  desktop::Bytes file;
  Header head = header;
  head.commandCount = 3;
  head.commandsSize = commandsSize;
  Append(file, head);
  SegmentCommand segment{};
  segment.start = {CommandKind::Segment, segmentSize};
  segment.sectionCount = sectionCount;
  Append(file, segment);
  for (const SectionHeader& each : headers) Append(file, each);
  Append(file, table);
  Append(file, dynamic);
  file.insert(file.end(), rest.begin(), rest.end());
  return file;
}

Object GoodObject() {
  using namespace desktop;
  constexpr std::uint32_t kCode = kOnlyInstructions | kSomeInstructions;
  constexpr std::uint32_t kVanilla = 0;
  constexpr std::uint32_t kPair = 1;
  constexpr std::uint32_t kLocalDifference = 4;
  constexpr std::uint32_t kHere = 5;  // what the differences in the code count from
  constexpr std::uint32_t kHelperAt = 0x20;
  constexpr std::uint32_t kStringsAt = 0x24;
  constexpr std::uint32_t kFramesAt = 0x2C;
  constexpr std::uint32_t kDataAt = 0x30;
  constexpr std::uint32_t kPointersAt = 0x3C;
  constexpr std::uint32_t kBssAt = 0x40;

  Object object{};
  object.header.magic = kMagic32;
  object.header.processor = kProcessorI386;
  object.header.processorSubtype = kProcessorI386All;
  object.header.fileType = FileType::Object;
  object.sections.resize(6);

  // 0x00  calll 0x05; popl %eax
  // 0x06  movl guard-0x05(%eax), %ecx
  // 0x0C  leal string-0x05(%eax), %edx
  // 0x12  calll helper
  // 0x17  calll strlen
  // 0x1C  ret, and padding
  // 0x20  helper: ret, and padding
  Section& code = object.sections[kText];
  code = {"__TEXT", "__text", kCode, 0};
  code.alignment = 4;
  code.bytes = "\xE8\0\0\0\0\x58"s + "\x8B\x88" + Word(kPointersAt - kHere) + "\x8D\x90" +
               Word(kStringsAt - kHere) + "\xE8" + Word(kHelperAt - 0x17) + "\xE8" + Word(0U - 0x1C) +
               "\xC3\x90\x90\x90" + "\xC3\x90\x90\x90";
  code.relocations = {Plain(0x18, kStrlen, true, true),
                      Plain(0x13, kText + 1, true, false),
                      Scattered(0x0E, kStringsAt, kLocalDifference),
                      Scattered(0, kHere, kPair),
                      Scattered(0x08, kPointersAt, kLocalDifference),
                      Scattered(0, kHere, kPair)};

  object.sections[kStrings] = {"__TEXT", "__cstring", static_cast<std::uint32_t>(SectionKind::CStrings),
                               kStringsAt, "sky\0sea\0"s};
  object.sections[kFrames] = {"__TEXT", "__eh_frame", static_cast<std::uint32_t>(SectionKind::Coalesced),
                              kFramesAt, "\0\0\0\0"s};
  Section& data = object.sections[kData];
  data = {"__DATA", "__data", 0, kDataAt, Word(kHelperAt) + Word(kStringsAt + 4) + Word(0)};
  data.relocations = {Plain(0, kText + 1, false, false), Scattered(4, kStringsAt, kVanilla),
                      Plain(8, kSpace, false, true)};
  object.sections[kPointers] = {"__IMPORT", "__pointers", static_cast<std::uint32_t>(SectionKind::Pointers),
                                kPointersAt, Word(0)};
  object.sections[kBss] = {"__DATA", "__bss", static_cast<std::uint32_t>(SectionKind::ZeroFill),
                           kBssAt,   "",      8};

  object.symbols = {{"_Entry", kInSection | kExternal, kText + 1, 0, 0},
                    {"_Helper", kInSection, kText + 1, 0, kHelperAt},
                    {"_strlen", kUndefined | kExternal, 0, 0, 0},
                    {"___stack_chk_guard", kUndefined | kExternal, 0, 0, 0},
                    {"_NSCalibratedRGBColorSpace", kUndefined | kExternal, 0, 0, 0}};
  object.indirect = {kGuard};
  return object;
}

void AddDebug(Object& object) {
  constexpr std::uint32_t kHelperAt = 0x20;
  Section section{"__DWARF", "__debug_line", desktop::kForDebuggersOnly, kDebugAt};
  section.bytes = Word(kHelperAt) + Word(7);
  section.relocations = {Plain(0, kText + 1, false, false)};
  object.sections.push_back(section);
}

}  // namespace small
