// tests/libcocoa/unwind_info_test.cpp - the head of a function's call frame information: whose it is, and
// whether it has something to clean up.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <optional>

#include "tests/libcocoa/unwind_tables.h"

extern "C" {
#include "libcocoa/runtime/unwind_info.h"
_Unwind_Reason_Code __gnu_objc_personality_v0(int, _Unwind_Action, _Unwind_Exception_Class,
                                              struct _Unwind_Exception*, struct _Unwind_Context*);
}

namespace {

// A function on the stack, as a test tells of it.
struct ToldFunction {
  std::uintptr_t instruction;
  int isInterrupted;  // a signal's frame lies on it: it stands at the instruction, and not behind a call
  void* actions;
};
const ToldFunction* told = nullptr;

bool IsTold(const _Unwind_Context* function) {
  return told != nullptr && static_cast<const void*>(function) == told;
}

}  // namespace

// Take the place of the unwinder's own, which they call for every function but the one that is told of.
extern "C" {
_Unwind_Ptr _Unwind_GetIPInfo(_Unwind_Context* function, int* isInterrupted) {
  if (IsTold(function)) {
    *isInterrupted = told->isInterrupted;
    return told->instruction;
  }
  static const auto own =
      reinterpret_cast<decltype(&_Unwind_GetIPInfo)>(dlsym(RTLD_NEXT, "_Unwind_GetIPInfo"));
  return own(function, isInterrupted);
}
void* _Unwind_GetLanguageSpecificData(_Unwind_Context* function) {
  if (IsTold(function)) return told->actions;
  static const auto own = reinterpret_cast<decltype(&_Unwind_GetLanguageSpecificData)>(
      dlsym(RTLD_NEXT, "_Unwind_GetLanguageSpecificData"));
  return own(function);
}
}

namespace {

using unwind_tables::Bytes;
using unwind_tables::Entries;
using unwind_tables::Room;
using unwind_tables::Table;
using unwind_tables::Word;
using unwind_tables::operator+;

constexpr std::uint8_t kAbsolute = 0x00;
constexpr std::uint8_t kUnsigned2 = 0x02;
constexpr std::uint8_t kUnsigned4 = 0x03;
constexpr std::uint8_t kSigned4 = 0x0B;
constexpr std::uint8_t kTextRelative = 0x20;
constexpr std::uint8_t kDataRelative = 0x30;
constexpr std::uint8_t kIndirect = 0x80;
constexpr std::uint8_t kOmitted = 0xFF;

const std::uintptr_t kObjectiveC = reinterpret_cast<std::uintptr_t>(&__gnu_objc_personality_v0);

class FrameInformation : public testing::Test {
 protected:
  const Room room_{4096};
  QVXFrameInformation found_{};
  std::optional<Table> table_;  // what found_ points into

