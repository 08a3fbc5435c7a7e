// tests/hostrun/macho/file_test.cpp - what is read from a desktop bundle's file, and what is refused.
#include "hostrun/macho/file.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

#include "tests/hostrun/macho/test_file.h"

namespace {

using namespace hostrun::macho;

// What the reader says of the file; empty: nothing.
std::string ProblemOf(std::vector<std::uint8_t> bytes) {
  try {
    ReadFile(std::move(bytes));
    return {};
  } catch (const FormatError& error) {
    return error.what();
  }
}
std::string ProblemOf(const TestFile& file) {
  return ProblemOf(file.Bytes());
}

// A load command.
std::string MadeCommand(std::uint32_t number, const std::string& rest = {}) {
  return Raw(CommandHead{number, static_cast<std::uint32_t>(8 + rest.size())}) + rest;
}

TEST(DesktopFile, ShowsItsParts) {
  TestFile made;
  made.moreCommands =
      Raw(OldestSystemCommand{{static_cast<std::uint32_t>(Command::OldestSystem), 16}, 0x000A0600, 0});
  made.moreCount = 1;
  const File file = ReadFile(made.Bytes());
  ASSERT_EQ(file.segments.size(), 3U);
  EXPECT_EQ(file.segments[0].name, "__TEXT");
  ASSERT_EQ(file.segments[0].sections.size(), 1U);
  EXPECT_EQ(file.segments[0].sections[0].name, "__eh_frame");
  EXPECT_EQ(file.segments[1].protection, kRead | kWrite);
  EXPECT_EQ(file.libraries, std::vector<std::string>{"/usr/lib/libSystem.B.dylib"});
  EXPECT_EQ(file.oldestSystem, 0x000A0600U);
  EXPECT_EQ(file.rebases, std::vector<std::uint32_t>{TestFile::kPointer});
  ASSERT_EQ(file.binds.size(), 1U);
  EXPECT_EQ(file.binds[0].symbol, "_symbol");
  EXPECT_EQ(file.binds[0].address, TestFile::kSymbol);
  EXPECT_EQ(file.binds[0].library, 1);
  ASSERT_EQ(file.exports.size(), 1U);
  EXPECT_EQ(file.exports[0].symbol, "_answer");
  EXPECT_EQ(file.exports[0].address, TestFile::kFunction);
}

TEST(DesktopFile, SaysNothingOfASystemThatItDoesNotName) {
  EXPECT_FALSE(ReadFile(TestFile().Bytes()).oldestSystem);
}

TEST(DesktopFile, MayNameItsOldestSystemByTheNewerCommand) {
  TestFile made;
  made.moreCommands =
      Raw(BuildVersionCommand{{static_cast<std::uint32_t>(Command::BuildVersion), 24}, 1, 0x000A0700, 2, 0});
  made.moreCount = 1;
  EXPECT_EQ(ReadFile(made.Bytes()).oldestSystem, 0x000A0700U);
}

TEST(DesktopFile, MayHaveCommandsThatNeedNotBeKnown) {
  TestFile made;
  made.moreCommands = MadeCommand(0x1B, std::string(16, 'u')) + MadeCommand(0x8000001C, std::string(8, 'p'));
  made.moreCount = 2;
  EXPECT_EQ(ProblemOf(made), "");
}

TEST(DesktopFile, NamesTheLibrariesThatMayBeMissingToo) {
  TestFile made;
  LibraryCommand weak{};
  weak.head = {static_cast<std::uint32_t>(Command::LoadWeakLibrary), sizeof weak + 8};
  weak.nameOffset = sizeof weak;
  made.moreCommands = Raw(weak) + Text("libweak");
  made.moreCount = 1;
  EXPECT_EQ(ReadFile(made.Bytes()).libraries,
            (std::vector<std::string>{"/usr/lib/libSystem.B.dylib", "libweak"}));
}

TEST(DesktopFile, HasNamesThatFillTheirFields) {
  TestFile made;
  std::copy_n("__SIXTEEN_BYTES_", 16, made.segments[0].name);
  std::copy_n("__sixteen_bytes_", 16, made.frames.name);
  const File file = ReadFile(made.Bytes());
  EXPECT_EQ(file.segments[0].name, "__SIXTEEN_BYTES_");
  EXPECT_EQ(file.segments[0].sections[0].name, "__sixteen_bytes_");
}

TEST(DesktopFile, HasSectionsAnywhereOnlyWhereTheyHaveNoBytesInIt) {
  TestFile empty;
  empty.frames.fileOffset = 0;
  empty.frames.size = 0;
  EXPECT_EQ(ProblemOf(empty), "");
  TestFile zeros;
  zeros.frames.fileOffset = 0;
  zeros.frames.flags = kZeroFill;
  EXPECT_EQ(ProblemOf(zeros), "");
  TestFile atTheEnd;
  atTheEnd.frames.size = kPage - TestFile::kFrames;
  EXPECT_EQ(ProblemOf(atTheEnd), "");
}

TEST(DesktopFile, HasSegmentsInProportionToItsSize) {
  TestFile largest;
  largest.segments[2].size = 0x130000 - TestFile::kLinkEdit;  // a megabyte, and 16 times its 0x3000 bytes
  EXPECT_EQ(ProblemOf(largest), "");
  largest.segments[2].size += kPage;
  EXPECT_EQ(ProblemOf(largest), "wanted segments in proportion to the file, found a span of 0x131000 bytes");
}

TEST(DesktopFile, HasASegmentAroundWhatLiesWhollyInOne) {
  const File file = ReadFile(TestFile().Bytes());
  EXPECT_EQ(file.SegmentAround(TestFile::kData, kPage), &file.segments[1]);
  EXPECT_EQ(file.SegmentAround(TestFile::kData + kPage - 1, 1), &file.segments[1]);
  EXPECT_EQ(file.SegmentAround(TestFile::kData + kPage - 1, 2), nullptr);
  EXPECT_EQ(file.SegmentAround(TestFile::kLinkEdit + kPage, 1), nullptr);
}

TEST(DesktopFile, IsKnownByItsFirstWord) {
  EXPECT_TRUE(IsMachO(TestFile().Bytes()));
  for (const std::uint32_t magic : {0xFEEDFACEU, 0xFEEDFACFU, 0xBEBAFECAU}) {
    const std::string word = Raw(magic);
    EXPECT_TRUE(IsMachO(std::vector<std::uint8_t>(word.begin(), word.end()))) << magic;
    EXPECT_FALSE(IsMachO(std::vector<std::uint8_t>(word.begin(), word.end() - 1))) << magic;
  }
  EXPECT_FALSE(IsMachO(std::vector<std::uint8_t>{0x7F, 'E', 'L', 'F'}));
  EXPECT_FALSE(IsMachO({}));
}

TEST(DesktopFile, IsRefusedWhereverItIsCutOff) {
  const std::vector<std::uint8_t> whole = TestFile().Bytes();
  for (std::size_t size = 0; size < whole.size(); size += size < 600 ? 1 : 61)
    EXPECT_NE(ProblemOf({whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)}), "") << size;
  EXPECT_EQ(ProblemOf(whole), "");
}

