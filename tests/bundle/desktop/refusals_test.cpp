// tests/bundle/desktop/refusals_test.cpp - what the final link refuses, and the whole line that says why.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <functional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "bundle/desktop/final_link/export_trie.h"
#include "bundle/desktop/final_link/link.h"
#include "bundle/desktop/final_link/opcodes.h"
#include "bundle/desktop/final_link/refusal.h"
#include "tests/bundle/desktop/small_object.h"

namespace {

using desktop::Bytes;

// Empty: it did not refuse.
std::string RefusalOf(const std::function<void()>& step) {
  try {
    step();
    return {};
  } catch (const desktop::Refusal& refusal) {
    return refusal.what();
  }
}
std::string RefusalOf(const Bytes& object) {
  return RefusalOf([&] { desktop::Link(object, "_Entry"); });
}

TEST(BindOpcodes, NameOneOfFifteenLibraries) {
  desktop::Imports imports;
  imports.imports = {{"_a", 0, 15, false}, {"_b", 1, 16, false}};
  const auto bind = [&](std::size_t import) {
    return [&imports, import] {
      desktop::BindOpcodes(std::vector<desktop::Bind>{{0x1004, import}}, imports, 0x1000);
    };
  };
  EXPECT_EQ(RefusalOf(bind(0)), "");
  EXPECT_EQ(RefusalOf(bind(1)), "wanted at most 15 libraries, found 16");
}

TEST(ExportTrie, TakesANameOf123BytesAndNoLonger) {
  const auto trie = [](std::size_t length) {
    return [length] { desktop::ExportTrie(std::string(length, 'n'), 0x1234); };
  };
  EXPECT_EQ(RefusalOf(trie(123)), "");
  EXPECT_EQ(RefusalOf(trie(124)), "wanted the exported symbol's name shorter than 124 bytes, found 124");
}

TEST(Quoted, CutsANameAfter100Letters) {
  const std::string longest(100, 'n');
  EXPECT_EQ(desktop::Quoted(longest), '"' + longest + '"');
  EXPECT_EQ(desktop::Quoted(longest + "o"), '"' + longest + "...\"");
}

TEST(Quoted, ShowsLettersBetweenSpaceAndTilde) {
  EXPECT_EQ(desktop::Quoted(" ~\x1F\x7F\x80"), "\" ~???\"");
}

// What is refused, and the whole line that says so.
struct Broken {
  const char* what;
  std::function<void(small::Object&)> change;
  const char* line;
};

class Refused : public testing::TestWithParam<Broken> {};

TEST_P(Refused, SaysWhatWasWantedAndFound) {
  small::Object object = small::GoodObject();
  GetParam().change(object);
  EXPECT_EQ(RefusalOf(object.Bytes()), GetParam().line);
}

small::Section& Text(small::Object& object) {
  return object.sections[small::kText];
}
small::Section& Data(small::Object& object) {
  return object.sections[small::kData];
}

const Broken kBroken[] = {
    {"AnotherFormat", [](auto& o) { o.header.magic = 0xFEEDFACF; },
     "wanted the magic number 0xFEEDFACE, found 0xFEEDFACF"},
    {"AnotherProcessor", [](auto& o) { o.header.processor = 12; }, "wanted processor 7 (i386), found 12"},
    {"ALinkedFile", [](auto& o) { o.header.fileType = desktop::FileType::Bundle; },
     "wanted file type 1 (object), found 8"},
    {"AnInitialiser",
     [](auto& o) {
       Data(o).name = "__mod_init_func";
       Data(o).flags = 9;
     },
     "wanted a section of code, constants, data or pointers, found __DATA,__mod_init_func of kind 9; nothing "
     "may run "
     "on loading"},
    {"ThreadVariables", [](auto& o) { Data(o).flags = 17; },
     "wanted a section of code, constants, data or pointers, found __DATA,__data of kind 17; nothing may run "
     "on "
     "loading"},
    {"CoalescedCode", [](auto& o) { Text(o).flags = 11; },
     "wanted coalesced contents in __TEXT,__eh_frame only, found __TEXT,__text"},
    {"TooManySections",
     [](auto& o) {
       while (o.sections.size() < 256) o.sections.push_back({"__DATA", "__more", 0, 0x1000});
     },
     "wanted at most 255 sections, found 257"},
    {"AnotherSegment", [](auto& o) { Data(o).segment = "__OBJC"; },
     "wanted code and constants in __TEXT, data in __DATA, found __OBJC,__data"},
    {"PointersInText", [](auto& o) { o.sections[small::kPointers].segment = "__TEXT"; },
     "wanted code and constants in __TEXT, data in __DATA, found __TEXT,__pointers"},
    {"ZerosInText", [](auto& o) { o.sections[small::kBss].segment = "__TEXT"; },
     "wanted code and constants in __TEXT, data in __DATA, found __TEXT,__bss"},
    {"TextBehindData", [](auto& o) { o.sections[small::kFrames].address = 0x100; },
     "wanted the sections of __TEXT before all others, found __TEXT,__eh_frame behind"},
    {"TextBehindFrames",
     [](auto& o) {
       o.sections[small::kFrames].address = 0x24;
       o.sections[small::kStrings].address = 0x28;
     },
     "wanted __TEXT,__eh_frame last in __TEXT, found __TEXT,__cstring behind"},
    {"CodeBetweenItsPlaces", [](auto& o) { std::swap(o.sections[small::kFrames].address, Text(o).address); },
     "wanted the section __TEXT,__text at a multiple of 16, found 0x2C"},
    {"OverlappingSections", [](auto& o) { o.sections[small::kStrings].address = 0x20; },
     "wanted sections apart from each other, found __TEXT,__text and __TEXT,__cstring at 0x20"},
    {"AHugeSection", [](auto& o) { o.sections[small::kBss].zeros = 0x7FFFFFFF; },
     "wanted the section __DATA,__bss below 0x1000000, found its end at 0x8000003F"},
    {"AHugeAlignment", [](auto& o) { Data(o).alignment = 200; },
     "wanted the section __DATA,__data aligned to a page at most, found 2^200"},
    {"AnAlignmentOfTwoPages",
     [](auto& o) {
       o.sections[small::kBss].alignment = 13;
       o.sections[small::kBss].address = 0x2000;
     },
     "wanted the section __DATA,__bss aligned to a page at most, found 2^13"},
    {"AWeakDefinition", [](auto& o) { o.symbols[small::kHelper].description = 0x80; },
     "wanted the symbol \"_Helper\" defined or wanted without doubt, found it weak; link the rooms as one "
     "module "
     "first"},
    {"AWeakReference", [](auto& o) { o.symbols[small::kStrlen].description = 0x40; },
     "wanted the symbol \"_strlen\" defined or wanted without doubt, found it weak; link the rooms as one "
     "module "
     "first"},
    {"ACommonSymbol", [](auto& o) { o.symbols[small::kStrlen].value = 8; },
     "wanted the symbol \"_strlen\" defined in a section, found it common"},
    {"AnAbsoluteSymbol", [](auto& o) { o.symbols[small::kHelper].type = 2; },
     "wanted the symbol \"_Helper\" undefined or in a section, found type 0x2"},
    {"ADebuggersSymbol", [](auto& o) { o.symbols[small::kHelper].type = 0x24; },
     "wanted no debugger's symbols, found \"_Helper\""},
    {"ASymbolOutside", [](auto& o) { o.symbols[small::kHelper].value = 0x24; },
     "wanted the symbol \"_Helper\" inside of __TEXT,__text, found 0x24"},
    {"ASymbolBehindTheLastSection", [](auto& o) { o.symbols[small::kHelper].section = 7; },
     "wanted the symbol \"_Helper\" in one of 6 sections, found section 7"},
    {"ASymbolInNoSection", [](auto& o) { o.symbols[small::kHelper].section = 0; },
     "wanted the symbol \"_Helper\" in one of 6 sections, found section 0"},
    {"AnUnknownImport", [](auto& o) { o.symbols[small::kStrlen].name = "_strdup"; },
     "wanted a symbol of bundle/platform/symbols.inc or bundle/desktop/runtime_symbols.inc, found "
     "\"_strdup\"; list it "
     "if every system from 10.6 on has it"},
    {"TwoImportsOfAName", [](auto& o) { o.symbols[small::kSpace].name = "_strlen"; },
     "wanted one symbol of a name, found two of \"_strlen\""},
    {"ACallToData", [](auto& o) { std::swap(o.symbols[small::kStrlen].name, o.symbols[small::kSpace].name); },
     "wanted no call to data, found one to \"_NSCalibratedRGBColorSpace\""},
    {"NoExport", [](auto& o) { o.symbols[small::kEntry].type = desktop::kInSection; },
     "wanted the exported symbol \"_Entry\", found none"},
    {"APrivateExport", [](auto& o) { o.symbols[small::kEntry].type |= desktop::kPrivateExternal; },
     "wanted the exported symbol \"_Entry\", found none"},
    {"AnotherExport", [](auto& o) { o.symbols[small::kHelper].type |= desktop::kExternal; },
     R"(wanted one exported symbol, "_Entry", found "_Helper")"},
    {"TwoExportsOfAName",
     [](auto& o) {
       o.symbols[small::kHelper].type |= desktop::kExternal;
       o.symbols[small::kHelper].name = "_Entry";
     },
     R"(wanted one exported symbol, "_Entry", found "_Entry" again)"},
    {"AnExportOfData",
     [](auto& o) {
       o.symbols[small::kEntry].section = small::kData + 1;
       o.symbols[small::kEntry].value = Data(o).address;
     },
     "wanted the exported symbol in __TEXT, found it elsewhere"},
    {"AnUnknownRelocation", [](auto& o) { Data(o).relocations[0] = small::Plain(0, 1, false, false, 5); },
     "wanted the relocation at 0x0 of __DATA,__data of an address, a distance or a difference, found kind 5"},
    {"AShortField", [](auto& o) { Data(o).relocations[0] = small::Plain(0, 1, false, false, 0, 1); },
     "wanted the relocation at 0x0 of __DATA,__data of a field of 4 bytes, found 2"},
    {"AFieldOutside", [](auto& o) { Data(o).relocations[0] = small::Plain(9, 1, false, false); },
     "wanted the relocation at 0x9 of __DATA,__data inside of the section's 12 bytes, found its field "
     "outside"},
    {"OverlappingFields", [](auto& o) { Data(o).relocations[0] = small::Plain(3, 1, false, false); },
     "wanted the relocation at 0x3 of __DATA,__data to a target in __TEXT,__text, found 0x2800"},
    {"TwoRelocationsOfAField",
     [](auto& o) { Data(o).relocations[0] = small::Plain(8, small::kSpace, false, true); },
     "wanted one relocation for a field, found two at 0x8 of __DATA,__data"},
    {"ADifferenceWithoutPair", [](auto& o) { Text(o).relocations.pop_back(); },
     "wanted the relocation at 0x8 of __TEXT,__text and its pair, found the last one"},
    {"ADifferenceWithAnother", [](auto& o) { Text(o).relocations[3] = Text(o).relocations[1]; },
     "wanted the relocation at 0xE of __TEXT,__text followed by its pair, found kind 0"},
    {"ADifferenceWithAnAddress", [](auto& o) { Text(o).relocations[3] = small::Scattered(0x13, 0x20, 0); },
     "wanted the relocation at 0xE of __TEXT,__text followed by its pair, found kind 0"},
    {"ADifferenceWithAPairThatNamesASection",
     [](auto& o) { Text(o).relocations[3] = small::Plain(0, small::kText + 1, false, false, 1); },
     "wanted the relocation at 0xE of __TEXT,__text followed by its pair, found kind 1"},
    {"ADifferenceThatNamesASection",
     [](auto& o) { Text(o).relocations[2] = small::Plain(0xE, small::kText + 1, false, false, 4); },
     "wanted the relocation at 0xE of __TEXT,__text of an address, a distance or a difference, found kind 4"},
    {"ADifferenceFromItsField", [](auto& o) { Text(o).relocations[2].where |= 1U << 30; },
     "wanted the relocation at 0xE of __TEXT,__text of an address, a distance or a difference, found kind 4"},
    {"APairAlone", [](auto& o) { Data(o).relocations[1] = small::Scattered(4, 0x24, 1); },
     "wanted the relocation at 0x4 of __DATA,__data of an address, a distance or a difference, found kind 1"},
    {"ATargetNowhere", [](auto& o) { Data(o).relocations[1] = small::Scattered(4, 0x99, 0); },
     "wanted the target of the relocation at 0x4 of __DATA,__data in a section, found 0x99"},
    {"ATargetInsideOfAPointer", [](auto& o) { Text(o).relocations[4] = small::Scattered(0x08, 0x3E, 4); },
     "wanted the target of the relocation at 0x8 of __TEXT,__text at a pointer, found 0x3E"},
    {"NoSuchSymbol", [](auto& o) { Data(o).relocations[2] = small::Plain(8, 5, false, true); },
     "wanted the relocation at 0x8 of __DATA,__data by one of 5 symbols, found symbol 5"},
    {"NoSuchSection", [](auto& o) { Data(o).relocations[0] = small::Plain(0, 7, false, false); },
     "wanted the relocation at 0x0 of __DATA,__data by one of 6 sections, found section 7"},
    {"AnAddressOfNoSection", [](auto& o) { Data(o).relocations[0] = small::Plain(0, 0, false, false); },
     "wanted the relocation at 0x0 of __DATA,__data by one of 6 sections, found section 0"},
    {"AnAddressInCode", [](auto& o) { Text(o).relocations[1] = small::Scattered(0x13, 0x20, 0); },
     "wanted the relocation at 0x13 of __TEXT,__text to be position independent, found an address"},
    {"AnImportsAddressInCode",
     [](auto& o) { Text(o).relocations[0] = small::Plain(0x18, small::kStrlen, false, true); },
     "wanted the relocation at 0x18 of __TEXT,__text to be position independent, found an address"},
    {"ACallBesideASymbol", [](auto& o) { Text(o).bytes[0x18] = '\xE5'; },
     "wanted the relocation at 0x18 of __TEXT,__text to call \"_strlen\" itself, found 0x1 added to it"},
    {"AnAddressBesideASymbol", [](auto& o) { Data(o).bytes[8] = 4; },
     "wanted the address of \"_NSCalibratedRGBColorSpace\" itself, found 4 added to it"},
    {"APointerToOurs", [](auto& o) { o.indirect = {small::kHelper}; },
     "wanted an undefined symbol behind each pointer of __IMPORT,__pointers, found symbol 0x1"},
    {"APointerBehindTheLastSymbol", [](auto& o) { o.indirect = {5}; },
     "wanted an undefined symbol behind each pointer of __IMPORT,__pointers, found symbol 0x5"},
    {"PointersBehindTheLastIndirectSymbol", [](auto& o) { o.sections[small::kPointers].firstIndirect = 1; },
     "wanted indirect symbols for 1 pointers of __IMPORT,__pointers, found 1"},
    {"PointersWithRelocations",
     [](auto& o) {
       o.sections[small::kPointers].relocations = {small::Plain(0, small::kGuard, false, true)};
     },
     "wanted the section __IMPORT,__pointers of whole pointers without relocations, found 4 bytes and 1 "
     "relocations"},
    {"APointerToALocal", [](auto& o) { o.indirect = {0x80000000}; },
     "wanted an undefined symbol behind each pointer of __IMPORT,__pointers, found symbol 0x80000000"},
    {"PointersWithoutSymbols", [](auto& o) { o.indirect.clear(); },
     "wanted indirect symbols for 1 pointers of __IMPORT,__pointers, found 0"},
    {"HalfAPointer", [](auto& o) { o.sections[small::kPointers].bytes.resize(3); },
     "wanted the section __IMPORT,__pointers of whole pointers without relocations, found 3 bytes and 0 "
     "relocations"},
    {"ANameInNoLetters", [](auto& o) { Data(o).name = "a\nb"; },
     "wanted a section's name in plain letters, found \"a?b\""},
    {"ANameWithASpace", [](auto& o) { Data(o).name = "a b"; },
     "wanted a section's name in plain letters, found \"a b\""},
    {"ASymbolForDebuggers",
     [](auto& o) {
       small::AddDebug(o);
       o.symbols.push_back({"_Debugged", desktop::kInSection, 7, 0, small::kDebugAt});
     },
     "wanted no symbol among the sections for debuggers, found \"_Debugged\""},
    {"NothingForDebuggers",
     [](auto& o) {
       small::AddDebug(o);
       o.sections.back().flags = static_cast<std::uint32_t>(desktop::SectionKind::CStrings);
     },
     "wanted plain bytes for debuggers, found __DWARF,__debug_line of kind 2"},
    {"ADistanceForDebuggers",
     [](auto& o) {
       small::AddDebug(o);
       o.sections.back().relocations = {small::Plain(4, small::kHelper, true, true)};
     },
     "wanted the relocation at 0x4 of __DWARF,__debug_line of an address in the object, found another kind"},
};

INSTANTIATE_TEST_SUITE_P(Of, Refused, testing::ValuesIn(kBroken),
                         [](const auto& each) { return std::string(each.param.what); });

TEST(Refused, EveryTruncatedObject) {
  const Bytes whole = small::GoodObject().Bytes();
  for (std::size_t size = 0; size < whole.size(); ++size) {
    EXPECT_THROW(desktop::Link(std::span(whole).first(size), "_Entry"), desktop::Refusal) << size;
  }
}

// The good object's load commands: a segment with six sections, the symbol table, that of indirect symbols.
constexpr std::size_t kCommandCountAt = 16;
constexpr std::size_t kSegmentAt = sizeof(desktop::Header);
constexpr std::size_t kSymbolTableAt =
    kSegmentAt + sizeof(desktop::SegmentCommand) + 6 * sizeof(desktop::SectionHeader);
constexpr std::size_t kIndirectTableAt = kSymbolTableAt + sizeof(desktop::SymbolTableCommand);
static_assert(kIndirectTableAt == 516 && sizeof(desktop::DynamicSymbolTableCommand) == 80);

// A word of the file changed.
struct BrokenCommand {
  const char* what;
  std::size_t offset;
  std::uint32_t word;
  const char* line;
};

class RefusedCommands : public testing::TestWithParam<BrokenCommand> {};

TEST_P(RefusedCommands, SayWhatWasWantedAndFound) {
  Bytes bytes = small::GoodObject().Bytes();
  std::memcpy(&bytes.at(GetParam().offset), &GetParam().word, sizeof GetParam().word);
  EXPECT_EQ(RefusalOf(bytes), GetParam().line);
}

const BrokenCommand kBrokenCommands[] = {
    {"OneLess", kCommandCountAt, 2, "wanted load commands of 568 bytes, found 488"},
    {"FewerSections", kSegmentAt + 48, 5, "wanted a segment command of 396 bytes for 5 sections, found 464"},
    {"TheSameTwice", kIndirectTableAt, 2, "wanted a symbol table once, found another"},
    {"NoSymbolTable", kSymbolTableAt, 0x24, "wanted a symbol table, found none"},
    {"NoIndirectTable", kIndirectTableAt, 0x24,
     "wanted indirect symbols for 1 pointers of __IMPORT,__pointers, found 0"},
    {"OfEightBytes", kIndirectTableAt + 4, 8, "wanted a table of indirect symbols in 80 bytes, found 8"},
    {"OfAnotherKind", kIndirectTableAt, 0x1B, "wanted a load command that an assembler writes, found 0x1B"},
    {"LongerSymbolTable", kSymbolTableAt + 4, 28, "wanted a symbol table in 24 bytes, found 28"},
    {"ShorterIndirectTable", kIndirectTableAt + 4, 76,
     "wanted a table of indirect symbols in 80 bytes, found 76"},
    {"LongerThanAll", kIndirectTableAt + 4, 84,
     "wanted a load command of whole words that ends before 596, found 84 bytes at 516"},
    {"NotWholeWords", kSymbolTableAt + 4, 22,
     "wanted a load command of whole words that ends before 596, found 22 bytes at 492"},
    {"ShorterThanItsHead", kSymbolTableAt + 4, 4,
     "wanted a load command of whole words that ends before 596, found 4 bytes at 492"},
};

INSTANTIATE_TEST_SUITE_P(Of, RefusedCommands, testing::ValuesIn(kBrokenCommands),
                         [](const auto& each) { return std::string(each.param.what); });

TEST(Refused, PartsThatAreNotInTheFile) {
  const Bytes good = small::GoodObject().Bytes();
  desktop::SymbolTableCommand table{};
  std::memcpy(&table, &good.at(kSymbolTableAt), sizeof table);
  const auto with = [&good](std::size_t offset, std::uint32_t word) {
    Bytes bytes = good;
    std::memcpy(&bytes.at(offset), &word, sizeof word);
    return RefusalOf(bytes);
  };
  const std::string size = std::to_string(good.size());
  EXPECT_EQ(with(kSymbolTableAt + 12, 1000), "wanted the symbols inside the file, found 12000 bytes at " +
                                                 std::to_string(table.symbolOffset) + " of " + size);
  EXPECT_EQ(with(kCommandCountAt + 4, 4000),
            "wanted load commands inside the file, found 4000 bytes at 28 of " + size);
  EXPECT_EQ(
      with(kSegmentAt + sizeof(desktop::SegmentCommand) + offsetof(desktop::SectionHeader, relocationOffset),
           4000),
      "wanted the relocations of __TEXT,__text inside the file, found 48 bytes at 4000 of " + size);
  EXPECT_EQ(
      with(kSegmentAt + sizeof(desktop::SegmentCommand) + offsetof(desktop::SectionHeader, fileOffset), 4000),
      "wanted the section __TEXT,__text inside the file, found 36 bytes at 4000 of " + size);
  const std::string names = std::to_string(table.stringSize);
  EXPECT_EQ(with(kSymbolTableAt + 20, table.stringSize + 1),
            "wanted the symbols' names inside the file, found " + std::to_string(table.stringSize + 1) +
                " bytes at " + std::to_string(table.stringOffset) + " of " + size);
  EXPECT_EQ(with(table.symbolOffset + sizeof(desktop::SymbolEntry), table.stringSize),
            "wanted the name of symbol 1 among " + names + " bytes of names, found " + names);
  Bytes open = good;
  open.back() = 'x';
  EXPECT_EQ(RefusalOf(open), "wanted an end of the name of symbol 4, found the end of the names");
}

TEST(Refused, LoadCommandsThatDoNotEnd) {
  Bytes bytes = small::GoodObject().Bytes();
  bytes[sizeof(desktop::Header) + 4] = 0;
  bytes[sizeof(desktop::Header) + 5] = 0;
  EXPECT_THROW(desktop::Link(bytes, "_Entry"), desktop::Refusal);
}

}  // namespace
