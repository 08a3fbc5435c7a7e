// tests/hostrun/macho/image_test.cpp - a desktop bundle in this process's memory.
#include "hostrun/macho/image.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <fstream>
#include <memory>
#include <sstream>

#include "tests/hostrun/macho/test_file.h"

// Of the compiler's run-time library: the unwind table's entry for an address, or null.
extern "C" const void* _Unwind_Find_FDE(void* address, void* bases);  // NOLINT(bugprone-reserved-identifier)

namespace {

using namespace hostrun::macho;

int symbol = 0;

void* FindTheSymbol(const std::string& name) {
  return name == "_symbol" ? &symbol : nullptr;
}

std::uint32_t WordAt(const Image& image, std::uint32_t offset) {
  std::uint32_t word = 0;
  std::memcpy(&word, image.memory().data() + offset, sizeof word);
  return word;
}

std::uint32_t AddressOf(const void* place) {
  return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(place));
}

// The rights of the page at an address, as the system shows them: "r-xp". Empty: no such page.
std::string RightsAt(const void* place) {
  std::ifstream maps("/proc/self/maps");
  for (std::string line; std::getline(maps, line);) {
    std::istringstream in(line);
    unsigned long begin = 0;
    unsigned long end = 0;
    char dash = 0;
    std::string rights;
    in >> std::hex >> begin >> dash >> end >> rights;
    const auto at = reinterpret_cast<std::uintptr_t>(place);
    if (at >= begin && at < end) return rights;
  }
  return {};
}

// What mapping the file says; empty: nothing.
std::string ProblemOf(const TestFile& file) {
  try {
    const Image image(ReadFile(file.Bytes()), &FindTheSymbol);
    return {};
  } catch (const FormatError& error) {
    return error.what();
  }
}

TEST(DesktopImage, RunsItsFunctions) {
  const Image image(ReadFile(TestFile().Bytes()), &FindTheSymbol);
  const auto answer = reinterpret_cast<int (*)()>(image.Exported("_answer"));
  ASSERT_NE(answer, nullptr);
  EXPECT_EQ(answer(), TestFile::kAnswer);
  EXPECT_EQ(image.Exported("_other"), nullptr);
}

TEST(DesktopImage, HasItsOwnAddresses) {
  const Image image(ReadFile(TestFile().Bytes()), &FindTheSymbol);
  EXPECT_EQ(WordAt(image, TestFile::kPointer), AddressOf(image.Exported("_answer")));
}

TEST(DesktopImage, HasItsSymbols) {
  TestFile file;
  file.binds = Codes({0x11, 0x40}) + Text("_symbol") + Codes({0x60, 8, 0x71, 4, 0x90});
  const Image image(ReadFile(file.Bytes()), &FindTheSymbol);
  EXPECT_EQ(WordAt(image, TestFile::kSymbol), AddressOf(&symbol) + 8);
}

TEST(DesktopImage, IsRefusedWithoutASymbol) {
  TestFile file;
  file.binds = Codes({0x11, 0x40}) + Text("_other") + Codes({0x71, 4, 0x90});
  EXPECT_EQ(ProblemOf(file), "wanted symbols of the platform and the language's run-time only, found _other");
}

TEST(DesktopImage, ProtectsEachSegment) {
  const Image image(ReadFile(TestFile().Bytes()), &FindTheSymbol);
  EXPECT_EQ(RightsAt(image.memory().data() + TestFile::kText), "r-xp");
  EXPECT_EQ(RightsAt(image.memory().data() + TestFile::kData), "rw-p");
  EXPECT_EQ(RightsAt(image.memory().data() + TestFile::kLinkEdit), "r--p");
  ASSERT_EQ(image.writable().size(), 1U);
  EXPECT_EQ(image.writable()[0].data(), image.memory().data() + TestFile::kData);
}

TEST(DesktopImage, GoesWithItsObject) {
  const void* memory = nullptr;
  {
    const Image image(ReadFile(TestFile().Bytes()), &FindTheSymbol);
    memory = image.memory().data();
    EXPECT_NE(RightsAt(memory), "");
  }
  EXPECT_EQ(RightsAt(memory), "");
}

