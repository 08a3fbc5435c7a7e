// tests/bundle/desktop/final_link_test.cpp - the final link is faithful to an object, or says why not.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <functional>
#include <iterator>
#include <span>
#include <string>
#include <vector>

#include "bundle/desktop/final_link/export_trie.h"
#include "bundle/desktop/final_link/link.h"
#include "bundle/desktop/final_link/load_commands.h"
#include "bundle/desktop/final_link/opcodes.h"
#include "bundle/desktop/final_link/reader.h"
#include "bundle/desktop/final_link/refusal.h"
#include "tests/bundle/desktop/small_object.h"

namespace {

using desktop::Bytes;

Bytes Linked(const small::Object& object, const std::string& entry = "_Entry") {
  return desktop::Link(object.Bytes(), entry).bundle;
}

// A linked bundle, read at the offsets that the format gives them.
class Bundle {
 public:
  explicit Bundle(const small::Object& object, const std::string& entry = "_Entry")
      : bytes_(Linked(object, entry)) {}

  template <typename Record>
  Record At(std::size_t offset) const {
    Record record;
    std::memcpy(&record, &bytes_.at(offset), sizeof record);
    return record;
  }
  std::uint32_t Word(std::size_t offset) const { return At<std::uint32_t>(offset); }

  // The offsets of the load commands of that kind.
  std::vector<std::size_t> Commands(desktop::CommandKind kind) const {
    std::vector<std::size_t> offsets;
    std::size_t offset = sizeof(desktop::Header);
    for (std::uint32_t left = At<desktop::Header>(0).commandCount; left > 0; --left) {
      const auto start = At<desktop::CommandStart>(offset);
      if (start.kind == kind) offsets.push_back(offset);
      offset += start.size;
    }
    return offsets;
  }
  desktop::Bytes Part(std::size_t offset, std::size_t size) const {
    return {bytes_.begin() + static_cast<std::ptrdiff_t>(offset),
            bytes_.begin() + static_cast<std::ptrdiff_t>(offset + size)};
  }
  std::string Text(std::size_t offset) const { return reinterpret_cast<const char*>(&bytes_.at(offset)); }
  // The only load command of that kind.
  template <typename Command>
  Command Only(desktop::CommandKind kind) const {
    const auto offsets = Commands(kind);
    EXPECT_EQ(offsets.size(), 1U);
    return At<Command>(offsets.at(0));
  }
  desktop::Bytes Rebases() const {
    const auto info = Only<desktop::DynamicLoaderInfoCommand>(desktop::CommandKind::DynamicLoaderInfo);
    return Part(info.rebaseOffset, info.rebaseSize);
  }
  std::vector<std::string> Libraries() const {
    std::vector<std::string> paths;
    for (const std::size_t offset : Commands(desktop::CommandKind::LoadLibrary))
      paths.push_back(Text(offset + At<desktop::LoadLibraryCommand>(offset).pathOffset));
    return paths;
  }
  std::size_t ZerosBefore(std::size_t end) const {
    std::size_t count = 0;
    while (bytes_.at(end - 1 - count) == 0) ++count;
    return count;
  }

  desktop::SectionHeader Section(const std::string& name) const {
    std::size_t offset = sizeof(desktop::Header);
    for (int segment = 0; segment < 2; ++segment) {
      const auto command = At<desktop::SegmentCommand>(offset);
      for (std::uint32_t index = 0; index < command.sectionCount; ++index) {
        const auto section =
            At<desktop::SectionHeader>(offset + sizeof command + index * sizeof(desktop::SectionHeader));
        if (name == std::string(section.name.data(), strnlen(section.name.data(), section.name.size()))) {
          return section;
        }
      }
      offset += command.start.size;
    }
    ADD_FAILURE() << "no section " << name;
    return {};
  }