// Each operation steps the place; the words that it changes tell where it was.
TEST(DesktopFile, RebasesByEachOperation) {
  TestFile file;
  file.rebases = Codes({0x11, 0x21, 0x08,        // to __DATA and 8
                        0x52,                    // 8, 12
                        0x30, 0x10,              // 16 on
                        0x60, 0x02,              // 32, 36
                        0x42,                    // two words on
                        0x70, 0x08,              // 48, then 8 on
                        0x80, 0x02, 0x04, 0x00,  // 60, 68
                        0x51});                  // behind the end
  std::vector<std::uint32_t> wanted = {8, 12, 32, 36, 48, 60, 68};
  for (std::uint32_t& address : wanted) address += TestFile::kData;
  EXPECT_EQ(ReadFile(file.Bytes()).rebases, wanted);
}

TEST(DesktopFile, BindsByEachOperation) {
  TestFile file;
  file.libraries.assign(20, "/usr/lib/libc.dylib");
  file.binds = Codes({0x20, 17, 0x40}) + Text("_a") + Codes({0x51, 0x71, 0, 0x90}) + Codes({0xA0, 8}) +
               Codes({0x3E, 0x60, 0x7F}) + Codes({0xB1}) + Codes({0xC0, 2, 4, 0});
  const File read = ReadFile(file.Bytes());
  std::vector<std::uint32_t> addresses;
  for (const Bind& bind : read.binds) addresses.push_back(bind.address - TestFile::kData);
  EXPECT_EQ(addresses, (std::vector<std::uint32_t>{0, 4, 16, 24, 32}));
  EXPECT_EQ(read.binds[0].library, 17);
  EXPECT_EQ(read.binds[0].addend, 0);
  EXPECT_EQ(read.binds[2].library, -2);
  EXPECT_EQ(read.binds[2].addend, -1);
}