// Its own addresses count from anywhere.
TEST(DesktopImage, MayBeginAtAnyAddress) {
  constexpr std::uint32_t kFirst = 0x4000;
  TestFile file;
  for (SegmentCommand& segment : file.segments) segment.address += kFirst;
  file.frames.address += kFirst;
  std::vector<std::uint8_t> bytes = file.Bytes();
  bytes[TestFile::kPointer + 1] = static_cast<std::uint8_t>((kFirst + TestFile::kFunction) >> 8U);
  const Image image(ReadFile(std::move(bytes)), &FindTheSymbol);
  EXPECT_EQ(image.memory().size(), 3 * kPage);
  EXPECT_EQ(image.Exported("_answer"), image.memory().data() + TestFile::kFunction);
  EXPECT_EQ(WordAt(image, TestFile::kPointer), AddressOf(image.Exported("_answer")));
  EXPECT_EQ(WordAt(image, TestFile::kSymbol), AddressOf(&symbol));
  EXPECT_EQ(RightsAt(image.memory().data() + TestFile::kData), "rw-p");
}

// What a segment has in memory beyond its bytes in the file is zero.
TEST(DesktopImage, HasZerosBehindTheBytesOfTheFile) {
  TestFile file;
  file.segments[1].fileSize = 2;
  const Image image(ReadFile(file.Bytes()), &FindTheSymbol);
  EXPECT_EQ(WordAt(image, TestFile::kPointer), AddressOf(image.memory().data()) + TestFile::kFunction);
  EXPECT_EQ(image.memory()[TestFile::kData + 8], 0);
}

TEST(DesktopImage, IsKnownToTheUnwinderAsLongAsItIsThere) {
  void* function = nullptr;
  const auto known = [&function] {
    std::array<void*, 3> bases{};
    return _Unwind_Find_FDE(function, bases.data()) != nullptr;
  };
  {
    const Image image(ReadFile(TestFile().Bytes()), &FindTheSymbol);
    function = image.Exported("_answer");
    EXPECT_TRUE(known());
  }
  EXPECT_FALSE(known());
}

TEST(DesktopImage, SharesNothingWithAnother) {
  const File file = ReadFile(TestFile().Bytes());
  const Image first(file, &FindTheSymbol);
  auto second = std::make_unique<Image>(file, &FindTheSymbol);
  ASSERT_NE(first.memory().data(), second->memory().data());
  EXPECT_EQ(WordAt(*second, TestFile::kPointer), AddressOf(second->Exported("_answer")));
  second->writable()[0][0] = 0;
  EXPECT_EQ(WordAt(first, TestFile::kPointer), AddressOf(first.Exported("_answer")));
  second.reset();
  EXPECT_EQ(reinterpret_cast<int (*)()>(first.Exported("_answer"))(), TestFile::kAnswer);
}

// The desktop's stack pointer is register 5; here it is 4.
TEST(DesktopFrames, HaveThisSystemsRegisters) {
  const Image image(ReadFile(TestFile().Bytes()), &FindTheSymbol);
  const std::string wanted = CommonRecord(Codes({0x0C, 4, 4, 0x88, 1}));
  EXPECT_EQ(std::memcmp(image.memory().data() + TestFile::kFrames, wanted.data(), wanted.size()), 0);
  const std::string function = FunctionRecord(Codes({0x41, 0x0E, 8, 0x85, 2}));
  EXPECT_EQ(std::memcmp(image.memory().data() + TestFile::kFrames + wanted.size() + 12, function.data() + 12,
                        function.size() - 12),
            0);
}

struct Instructions {
  const char* name;
  std::initializer_list<unsigned> desktop;
  std::initializer_list<unsigned> here;  // empty: refused
};

void PrintTo(const Instructions& instructions, std::ostream* out) {
  *out << instructions.name;
}

class FrameInstructions : public testing::TestWithParam<Instructions> {};

TEST_P(FrameInstructions, AreTranslatedOrRefused) {
  TestFile file;
  file.frameBytes = CommonRecord(Codes(GetParam().desktop)) + Raw(std::uint32_t{0});
  file.frames.size = static_cast<std::uint32_t>(file.frameBytes.size());
  if (GetParam().here.size() == 0) {
    EXPECT_NE(ProblemOf(file).find(" in the unwind tables, found "), std::string::npos) << ProblemOf(file);
    return;
  }
  const Image image(ReadFile(file.Bytes()), &FindTheSymbol);
  const std::string wanted = CommonRecord(Codes(GetParam().here));
  EXPECT_EQ(std::memcmp(image.memory().data() + TestFile::kFrames, wanted.data(), wanted.size()), 0);
}

