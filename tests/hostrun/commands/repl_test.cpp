// tests/hostrun/commands/repl_test.cpp - "hostrun repl" with its lines from a pipe.
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/hostrun/commands/run_hostrun.h"

namespace command_tests {
namespace {

Finished Typed(const std::string& lines) {
  std::vector<std::string> arguments = PlatformFor(lines);
  arguments.insert(arguments.begin(), "repl");
  return RunHostrun(arguments, lines);
}

TEST(Repl, ShowsTheValueOfAnExpression) {
  const Finished finished = Typed("1 + 2 * 3\n\"a\" + \"\"\"b\"\n7 > 8\nNil\n");
  EXPECT_EQ(finished.out, "7\n\"a\"\"b\"\nFalse\nNil\n");
  EXPECT_EQ(finished.err, "");
  EXPECT_EQ(finished.status, 0);
}

TEST(Repl, ShowsAColourWithItsSpaceAndComponents) {
  EXPECT_EQ(Typed("NSColorQVX.colorWithDeviceRGB(1, 0.5, 0)\nNew NSColorListQVX\n").out,
            "NSColorQVX NSDeviceRGBColorSpace 1 0.5 0 1\nNSColorListQVX, empty\n");
  EXPECT_EQ(Typed("&cFF8000\nArray(1, 2)\n").out, "&cFF8000\narray of 2: 1, 2\n");
}

TEST(Repl, NeverSendsColoursToAPipe) {
  const Finished finished =
      RunHostrun({"repl"}, "NSColorQVX.redColor\n", {"COLORTERM=truecolor", "TERM=xterm"});
  EXPECT_EQ(finished.out.find('\033'), std::string::npos);
}

TEST(Repl, KeepsWhatWasDeclared) {
  EXPECT_EQ(Typed("Dim x As Integer = 5\nx = x + 1\nx\n").out, "6\n");
}

TEST(Repl, KeepsNumbersWithAFraction) {
  EXPECT_EQ(Typed("Dim x As Double = 1.5\nx\nx = x * 2\nx\nDim y As Double\ny\n").out, "1.5\n3\n0\n");
}

TEST(Repl, KeepsSubsAndFunctions) {
  EXPECT_EQ(Typed("Function Twice(n As Integer) As Integer\n  Return n * 2\nEnd Function\nTwice(4)\n").out,
            "8\n");
}

TEST(Repl, LetsANameBeDeclaredAnew) {
  EXPECT_EQ(Typed("Dim x As Integer = 5\nDim x As String = \"text\"\nx\n").out, "\"text\"\n");
  EXPECT_EQ(Typed("Sub S()\n  Print 1\nEnd Sub\nSub S()\n  Print 2\nEnd Sub\nS\n").out, "2\n");
}

TEST(Repl, ReadsBlocksOverSeveralLines) {
  EXPECT_EQ(Typed("For i As Integer = 1 To 2\n\n  If i = 2 Then\n    Print i\n  End If\nNext\n").out, "2\n");
}

TEST(Repl, SurvivesErrorsAndPointsAtThem) {
  const Finished finished = Typed("1 +\nDim x As Missing\nDim a() As Integer\na(3)\n\"fine\"\n");
  EXPECT_EQ(finished.out, "\"fine\"\n");
  EXPECT_EQ(finished.status, 0);
  EXPECT_EQ(
      finished.err,
      "input:1:4: wanted an expression, found the end of the line\n"
      "  1 +\n"
      "     ^\n"
      "input:2:10: wanted a type, found Missing, which is none that this host knows\n"
      "  Dim x As Missing\n"
      "           ^\n"
      "input:4:1: uncaught OutOfBoundsException: Index 3 is outside of an array whose upper bound is -1.\n"
      "  a(3)\n"
      "  ^\n");
}

TEST(Repl, KeepsNothingOfAPartThatFails) {
  const Finished finished = Typed("Dim x As Integer = 1\nDim x As String = Missing\nx\n");
  EXPECT_EQ(finished.out, "1\n");
}

TEST(Repl, TellsWhichLinesAnExceptionCameThrough) {
  const Finished finished = Typed("Sub Fail()\n  Dim a() As Integer\n  a(1) = 2\nEnd Sub\nFail\n");
  EXPECT_NE(finished.err.find("input:3:"), std::string::npos) << finished.err;
  EXPECT_NE(finished.err.find("    a(1) = 2\n"), std::string::npos) << finished.err;
  EXPECT_NE(finished.err.find("  in Fail, called from line 5\n"), std::string::npos) << finished.err;
}

TEST(Repl, ReportsABlockThatIsNeverClosed) {
  const Finished finished = Typed("If True Then\n");
  EXPECT_NE(finished.err.find("wanted 'End If' for line 1"), std::string::npos) << finished.err;
  EXPECT_EQ(finished.status, 0);
}

TEST(Repl, ShowsWhatTheReferenceSays) {
  const Finished member = Typed(":doc NSColorQVX.colorValue\n");
  EXPECT_EQ(member.out.rfind("NSColorQVX.colorValue\n  The colour as the host's own Color", 0), 0U)
      << member.out;
  EXPECT_EQ(member.err, "");
  const std::vector<std::string> lines = Lines(Typed(":doc NSColorQVX.getCMYK\n").out);
  EXPECT_TRUE(std::ranges::all_of(
      lines, [](const std::string& line) { return line.starts_with("NSColorQVX.") || line.size() <= 78; }));
  const Finished cls = Typed(":doc nscolorqvx\n");
  EXPECT_EQ(cls.out.rfind("NSColorQVX\n  A colour of the platform.", 0), 0U) << cls.out;
  EXPECT_NE(cls.out.find(" colorValue"), std::string::npos) << cls.out;
  EXPECT_EQ(Typed(":doc NSColorQVX.colorValu\n").err,
            ":doc: wanted a member of NSColorQVX, found colorValu, which it does not have; did you mean "
            "colorValue?\n");
  EXPECT_NE(Typed(":doc NSColourQVX\n").err.find("did you mean NSColorQVX"), std::string::npos);
  EXPECT_NE(Typed(":doc\n").err.find(":doc: wanted a class or CLASS.MEMBER"), std::string::npos);
}

TEST(Repl, ShowsOfAMemberWhatIsSaidOfItsGroup) {
  EXPECT_EQ(Typed(":doc NSColorQVX.redColor\n").out,
            "NSColorQVX.redColor as NSColorQVX\n  Red: 1, 0, 0.\n  Nil gives: Nil on a platform without this "
            "colour.\n  Raises: NSExceptionQVX when the platform "
            "raises.\n");
}

TEST(Repl, ShowsWhatTheReferenceSaysOfTheHostsOwnClasses) {
  const std::string classes[] = {"MemoryBlock", "FolderItem", "NSExceptionQVX", "RuntimeException",
                                 "Dictionary",  "TextFile",   "SpecialFolder",  "Encodings",
                                 "NSImageQVX",  "Pasteboard"};
  std::string lines;
  for (const std::string& cls : classes) lines += ":doc " + cls + "\n";
  const Finished finished = Typed(lines);
  EXPECT_EQ(finished.err, "");
  std::size_t at = 0;
  for (const std::string& cls : classes) {
    at = ("\n" + finished.out).find("\n" + cls + "\n  ", at);
    ASSERT_NE(at, std::string::npos) << cls << " in " << finished.out;
  }
  EXPECT_EQ(Typed(":doc dictionary.HasKey\n").out,
            "Dictionary.HasKey(key as variant) as boolean\n  Whether the key is there.\n  Nil gives: Does "
            "not apply.\n  Raises: Nothing.\n");
}

TEST(Repl, ShowsWhatAClassHasFromTheOneThatItDescendsFrom) {
  const Finished cls = Typed(":doc IOException\n");
  EXPECT_EQ(cls.out.rfind("IOException descends from\nRuntimeException\n  What can be raised", 0), 0U)
      << cls.out;
  const std::string said =
      "RuntimeException.Message\n  Why it was raised, for people.\n  Nil gives: Does not apply.\n  "
      "Raises: Nothing.\n";
  EXPECT_EQ(Typed(":doc IOException.message\n:doc NSExceptionQVX.message\n").out, said + said);
}

TEST(Repl, ExplainsItselfAndEnds) {
  EXPECT_NE(Typed(":help\n").out.find(":doc CLASS[.MEMBER]"), std::string::npos);
  EXPECT_EQ(Typed(":quit\nPrint \"not reached\"\n").out, "");
  EXPECT_EQ(Typed(":hlep\n1\n").err,
            ":hlep: wanted :doc, :help or :quit, found another command; did you mean :help?\n");
}

TEST(Repl, EndsWithTheStatusOfQuit) {
  const Finished finished = Typed("Quit 7\nPrint \"not reached\"\n");
  EXPECT_EQ(finished.status, 7);
  EXPECT_EQ(finished.out, "");
}

}  // namespace
}  // namespace command_tests
