// bundle/desktop/final_link/object.cpp - an object as an assembler gives it, read and checked.
#include "bundle/desktop/final_link/object.h"

#include <algorithm>
#include <numeric>
#include <string_view>

#include "bundle/desktop/final_link/reader.h"
#include "bundle/desktop/final_link/relocation_reader.h"

namespace desktop {

namespace {

constexpr std::uint32_t kLargestAddress = 1U << 24;  // as far as a scattered relocation reaches

// What the load commands of the object say, before it is made sense of.
struct Commands {
  std::vector<SectionHeader> sections;
  std::optional<SymbolTableCommand> symbols;
  std::optional<DynamicSymbolTableCommand> dynamicSymbols;
};

std::string TextOf(const Name16& name) {
  const std::string_view all(name.data(), name.size());
  std::string text(all.substr(0, all.find('\0')));
  if (!std::ranges::all_of(text, [](char letter) { return letter > ' ' && letter <= '~'; })) {
    RefuseFor("a section's name in plain letters, found ", Quoted(text));
  }
  return text;
}

void CheckHeader(const Header& header) {
  if (header.magic != kMagic32) RefuseFor("the magic number ", Hex(kMagic32), ", found ", Hex(header.magic));
  if (header.processor != kProcessorI386) {
    RefuseFor("processor ", kProcessorI386, " (i386), found ", header.processor);
  }
  if (header.fileType != FileType::Object) {
    RefuseFor("file type 1 (object), found ", static_cast<std::uint32_t>(header.fileType));
  }
}

void ReadSegment(const Reader& reader, std::uint64_t offset, std::uint32_t size, Commands& commands) {
  const auto segment = reader.At<SegmentCommand>(offset, "a segment");
  const std::uint64_t wanted = sizeof segment + std::uint64_t{segment.sectionCount} * sizeof(SectionHeader);
  if (size != wanted) {
    RefuseFor("a segment command of ", wanted, " bytes for ", segment.sectionCount, " sections, found ",
              size);
  }
  for (std::uint32_t index = 0; index < segment.sectionCount; ++index) {
    commands.sections.push_back(reader.At<SectionHeader>(
        offset + sizeof segment + std::uint64_t{index} * sizeof(SectionHeader), "a section"));
  }
}

template <typename Command>
void ReadOnce(const Reader& reader, std::uint64_t offset, std::uint32_t size, std::optional<Command>& command,
              const std::string& what) {
  if (command) RefuseFor(what, " once, found another");
  if (size != sizeof(Command)) RefuseFor(what, " in ", sizeof(Command), " bytes, found ", size);
  command = reader.At<Command>(offset, what);
}

Commands ReadCommands(const Reader& reader) {
  const auto header = reader.At<Header>(0, "a header");
  CheckHeader(header);
  reader.Part(sizeof header, header.commandsSize, "load commands");
  const std::uint64_t end = sizeof header + std::uint64_t{header.commandsSize};
  Commands commands;
  std::uint64_t offset = sizeof header;
  for (std::uint32_t index = 0; index < header.commandCount; ++index) {
    const auto start = reader.At<CommandStart>(offset, "a load command");
    if (start.size < sizeof start || start.size % 4 != 0 || start.size > end - offset) {
      RefuseFor("a load command of whole words that ends before ", end, ", found ", start.size, " bytes at ",
                offset);
    }
    switch (start.kind) {
      case CommandKind::OldestSystem:
        break;  // the bundle names its own
      case CommandKind::Segment:
        ReadSegment(reader, offset, start.size, commands);
        break;
      case CommandKind::SymbolTable:
        ReadOnce(reader, offset, start.size, commands.symbols, "a symbol table");
        break;
      case CommandKind::DynamicSymbolTable:
        ReadOnce(reader, offset, start.size, commands.dynamicSymbols, "a table of indirect symbols");
        break;
      default:
        RefuseFor("a load command that an assembler writes, found ",
                  Hex(static_cast<std::uint32_t>(start.kind)));
    }
    offset += start.size;
  }
  if (offset != end)
    RefuseFor("load commands of ", header.commandsSize, " bytes, found ", offset - sizeof header);
  return commands;
}

SectionKind KindOf(const SectionHeader& header, const std::string& title) {
  const auto kind = static_cast<SectionKind>(header.flags & kSectionKindMask);
  switch (kind) {
    case SectionKind::Regular:
    case SectionKind::ZeroFill:
    case SectionKind::CStrings:
    case SectionKind::Literals4:
    case SectionKind::Literals8:
    case SectionKind::Literals16:
    case SectionKind::Pointers:
      return kind;
    case SectionKind::Coalesced:
      if (title == "__TEXT,__eh_frame") return kind;
      RefuseFor("coalesced contents in __TEXT,__eh_frame only, found ", title);
    default:
      RefuseFor("a section of code, constants, data or pointers, found ", title, " of kind ",
                static_cast<unsigned>(kind), "; nothing may run on loading");
  }
}

InputSection ReadSection(const Reader& reader, const SectionHeader& header) {
  InputSection section;
  section.name = TextOf(header.name);
  section.segment = TextOf(header.segment);
  const std::string title = section.Title();
  section.kind = KindOf(header, title);
  section.flags = header.flags;
  section.address = header.address;
  section.size = header.size;
  if (section.End() > kLargestAddress) {
    RefuseFor("the section ", title, " below ", Hex(kLargestAddress), ", found its end at ",
              Hex(section.End()));
  }
  if (header.alignment > 12) {
    RefuseFor("the section ", title, " aligned to a page at most, found 2^", header.alignment);
  }
  section.alignment = 1U << header.alignment;
  if (section.address % section.alignment != 0) {
    RefuseFor("the section ", title, " at a multiple of ", section.alignment, ", found ",
              Hex(section.address));
  }
  if (section.kind != SectionKind::ZeroFill) {
    const auto bytes = reader.Part(header.fileOffset, header.size, "the section " + title);
    section.bytes.assign(bytes.begin(), bytes.end());
  }
  return section;
}

std::vector<InputSymbol> ReadSymbols(const Reader& reader, const SymbolTableCommand& table,
                                     const std::vector<InputSection>& sections) {
  const auto strings = reader.Part(table.stringOffset, table.stringSize, "the symbols' names");
  reader.Part(table.symbolOffset, std::uint64_t{table.symbolCount} * sizeof(SymbolEntry), "the symbols");
  std::vector<InputSymbol> symbols;
  for (std::uint32_t index = 0; index < table.symbolCount; ++index) {
    const auto entry =
        reader.At<SymbolEntry>(table.symbolOffset + std::uint64_t{index} * sizeof(SymbolEntry), "a symbol");
    if (entry.name >= strings.size()) {
      RefuseFor("the name of symbol ", index, " among ", strings.size(), " bytes of names, found ",
                entry.name);
    }
    const auto rest = strings.subspan(entry.name);
    const auto end = std::ranges::find(rest, std::uint8_t{0});
    if (end == rest.end()) RefuseFor("an end of the name of symbol ", index, ", found the end of the names");
    InputSymbol symbol{std::string(rest.begin(), end), false, std::nullopt, entry.value};
    const std::string title = "the symbol " + Quoted(symbol.name);

    if ((entry.type & kDebuggerMask) != 0) RefuseFor("no debugger's symbols, found ", Quoted(symbol.name));
    const std::uint16_t weak = kWeakDefinition | kWeakReference;
    if ((entry.description & weak) != 0) {
      RefuseFor(title, " defined or wanted without doubt, found it weak; link the rooms as one module first");
    }
    switch (entry.type & kSymbolKindMask) {
      case kUndefined:
        if (entry.value != 0) RefuseFor(title, " defined in a section, found it common");
        break;
      case kInSection:
        if (entry.section == 0 || entry.section > sections.size()) {
          RefuseFor(title, " in one of ", sections.size(), " sections, found section ", int{entry.section});
        }
        symbol.section = entry.section - 1U;
        if (!sections[*symbol.section].Holds(entry.value)) {
          RefuseFor(title, " inside of ", sections[*symbol.section].Title(), ", found ", Hex(entry.value));
        }
        symbol.exported = (entry.type & kExternal) != 0 && (entry.type & kPrivateExternal) == 0;
        break;
      default:
        RefuseFor(title, " undefined or in a section, found type ", Hex(entry.type));
    }
    symbols.push_back(std::move(symbol));
  }
  return symbols;
}

// What each pointer of a section of pointers is to hold.
std::vector<std::size_t> ReadPointers(const Reader& reader, const SectionHeader& header,
                                      const std::string& title,
                                      const std::optional<DynamicSymbolTableCommand>& table,
                                      const std::vector<InputSymbol>& symbols) {
  if (header.size % kPointerSize != 0 || header.relocationCount != 0) {
    RefuseFor("the section ", title, " of whole pointers without relocations, found ", header.size,
              " bytes and ", header.relocationCount, " relocations");
  }
  const std::uint32_t count = header.size / kPointerSize;
  const std::uint32_t given = table ? table->indirectCount : 0;
  if (std::uint64_t{header.firstIndirect} + count > given) {
    RefuseFor("indirect symbols for ", count, " pointers of ", title, ", found ", given);
  }
  std::vector<std::size_t> pointers;
  for (std::uint32_t index = 0; index < count; ++index) {
    const std::uint64_t entry = header.firstIndirect + std::uint64_t{index};
    const auto symbol =
        reader.At<std::uint32_t>(table->indirectOffset + entry * sizeof(std::uint32_t), "an indirect symbol");
    if (symbol >= symbols.size() || symbols[symbol].section) {
      RefuseFor("an undefined symbol behind each pointer of ", title, ", found symbol ", Hex(symbol));
    }
    pointers.push_back(symbol);
  }
  return pointers;
}

// The order of the sections by address. They may not overlap.
std::vector<std::size_t> OrderOf(const std::vector<InputSection>& sections) {
  std::vector<std::size_t> order(sections.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::ranges::stable_sort(
      order, {}, [&](std::size_t index) { return std::pair(sections[index].address, sections[index].size); });
  for (std::size_t index = 1; index < order.size(); ++index) {
    const InputSection& before = sections[order[index - 1]];
    const InputSection& after = sections[order[index]];
    if (before.End() > after.address) {
      RefuseFor("sections apart from each other, found ", before.Title(), " and ", after.Title(), " at ",
                Hex(after.address));
    }
  }
  return order;
}

}  // namespace

std::size_t Object::SectionAt(std::uint32_t address, const std::string& what) const {
  const auto found = std::ranges::find_if(
      sections, [address](const InputSection& section) { return section.Holds(address); });
  if (found == sections.end()) RefuseFor("the target of ", what, " in a section, found ", Hex(address));
  return static_cast<std::size_t>(found - sections.begin());
}

Object ReadObject(std::span<const std::uint8_t> file) {
  const Reader reader(file);
  const Commands commands = ReadCommands(reader);
  if (!commands.symbols) RefuseFor("a symbol table, found none");

  std::vector<InputSection> sections;
  for (const SectionHeader& header : commands.sections) sections.push_back(ReadSection(reader, header));
  const std::vector<std::size_t> order = OrderOf(sections);
  Object object;
  object.symbols = ReadSymbols(reader, *commands.symbols, sections);
  for (std::size_t index = 0; index < sections.size(); ++index) {
    InputSection& section = sections[index];
    const SectionHeader& header = commands.sections[index];
    if (section.kind == SectionKind::Pointers) {
      section.symbols =
          ReadPointers(reader, header, section.Title(), commands.dynamicSymbols, object.symbols);
    } else {
      section.relocations = ReadRelocations(reader, header, section, sections, object.symbols);
    }
  }

  // From here on a section is known by its place in the order of addresses.
  std::vector<std::optional<std::size_t>> placeOf(order.size());  // none: it is for debuggers
  for (const std::size_t index : order) {
    const bool isDebug = sections[index].segment == "__DWARF";
    if (isDebug && sections[index].kind != SectionKind::Regular) {
      RefuseFor("plain bytes for debuggers, found ", sections[index].Title(), " of kind ",
                static_cast<unsigned>(sections[index].kind));
    }
    std::vector<InputSection>& kept = isDebug ? object.debug : object.sections;
    if (!isDebug) placeOf[index] = kept.size();
    kept.push_back(std::move(sections[index]));
  }
  for (InputSymbol& symbol : object.symbols) {
    if (!symbol.section) continue;
    symbol.section = placeOf[*symbol.section];
    if (!symbol.section) RefuseFor("no symbol among the sections for debuggers, found ", Quoted(symbol.name));
  }
  return object;
}

}  // namespace desktop
