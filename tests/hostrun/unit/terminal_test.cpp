// tests/hostrun/unit/terminal_test.cpp - how texts are painted, counted and padded.
#include "hostrun/commands/terminal.h"

#include <gtest/gtest.h>

namespace hostrun {
namespace {

TEST(Painter, PaintsOnlyInColourAndNothingPlain) {
  const Painter paint(true);
  EXPECT_EQ(paint(Style::Plain, "text"), "text");
  EXPECT_EQ(paint(Style::Strong, "text"), "\033[1mtext\033[0m");
  EXPECT_EQ(paint(Style::Faint, "text"), "\033[2mtext\033[0m");
  EXPECT_EQ(paint(Style::Good, "text"), "\033[32mtext\033[0m");
  EXPECT_EQ(paint(Style::Bad, "text"), "\033[31mtext\033[0m");
  EXPECT_EQ(paint(Style::Notable, "text"), "\033[33mtext\033[0m");
  EXPECT_EQ(Painter(false)(Style::Bad, "text"), "text");
}

TEST(Texts, AreCountedAndPadded) {
  EXPECT_EQ(Counted(0, "check"), "0 checks");
  EXPECT_EQ(Counted(1, "check"), "1 check");
  EXPECT_EQ(Counted(2, "check"), "2 checks");
  EXPECT_EQ(Padded("ab", 4), "ab  ");
  EXPECT_EQ(Padded("abcd", 4), "abcd ");
  EXPECT_EQ(Padded("abcdef", 4), "abcdef ");
  EXPECT_EQ(Padded("\u00E4\u20AC", 4), "\u00E4\u20AC  ");
}

}  // namespace
}  // namespace hostrun
