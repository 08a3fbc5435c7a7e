// tests/hostrun/commands/debug_values_test.cpp - "hostrun debug": what it shows of a halted program, and
// exceptions.
#include <gtest/gtest.h>

#include "tests/hostrun/commands/debugged.h"

namespace command_tests {
namespace {

// --- values

TEST(Debug, ShowsTheVariablesThatCanBeUsedWhereItIsHalted) {
  const std::string program =
      "Dim name As String = \"all\"\n"                          // 1
      "Dim far As Integer = 9\n"                                // 2
      "Sub Fill(ByRef far As Integer, colour As NSColorQVX)\n"  // 3
      "  Static calls As Integer\n"                             // 4
      "  calls += 1\n"                                          // 5
      "  For i As Integer = 7 To 7\n"                           // 6
      "    Dim half As Double = 0.5\n"                          // 7
      "    far = i\n"                                           // 8
      "  Next\n"                                                // 9
      "  Dim late As Integer = 3\n"                             // 10
      "End Sub\n"                                               // 11
      "Dim n As Integer = 1\n"                                  // 12
      "Fill n, Nil\n";                                          // 13
  EXPECT_EQ(
      OutOf(program, "locals\nbreak 8\nbreak 10\ncontinue\nlocals\nglobals\nprint far\ncontinue\nlocals\n"),
      "debugged.bas:1\n"
      " >    1  Dim name As String = \"all\"\n"
      "no variables here\n"
      "breakpoint 1: debugged.bas:8 in Fill\n"
      "breakpoint 2: debugged.bas:10 in Fill\n"
      "debugged.bas:8 in Fill: breakpoint 1\n"
      "*>    8      far = i\n"
      "far As Integer = 1\n"
      "colour As NSColorQVX = Nil\n"
      "calls As Integer = 1\n"
      "i As Integer = 7\n"
      "half As Double = 0.5\n"
      "name As String = \"all\"\n"
      "far As Integer = 9\n"
      "n As Integer = 1\n"
      "1\n"
      "debugged.bas:10 in Fill: breakpoint 2\n"
      "*>   10    Dim late As Integer = 3\n"
      "far As Integer = 7\n"
      "colour As NSColorQVX = Nil\n"
      "calls As Integer = 1\n");
}

TEST(Debug, ShowsColoursAsTheReplDoes) {
  EXPECT_NE(
      OutOf("Dim c As NSColorQVX = NSColorQVX.orangeColor\nPrint 1\n", "step\nlocals\nprint c.redComponent\n")
          .find("c As NSColorQVX = NSColorQVX NSCalibratedRGBColorSpace 1 0.5 0 1\n1\n"),
      std::string::npos);
}

TEST(Debug, KeepsTheInnerOfTwoVariablesOfOneName) {
  const std::string said = OutOf(
      "Dim n As Integer = 1\nIf True Then\n  Dim n As String = \"inner\"\n  Print n\n"
      "End If\nPrint n\n",
      "break 4\nbreak 6\ncontinue\nprint n\ncontinue\nprint n\n");
  EXPECT_NE(said.find("Print n\n\"inner\"\ninner\n"), std::string::npos) << said;
  EXPECT_NE(said.find("Print n\n1\n"), std::string::npos) << said;
}

TEST(Debug, EvaluatesACallWithoutHaltingInItAndTheProgramNoticesNothing) {
  EXPECT_EQ(
      OutOf(kSum, "break Twice\nbreak 8\nprint Twice(21)\ncontinue\nprint Twice(n)\nbacktrace\ncontinue\n"),
      "debugged.bas:5\n"
      " >    5  Dim total As Integer\n"
      "breakpoint 1: debugged.bas:2 in Twice\n"
      "breakpoint 2: debugged.bas:8\n"
      "42\n"
      "debugged.bas:2 in Twice: breakpoint 1\n"
      "*>    2    Return n * 2\n"
      "2\n"
      "> #0 debugged.bas:2 in Twice\n"
      "  #1 debugged.bas:7\n"
      "debugged.bas:8: breakpoint 2\n"
      "*>    8    Print i\n");
}

TEST(Debug, SaysWhatIsWrongWithAnExpressionAndStaysHalted) {
  EXPECT_EQ(ErrorOf("Dim a() As Integer\nSub Leave()\n  Quit 3\nEnd Sub\nPrint 1\n",
                    "step\nprint\nprint missing\nprint 1 +\nprint a(5)\nprint Leave()\nprint 1\n"),
            "print: wanted an expression, found nothing\n"
            "print: wanted a variable, a function or a class, found missing, which is not declared\n"
            "print: wanted an expression, found the end of the line\n"
            "print: uncaught OutOfBoundsException: Index 5 is outside of an array whose upper bound is -1.\n"
            "print: wanted a value, found the end of the program; it is still halted\n");
}

TEST(Debug, ShowsTheCallsAndLooksAtEachOfThem) {
  EXPECT_EQ(
      OutOf(kSum, "break Twice\ncontinue\nstack\nup\nprint i\nbacktrace\ndown\nprint n\nframe 1\nframe\n"),
      "debugged.bas:5\n"
      " >    5  Dim total As Integer\n"
      "breakpoint 1: debugged.bas:2 in Twice\n"
      "debugged.bas:2 in Twice: breakpoint 1\n"
      "*>    2    Return n * 2\n"
      "> #0 debugged.bas:2 in Twice\n"
      "  #1 debugged.bas:7\n"
      "#1 debugged.bas:7\n"
      " >    7    total = total + Twice(i)\n"
      "1\n"
      "  #0 debugged.bas:2 in Twice\n"
      "> #1 debugged.bas:7\n"
      "#0 debugged.bas:2 in Twice\n"
      "*>    2    Return n * 2\n"
      "1\n"
      "#1 debugged.bas:7\n"
      " >    7    total = total + Twice(i)\n"
      "#1 debugged.bas:7\n"
      " >    7    total = total + Twice(i)\n");
  EXPECT_EQ(ErrorOf(kSum, "up\ndown\nframe 3\nframe x\n"),
            "up: wanted a call from 0 to 0, found 1\n"
            "down: wanted a call below, found the innermost one\n"
            "frame: wanted a call from 0 to 0, found 3\n"
            "frame: wanted a call from 0 to 0, found x\n");
}

TEST(Debug, ListsTheProgram) {
  std::string program;
  for (int i = 1; i <= 14; ++i) program += "Print " + std::to_string(i) + "\n";
  const std::string heading = "debugged.bas:1\n >    1  Print 1\n";
  const std::string said = OutOf(program, "break 3\nlist\nlist\n");
  EXPECT_NE(said.find("\n >    1  Print 1\n      2  Print 2\n*     3  Print 3\n"), std::string::npos) << said;
  EXPECT_NE(said.find("     10  Print 10\n     11  Print 11\n"), std::string::npos) << said;
  EXPECT_EQ(LastLine(said), "     14  Print 14");
  const std::string there = OutOf(program, "list 13\n");
  EXPECT_EQ(there.substr(heading.size(), 18), "      9  Print 9\n ");
  EXPECT_EQ(ErrorOf(program, "list 14\nlist\nlist 19\n"),
            "list: wanted a line up to 14, the last one; found 15\n"
            "list: wanted a line up to 14, the last one; found 15\n");
  EXPECT_NE(OutOf(kSum, "list Twice\n").find("      1  Function Twice"), std::string::npos);
}

TEST(Debug, ListsTenLinesFromFourBeforeTheOneThatIsMeant) {
  std::string program;
  for (int i = 1; i <= 30; ++i) program += "Print " + std::to_string(i) + "\n";
  const auto listed = [&](const std::string& commands) {
    std::string numbers;
    for (const std::string& line : Lines(OutOf(program, commands))) {
      if (line.find("  Print ") != std::string::npos)
        numbers += line.substr(line.find_last_of(' ')) + (line[1] == '>' ? ">" : "");
    }
    return numbers;
  };
  const std::string first = " 1>";  // where it is halted
  EXPECT_EQ(listed("list\n"), first + " 1> 2 3 4 5 6 7 8 9 10");
  EXPECT_EQ(listed("list 5\n"), first + " 1> 2 3 4 5 6 7 8 9 10");
  EXPECT_EQ(listed("list 6\n"), first + " 2 3 4 5 6 7 8 9 10 11");
  EXPECT_EQ(listed("list 20\nlist\n"), first + " 16 17 18 19 20 21 22 23 24 25 26 27 28 29 30");
  EXPECT_EQ(listed("list 34\n"), first + " 30");
  EXPECT_EQ(listed("break 12\ncontinue\nlist\n"), first + " 12> 8 9 10 11 12> 13 14 15 16 17");
  EXPECT_EQ(ErrorOf(program, "list 35\nlist Nowhere\n"),
            "list: wanted a line up to 30, the last one; found 31\n"
            "list: wanted a line or a routine with statements, found Nowhere\n");
}

TEST(Debug, ListsALastLineThatDoesNotEnd) {
  EXPECT_EQ(OutOf("Print 1\nPrint 2", "list\n"),
            "debugged.bas:1\n >    1  Print 1\n >    1  Print 1\n      2  Print 2\n");
}

TEST(Debug, ShowsTwentyOneCallsInFull) {
  const auto calls = [](int depth) {
    return Lines(OutOf(
        "Sub Down(n As Integer)\n  If n > 0 Then Down n - 1\nEnd Sub\nDown " + std::to_string(depth) + "\n",
        "break 2 if n = 0\ncontinue\nbacktrace\n"));
  };
  const std::vector<std::string> shown = calls(19);
  EXPECT_EQ(shown.at(shown.size() - 2), "  #19 debugged.bas:2 in Down");
  EXPECT_EQ(shown.back(), "  #20 debugged.bas:4");
  const std::vector<std::string> oneMore = calls(20);
  EXPECT_EQ(oneMore.at(oneMore.size() - 2), "  and 1 more calls, up to");
}

// --- exceptions

const char* const kRaises =
    "Sub Fail(n As Integer)\n"           // 1
    "  Dim a() As Integer\n"             // 2
    "  a(n) = 1\n"                       // 3
    "End Sub\n"                          // 4
    "Try\n"                              // 5
    "  Fail 4\n"                         // 6
    "Catch e As OutOfBoundsException\n"  // 7
    "  Print \"caught\"\n"               // 8
    "End Try\n"                          // 9
    "Try\n"                              // 10
    "  Fail 5\n"                         // 11
    "Catch e As NilObjectException\n"    // 12
    "  Print \"not reached\"\n"          // 13
    "End Try\n";                         // 14

TEST(Debug, HaltsWhereAnExceptionIsRaisedThatNobodyCatches) {
  const Finished finished = Debugged(kRaises, "continue\nlocals\nbacktrace\ncontinue\n");
  EXPECT_EQ(
      finished.out,
      "debugged.bas:5\n"
      " >    5  Try\n"
      "caught\n"
      "debugged.bas:3 in Fail: uncaught OutOfBoundsException: Index 5 is outside of an array whose upper "
      "bound is -1.\n"
      " >    3    a(n) = 1\n"
      "n As Integer = 5\n"
      "a As Integer() = array of 0\n"
      "> #0 debugged.bas:3 in Fail\n"
      "  #1 debugged.bas:11\n"
      "the program has ended with status 1\n");
  EXPECT_NE(finished.err.find("debugged.bas:3:3: uncaught OutOfBoundsException"), std::string::npos);
}

TEST(Debug, HaltsAtEachExceptionOrAtNone) {
  const auto halts = [](const std::string& commands, const std::vector<std::string>& options) {
    const std::string said = Debugged(kRaises, commands + "continue\ncontinue\ncontinue\n", options).out;
    std::string found;
    for (const std::string& line : Lines(said)) {
      if (line.find("Exception: ") != std::string::npos)
        found += line.substr(0, line.find("Exception")) + "\n";
    }
    return found;
  };
  const std::string both =
      "debugged.bas:3 in Fail: raised OutOfBounds\ndebugged.bas:3 in Fail: uncaught OutOfBounds\n";
  EXPECT_EQ(halts("", {"--stop-on", "raised"}), both);
  EXPECT_EQ(halts("exceptions raised\n", {}), both);
  EXPECT_EQ(halts("", {"--stop-on", "never"}), "");
  EXPECT_EQ(halts("exceptions never\n", {"--stop-on", "raised"}), "");
  EXPECT_EQ(Lines(OutOf(kRaises, "exceptions\nexceptions never\nexceptions\n")).at(3), "never");
  EXPECT_EQ(ErrorOf(kRaises, "exceptions often\n"),
            "exceptions: wanted raised, uncaught or never, found often\n");
  const Finished often = Debugged(kRaises, "", {"--stop-on", "often"});
  EXPECT_EQ(often.status, 2);
  EXPECT_NE(often.err.find("often not in {raised,uncaught,never}"), std::string::npos) << often.err;
}

TEST(Debug, StepsFromAnExceptionToItsHandler) {
  const std::string said = OutOf(kRaises, "exceptions raised\ncontinue\nnext\n");
  const std::string wanted = "debugged.bas:8\n >    8    Print \"caught\"\n";
  EXPECT_TRUE(said.ends_with(wanted)) << said;
}

TEST(Debug, KnowsThatTheConditionOfALoopStandsOutsideOfItsStatements) {
  for (const std::string loop : {"While Good()\n", "Do While Good()\n", "Do\n"}) {
    const std::string end = loop == "Do\n" ? "Loop Until Not Good()\n" : loop[0] == 'W' ? "Wend\n" : "Loop\n";
    const std::string program =
        "Dim rounds As Integer\n"                                       // 1
        "Function Good() As Boolean\n"                                  // 2
        "  If rounds = 2 Then Raise New RuntimeException(\"third\")\n"  // 3
        "  Return True\n"                                               // 4
        "End Function\n" +                                              // 5
        loop +                                                          // 6
        "  Try\n"                                                       // 7
        "    rounds += 1\n"                                             // 8
        "  Catch e As RuntimeException\n"                               // 9
        "  End Try\n" +                                                 // 10
        end;
    const std::string said = Debugged(program, "continue\nbacktrace\n").out;
    EXPECT_NE(said.find("debugged.bas:3 in Good: uncaught RuntimeException: third\n"), std::string::npos)
        << said;
    EXPECT_NE(said.find("\n  #1 debugged.bas:6\n"), std::string::npos) << said;
  }
}

TEST(Debug, ShowsOfManyCallsTheInnermostAndTheOutermost) {
  const std::string said = OutOf("Sub Down(n As Integer)\n  If n > 0 Then Down n - 1\nEnd Sub\nDown 30\n",
                                 "break 2 if n = 0\ncontinue\nbacktrace\n");
  EXPECT_NE(said.find("\n  #19 debugged.bas:2 in Down\n  and 11 more calls, up to\n  #31 debugged.bas:4\n"),
            std::string::npos)
      << said;
}

TEST(Debug, HaltsAtAPlatformException) {
  EXPECT_NE(OutOf("Dim w As Double\nNSColorQVX.redColor.getWhite(w)\n", "continue\n")
                .find("debugged.bas:2: uncaught NSExceptionQVX: "),
            std::string::npos);
}

}  // namespace
}  // namespace command_tests