const Instructions kInstructions[] = {
    {"Offset", {0x84, 2, 0x85, 1, 0x83, 3}, {0x85, 2, 0x84, 1, 0x83, 3}},
    {"Restore", {0xC4, 0xC5, 0xC6}, {0xC5, 0xC4, 0xC6}},
    {"OffsetExtended", {0x05, 5, 1, 0x11, 4, 0x7F}, {0x05, 4, 1, 0x11, 5, 0x7F}},
    {"RestoreUndefinedSame", {0x06, 4, 0x07, 5, 0x08, 4}, {0x06, 5, 0x07, 4, 0x08, 5}},
    {"Register", {0x09, 4, 5}, {0x09, 5, 4}},
    {"DefineCfa", {0x0C, 5, 4, 0x0D, 4, 0x12, 5, 1}, {0x0C, 4, 4, 0x0D, 5, 0x12, 4, 1}},
    {"Numbers", {0x0E, 5, 0x0E, 4, 0x13, 5, 0x2E, 4}, {0x0E, 5, 0x0E, 4, 0x13, 5, 0x2E, 4}},
    {"Places", {0x02, 5, 0x03, 5, 4, 0x04, 4, 5, 4, 5, 0x44}, {0x02, 5, 0x03, 5, 4, 0x04, 4, 5, 4, 5, 0x44}},
    {"States", {0x0A, 0x0B}, {0x0A, 0x0B}},
    {"Location", {0x01, 5, 5, 5, 5, 0x84, 1}, {0x01, 5, 5, 5, 5, 0x85, 1}},
    {"LastRegister", {0x0C, 16, 4, 0x90, 1}, {0x0C, 16, 4, 0x90, 1}},
    {"RegisterBeyondTheLast", {0x91, 1}, {}},
    {"StateOfNobody", {0x0B}, {}},
    {"StateTwice", {0x0A, 0x0B, 0x0B}, {}},
    {"Expression", {0x0F, 1, 0x74}, {}},
    {"UnknownInstruction", {0x3F}, {}},
    {"UnknownRegister", {0x0C, 17, 4}, {}},
    {"LongRegister", {0x0C, 0x84, 0, 4}, {}},
};

INSTANTIATE_TEST_SUITE_P(Instructions, FrameInstructions, testing::ValuesIn(kInstructions),
                         [](const auto& one) { return one.param.name; });

// A file whose only frame is this common record.
TestFile FileWithFrame(const std::string& record) {
  TestFile file;
  file.frameBytes = record + Raw(std::uint32_t{0});
  file.frames.size = static_cast<std::uint32_t>(file.frameBytes.size());
  return file;
}

// Where the pointer of a personality lies that is the first of the augmentation "zPLR".
constexpr std::uint32_t kPersonality = TestFile::kFrames + 19;
constexpr unsigned kIndirectFromItself = 0x9B;
constexpr unsigned kFromItself = 0x1B;

std::string RecordOfPersonality(unsigned form, std::uint32_t value) {
  return AugmentedRecord("zPLR", Codes({form}) + Raw(value) + Codes({0x10, 0x10}), Codes({0x84, 2}));
}

TEST(DesktopFrames, KeepAPersonalityAndTheInstructionsBehindIt) {
  const std::uint32_t distance = TestFile::kSymbol - kPersonality;
  const TestFile file = FileWithFrame(RecordOfPersonality(kIndirectFromItself, distance));
  const Image image(ReadFile(file.Bytes()), &FindTheSymbol);
  std::string wanted = RecordOfPersonality(kIndirectFromItself, distance);
  wanted[wanted.rfind('\x84')] = '\x85';
  EXPECT_EQ(std::memcmp(image.memory().data() + TestFile::kFrames, wanted.data(), wanted.size()), 0);
}

TEST(DesktopFrames, HaveNoPersonalityThatIsReadOutsideOfTheImage) {
  const std::uint32_t last = TestFile::kLinkEdit + kPage - 4 - kPersonality;
  EXPECT_EQ(ProblemOf(FileWithFrame(RecordOfPersonality(kIndirectFromItself, last))), "");
  for (const std::uint32_t outside : {last + 1, 0U - kPersonality - 1}) {
    EXPECT_EQ(ProblemOf(FileWithFrame(RecordOfPersonality(kIndirectFromItself, outside))),
              "wanted pointers into the image in the unwind tables, found one at 0x913 that leads out of it");
  }
  EXPECT_EQ(ProblemOf(FileWithFrame(RecordOfPersonality(kFromItself, last + 1))), "") << "nothing is read";
}

