// tests/hostrun/commands/debug_test.cpp - "hostrun debug" with its commands from a pipe.
#include <gtest/gtest.h>

#include "tests/hostrun/commands/run_hostrun.h"

namespace command_tests {
namespace {

// Line 1 of each is what the tests count from.
const char* const kSum =
    "Function Twice(n As Integer) As Integer\n"  // 1
    "  Return n * 2\n"                           // 2
    "End Function\n"                             // 3
    "\n"                                         // 4
    "Dim total As Integer\n"                     // 5
    "For i As Integer = 1 To 3\n"                // 6
    "  total = total + Twice(i)\n"               // 7
    "  Print i\n"                                // 8
    "Next\n"                                     // 9
    "Print \"total\", total\n";                  // 10

Finished Debugged(const std::string& program, const std::string& commands,
                  const std::vector<std::string>& options = {}) {
  std::vector<std::string> arguments = {"debug", TemporaryFile("debugged.bas", program)};
  arguments.insert(arguments.end(), options.begin(), options.end());
  Finished finished = RunHostrun(arguments, commands);
  // Where the tests keep their files says nothing.
  for (std::string* const text : {&finished.out, &finished.err}) {
    for (std::size_t at = 0; (at = text->find(arguments[1], at)) != std::string::npos;) {
      text->replace(at, arguments[1].size(), "debugged.bas");
    }
  }
  return finished;
}

std::string OutOf(const std::string& program, const std::string& commands) {
  const Finished finished = Debugged(program, commands);
  EXPECT_EQ(finished.err, "");
  return finished.out;
}

std::string ErrorOf(const std::string& program, const std::string& commands) {
  return Debugged(program, commands).err;
}

const char* const kEnd = "the program has ended with status 0\n";

TEST(Debug, HaltsBeforeTheFirstStatement) {
  EXPECT_EQ(OutOf("\nPrint 1\n", ""), "debugged.bas:2\n >    2  Print 1\n");
}

TEST(Debug, RunsTheProgramToItsEnd) {
  const Finished finished = Debugged("Print 1\nPrint 2\n", "continue\n");
  EXPECT_EQ(finished.out, "debugged.bas:1\n >    1  Print 1\n1\n2\n" + std::string(kEnd));
  EXPECT_EQ(finished.err, "");
  EXPECT_EQ(finished.status, 0);
}

TEST(Debug, EndsWithTheStatusOfTheProgram) {
  EXPECT_EQ(Debugged("Quit 7\n", "continue\n").status, 7);
  EXPECT_EQ(Debugged("Raise New RuntimeException\n", "continue\ncontinue\n").status, 1);
  EXPECT_EQ(Debugged("Print 1 +\n", "continue\n").status, 2);
}

TEST(Debug, StepsIntoARoutineAndShowsWhereItIsThen) {
  EXPECT_EQ(OutOf(kSum, "step\nstep\nstep\nstep\n"),
            "debugged.bas:5\n"
            " >    5  Dim total As Integer\n"
            " >    6  For i As Integer = 1 To 3\n"
            " >    7    total = total + Twice(i)\n"
            "debugged.bas:2 in Twice\n"
            " >    2    Return n * 2\n"
            "debugged.bas:8\n"
            " >    8    Print i\n");
}

TEST(Debug, StepsOverARoutine) {
  EXPECT_EQ(OutOf(kSum, "next\nnext\nnext\nnext\n"),
            "debugged.bas:5\n"
            " >    5  Dim total As Integer\n"
            " >    6  For i As Integer = 1 To 3\n"
            " >    7    total = total + Twice(i)\n"
            " >    8    Print i\n"
            "1\n"
            " >    7    total = total + Twice(i)\n");
}

TEST(Debug, StepsOutOfARoutine) {
  EXPECT_EQ(OutOf(kSum, "break Twice\ncontinue\nfinish\n"),
            "debugged.bas:5\n"
            " >    5  Dim total As Integer\n"
            "breakpoint 1: debugged.bas:2 in Twice\n"
            "debugged.bas:2 in Twice: breakpoint 1\n"
            "*>    2    Return n * 2\n"
            "debugged.bas:8\n"
            " >    8    Print i\n");
  EXPECT_EQ(ErrorOf(kSum, "finish\n"), "finish: wanted a routine to leave, found the program's own level\n");
}

TEST(Debug, StepsOverARoutineThatCallsItself) {
  const std::string program =
      "Function Down(n As Integer) As Integer\n  If n = 0 Then Return 0\n  Dim below As Integer = Down(n - "
      "1)\n"
      "  Return below + 1\nEnd Function\nPrint Down(3)\n";
  EXPECT_EQ(OutOf(program, "step\nnext\nnext\nprint n\n"),
            "debugged.bas:6\n"
            " >    6  Print Down(3)\n"
            "debugged.bas:2 in Down\n"
            " >    2    If n = 0 Then Return 0\n"
            " >    3    Dim below As Integer = Down(n - 1)\n"
            " >    4    Return below + 1\n"
            "3\n");
}

TEST(Debug, TakesEachStatementOfALineForItself) {
  EXPECT_EQ(OutOf("Dim n As Integer : n = 5\nIf n > 4 Then Print n\n", "step\nstep\nstep\n"),
            "debugged.bas:1\n"
            " >    1  Dim n As Integer : n = 5\n"
            " >    1  Dim n As Integer : n = 5\n"
            "                            ^\n"
            " >    2  If n > 4 Then Print n\n"
            " >    2  If n > 4 Then Print n\n"
            "                       ^\n");
}

TEST(Debug, LeavesOutWhatOnlyDeclares) {
  EXPECT_EQ(OutOf("Const kA = 1\nEnum E\n  One\nEnd Enum\nPrint kA\n", "print kA + E.One\n"),
            "debugged.bas:5\n >    5  Print kA\n1\n");
}

// --- breakpoints

TEST(Debug, HaltsAtABreakpointEachTime) {
  EXPECT_EQ(OutOf(kSum, "break 8\ncontinue\ncontinue\ncontinue\ncontinue\n"),
            "debugged.bas:5\n"
            " >    5  Dim total As Integer\n"
            "breakpoint 1: debugged.bas:8\n"
            "debugged.bas:8: breakpoint 1\n"
            "*>    8    Print i\n"
            "1\n"
            "debugged.bas:8: breakpoint 1\n"
            "*>    8    Print i\n"
            "2\n"
            "debugged.bas:8: breakpoint 1\n"
            "*>    8    Print i\n"
            "3\n"
            "total 12\n" +
                std::string(kEnd));
}

TEST(Debug, MovesABreakpointToTheNextStatementAndSaysSo) {
  const std::string said = OutOf(kSum, "break 3\nbreak 9\nbreak\n");
  EXPECT_NE(said.find("breakpoint 1: debugged.bas:5; line 3 has no statement\n"
                      "breakpoint 2: debugged.bas:10; line 9 has no statement\n"
                      "    1  debugged.bas:5\n"
                      "    2  debugged.bas:10\n"),
            std::string::npos)
      << said;
}

TEST(Debug, TakesBreakpointsAway) {
  const std::string said =
      OutOf(kSum, "break 7\nbreak 8\nbreak 10\ndelete 1 2\nbreak\ncontinue\ndelete\nbreak\n");
  EXPECT_NE(said.find("    3  debugged.bas:10\n1\n2\n3\ndebugged.bas:10: breakpoint 3\n"), std::string::npos)
      << said;
  EXPECT_EQ(LastLine(said), "no breakpoints");
}

TEST(Debug, HaltsWhereAConditionHolds) {
  EXPECT_EQ(OutOf(kSum, "break 7 if i = 3 And total > 1\nbreak\ncontinue\n"),
            "debugged.bas:5\n"
            " >    5  Dim total As Integer\n"
            "breakpoint 1: debugged.bas:7 if i = 3 And total > 1\n"
            "    1  debugged.bas:7 if i = 3 And total > 1\n"
            "1\n"
            "2\n"
            "debugged.bas:7: breakpoint 1\n"
            "*>    7    total = total + Twice(i)\n");
}

TEST(Debug, HaltsWhereAConditionFailsAndSaysWhy) {
  const std::string said = OutOf("Dim a() As Integer\nPrint 1\n", "break 2 if a(4) = 1\ncontinue\n");
  EXPECT_NE(said.find("debugged.bas:2: breakpoint 1, whose condition raised OutOfBoundsException: Index 4"),
            std::string::npos)
      << said;
}

TEST(Debug, RefusesBreakpointsThatCannotBe) {
  EXPECT_EQ(ErrorOf(kSum,
                    "break 11\nbreak Thrice\nbreak 7 when i = 3\nbreak 7 if nothing\nbreak 7 if i\n"
                    "delete 4\nbreak\n"),
            "break: wanted a line with a statement at or behind it, found 11\n"
            "break: wanted a line or a routine with statements, found Thrice\n"
            "break: wanted a line or a routine, and 'if' with a condition, found 7 when i = 3\n"
            "break: wanted a variable, a function or a class, found nothing, which is not declared\n"
            "break: a condition wants Boolean, found Integer\n"
            "delete: wanted the number of a breakpoint, found 4; break lists them\n");
}

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
  EXPECT_EQ(Debugged(kRaises, "", {"--stop-on", "often"}).status, 2);
}

TEST(Debug, StepsFromAnExceptionToItsHandler) {
  const std::string said = OutOf(kRaises, "exceptions raised\ncontinue\nnext\n");
  const std::string wanted = "debugged.bas:8\n >    8    Print \"caught\"\n";
  EXPECT_TRUE(said.ends_with(wanted)) << said;
}

TEST(Debug, HaltsAtAPlatformException) {
  EXPECT_NE(OutOf("Dim w As Double\nNSColorQVX.redColor.getWhite(w)\n", "continue\n")
                .find("debugged.bas:2: uncaught NSExceptionQVX: "),
            std::string::npos);
}

// --- the session

TEST(Debug, RunsAgainWithTheSameBreakpoints) {
  EXPECT_EQ(OutOf("Dim n As Integer\nn = n + 1\nPrint n\n",
                  "break 3\ncontinue\nrestart\ncontinue\nprint n\n"
                  "continue\nrestart\n"),
            "debugged.bas:1\n >    1  Dim n As Integer\n"
            "breakpoint 1: debugged.bas:3\n"
            "debugged.bas:3: breakpoint 1\n*>    3  Print n\n"
            "debugged.bas:1\n >    1  Dim n As Integer\n"
            "debugged.bas:3: breakpoint 1\n*>    3  Print n\n"
            "1\n"
            "1\n" +
                std::string(kEnd) + "debugged.bas:1\n >    1  Dim n As Integer\n");
}

TEST(Debug, LeavesAProgramInTheMiddle) {
  const std::string program = "Dim c As NSColorQVX = NSColorQVX.redColor\nPrint 1\nQuit 7\n";
  for (const std::string commands : {"step\nquit\n", "step\n"}) {
    const Finished finished = Debugged(program, commands, {"--leaks"});
    EXPECT_EQ(finished.status, 0) << commands;
    EXPECT_EQ(finished.err, "") << commands;
    EXPECT_EQ(LastLine(finished.out), " >    2  Print 1") << commands;
  }
  EXPECT_EQ(Debugged(program, "continue\nquit\n").status, 7) << "behind its end";
}

TEST(Debug, LeavesAProgramWhereItRaises) {
  const Finished finished = Debugged("Dim image As New NSImageQVX(\"nowhere.png\")\n", "continue\nquit\n");
  EXPECT_NE(finished.out.find(": uncaught "), std::string::npos) << finished.out;
  EXPECT_EQ(finished.err, "");
  EXPECT_EQ(finished.status, 0);
}

TEST(Debug, GivesTheProgramTheLinesThatItReads) {
  EXPECT_EQ(
      OutOf("Dim line As String = Input(\"name? \")\nPrint line\n", "step\nAnna\nprint line\ncontinue\n"),
      "debugged.bas:1\n >    1  Dim line As String = Input(\"name? \")\n"
      "name?  >    2  Print line\n"
      "\"Anna\"\nAnna\n" +
          std::string(kEnd));
}

TEST(Debug, GivesTheProgramItsArguments) {
  const std::string program = TemporaryFile("arguments.bas", "Print Arguments(0)\n");
  EXPECT_EQ(Lines(RunHostrun({"debug", program, "first"}, "continue\n").out).at(2), "first");
}

TEST(Debug, RepeatsAStepForAnEmptyLine) {
  EXPECT_EQ(OutOf("Print 1\nPrint 2\nPrint 3\n", "\nnext\n\nprint 7\n\n"),
            "debugged.bas:1\n >    1  Print 1\n1\n >    2  Print 2\n2\n >    3  Print 3\n7\n");
}

TEST(Debug, TakesShortFormsAndBeginnings) {
  const std::string said = OutOf(kSum, "b 7\nc\ns\nbt\nfin\np i\nn\nl 1\ncont\nbre\nq\n");
  EXPECT_EQ(LastLine(said), "    1  debugged.bas:7");
  EXPECT_EQ(ErrorOf(kSum, "contniue\nfrobnicate\n"),
            "contniue: wanted a command, found another word; did you mean continue?; help lists them\n"
            "frobnicate: wanted a command, found another word; help lists them\n");
}

TEST(Debug, ExplainsItsCommands) {
  const std::string help = OutOf(kSum, "help\n");
  for (const std::string command :
       {"break", "delete", "step", "next", "finish", "continue", "print", "locals", "globals", "backtrace",
        "up", "down", "frame", "list", "exceptions", "restart", "help", "quit"}) {
    EXPECT_NE(help.find(" " + command + " "), std::string::npos) << command;
  }
}

TEST(Debug, WantsARunningProgramForWhatNeedsOne) {
  EXPECT_EQ(ErrorOf("Print 1\n", "continue\nprint 1\nstep\nbreak 1\nlist\n"),
            "print: wanted a program that runs, found one that has ended; restart runs it again\n"
            "step: wanted a program that runs, found one that has ended; restart runs it again\n");
}

TEST(Debug, TakesNoProgramFromStandardInput) {
  const Finished finished = RunHostrun({"debug", "-"}, "Print 1\n");
  EXPECT_EQ(finished.status, 2);
  EXPECT_EQ(finished.err,
            "hostrun debug: wanted a program file, found -: standard input is for the commands\n");
}

}  // namespace
}  // namespace command_tests