 private:
  Bytes bytes_;
};

TEST(FinalLink, MovesTextAsOneBlock) {
  const Bundle bundle(small::GoodObject());
  const std::uint32_t code = bundle.Section("__text").address;
  EXPECT_EQ(code % 16, 0U);
  EXPECT_EQ(bundle.Section("__cstring").address, code + 0x24);
  EXPECT_EQ(bundle.Section("__eh_frame").address, code + 0x2C);
}

TEST(FinalLink, SaysInItsHeaderWhatItIs) {
  const auto header = Bundle(small::GoodObject()).At<desktop::Header>(0);
  EXPECT_EQ(header.magic, 0xFEEDFACEU);
  EXPECT_EQ(header.processor, 7U);
  EXPECT_EQ(header.processorSubtype, 3U);
  EXPECT_EQ(static_cast<std::uint32_t>(header.fileType), 8U);
  EXPECT_EQ(header.commandCount, 10U);  // two of them name libraries
  EXPECT_EQ(header.flags, 0x85U);
}

TEST(FinalLink, LeavesRoomForOneSmallLoadCommandMore) {
  const Bundle bundle(small::GoodObject());
  const std::uint32_t end = 28 + bundle.At<desktop::Header>(0).commandsSize;
  EXPECT_EQ(bundle.Section("__symbol_stub").address, end + 32);
}

TEST(FinalLink, KeepsTheDistanceFromAnAlignedAddress) {
  small::Object object = small::GoodObject();
  object.sections.resize(2);
  small::Section& code = object.sections[small::kText];
  code.address = 8;
  code.alignment = 3;
  code.bytes = std::string(8, '\xC3');
  code.relocations.clear();
  object.sections[small::kStrings].address = 0x20;
  object.sections[small::kStrings].alignment = 4;
  object.symbols.resize(1);
  object.symbols[small::kEntry].value = 12;
  object.indirect.clear();
  const Bundle bundle(object);
  const std::uint32_t stubs = bundle.Section("__symbol_stub").address;
  const std::uint32_t moved = (stubs + 15) / 16 * 16 + 8;
  EXPECT_EQ(bundle.Section("__text").address, moved);
  EXPECT_EQ(bundle.Section("__cstring").address, moved + 0x18);
  const auto table = bundle.Only<desktop::SymbolTableCommand>(desktop::CommandKind::SymbolTable);
  EXPECT_EQ(bundle.At<desktop::SymbolEntry>(table.symbolOffset).value, moved + 4);
}

TEST(FinalLink, SaysOfEachSectionWhatIsInIt) {
  small::Object object = small::GoodObject();
  object.sections[small::kText].flags |= 0x300;  // of relocations, which the bundle has none of
  const Bundle bundle(object);
  EXPECT_EQ(bundle.Section("__symbol_stub").flags, 0x80000408U);
  EXPECT_EQ(bundle.Section("__text").flags, 0x80000400U);
  EXPECT_EQ(bundle.Section("__cstring").flags, 2U);
  EXPECT_EQ(bundle.Section("__eh_frame").flags, 11U);
  EXPECT_EQ(bundle.Section("__nl_symbol_ptr").flags, 6U);
  EXPECT_EQ(bundle.Section("__data").flags, 0U);
  EXPECT_EQ(bundle.Section("__bss").flags, 1U);
}

// As the exponent of a power of two.
TEST(FinalLink, SaysHowEachSectionIsAligned) {
  const Bundle bundle(small::GoodObject());
  EXPECT_EQ(bundle.Section("__symbol_stub").alignment, 2U);
  EXPECT_EQ(bundle.Section("__text").alignment, 4U);
  EXPECT_EQ(bundle.Section("__nl_symbol_ptr").alignment, 2U);
  EXPECT_EQ(bundle.Section("__bss").alignment, 2U);
}

TEST(FinalLink, NamesTheFirstIndirectSymbolOfStubsAndOfPointersAlone) {
  const Bundle bundle(small::GoodObject());
  EXPECT_EQ(bundle.Section("__symbol_stub").firstIndirect, 0U);
  EXPECT_EQ(bundle.Section("__symbol_stub").stubSize, 12U);
  EXPECT_EQ(bundle.Section("__nl_symbol_ptr").firstIndirect, 1U);
  EXPECT_EQ(bundle.Section("__nl_symbol_ptr").stubSize, 0U);
  EXPECT_EQ(bundle.Section("__data").firstIndirect, 0U);
  EXPECT_EQ(bundle.Section("__bss").stubSize, 0U);
}

TEST(FinalLink, TakesConstantsOfAllSizes) {
  for (const std::uint32_t kind : {0, 2, 3, 4, 14}) {
    small::Object object = small::GoodObject();
    object.sections[small::kStrings].flags = kind;
    EXPECT_EQ(Bundle(object).Section("__cstring").flags, kind);
  }
}

TEST(FinalLink, TakesNamesOfAllPlainLetters) {
  small::Object object = small::GoodObject();
  object.sections[small::kData].name = "!sixteen_letter~";
  EXPECT_EQ(Bundle(object).Section("!sixteen_letter~").size, 12U);
}

TEST(FinalLink, TakesSymbolsWhoseDescriptionSaysNothingOfWeakness) {
  small::Object object = small::GoodObject();
  object.symbols[small::kHelper].description = 0xFF3F;
  EXPECT_NO_THROW(Linked(object));
}

TEST(FinalLink, TakesSymbolsInTheLastSection) {
  small::Object object = small::GoodObject();
  object.symbols[small::kHelper].section = small::kBss + 1;
  object.symbols[small::kHelper].value = object.sections[small::kBss].address;
  EXPECT_NO_THROW(Linked(object));
}

TEST(FinalLink, EndsCallFrameInformationWithAZeroWord) {
  EXPECT_EQ(Bundle(small::GoodObject()).Section("__eh_frame").size, 8U);
}

TEST(FinalLink, MovesPointersInDataWithWhatTheyPointTo) {
  const Bundle bundle(small::GoodObject());
  const std::uint32_t data = bundle.Section("__data").address;
  EXPECT_EQ(bundle.Word(data), bundle.Section("__text").address + 0x20);
  EXPECT_EQ(bundle.Word(data + 4), bundle.Section("__cstring").address + 4);
}

TEST(FinalLink, MovesPointersThatNameASymbolOfTheObject) {
  small::Object object = small::GoodObject();
  object.sections[small::kData].bytes[0] = 2;  // added to the helper's address
  object.sections[small::kData].relocations[0] = small::Plain(0, small::kHelper, false, true);
  const Bundle bundle(object);
  EXPECT_EQ(bundle.Word(bundle.Section("__data").address), bundle.Section("__text").address + 0x22);
}

TEST(FinalLink, MovesPointersToTheFirstAndTheLastByteOfASection) {
  for (const unsigned inside : {0U, 7U}) {
    small::Object object = small::GoodObject();
    object.sections[small::kData].bytes[0] = static_cast<char>(0x40 + inside);
    object.sections[small::kData].relocations[0] = small::Plain(0, small::kBss + 1, false, false);
    const Bundle bundle(object);
    EXPECT_EQ(bundle.Word(bundle.Section("__data").address), bundle.Section("__bss").address + inside);
  }
}

// Behind the three pointers to imports: two words, the first two of the data.
TEST(FinalLink, RebasesPointersByAddressAndByName) {
  const Bytes twoWords = {0x11, 0x21, 0x00, 0x43, 0x52, 0x00};
  small::Object object = small::GoodObject();
  EXPECT_EQ(Bundle(object).Rebases(), twoWords);
  object.sections[small::kData].relocations[0] = small::Plain(0, small::kHelper, false, true);
  EXPECT_EQ(Bundle(object).Rebases(), twoWords);
}

TEST(FinalLink, FindsTheIndirectSymbolsOfEachPointer) {
  small::Object object = small::GoodObject();
  small::Section& pointers = object.sections[small::kPointers];
  pointers.bytes.resize(8);
  pointers.firstIndirect = 1;
  object.indirect = {small::kGuard, small::kGuard, small::kSpace};
  object.sections[small::kBss].address = 0x44;
  small::Section& code = object.sections[small::kText];
  code.bytes[8] = 0x40 - 5;
  code.relocations[4] = small::Scattered(0x08, 0x40, 4);
  const Bundle bundle(object);
  const std::uint32_t here = bundle.Section("__text").address + 5;
  EXPECT_EQ(here + bundle.Word(here + 3), bundle.Section("__nl_symbol_ptr").address);
}

TEST(FinalLink, LeavesPointersToLibrariesEmpty) {
  const Bundle bundle(small::GoodObject());
  EXPECT_EQ(bundle.Word(bundle.Section("__data").address + 8), 0U);
}

TEST(FinalLink, KeepsDistancesInTheBlock) {
  const Bundle bundle(small::GoodObject());
  const std::uint32_t code = bundle.Section("__text").address;
  EXPECT_EQ(bundle.Word(code + 0x0E), 0x24U - 5U);
  EXPECT_EQ(bundle.Word(code + 0x13), 0x20U - 0x17U);
}

TEST(FinalLink, KeepsDistancesThatNameAnAddress) {
  small::Object object = small::GoodObject();
  desktop::RelocationEntry& call = object.sections[small::kText].relocations[1];
  call = small::Scattered(0x13, 0x20, 0);
  call.where |= 1U << 30;
  const Bundle bundle(object);
  EXPECT_EQ(bundle.Word(bundle.Section("__text").address + 0x13), 0x20U - 0x17U);
}

TEST(FinalLink, KeepsDifferencesBetweenWhatMovesApart) {
  small::Object object = small::GoodObject();
  small::Section& data = object.sections[small::kData];
  const std::uint32_t held = 0x20 - data.address;
  std::memcpy(data.bytes.data(), &held, sizeof held);
  data.relocations.insert(data.relocations.begin() + 1, small::Scattered(0, data.address, 1));
  for (const unsigned kind : {2U, 4U}) {
    data.relocations[0] = small::Scattered(0, 0x20, kind);
    const Bundle bundle(object);
    const std::uint32_t moved = bundle.Section("__data").address;
    EXPECT_EQ(bundle.Word(moved), bundle.Section("__text").address + 0x20 - moved);
  }
}

TEST(FinalLink, SendsReadsOfAnImportToItsPointer) {
  const Bundle bundle(small::GoodObject());
  const std::uint32_t here = bundle.Section("__text").address + 5;
  const std::uint32_t pointers = bundle.Section("__nl_symbol_ptr").address;
  // By library, then by name: the colour space, the guard, strlen.
  EXPECT_EQ(here + bundle.Word(here + 3), pointers + 4);
}

TEST(FinalLink, SendsCallsToAStubThatJumpsThroughThePointer) {
  const Bundle bundle(small::GoodObject());
  const std::uint32_t end = bundle.Section("__text").address + 0x1C;
  const std::uint32_t stub = bundle.Section("__symbol_stub").address;
  EXPECT_EQ(bundle.Section("__symbol_stub").size, 12U);
  EXPECT_EQ(end + bundle.Word(end - 4), stub);
  EXPECT_EQ(bundle.Part(stub, 8), (Bytes{0xE8, 0, 0, 0, 0, 0x58, 0xFF, 0xA0}));
  EXPECT_EQ(stub + 5 + bundle.Word(stub + 8), bundle.Section("__nl_symbol_ptr").address + 8);
}

// By name alone, the colour space would come first.
TEST(FinalLink, SortsImportsByLibraryThenByName) {
  small::Object object = small::GoodObject();
  object.symbols[small::kStrlen].name = "_objc_msgSend";
  const Bundle bundle(object);
  EXPECT_EQ(bundle.Libraries(),
            (std::vector<std::string>{"/usr/lib/libobjc.A.dylib",
                                      "/System/Library/Frameworks/Cocoa.framework/Versions/A/Cocoa",
                                      "/usr/lib/libSystem.B.dylib"}));
  const std::uint32_t stub = bundle.Section("__symbol_stub").address;
  EXPECT_EQ(stub + 5 + bundle.Word(stub + 8), bundle.Section("__nl_symbol_ptr").address);
}

TEST(FinalLink, NamesTheExportedSymbolThenImportsWithTheirLibraries) {
  const Bundle bundle(small::GoodObject());
  const auto table = bundle.Only<desktop::SymbolTableCommand>(desktop::CommandKind::SymbolTable);
  const desktop::SymbolEntry wanted[] = {{2, 0x0F, 2, 0, bundle.Section("__text").address},
                                         {9, 0x01, 0, 0x100, 0},
                                         {36, 0x01, 0, 0x200, 0},
                                         {55, 0x01, 0, 0x200, 0}};
  const char* const names[] = {"_Entry", "_NSCalibratedRGBColorSpace", "___stack_chk_guard", "_strlen"};
  ASSERT_EQ(table.symbolCount, std::size(wanted));
  for (std::size_t index = 0; index < std::size(wanted); ++index) {
    const auto entry =
        bundle.At<desktop::SymbolEntry>(table.symbolOffset + index * sizeof(desktop::SymbolEntry));
    EXPECT_EQ(entry.name, wanted[index].name);
    EXPECT_EQ(entry.type, wanted[index].type);
    EXPECT_EQ(entry.section, wanted[index].section);
    EXPECT_EQ(entry.description, wanted[index].description);
    EXPECT_EQ(entry.value, wanted[index].value);
    EXPECT_EQ(bundle.Text(table.stringOffset + entry.name), names[index]);
  }
}

TEST(FinalLink, SendsCallsThatNameASymbolOfTheObjectToIt) {
  small::Object object = small::GoodObject();
  const std::uint32_t toItself = 0U - 0x17;
  std::memcpy(&object.sections[small::kText].bytes[0x13], &toItself, sizeof toItself);
  object.sections[small::kText].relocations[1] = small::Plain(0x13, small::kHelper, true, true);
  const Bundle bundle(object);
  EXPECT_EQ(bundle.Word(bundle.Section("__text").address + 0x13), 0x20U - 0x17U);
}

// A name ends with a zero, and up to three more fill the word.
TEST(FinalLink, FillsUpNamesToAWordAndNoFurther) {
  for (const std::string entry : {"_E", "_En", "_Ent", "_Entr"}) {
    small::Object object = small::GoodObject();
    object.symbols[small::kEntry].name = entry;
    const Bundle bundle(object, entry);
    const auto offsets = bundle.Commands(desktop::CommandKind::SymbolTable);
    ASSERT_EQ(offsets.size(), 1U);
    const auto table = bundle.At<desktop::SymbolTableCommand>(offsets[0]);
    EXPECT_EQ(table.stringSize % 4, 0U) << entry;
    EXPECT_LE(bundle.ZerosBefore(table.stringOffset + table.stringSize), 4U) << entry;
  }
}

TEST(FinalLink, FillsUpPathsOfLibrariesToAWordAndNoFurther) {
  small::Object object = small::GoodObject();
  object.symbols[small::kStrlen].name = "___cxa_begin_catch";  // of a library whose path fills its words
  const Bundle bundle(object);
  const auto offsets = bundle.Commands(desktop::CommandKind::LoadLibrary);
  EXPECT_EQ(offsets.size(), 3U);
  for (const std::size_t offset : offsets) {
    const auto command = bundle.At<desktop::LoadLibraryCommand>(offset);
    EXPECT_EQ(command.start.size % 4, 0U);
    EXPECT_LE(bundle.ZerosBefore(offset + command.start.size), 4U);
  }
}

TEST(FinalLink, AsksForNoLaterVersionOfALibraryThanTheFirst) {
  const Bundle bundle(small::GoodObject());
  for (const std::size_t offset : bundle.Commands(desktop::CommandKind::LoadLibrary)) {
    const auto command = bundle.At<desktop::LoadLibraryCommand>(offset);
    EXPECT_EQ(command.timeStamp, 0U);
    EXPECT_EQ(command.currentVersion, 0x10000U);
    EXPECT_EQ(command.compatibleVersion, 0x10000U);
  }
}

TEST(FinalLink, BeginsAndEndsCodeAndDataAtPages) {
  const Bundle bundle(small::GoodObject());
  const auto offsets = bundle.Commands(desktop::CommandKind::Segment);
  ASSERT_EQ(offsets.size(), 3U);
  for (int index = 0; index < 2; ++index) {
    const auto segment = bundle.At<desktop::SegmentCommand>(offsets[index]);
    EXPECT_EQ(segment.address % 0x1000, 0U) << index;
    EXPECT_EQ(segment.memorySize % 0x1000, 0U) << index;
    EXPECT_EQ(segment.fileOffset % 0x1000, 0U) << index;
    EXPECT_EQ(segment.fileSize % 0x1000, 0U) << index;
  }
}

TEST(FinalLink, LetsCodeBeExecutedAndDataBeWrittenAndNeitherBoth) {
  constexpr std::uint32_t kRead = 1;
  constexpr std::uint32_t kWrite = 2;
  constexpr std::uint32_t kExecute = 4;
  const Bundle bundle(small::GoodObject());
  std::vector<std::uint32_t> protections;
  for (const std::size_t offset : bundle.Commands(desktop::CommandKind::Segment)) {
    const auto segment = bundle.At<desktop::SegmentCommand>(offset);
    EXPECT_EQ(segment.maximumProtection, kRead | kWrite | kExecute);
    protections.push_back(segment.initialProtection);
  }
  EXPECT_EQ(protections, (std::vector<std::uint32_t>{kRead | kExecute, kRead | kWrite, kRead}));
}

TEST(FinalLink, PutsZeroFilledSectionsLastAndOutOfTheFile) {
  const Bundle bundle(small::GoodObject());
  const desktop::SectionHeader zeros = bundle.Section("__bss");
  const desktop::SectionHeader data = bundle.Section("__data");
  EXPECT_GE(zeros.address, data.address + data.size);
  EXPECT_EQ(zeros.fileOffset, 0U);
}

TEST(FinalLink, GivesZeroFilledSectionsPagesOfTheirOwnInMemoryOnly) {
  small::Object object = small::GoodObject();
  object.sections[small::kBss].zeros = 0x5000;
  const Bundle bundle(object);
  const auto offsets = bundle.Commands(desktop::CommandKind::Segment);
  const auto data = bundle.At<desktop::SegmentCommand>(offsets.at(1));
  EXPECT_EQ(data.fileSize, 0x1000U);
  EXPECT_EQ(data.memorySize, 0x6000U);
  const auto link = bundle.At<desktop::SegmentCommand>(offsets.at(2));
  EXPECT_EQ(link.fileOffset, data.fileOffset + 0x1000);
  EXPECT_EQ(link.address, data.address + 0x6000);
  EXPECT_EQ(link.memorySize, 0x1000U);
}

TEST(FinalLink, AlignsASectionToAPage) {
  small::Object object = small::GoodObject();
  object.sections[small::kBss].alignment = 12;
  object.sections[small::kBss].address = 0x1000;
  EXPECT_EQ(Bundle(object).Section("__bss").address % 0x1000, 0U);
}

TEST(FinalLink, TakesASectionThatEndsAtTheLargestAddress) {
  small::Object object = small::GoodObject();
  small::Section& zeros = object.sections[small::kBss];
  zeros.zeros = 0x1000000 - zeros.address;
  EXPECT_EQ(Bundle(object).Section("__bss").size, zeros.zeros);
  ++zeros.zeros;
  EXPECT_THROW(Linked(object), desktop::Refusal);
}

// The stubs are a section more.
TEST(FinalLink, Makes255Sections) {
  small::Object object = small::GoodObject();
  while (object.sections.size() < 254) object.sections.push_back({"__DATA", "__more", 0, 0x1000});
  EXPECT_NO_THROW(Linked(object));
  object.sections.push_back({"__DATA", "__more", 0, 0x1000});
  EXPECT_THROW(Linked(object), desktop::Refusal);
}

TEST(FinalLink, GivesTheSameBytesForTheSameObject) {
  EXPECT_EQ(Linked(small::GoodObject()), Linked(small::GoodObject()));
}

TEST(FinalLink, GivesAnotherUuidForAnotherObject) {
  small::Object other = small::GoodObject();
  other.sections[small::kStrings].bytes[0] = 'S';
  EXPECT_NE(desktop::UuidOf(Linked(small::GoodObject())), desktop::UuidOf(Linked(other)));
}

// Version 8 and the variant take six bits; no other is the same for all objects.
TEST(FinalLink, FillsTheUuidBesideItsVersionAndItsVariant) {
  std::array<std::uint8_t, 16> inAll{};
  std::array<std::uint8_t, 16> inAny{};
  inAll.fill(0xFF);
  for (char letter = '!'; letter <= '~'; ++letter) {
    small::Object object = small::GoodObject();
    object.sections[small::kStrings].bytes[0] = letter;
    const auto uuid = desktop::UuidOf(Linked(object));
    for (std::size_t i = 0; i < uuid.size(); ++i) {
      inAll[i] &= uuid[i];
      inAny[i] |= uuid[i];
    }
  }
  EXPECT_EQ(inAll, (std::array<std::uint8_t, 16>{0, 0, 0, 0, 0, 0, 0x80, 0, 0x80}));
  EXPECT_EQ(inAny, (std::array<std::uint8_t, 16>{0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x8F, 0xFF,  //
                                                 0xBF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}));
}

TEST(FinalLink, ImportsTheFirstSymbolAsAnyOther) {
  small::Object object = small::GoodObject();
  std::swap(object.symbols[small::kEntry], object.symbols[small::kStrlen]);
  object.sections[small::kText].relocations[0] = small::Plain(0x18, small::kEntry, true, true);
  const Bytes bundle = Linked(object);
  const std::string name = "_strlen";
  EXPECT_NE(std::search(bundle.begin(), bundle.end(), name.begin(), name.end()), bundle.end());
}

TEST(FinalLink, ImportsNothingThatNoRelocationNames) {
  small::Object object = small::GoodObject();
  object.symbols.push_back(object.symbols[small::kEntry]);
  object.symbols[small::kEntry] = object.symbols[small::kStrlen];
  object.symbols[small::kEntry].name = "_memcpy";
  const Bytes bundle = Linked(object);
  const std::string name = "_memcpy";
  EXPECT_EQ(std::search(bundle.begin(), bundle.end(), name.begin(), name.end()), bundle.end());
}

TEST(FinalLink, LinksAnObjectThatImportsNothing) {
  small::Object object = small::GoodObject();
  object.sections.resize(1);
  object.sections[small::kText].relocations.clear();
  object.symbols.resize(1);
  object.indirect.clear();
  const Bundle bundle(object);
  EXPECT_EQ(bundle.Section("__symbol_stub").size, 0U);
  EXPECT_EQ(bundle.Libraries(), std::vector<std::string>{"/usr/lib/libSystem.B.dylib"});
}

TEST(RoundUp, GivesTheNumberItselfOrTheNextMultiple) {
  EXPECT_EQ(desktop::RoundUp(0, 16), 0U);
  EXPECT_EQ(desktop::RoundUp(1, 16), 16U);
  EXPECT_EQ(desktop::RoundUp(16, 16), 16U);
  EXPECT_EQ(desktop::RoundUp(17, 16), 32U);
}

TEST(Reader, GivesNothingAtTheEndOfTheFile) {
  const Bytes file(4);
  EXPECT_TRUE(desktop::Reader(file).Part(4, 0, "nothing").empty());
  EXPECT_THROW(desktop::Reader(file).Part(4, 1, "a byte"), desktop::Refusal);
  EXPECT_THROW(desktop::Reader(file).Part(5, 0, "nothing"), desktop::Refusal);
}

TEST(AppendUleb, TakesAByteMoreFrom128On) {
  Bytes bytes;
  for (const std::uint32_t number : {0x7FU, 0x80U, 0x3FFFU, 0x4000U}) desktop::AppendUleb(bytes, number);
  EXPECT_EQ(bytes, (Bytes{0x7F, 0x80, 0x01, 0xFF, 0x7F, 0x80, 0x80, 0x01}));
}

TEST(RebaseOpcodes, ReadNoAddressBehindTheLast) {
  const std::vector<std::uint32_t> addresses = {0x1000, 0x1004, 0x1008};
  EXPECT_EQ(desktop::RebaseOpcodes(std::span(addresses).first(2), 0x1000),
            (Bytes{0x11, 0x21, 0x00, 0x52, 0x00}));
}

TEST(RebaseOpcodes, CountUpTo15WordsInTheOpcode) {
  std::vector<std::uint32_t> addresses;
  for (std::uint32_t index = 0; index < 15; ++index) addresses.push_back(0x103C + 4 * index);
  EXPECT_EQ(desktop::RebaseOpcodes(addresses, 0x1000), (Bytes{0x11, 0x21, 0x00, 0x4F, 0x5F, 0x00}));
  addresses.push_back(0x103C + 4 * 15);
  EXPECT_EQ(desktop::RebaseOpcodes(addresses, 0x0FFC),
            (Bytes{0x11, 0x21, 0x00, 0x30, 0x40, 0x60, 0x10, 0x00}));
}

TEST(RebaseOpcodes, CountRunsAndStepOverGaps) {
  const std::vector<std::uint32_t> addresses = {0x1008, 0x100C, 0x1014, 0x1100, 0x1106};
  EXPECT_EQ(desktop::RebaseOpcodes(addresses, 0x1000), (Bytes{0x11, 0x21, 0x00, 0x42, 0x52, 0x41, 0x51, 0x30,
                                                              0xE8, 0x01, 0x51, 0x30, 0x02, 0x51, 0x00}));
}

TEST(RebaseOpcodes, CountLongRunsInANumber) {
  std::vector<std::uint32_t> addresses;
  for (std::uint32_t index = 0; index < 200; ++index) addresses.push_back(0x1000 + 4 * index);
  EXPECT_EQ(desktop::RebaseOpcodes(addresses, 0x1000), (Bytes{0x11, 0x21, 0x00, 0x60, 0xC8, 0x01, 0x00}));
}

// A pointer in the data and one for the code are bound to it: once in the bind operations, once among the
// symbols.
TEST(FinalLink, NamesAnImportOnceForAllThatIsBoundToIt) {
  const Bytes bundle = Linked(small::GoodObject());
  const std::string name("_NSCalibratedRGBColorSpace", 27);
  std::size_t count = 0;
  for (auto at = bundle.begin();
       (at = std::search(at, bundle.end(), name.begin(), name.end())) != bundle.end(); ++at)
    ++count;
  EXPECT_EQ(count, 2U);
}

TEST(BindOpcodes, SayLibraryAndPlaceOnlyWhereTheyChange) {
  desktop::Imports imports;
  imports.imports = {{"_a", 0, 1, false}, {"_b", 1, 1, false}, {"_c", 2, 2, false}};
  const std::vector<desktop::Bind> binds = {{0x1004, 0}, {0x1008, 1}, {0x1010, 2}};
  EXPECT_EQ(desktop::BindOpcodes(binds, imports, 0x1000),
            (Bytes{0x51, 0x11, 0x40, '_', 'a', 0,    0x71, 0x04, 0x90, 0x40, '_', 'b', 0, 0x90,  //
                   0x12, 0x40, '_',  'c', 0,   0x71, 0x10, 0x90, 0x00}));
}

TEST(ExportTrie, HasOneEdgeToOneLeaf) {
  EXPECT_EQ(desktop::ExportTrie("_E", 0x1234), (Bytes{0, 1, '_', 'E', 0, 6, 3, 0, 0xB4, 0x24, 0}));
}

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
     "wanted one exported symbol, \"_Entry\", found \"_Helper\""},
    {"TwoExportsOfAName",
     [](auto& o) {
       o.symbols[small::kHelper].type |= desktop::kExternal;
       o.symbols[small::kHelper].name = "_Entry";
     },
     "wanted one exported symbol, \"_Entry\", found \"_Entry\" again"},
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