// An augmentation, its data, and what is said of it; empty: it is taken.
struct Augmentation {
  const char* name;
  const char* letters;
  std::initializer_list<unsigned> data;
  const char* problem;
};

void PrintTo(const Augmentation& augmentation, std::ostream* out) {
  *out << augmentation.name;
}

class FrameAugmentations : public testing::TestWithParam<Augmentation> {};

TEST_P(FrameAugmentations, AreTakenOrRefused) {
  const std::string problem =
      ProblemOf(FileWithFrame(AugmentedRecord(GetParam().letters, Codes(GetParam().data), {})));
  const std::string wanted = GetParam().problem;
  const std::size_t found = wanted.find(", found ");
  EXPECT_EQ(problem,
            wanted.empty() ? "" : wanted.substr(0, found) + " in the unwind tables" + wanted.substr(found));
}

const Augmentation kAugmentations[] = {
    {"NoLanguageData", "zLR", {0xFF, 0x10}, ""},
    {"AbsoluteLanguageData", "zLR", {0x00, 0x10}, ""},
    {"SignedLanguageData", "zLR", {0x0B, 0x1B}, ""},
    {"UnsignedLanguageData", "zLR", {0x03, 0x13}, ""},
    {"IndirectLanguageData", "zLR", {0x9B, 0x10}, ""},
    {"LanguageDataFromElsewhere", "zLR", {0x30, 0x10}, "wanted pointers of a word, found the form 0x30"},
    {"ShortLanguageData", "zLR", {0x12, 0x10}, "wanted pointers of a word, found the form 0x12"},
    {"IndirectPointers", "zR", {0x90}, "wanted pointers of a word, found the form 0x90"},
    {"ShortPointers", "zR", {0x1A}, "wanted pointers of a word, found the form 0x1a"},
    {"ShortPersonality", "zP", {0x9A, 0, 0, 0, 0}, "wanted pointers of a word, found the form 0x9a"},
    {"AnotherLetter", "zS", {}, "wanted the augmentations P, L and R, found S"},
    {"NoLength", "R", {0x10}, "wanted an augmentation with its length, found R"},
    {"MoreData", "zR", {0x10, 0}, "wanted augmentation data as long as it says, found another length"},
    {"LessData", "zLR", {0x10}, "wanted augmentation data as long as it says, found another length"},
};

INSTANTIATE_TEST_SUITE_P(Augmentations, FrameAugmentations, testing::ValuesIn(kAugmentations),
                         [](const auto& one) { return one.param.name; });

// A record with these words behind its length, as they are.
std::string BareRecord(const std::string& body) {
  return Raw(static_cast<std::uint32_t>(body.size())) + body;
}

TEST(DesktopFrames, HaveAVersionAndAColumnForTheReturnAddress) {
  const auto common = [](unsigned version, unsigned column) {
    return BareRecord(Raw(std::uint32_t{0}) + Codes({version}) + Text("zR") +
                      Codes({1, 0x7C, column, 1, 0x10, 0, 0, 0}));
  };
  EXPECT_EQ(ProblemOf(FileWithFrame(common(1, 8))), "");
  EXPECT_EQ(ProblemOf(FileWithFrame(common(3, 8))), "wanted version 1 in the unwind tables, found 3");
  EXPECT_EQ(ProblemOf(FileWithFrame(common(1, 9))),
            "wanted the return address in column 8 in the unwind tables, found 9");
}

TEST(DesktopFrames, HaveNothingThatGoesBeyondItsEntry) {
  const auto common = [](std::initializer_list<unsigned> rest) {
    return BareRecord(Raw(std::uint32_t{0}) + Codes({1}) + Text("z") + Codes({1, 0x7C, 8}) + Codes(rest));
  };
  EXPECT_EQ(ProblemOf(FileWithFrame(common({1, 0}))),
            "wanted augmentation data as long as it says in the unwind tables, found another length");
  EXPECT_EQ(ProblemOf(FileWithFrame(common({2, 0}))),
            "wanted augmentation data inside its entry in the unwind tables, found 0x2");
  EXPECT_EQ(ProblemOf(FileWithFrame(common({0, 0x02}))),
            "wanted instructions inside their entry in the unwind tables, found one that goes beyond it");
}