  // Whether it is found, in found_.
  bool Find(Entries entries) {
    entries.begin = room_.begin();
    entries.size = room_.size();
    table_.emplace(entries);
    return QVXFindFrameInformation(room_.begin() + 1, &found_);
  }
  // A function with a personality routine, and perhaps actions.
  static Entries WithPersonality(std::uint8_t encoding, std::uintptr_t routine, std::uint8_t actionsEncoding,
                                 std::uintptr_t actions) {
    Entries entries;
    entries.letters = "zPLR";
    entries.augmentation = Bytes{encoding} + Word(routine) + Bytes{actionsEncoding, kAbsolute};
    entries.functionAugmentation = Word(actions);
    return entries;
  }
};

TEST_F(FrameInformation, TellsTheFunctionAndItsUnits) {
  Entries entries;
  entries.units = {0x85, 0x01, 0x78};
  entries.own = {0x0E, 8};
  ASSERT_TRUE(Find(entries));
  EXPECT_EQ(found_.start, room_.begin());
  EXPECT_NE(found_.entry, nullptr);
  EXPECT_EQ(found_.codeUnit, 133U);
  EXPECT_EQ(found_.dataUnit, -8);
  EXPECT_EQ(found_.personality, 0U);
  EXPECT_FALSE(found_.hasActions);
  EXPECT_FALSE(found_.isSignalFrame);
}

TEST_F(FrameInformation, TellsBothProgramsFromBeginningToEnd) {
  Entries entries;
  entries.functionAugmentation = {1, 2, 3, 4, 5};
  entries.common = {0x0C, 4, 4, 0x88, 1, 0x41};
  entries.own = {0x0E, 8, 0x43};
  ASSERT_TRUE(Find(entries));
  Bytes common(found_.common.begin, found_.common.end);
  Bytes own(found_.own.begin, found_.own.end);
  while (!common.empty() && common.back() == 0) common.pop_back();  // what fills up the entry
  while (!own.empty() && own.back() == 0) own.pop_back();
  EXPECT_EQ(common, entries.common);
  EXPECT_EQ(own, entries.own);
}

TEST_F(FrameInformation, ReadsUnitsOfManyBytes) {
  Entries entries;
  entries.units = {0xFF, 0xFF, 0xFF, 0xFF, 0x0F, 0x80, 0x80, 0x80, 0x80, 0x78};
  ASSERT_TRUE(Find(entries));
  EXPECT_EQ(found_.codeUnit, 0xFFFFFFFFU);
  EXPECT_EQ(found_.dataUnit, INT32_MIN);
  entries.units = {0x81, 0x80, 0x80, 0x80, 0x80, 0x80, 0x00, 0xBF, 0x7F};  // longer than it needs to be
  ASSERT_TRUE(Find(entries));
  EXPECT_EQ(found_.codeUnit, 1U);
  EXPECT_EQ(found_.dataUnit, -65);
  entries.units = {0x01, 0x3F};
  ASSERT_TRUE(Find(entries));
  EXPECT_EQ(found_.dataUnit, 63);
}

TEST_F(FrameInformation, HasALongReturnRegisterInNewerVersions) {
  Entries entries;
  entries.version = 3;
  entries.returnRegister = {0x88, 0x00};
  ASSERT_TRUE(Find(entries));
  EXPECT_EQ(*found_.common.begin, 0x0C);
}

TEST_F(FrameInformation, IsNotThereForOtherCode) {
  EXPECT_FALSE(QVXFindFrameInformation(room_.begin(), &found_));
}

TEST_F(FrameInformation, IsRefusedWithUnknownLetters) {
  Entries entries;
  entries.letters = "zRB";
  EXPECT_FALSE(Find(entries));
  entries.letters = "";
  EXPECT_FALSE(Find(entries));
}

TEST_F(FrameInformation, IsRefusedWithAShortPersonality) {
  Entries entries;
  entries.letters = "zRP";
  entries.augmentation = {kAbsolute, kUnsigned2, 0x34, 0x12, 0, 0};
  EXPECT_FALSE(Find(entries));
}

TEST_F(FrameInformation, IsRefusedWithShortAddresses) {
  Entries entries;
  entries.begin = 0x01001234;  // from 0x1234 on, 0x100 bytes
  entries.augmentation = {kUnsigned2};
  const Table table(entries);
  EXPECT_FALSE(QVXFindFrameInformation(0x1240, &found_));
}

TEST_F(FrameInformation, TellsASignalsFrame) {
  Entries entries;
  entries.letters = "zRS";
  ASSERT_TRUE(Find(entries));
  EXPECT_TRUE(found_.isSignalFrame);
}

TEST_F(FrameInformation, ReadsThePersonalityInEachEncoding) {
  for (const int encoding : {int{kAbsolute}, int{kUnsigned4}, int{kSigned4}}) {
    ASSERT_TRUE(Find(WithPersonality(static_cast<std::uint8_t>(encoding), kObjectiveC, kAbsolute, 1)));
    EXPECT_EQ(found_.personality, kObjectiveC) << encoding;
  }
  ASSERT_TRUE(Find(WithPersonality(kDataRelative, kObjectiveC - unwind_tables::kData, kAbsolute, 1)));
  EXPECT_EQ(found_.personality, kObjectiveC);
  const std::uintptr_t stored = kObjectiveC;
  ASSERT_TRUE(Find(WithPersonality(kIndirect, reinterpret_cast<std::uintptr_t>(&stored), kAbsolute, 1)));
  EXPECT_EQ(found_.personality, kObjectiveC);
  ASSERT_TRUE(Find(WithPersonality(kTextRelative, kObjectiveC, kAbsolute, 1)));
  EXPECT_EQ(found_.personality, 0U);
  ASSERT_TRUE(Find(WithPersonality(kIndirect, 0, kAbsolute, 1)));
  EXPECT_EQ(found_.personality, 0U);
}

TEST_F(FrameInformation, HasActionsWhereTheyAreToldToBe) {
  for (const int encoding : {int{kAbsolute}, int{kUnsigned4}, int{kSigned4}}) {
    const auto actionsEncoding = static_cast<std::uint8_t>(encoding);
    ASSERT_TRUE(Find(WithPersonality(kAbsolute, kObjectiveC, actionsEncoding, 1)));
    EXPECT_TRUE(found_.hasActions) << encoding;
    ASSERT_TRUE(Find(WithPersonality(kAbsolute, kObjectiveC, actionsEncoding, 0)));
    EXPECT_FALSE(found_.hasActions) << encoding;
  }
  ASSERT_TRUE(Find(WithPersonality(kAbsolute, kObjectiveC, kOmitted, 1)));
  EXPECT_FALSE(found_.hasActions);
  ASSERT_TRUE(Find(WithPersonality(kAbsolute, kObjectiveC, kUnsigned2, 1)));
  EXPECT_FALSE(found_.hasActions);
  Entries without = WithPersonality(kAbsolute, kObjectiveC, kAbsolute, 1);
  without.functionAugmentation = {};
  without.own = {0x0E, 8, 0x0E, 8};
  ASSERT_TRUE(Find(without));
  EXPECT_FALSE(found_.hasActions);
}

TEST_F(FrameInformation, IsObjectiveCsWithActionsAndItsPersonalityOnly) {
  ASSERT_TRUE(Find(WithPersonality(kAbsolute, kObjectiveC, kAbsolute, 1)));
  EXPECT_TRUE(QVXHasObjectiveCActions(&found_));
  ASSERT_TRUE(Find(WithPersonality(kAbsolute, kObjectiveC, kAbsolute, 0)));
  EXPECT_FALSE(QVXHasObjectiveCActions(&found_));
  ASSERT_TRUE(Find(WithPersonality(kAbsolute, kObjectiveC + 1, kAbsolute, 1)));
  EXPECT_FALSE(QVXHasObjectiveCActions(&found_));
}

// Whether the function that is made of the entries counts as one of Objective-C.
class FunctionOnTheStack : public FrameInformation {
 protected:
  FunctionOnTheStack() { EXPECT_TRUE(Find(WithPersonality(kAbsolute, kObjectiveC, kAbsolute, 1))); }
  static bool IsObjectiveC(ToldFunction function) {
    told = &function;
    const QVXPersonality found =
        QVXObjectiveCPersonality(reinterpret_cast<struct _Unwind_Context*>(&function));
    told = nullptr;
    EXPECT_TRUE(found == nullptr || found == &__gnu_objc_personality_v0);
    return found != nullptr;
  }
  void* const actions_ = this;  // any that are there
};

TEST_F(FunctionOnTheStack, IsTheOneOfTheCallBeforeItsReturnAddress) {
  EXPECT_TRUE(IsObjectiveC({room_.begin() + room_.size(), 0, actions_}));
  EXPECT_TRUE(IsObjectiveC({room_.begin() + 1, 0, actions_}));
  EXPECT_FALSE(IsObjectiveC({room_.begin(), 0, actions_}));
}

TEST_F(FunctionOnTheStack, IsTheOneOfTheInstructionWhereASignalInterruptsIt) {
  EXPECT_TRUE(IsObjectiveC({room_.begin(), 1, actions_}));
  EXPECT_TRUE(IsObjectiveC({room_.begin() + room_.size() - 1, 1, actions_}));
  EXPECT_FALSE(IsObjectiveC({room_.begin() + room_.size(), 1, actions_}));
}

TEST_F(FunctionOnTheStack, IsNoneOfObjectiveCWithoutActions) {
  EXPECT_FALSE(IsObjectiveC({room_.begin() + 1, 0, nullptr}));
}

bool StartsInTheMiddle(const Bytes& program) {
  QVXFrameInformation information{};
  information.own = {program.data(), program.data() + program.size()};
  return QVXStartsInTheMiddle(&information);
}

TEST(Piece, StartsInTheMiddleWhereItsEndIsToldBeforeItsFirstInstruction) {
  for (const std::uint8_t define : Bytes{0x0C, 0x0D, 0x0E, 0x0F}) {
    EXPECT_TRUE(StartsInTheMiddle({define})) << int{define};
    EXPECT_TRUE(StartsInTheMiddle({0x00, 0x0A, 0x2E, 0x90, 0x01, 0x85, 0x82, 0x00, define})) << int{define};
    EXPECT_FALSE(StartsInTheMiddle({0x41, define})) << int{define};
  }
  EXPECT_FALSE(StartsInTheMiddle({}));
  EXPECT_FALSE(StartsInTheMiddle({0x85, 0x0C}));
  EXPECT_FALSE(StartsInTheMiddle({0x2E, 0x0C}));
  EXPECT_FALSE(StartsInTheMiddle({0x0B, 0x0C}));
  EXPECT_FALSE(StartsInTheMiddle({0x10, 0x0C}));
  EXPECT_FALSE(StartsInTheMiddle({0xC5, 0x0C}));
}

TEST(ProgramCounters, ShareAFunctionOnlyWithinItOrWithAMovedPiece) {
  const Room room(4 * 4096);
  const auto entriesOf = [&](std::size_t page, const Bytes& own) {
    Entries entries;
    entries.begin = room.begin() + page * 4096;
    entries.size = 4096;
    entries.own = own;
    return entries;
  };
  const Table one(entriesOf(0, {0x41, 0x0E, 8}));
  const Table other(entriesOf(1, {0x41, 0x0E, 8}));
  const Table piece(entriesOf(2, {0x0E, 8}));
  const auto at = [&](std::size_t page) { return room.begin() + page * 4096 + 5; };
  EXPECT_TRUE(QVXMayShareFunction(at(0), at(0) + 1));
  EXPECT_FALSE(QVXMayShareFunction(at(0), at(1)));
  EXPECT_TRUE(QVXMayShareFunction(at(0), at(2)));
  EXPECT_TRUE(QVXMayShareFunction(at(2), at(0)));
  EXPECT_FALSE(QVXMayShareFunction(at(0), at(3)));
  EXPECT_FALSE(QVXMayShareFunction(at(3), at(0)));
  EXPECT_TRUE(QVXMayShareFunction(at(3), at(3) + 1));  // nothing is known of either
}

}  // namespace
