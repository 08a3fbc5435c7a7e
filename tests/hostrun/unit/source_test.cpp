// tests/hostrun/unit/source_test.cpp - how errors point into a program's text.
#include "hostrun/language/source.h"

#include <gtest/gtest.h>

namespace hostrun {
namespace {

std::string Described(const std::string& text, Position at) {
  return Source("a.bas", text).Describe(at, "wrong");
}

TEST(Source, ShowsTheLineWithACaretBelowTheColumn) {
  EXPECT_EQ(Described("first\nsecond", {2, 1}), "a.bas:2:1: wrong\n  second\n  ^");
  EXPECT_EQ(Described("first\nsecond", {2, 7}), "a.bas:2:7: wrong\n  second\n        ^");
}

TEST(Source, KeepsTabsBeforeTheCaret) {
  EXPECT_EQ(Described("\tx\ty", {1, 4}), "a.bas:1:4: wrong\n  \tx\ty\n  \t \t^");
}

// Columns count bytes.
TEST(Source, GivesALetterOfSeveralBytesOneColumnBeforeTheCaret) {
  for (const std::string letter : {"\u00E9", "\u00FC", "\u20AC", "\U0001F600"}) {
    const auto behind = static_cast<std::int32_t>(letter.size()) + 1;
    EXPECT_EQ(Described(letter + "x", {1, behind}),
              "a.bas:1:" + std::to_string(behind) + ": wrong\n  " + letter + "x\n   ^");
  }
}

TEST(Source, ShowsNoLineThatIsEmptyOrLongerThan200OrEndsBeforeTheColumn) {
  EXPECT_EQ(Described("", {1, 1}), "a.bas:1:1: wrong");
  EXPECT_EQ(Described("ab", {1, 4}), "a.bas:1:4: wrong");
  EXPECT_EQ(Described(std::string(201, 'x'), {1, 1}), "a.bas:1:1: wrong");
  const std::string longest(200, 'x');
  EXPECT_EQ(Described(longest, {1, 1}), "a.bas:1:1: wrong\n  " + longest + "\n  ^");
}

TEST(Source, NamesNoPlaceThatThereIsNot) {
  EXPECT_EQ(Described("text", {0, 0}), "a.bas: wrong");
  EXPECT_EQ(Described("text", {2, 1}), "a.bas:2:1: wrong");
}

TEST(Source, EndsLinesInEachWay) {
  const Source source("a.bas", "\xEF\xBB\xBFone\r\ntwo\rthree\n\nfive");
  EXPECT_EQ(source.Line(1), "one ");
  EXPECT_EQ(source.Line(2), "two");
  EXPECT_EQ(source.Line(3), "three");
  EXPECT_EQ(source.Line(4), "");
  EXPECT_EQ(source.Line(5), "five");
  EXPECT_EQ(source.Line(6), "");
  EXPECT_EQ(source.Line(0), "");
}

ProgramErrors ErrorsOfLines(std::int32_t count) {
  std::vector<ProgramError> errors;
  for (std::int32_t line = count; line > 0; --line) {
    errors.emplace_back(Position{line, 2}, "second");
    errors.emplace_back(Position{line, 1}, "first");
  }
  return ProgramErrors(std::move(errors));
}

TEST(Source, TellsTheFirstErrorOfEachLineInTheirOrder) {
  const ProgramErrors errors = ErrorsOfLines(2);
  EXPECT_STREQ(errors.what(), "first");
  EXPECT_EQ(errors.at().line, 1);
  EXPECT_EQ(Source("a.bas", "").Describe(errors), "a.bas:1:1: first\na.bas:2:1: first");
}

TEST(Source, CountsTheErrorsBeyondTwenty) {
  const Source source("a.bas", "");
  EXPECT_TRUE(source.Describe(ErrorsOfLines(20)).ends_with("\na.bas:20:1: first"));
  EXPECT_TRUE(source.Describe(ErrorsOfLines(22)).ends_with("\na.bas:20:1: first\nand 2 more errors"));
}

}  // namespace
}  // namespace hostrun