// The entry of a function behind a common one, with its place as the common entry's pointers have it.
TestFile FileWithFunction(unsigned pointers, std::uint32_t begin, std::uint32_t size) {
  const std::string common = AugmentedRecord("zR", Codes({pointers}), {});
  const auto back = static_cast<std::uint32_t>(common.size() + 4);
  return FileWithFrame(common + BareRecord(Raw(back) + Raw(begin) + Raw(size) + Codes({0, 0x84, 1, 0})));
}
constexpr std::uint32_t kFunctionsPlace = TestFile::kFrames + 28;

TEST(DesktopFrames, AreOfFunctionsInsideOfTheImage) {
  ASSERT_EQ(AugmentedRecord("zR", Codes({0x10}), {}).size(), 20U);
  constexpr std::uint32_t kSize = TestFile::kLinkEdit + kPage;
  const auto problem = [](std::uint32_t begin, std::uint32_t size) {
    return ProblemOf(FileWithFunction(0x10, begin - kFunctionsPlace, size));
  };
  EXPECT_EQ(problem(0, kSize), "");
  EXPECT_EQ(problem(kSize, 0), "");
  const std::string wanted = "wanted functions inside of the image in the unwind tables, found ";
  EXPECT_EQ(problem(0, kSize + 1), wanted + "0x3001 bytes at 0x0");
  EXPECT_EQ(problem(kSize + 1, 0), wanted + "0x0 bytes at 0x3001");
}

TEST(DesktopFrames, MayHoldAddressesThatAreRebased) {
  TestFile file = FileWithFunction(0x00, TestFile::kFunction, 6);
  file.rebases = Codes({0x20, 0x9C, 0x12, 0x51});
  const Image image(ReadFile(file.Bytes()), &FindTheSymbol);
  EXPECT_EQ(WordAt(image, kFunctionsPlace), AddressOf(image.memory().data()) + TestFile::kFunction);
  EXPECT_EQ(image.memory()[kFunctionsPlace + 9], 0x85);
  file.rebases.clear();
  EXPECT_NE(ProblemOf(file), "");
}

TEST(DesktopFrames, MayEndWithTheirPage) {
  TestFile file;
  const std::string end = Raw(std::uint32_t{0});
  file.frames.address = file.frames.fileOffset = kPage - 24;
  file.frames.size = 24;
  std::vector<std::uint8_t> bytes = file.Bytes();
  const std::string common = AugmentedRecord("zR", Codes({0x10}), {}) + end;
  std::copy(common.begin(), common.end(), bytes.begin() + kPage - 24);
  EXPECT_NO_THROW(Image(ReadFile(bytes), &FindTheSymbol));
  const std::string withoutEnd = AugmentedRecord("zR", Codes({0x10}), Codes({0, 0, 0, 0}));
  ASSERT_EQ(withoutEnd.size(), 24U);
  std::copy(withoutEnd.begin(), withoutEnd.end(), bytes.begin() + kPage - 24);
  EXPECT_THROW(Image(ReadFile(bytes), &FindTheSymbol), FormatError);
}

TEST(DesktopFrames, NeedAnEndThatTheUnwinderMeets) {
  TestFile file;
  file.frameBytes.resize(file.frameBytes.size() - 4);
  file.frames.size -= 4;
  EXPECT_EQ(ProblemOf(file), "") << "zeros behind the section are an end";
  file.frameBytes += Raw(std::uint32_t{1});
  EXPECT_EQ(ProblemOf(file), "wanted an end in the unwind tables, found more bytes behind the last entry");
}

TEST(DesktopFrames, AreRefusedWhereTheyLeadOutside) {
  TestFile file;
  file.frameBytes = CommonRecord({}) + Raw(std::uint32_t{0x1000});
  file.frames.size = static_cast<std::uint32_t>(file.frameBytes.size());
  EXPECT_EQ(ProblemOf(file),
            "wanted entries of whole words in the unwind tables, found one of 0x1000 bytes at 0x914");
  TestFile orphan;
  orphan.frameBytes = FunctionRecord({}) + Raw(std::uint32_t{0});
  orphan.frames.size = static_cast<std::uint32_t>(orphan.frameBytes.size());
  EXPECT_EQ(ProblemOf(orphan),
            "wanted entries behind their common one in the unwind tables, found one at 0x900");
}

TEST(DesktopFrames, AreRefusedWhereNobodyMayReadThem) {
  TestFile file;
  file.segments[0].protection = 0;
  EXPECT_EQ(ProblemOf(file), "wanted unwind tables that can be read, found protected ones");
}

}  // namespace