TEST(DesktopFile, BindsLazyPointersToo) {
  TestFile file;
  file.lazyBinds = Codes({0x71, 12, 0x11, 0x40}) + Text("_a") + Codes({0x90, 0}) +
                   Codes({0x71, 16, 0x11, 0x40}) + Text("_b") + Codes({0x90, 0, 0});
  const File read = ReadFile(file.Bytes());
  ASSERT_EQ(read.binds.size(), 3U);
  EXPECT_EQ(read.binds[1].symbol, "_a");
  EXPECT_EQ(read.binds[2].symbol, "_b");
  EXPECT_EQ(read.binds[2].address, TestFile::kData + 16);
}

TEST(DesktopFile, ChangesNothingBehindTheEndOfItsLinkInformation) {
  TestFile file;
  file.rebases = Codes({0x21, 4, 0x51, 0, 0xF0});
  file.binds = Codes({0x11, 0x40}) + Text("_a") + Codes({0x71, 0, 0x90, 0, 0xF0});
  const File read = ReadFile(file.Bytes());
  EXPECT_EQ(read.rebases, std::vector<std::uint32_t>{TestFile::kData + 4});
  EXPECT_EQ(read.binds.size(), 1U);
}

TEST(DesktopFile, BindsWhatMayBeMissingAndWhatTheBundleItselfHas) {
  TestFile file;
  file.binds = Codes({0x30, 0x41}) + Text("_a") + Codes({0x71, 8, 0x80, 4, 0x90});
  const File read = ReadFile(file.Bytes());
  ASSERT_EQ(read.binds.size(), 1U);
  EXPECT_EQ(read.binds[0].library, 0);
  EXPECT_EQ(read.binds[0].symbol, "_a");
  EXPECT_EQ(read.binds[0].address, TestFile::kData + 12);
}

TEST(DesktopFile, ChangesEachWordOfASegment) {
  TestFile file;
  file.rebases = Codes({0x21, 0xFC, 0x1F, 0x51});  // the last one
  EXPECT_EQ(ReadFile(file.Bytes()).rebases, std::vector<std::uint32_t>{TestFile::kData + kPage - 4});
  // As often as the file has words: 3072 times, one step forth and back.
  file.rebases = Codes({0x21, 0, 0x80, 0x80, 0x18, 0xFC, 0xFF, 0xFF, 0xFF, 0x0F});
  EXPECT_EQ(ReadFile(file.Bytes()).rebases.size(), 3072U);
  file.rebases = Codes({0x21, 0, 0x80, 0x81, 0x18, 0xFC, 0xFF, 0xFF, 0xFF, 0x0F});
  EXPECT_EQ(ProblemOf(file),
            "wanted no more changes than the file has words in the rebase information, found more");
}

// The root has two children, of which the first is a symbol and has a child itself.
TEST(DesktopFile, ExportsWhatEachWayThroughItsTreeSpells) {
  TestFile file;
  file.exports = Codes({0, 2}) + Text("_a") + Codes({10}) + Text("_b") + Codes({22}) +  // bytes 0 to 9
                 Codes({2, 0, 5, 1}) + Text("ll") + Codes({18}) +                       // 10 to 17
                 Codes({2, 0, 7, 0}) + Codes({3, 0, 0xFF, 0x5F, 0});                    // 18 to 21, 22 to 26
  std::vector<std::pair<std::string, std::uint32_t>> exported;
  for (const Export& one : ReadFile(file.Bytes()).exports) exported.emplace_back(one.symbol, one.address);
  std::sort(exported.begin(), exported.end());
  EXPECT_EQ(exported,
            (std::vector<std::pair<std::string, std::uint32_t>>{{"_a", 5}, {"_all", 7}, {"_b", 0x2FFF}}));
}

