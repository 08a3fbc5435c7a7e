// tests/bundle/desktop/final_link_test.cpp - the final link is faithful to an object, or says why not.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
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

TEST(FinalLink, KeepsDistancesToTheBeginningOfWhatMovesApart) {
  small::Object object = small::GoodObject();
  small::Section& code = object.sections[small::kText];
  const std::uint32_t held = object.sections[small::kData].address - 0x17;
  std::memcpy(&code.bytes[0x13], &held, sizeof held);
  code.relocations[1] = small::Plain(0x13, small::kData + 1, true, false);
  const Bundle bundle(object);
  const std::uint32_t moved = bundle.Section("__text").address;
  EXPECT_EQ(moved + 0x17 + bundle.Word(moved + 0x13), bundle.Section("__data").address);
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
  const std::string name = std::string("_NSCalibratedRGBColorSpace") + '\0';
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

}  // namespace
