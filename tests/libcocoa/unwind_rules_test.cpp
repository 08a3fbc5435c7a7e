// tests/libcocoa/unwind_rules_test.cpp - what is read from call frame programs, instruction by instruction,
// and how long it is kept.
#include <gtest/gtest.h>

#include <array>
#include <optional>

#include "tests/libcocoa/unwind_tables.h"

extern "C" {
#include "libcocoa/runtime/unwind_rules.h"
}

namespace {

using unwind_tables::Bytes;
using unwind_tables::Entries;
using unwind_tables::Room;
using unwind_tables::Table;
using unwind_tables::operator+;

constexpr std::size_t kSize = 0x100000;

// The rule at a distance into a function that has this program; nothing if it is not understood.
std::optional<QVXUnwindRule> RuleOf(const Bytes& own, std::size_t distance = 0, Entries entries = {}) {
  static const Room room(kSize);
  entries.begin = room.begin();
  entries.size = room.size();
  entries.own = own;
  const Table table(entries);
  QVXUnwindRule rule{};
  if (!QVXUnwindRuleAt(room.begin() + distance, &rule)) return std::nullopt;
  EXPECT_EQ(rule.address, room.begin() + distance);
  EXPECT_EQ(rule.start, room.begin());
  EXPECT_NE(rule.entry, nullptr);
  return rule;
}

struct Expected {
  int endBase;
  int endOffset;
  int ebpBase;
  int ebpOffset;
};

void ExpectRule(const std::optional<QVXUnwindRule>& rule, const Expected& expected) {
  ASSERT_TRUE(rule.has_value());
  EXPECT_EQ(rule->endBase, expected.endBase);
  EXPECT_EQ(rule->endOffset, expected.endOffset);
  EXPECT_EQ(rule->ebpBase, expected.ebpBase);
  EXPECT_EQ(rule->ebpOffset, expected.ebpOffset);
  EXPECT_FALSE(rule->isOutermost);
}

constexpr Expected kAsEntered{kQVXFromStackPointer, 4, kQVXNowhere, 0};
constexpr Expected kGrown{kQVXFromStackPointer, 8, kQVXNowhere, 0};
const Bytes kGrow = {0x0E, 8};  // the end is esp + 8 from here on

TEST(UnwindRule, IsTheCommonOneWhereAProgramSaysNothing) {
  ExpectRule(RuleOf({}), kAsEntered);
  ExpectRule(RuleOf({0x00, 0x00}), kAsEntered);
}

struct Advance {
  Bytes instruction;
  std::size_t distance;
  std::uint8_t codeUnit;
};

class UnwindRuleAdvance : public testing::TestWithParam<Advance> {};

TEST_P(UnwindRuleAdvance, BringsWhatFollowsIntoForceThereAndNotBefore) {
  const Advance& advance = GetParam();
  Entries entries;
  entries.units[0] = advance.codeUnit;
  ExpectRule(RuleOf(advance.instruction + kGrow, advance.distance - 1, entries), kAsEntered);
  ExpectRule(RuleOf(advance.instruction + kGrow, advance.distance, entries), kGrown);
  ExpectRule(RuleOf(advance.instruction + kGrow, kSize - 1, entries), kGrown);
}

INSTANTIATE_TEST_SUITE_P(
    All, UnwindRuleAdvance,
    testing::Values(Advance{{0x41}, 1, 1}, Advance{{0x7F}, 0x3F, 1}, Advance{{0x42}, 6, 3},
                    Advance{{0x02, 0xC8}, 200, 1}, Advance{{0x02, 0xC8}, 400, 2},
                    Advance{{0x03, 0x34, 0x12}, 0x1234, 1}, Advance{{0x03, 0x34, 0x12}, 0x2468, 2},
                    Advance{{0x04, 0x56, 0x34, 0x02, 0x00}, 0x23456, 1}, Advance{{0x41, 0x42}, 3, 1},
                    Advance{{0x02, 0x10, 0x02, 0x10}, 0x20, 1}));

struct Program {
  const char* about;
  Bytes own;
  Expected expected;
};

class UnwindRuleProgram : public testing::TestWithParam<Program> {};

TEST_P(UnwindRuleProgram, Says) {
  ExpectRule(RuleOf(GetParam().own), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    All, UnwindRuleProgram,
    testing::Values(
        Program{"TheEndFromEcxForAWhile", {0x0C, 1, 0, 0x0C, 5, 8}, {kQVXFromEbp, 8, kQVXNowhere, 0}},
        Program{"EbpStored", {0x85, 2}, {kQVXFromStackPointer, 4, kQVXFromEnd, -8}},
        Program{"AFarOffset", {0x0E, 0x80, 0x02}, {kQVXFromStackPointer, 256, kQVXNowhere, 0}},
        Program{"TheEndFromEbp", {0x0D, 5}, {kQVXFromEbp, 4, kQVXNowhere, 0}},
        Program{"TheEndFromEbpWithItsOffset", {0x0C, 5, 8}, {kQVXFromEbp, 8, kQVXNowhere, 0}},
        Program{"TheEndFromEbpAndBack", {0x0D, 5, 0x0D, 4}, kAsEntered},
        Program{"EbxStored", {0x83, 2}, kAsEntered}, Program{"EbpRestored", {0x85, 2, 0xC5}, kAsEntered},
        Program{"EbxRestored", {0x85, 2, 0xC3}, {kQVXFromStackPointer, 4, kQVXFromEnd, -8}},
        Program{"EbpTheSame", {0x85, 2, 0x08, 5}, kAsEntered}, Program{"EbxTheSame", {0x08, 3}, kAsEntered},
        Program{"EbxUndefined", {0x07, 3}, kAsEntered},
        Program{"AStateRememberedAndRestored", {0x0A, 0x0E, 8, 0x85, 2, 0x0B}, kAsEntered},
        Program{"TwoStatesRememberedOneRestored", {0x0A, 0x0E, 8, 0x0A, 0x0E, 12, 0x0B}, kGrown},
        Program{"TwoStatesRememberedAndRestored", {0x0A, 0x0E, 8, 0x0A, 0x0E, 12, 0x0B, 0x0B}, kAsEntered},
        Program{"ArgumentsOfAFarSize", {0x2E, 0x90, 0x01, 0x0E, 8}, kGrown},
        Program{"EipElsewhereAndRestored", {0x88, 3, 0xC8}, kAsEntered},
        Program{"EipUndefinedAndRestored", {0x07, 8, 0xC8}, kAsEntered},
        Program{
            "TheEndStoredBelowEbp", {0x0F, 3, 0x75, 0x74, 0x06}, {kQVXStoredFromEbp, -12, kQVXNowhere, 0}},
        Program{"TheEndStoredFarBelowEbpToldInTwoBytes",
                {0x0F, 4, 0x75, 0x80, 0x7F, 0x06, 0x85, 2},
                {kQVXStoredFromEbp, -128, kQVXFromEnd, -8}},
        Program{"TheEndToldByARegisterAgain", {0x0F, 3, 0x75, 0x74, 0x06, 0x0C, 4, 4}, kAsEntered},
        Program{"EbpStoredAboveItself", {0x10, 5, 2, 0x75, 0x04}, {kQVXFromStackPointer, 4, kQVXFromEbp, 4}},
        Program{"EbxByWhateverExpressionPassedOver", {0x10, 3, 2, 0x11, 0x22, 0x0E, 8}, kGrown},
        Program{"EbxStoredWhereEbpSays", {0x10, 3, 2, 0x75, 0x7C, 0x0E, 8}, kGrown}),
    [](const auto& program) { return std::string(program.param.about); });

TEST(UnwindRule, HasNoCallerWhereTheReturnAddressIsUndefined) {
  const std::optional<QVXUnwindRule> rule = RuleOf({0x07, 8});
  ASSERT_TRUE(rule.has_value());
  EXPECT_TRUE(rule->isOutermost);
}

class UnwindRuleRefused : public testing::TestWithParam<Bytes> {};

TEST_P(UnwindRuleRefused, WhatCompilersDoNotWriteForOrdinaryFunctions) {
  EXPECT_FALSE(RuleOf(GetParam()).has_value());
}

INSTANTIATE_TEST_SUITE_P(
    All, UnwindRuleRefused,
    testing::Values(Bytes{0x07, 5},                       // ebp undefined
                    Bytes{0x08, 8},                       // eip the same as the caller's
                    Bytes{0x88, 2},                       // eip not where a call puts it
                    Bytes{0x10, 8, 2, 0x75, 0x7C},        // nor told by an expression
                    Bytes{0x10, 8, 2, 0x11, 0x7C},        // of whatever form
                    Bytes{0x10, 5, 2, 0x11, 0x7C},        // ebp by an unknown operation
                    Bytes{0x10, 5, 0},                    // by none
                    Bytes{0x10, 5, 3, 0x75, 0x7C, 0x06},  // by one too many
                    Bytes{0x0C, 0, 4}, Bytes{0x0D, 0},    // the end from eax
                    Bytes{0x0C, 3, 4}, Bytes{0x0D, 3},    // from ebx
                    Bytes{0x0C, 6, 4}, Bytes{0x0D, 6},    // from esi
                    Bytes{0x0F, 3, 0x75, 0x74, 0x06, 0x0D, 3}, Bytes{0x0C, 8, 4}, Bytes{0x0D, 8},  // from eip
                    Bytes{0x0C, 0x85, 0x02, 4},              // from a number that ends like ebp's
                    Bytes{0x0D, 0x85, 0x02},                 //
                    Bytes{0x0F, 0},                          // the end by no operation
                    Bytes{0x0F, 2, 0x75, 0x74},              // by the address of where it is stored
                    Bytes{0x0F, 3, 0x75, 0x74, 0x00},        // by another operation
                    Bytes{0x0F, 3, 0x74, 0x74, 0x06},        // from esp
                    Bytes{0x0F, 4, 0x75, 0x74, 0x06, 0x06},  // by one too many
                    Bytes{0x0B},                             // a state that nobody remembered
                    Bytes{0x0A, 0x0B, 0x0B},                 //
                    Bytes{0x0A, 0x0A, 0x0A, 0x0A, 0x0A, 0x0A, 0x0A, 0x0A, 0x0A},  // nine states
                    Bytes{0x01}, Bytes{0x05}, Bytes{0x16}, Bytes{0x2D}, Bytes{0x2F}, Bytes{0x3F}));

TEST(UnwindRule, RemembersEightStates) {
  ExpectRule(RuleOf({0x0A, 0x0E, 8, 0x0A, 0x0A, 0x0A, 0x0A, 0x0A, 0x0A, 0x0A,  //
                     0x0B, 0x0B, 0x0B, 0x0B, 0x0B, 0x0B, 0x0B}),
             kGrown);
}

TEST(UnwindRule, IsRefusedWhereTheCommonProgramIsNotUnderstood) {
  Entries entries;
  entries.common = {0x0C, 4, 4, 0x88, 1, 0x16};
  EXPECT_FALSE(RuleOf({}, 0, entries).has_value());
}

TEST(UnwindRule, IsRefusedForAFunctionThatASignalHasInterrupted) {
  Entries entries;
  entries.letters = "zRS";
  EXPECT_FALSE(RuleOf({}, 0, entries).has_value());
}

TEST(UnwindRule, TellsAPieceThatWasMovedAway) {
  EXPECT_FALSE(RuleOf({0x41, 0x0C, 5, 8})->startsInTheMiddle);
  EXPECT_TRUE(RuleOf({0x0C, 5, 8})->startsInTheMiddle);
}

TEST(UnwindRule, IsThatOfTheCallBeforeAReturnAddress) {
  const Room room(kSize);
  Entries entries;
  entries.begin = room.begin();
  entries.size = room.size();
  entries.own = Bytes{0x44} + kGrow;
  const Table table(entries);
  QVXPlace place{.returnAddress = room.begin() + 4, .stackPointer = 0, .ebp = 0};
  QVXUnwindRule rule{};
  ASSERT_TRUE(QVXUnwindRuleOf(&place, &rule));
  EXPECT_EQ(rule.endOffset, 4);
  place.returnAddress = room.begin() + room.size();  // behind the function's end
  ASSERT_TRUE(QVXUnwindRuleOf(&place, &rule));
  EXPECT_EQ(rule.endOffset, 8);
  place.returnAddress = room.begin();
  EXPECT_FALSE(QVXUnwindRuleOf(&place, &rule));
}

// Addresses of this program, so that what is known of them may be kept.
std::array<char, 4096> loaded;

std::uintptr_t Loaded(std::size_t i) {
  return reinterpret_cast<std::uintptr_t>(loaded.data()) + i;
}

Entries EntriesOfLoaded() {
  Entries entries;
  entries.begin = Loaded(0);
  entries.size = loaded.size();
  return entries;
}

// How many of the addresses from `begin` to `end` have a rule although no table has them any more.
std::size_t Kept(std::size_t begin, std::size_t end) {
  std::size_t kept = 0;
  QVXUnwindRule rule{};
  for (std::size_t i = begin; i < end; ++i) {
    if (!QVXUnwindRuleAt(Loaded(i), &rule)) continue;
    EXPECT_EQ(rule.address, Loaded(i));
    ++kept;
  }
  return kept;
}

TEST(KeptUnwindRules, AreTheNewestTwoOfEachPlace) {
  QVXUnwindRule rule{};
  {
    const Table table(EntriesOfLoaded());
    for (std::size_t i = 0; i < loaded.size(); ++i) ASSERT_TRUE(QVXUnwindRuleAt(Loaded(i), &rule)) << i;
  }
  EXPECT_EQ(Kept(0, loaded.size()), 1024U);
  EXPECT_GT(Kept(loaded.size() - 900, loaded.size()), 850U);
}

TEST(KeptUnwindRules, AreOnlyThoseOfLoadedFiles) {
  const Room room(kSize);
  QVXUnwindRule rule{};
  {
    Entries entries;
    entries.begin = room.begin();
    entries.size = room.size();
    const Table table(entries);
    ASSERT_TRUE(QVXUnwindRuleAt(room.begin(), &rule));
  }
  EXPECT_FALSE(QVXUnwindRuleAt(room.begin(), &rule));
}

TEST(KeptUnwindRules, BelongToOneAtATime) {
  ASSERT_TRUE(QVXTakeUnwindRules());
  EXPECT_FALSE(QVXTakeUnwindRules());
  QVXGiveUnwindRules();
  ASSERT_TRUE(QVXTakeUnwindRules());
  QVXGiveUnwindRules();
}

// A stack of two functions: the inner one's part is six words.
class Step : public testing::Test {
 protected:
  std::array<std::uintptr_t, 8> words_{0, 100, 200, 300, 400, 500, 600, 700};
  QVXPlace place_{.returnAddress = 1, .stackPointer = At(0), .ebp = At(2)};

  std::uintptr_t At(std::size_t i) const { return reinterpret_cast<std::uintptr_t>(&words_[i]); }
  static QVXUnwindRule Rule(QVXBase endBase, std::int32_t endOffset, QVXBase ebpBase = kQVXNowhere,
                            std::int32_t ebpOffset = 0) {
    QVXUnwindRule rule{};
    rule.endBase = static_cast<std::uint8_t>(endBase);
    rule.endOffset = endOffset;
    rule.ebpBase = static_cast<std::uint8_t>(ebpBase);
    rule.ebpOffset = ebpOffset;
    return rule;
  }
  void ExpectCaller(const QVXUnwindRule& rule, std::uintptr_t ebp) {
    ASSERT_TRUE(QVXStepOutwards(&rule, &place_));
    EXPECT_EQ(place_.stackPointer, At(6));
    EXPECT_EQ(place_.returnAddress, 500U);
    EXPECT_EQ(place_.ebp, ebp);
  }
};

TEST_F(Step, FindsTheEndFromTheStackPointer) {
  ExpectCaller(Rule(kQVXFromStackPointer, 24), At(2));
}

TEST_F(Step, FindsTheEndFromEbp) {
  ExpectCaller(Rule(kQVXFromEbp, 16), At(2));
}

TEST_F(Step, FindsTheEndWhereItIsStored) {
  words_[1] = At(6);
  ExpectCaller(Rule(kQVXStoredFromEbp, -4), At(2));
}

TEST_F(Step, FindsEbpBelowTheEnd) {
  ExpectCaller(Rule(kQVXFromStackPointer, 24, kQVXFromEnd, -8), 400);
}

TEST_F(Step, FindsEbpFromItself) {
  ExpectCaller(Rule(kQVXFromStackPointer, 24, kQVXFromEbp, 4), 300);
}

TEST_F(Step, NeverLeadsInwardsOrNowhere) {
  for (const std::int32_t offset : {0, -4}) {
    const QVXUnwindRule rule = Rule(kQVXFromStackPointer, offset);
    EXPECT_FALSE(QVXStepOutwards(&rule, &place_));
  }
  EXPECT_EQ(place_.stackPointer, At(0));
}

TEST_F(Step, EndsAtAFunctionWithoutACaller) {
  QVXUnwindRule rule = Rule(kQVXFromStackPointer, 24);
  rule.isOutermost = true;
  EXPECT_FALSE(QVXStepOutwards(&rule, &place_));
}

TEST_F(Step, BeginsAtTheCallerOfAFrame) {
  const QVXPlace caller = QVXCallerOf(&words_[1]);
  EXPECT_EQ(caller.ebp, 100U);
  EXPECT_EQ(caller.returnAddress, 200U);
  EXPECT_EQ(caller.stackPointer, At(3));
}

}  // namespace