struct Spoilt {
  const char* name;
  void (*spoil)(TestFile& file);
  const char* says;
};

void PrintTo(const Spoilt& spoilt, std::ostream* out) {
  *out << spoilt.name;
}

class SpoiltFile : public testing::TestWithParam<Spoilt> {};

TEST_P(SpoiltFile, IsRefused) {
  TestFile file;
  GetParam().spoil(file);
  EXPECT_EQ(ProblemOf(file), GetParam().says);
}

const Spoilt kSpoilt[] = {
    {"Magic", [](TestFile& f) { f.header.magic = 0; },
     "wanted a bundle for the i386, found a file that is not Mach-O"},
    {"Wide", [](TestFile& f) { f.header.magic = kMagic64; },
     "wanted a bundle for the i386, found a 64-bit Mach-O file"},
    {"Several", [](TestFile& f) { f.header.magic = kMagicOfSeveral; },
     "wanted a bundle for the i386, found a file for several processors; take the i386's part out of it"},
    {"Processor", [](TestFile& f) { f.header.processor = 18; },
     "wanted a bundle for the i386, found a Mach-O file for processor 0x12"},
    {"Type", [](TestFile& f) { f.header.type = 6; },
     "wanted a bundle for the i386, found a Mach-O file of type 6"},
    {"NoSegments",
     [](TestFile& f) {
       f.segments.clear();
       f.libraries.clear();
     },
     "wanted a segment, found none"},
    {"OddPlace", [](TestFile& f) { f.segments[1].address += 4; },
     "wanted __DATA on whole pages, found another place or size"},
    {"MoreInFileThanInMemory", [](TestFile& f) { f.segments[1].fileSize = 2 * kPage; },
     "wanted __DATA with room for its bytes, found too little"},
    {"OutOfFile", [](TestFile& f) { f.segments[2].fileOffset = 0x10000; },
     "wanted each segment inside of its 12288 bytes, found 4096 bytes at 0x10000"},
    {"WrapsAround", [](TestFile& f) { f.segments[2].address = 0xFFFFF000; },
     "wanted __LINKEDIT with room for its bytes, found too little"},
    {"Overlap", [](TestFile& f) { f.segments[1].address = 0; },
     "wanted __DATA behind __TEXT, found a place before its end"},
    {"OverlapInTheFile", [](TestFile& f) { f.segments[2].fileOffset = kPage; },
     "wanted __LINKEDIT behind __DATA, found a place before its end"},
    {"Huge", [](TestFile& f) { f.segments[2].size = 0x10000000; },
     "wanted segments in proportion to the file, found a span of 0x10002000 bytes"},
    {"ManySegments",
     [](TestFile& f) {
       SegmentCommand empty = f.segments[0];
       empty.size = empty.fileSize = 0;
       f.segments.insert(f.segments.begin() + 1, 14, empty);
       for (std::size_t i = 1; i <= 14; ++i) f.segments[i].address = f.segments[i].fileOffset = kPage;
     },
     "wanted at most 16 segments, found more"},
    {"SectionOutside", [](TestFile& f) { f.frames.size = kPage; },
     "wanted __TEXT,__eh_frame inside of its segment, found 0x900 and 0x1000 bytes"},
    {"SectionElsewhere", [](TestFile& f) { f.frames.fileOffset = 0; },
     "wanted __TEXT,__eh_frame at the same place in the file as in memory, found 0x0"},
    {"Initialisers", [](TestFile& f) { f.frames.flags = kInitialisers; },
     "wanted a bundle that runs nothing on loading, found __TEXT,__eh_frame with functions to run"},
    {"InitialiserOffsets", [](TestFile& f) { f.frames.flags = kInitialiserOffsets; },
     "wanted a bundle that runs nothing on loading, found __TEXT,__eh_frame with functions to run"},
    {"ThreadLocal", [](TestFile& f) { f.frames.flags = kFirstThreadLocal; },
     "wanted a bundle without variables of each thread, found __TEXT,__eh_frame"},
    {"InitialRoutine",
     [](TestFile& f) {
       f.moreCommands = MadeCommand(0x11);
       f.moreCount = 1;
     },
     "wanted a bundle that runs nothing on loading, found an initial routine"},
    {"UnknownCommand",
     [](TestFile& f) {
       f.moreCommands = MadeCommand(0x80000034);
       f.moreCount = 1;
     },
     "wanted load commands that are known, found one that must be: 0x80000034"},
    {"ShortCommand",
     [](TestFile& f) {
       f.moreCommands = Raw(CommandHead{0x99, 4});
       f.moreCount = 1;
     },
     "wanted load commands of whole words, found one of 4 bytes"},
    {"TooManyCommands", [](TestFile& f) { f.moreCount = 1; },
     "wanted the load commands inside of its 0 bytes, found 8 bytes at 0x0"},
    {"WeakBinds", [](TestFile& f) { f.weakBinds = Codes({0}); },
     "wanted a bundle without weak definitions, found binds to them"},
    {"UnknownRebase", [](TestFile& f) { f.rebases = Codes({0xF0}); },
     "wanted known operations in the rebase information, found the operation 0xf0"},
    {"RebaseOfAnotherKind", [](TestFile& f) { f.rebases = Codes({0x12}); },
     "wanted pointers only in the rebase information, found the kind 2"},
    {"RebaseBeforeAnySegment", [](TestFile& f) { f.rebases = Codes({0x51}); },
     "wanted a segment in the rebase information, found a change before any"},
    {"RebaseInNoSegment",
     [](TestFile& f) {
       f.rebases = Codes({0x23, 0, 0x51});
     },
     "wanted one of 3 segments in the rebase information, found number 3"},
    {"RebaseOverTheEdge",
     [](TestFile& f) {
       f.rebases = Codes({0x21, 0xFD, 0x1F, 0x51});
     },
     "wanted words inside of the segment __DATA in the rebase information, found one at 0xffd of 0x1000"},
    {"RebaseForEver",
     [](TestFile& f) {
       f.rebases = Codes({0x21, 0, 0x80, 0xFF, 0xFF, 0xFF, 0x7F, 0xFC, 0xFF, 0xFF, 0xFF, 0x0F});
     },
     "wanted no more changes than the file has words in the rebase information, found more"},
    {"RebaseCutOff", [](TestFile& f) { f.rebases = Codes({0x21}); },
     "wanted the rebase information inside of its 1 bytes, found 1 bytes at 0x1"},
    {"LongNumber", [](TestFile& f) { f.rebases = Codes({0x21}) + std::string(12, '\xFF'); },
     "wanted numbers of at most 64 bits in the rebase information, found a longer one"},
    {"BindToNoSymbol",
     [](TestFile& f) {
       f.binds = Codes({0x71, 0, 0x90});
     },
     "wanted a symbol in the bind information, found a bind before any"},
    {"BindToNoLibrary", [](TestFile& f) { f.binds = Codes({0x12}); },
     "wanted one of 1 libraries in the bind information, found number 2"},
    {"BindOfThreads", [](TestFile& f) { f.binds = Codes({0xD0}); },
     "wanted known operations in the bind information, found the operation 0xd0"},
    {"LongName", [](TestFile& f) { f.binds = Codes({0x40}) + std::string(2000, 'x'); },
     "wanted names of at most 1024 bytes in the bind information, found a longer one"},
    {"NameOfOtherLetters", [](TestFile& f) { f.binds = Codes({0x40}) + Text("_two\nlines"); },
     "wanted names in plain letters in the bind information, found the byte 0xa"},
    {"SegmentOfOtherLetters", [](TestFile& f) { f.segments[1].name[2] = '\x1B'; },
     "wanted names in plain letters in the load commands, found the byte 0x1b"},
    {"LongNameOfManyWords",
     [](TestFile& f) {
       f.binds = Codes({0x11, 0x40}) + Text(std::string(1024, 'x')) + Codes({0x71, 0, 0xC0, 0x80, 0x20}) +
                 Codes({0xFC, 0xFF, 0xFF, 0xFF, 0x0F});
     },
     "wanted names in proportion to the file in the bind information, found too many"},
    {"ExportInACircle",
     [](TestFile& f) {
       f.exports = Codes({0, 1}) + Text("_a") + Codes({0});
     },
     "wanted each node once in the tree of exports, found a second way to 0x0"},
    {"LongNameOfManyExports",
     [](TestFile& f) {
       // Nodes behind each other, each with 255 ways; its last way leads to the next node.
       constexpr unsigned kNodes = 5;
       constexpr unsigned kNodeSize = 2 + 254 * 2 + 3;
       unsigned next = 2 + 1001 + 2;
       const auto way = [&next] { return Codes({0x80 | (next & 0x7F), next >> 7}); };
       f.exports = Codes({0, 1}) + Text(std::string(1000, 'x')) + way();
       for (unsigned node = 0; node < kNodes; ++node) {
         next += kNodeSize;
         f.exports += Codes({0, 255});
         for (unsigned other = 0; other < 254; ++other) f.exports += Codes({0, 0x7F});
         f.exports += Codes({0}) + way();
       }
     },
     "wanted names in proportion to the file in the tree of exports, found too many"},
    {"ExportOutside",
     [](TestFile& f) {
       f.exports = Codes({4, 0, 0x80, 0x80, 0x02, 0});
     },
     "wanted the export \"\" inside of the segments, found 0x8000"},
    {"ExportOfAnotherKind",
     [](TestFile& f) {
       f.exports = Codes({2, 8, 0, 0});
     },
     "wanted plain symbols in the tree of exports, found \"\" with the flags 0x8"},
    {"ExportBehindTheEnd",
     [](TestFile& f) {
       f.exports = Codes({3, 0, 0x80, 0x60, 0});
     },
     "wanted the export \"\" inside of the segments, found 0x3000"},
    {"LongExport",
     [](TestFile& f) {
       const std::string half(513, 'x');
       f.exports = Codes({0, 1}) + Text(half) + Codes({0x86, 0x04}) + Codes({0, 1}) + Text(half) + Codes({0});
     },
     "wanted names of at most 1024 bytes in the tree of exports, found a longer one"},
    {"RebaseBehindTheSegment",
     [](TestFile& f) {
       f.rebases = Codes({0x21, 0x80, 0x40, 0x51});
     },
     "wanted words inside of the segment __DATA in the rebase information, found one at 0x2000 of 0x1000"},
    {"BindOfAnotherKind", [](TestFile& f) { f.binds = Codes({0x53}); },
     "wanted pointers only in the bind information, found the kind 3"},
    {"BindToASymbolOfAnotherKind", [](TestFile& f) { f.binds = Codes({0x48}) + Text("_a"); },
     "wanted known operations in the bind information, found the operation 0x48"},
    {"OddCommand",
     [](TestFile& f) {
       f.moreCommands = Raw(CommandHead{0x99, 10}) + std::string(4, ' ');
       f.moreCount = 1;
     },
     "wanted load commands of whole words, found one of 10 bytes"},
    {"LinkInformationTwice",
     [](TestFile& f) {
       f.moreCommands = MadeCommand(0x80000022, std::string(40, '\0'));
       f.moreCount = 1;
     },
     "wanted link information once, found a second one"},
    {"NoLinkInformation", [](TestFile& f) { f.moreCount = 0U - 1; }, "wanted link information, found none"},
    {"Terminators", [](TestFile& f) { f.frames.flags = kTerminators; },
     "wanted a bundle that runs nothing on loading, found __TEXT,__eh_frame with functions to run"},
    {"SectionBehindTheFilesPart", [](TestFile& f) { f.segments[0].fileSize = TestFile::kFrames - 1; },
     "wanted __TEXT,__eh_frame at the same place in the file as in memory, found 0x900"},
    {"SectionCutOffInTheFile", [](TestFile& f) { f.segments[0].fileSize = TestFile::kFrames + 4; },
     "wanted __TEXT,__eh_frame at the same place in the file as in memory, found 0x900"},
    {"NodeOutside",
     [](TestFile& f) {
       f.exports = Codes({0, 1}) + Text("_a") + Codes({0x7F});
     },
     "wanted the tree of exports inside of its 6 bytes, found 0 bytes at 0x7f"},
};

INSTANTIATE_TEST_SUITE_P(Files, SpoiltFile, testing::ValuesIn(kSpoilt),
                         [](const auto& one) { return one.param.name; });

}  // namespace
