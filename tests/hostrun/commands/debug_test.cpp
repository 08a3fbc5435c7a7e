// tests/hostrun/commands/debug_test.cpp - "hostrun debug": steps, breakpoints, the session.
#include <gtest/gtest.h>

#include "tests/hostrun/commands/debugged.h"

namespace command_tests {
namespace {

TEST(Debug, HaltsBeforeTheFirstStatement) {
  EXPECT_EQ(OutOf("\nPrint 1\n", ""), "debugged.bas:2\n >    2  Print 1\n");
}

TEST(Debug, AppearsAsItsPageShowsIt) {
  std::string commands;
  std::string wanted;
  bool inSession = false;
  for (const std::string& line : Lines(ReadFile(SOURCE_FOLDER "/docs/hostrun.md"))) {
    if (inSession && line == "```") break;
    if (inSession) (line.starts_with("(debug) ") ? commands : wanted) += line + "\n";
    if (line == "$ hostrun debug examples/palette.bas") inSession = true;
  }
  for (std::size_t at = 0; (at = commands.find("(debug) ", at)) != std::string::npos;) commands.erase(at, 8);
  const std::string welcome = "The program is halted before its first statement. help lists the commands.\n";
  ASSERT_TRUE(wanted.starts_with(welcome)) << wanted;
  const std::string folder = SOURCE_FOLDER "/";
  std::string out = RunHostrun({"debug", folder + "examples/palette.bas"}, commands).out;
  for (std::size_t at = 0; (at = out.find(folder)) != std::string::npos;) out.erase(at, folder.size());
  EXPECT_EQ(out, wanted.substr(welcome.size()));
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
  const Finished behindItsEnd = Debugged(program, "continue\nquit\n");
  EXPECT_EQ(behindItsEnd.status, 7);
  EXPECT_EQ(behindItsEnd.err, "");
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

TEST(Debug, RepeatsOnlyWhatGoesOn) {
  EXPECT_EQ(
      OutOf("Print 1\nPrint 2\nPrint 3\n", "step\n\nlocals\n\n"),
      "debugged.bas:1\n >    1  Print 1\n1\n >    2  Print 2\n2\n >    3  Print 3\nno variables here\n");
  const std::string rounds = OutOf(kSum, "break 8\ncontinue\n\n\n");
  EXPECT_TRUE(rounds.ends_with("2\ndebugged.bas:8: breakpoint 1\n*>    8    Print i\n")) << rounds;
  std::string once = "break 2\ncontinue\n";
  std::string withEmptyLines = once;
  for (const std::string command :
       {"break", "finish", "print 1", "globals", "backtrace", "frame", "exceptions", "help", "locals"}) {
    once += command + "\n";
    withEmptyLines += command + "\n\n";
  }
  EXPECT_EQ(OutOf(kSum, withEmptyLines), OutOf(kSum, once));
}

TEST(Debug, TakesShortFormsAndBeginnings) {
  const std::string said = OutOf(kSum, "b 7\nc\ns\nbt\nfin\np i\nn\nl 1\ncont\nbre\nq\n");
  EXPECT_EQ(LastLine(said), "    1  debugged.bas:7");
  EXPECT_EQ(ErrorOf(kSum, "contniue\nfrobnicate\n"),
            "contniue: wanted a command, found another word; did you mean continue?; help lists them\n"
            "frobnicate: wanted a command, found another word; help lists them\n");
}

TEST(Debug, ExplainsItsCommands) {
  EXPECT_EQ(
      OutOf("Print 1\n", "help\n"),
      "debugged.bas:1\n"
      " >    1  Print 1\n"
      "  b               break [LINE | ROUTINE [if CONDITION]]   halts there; alone: lists the breakpoints\n"
      "  d               delete [NUMBER...]                      takes breakpoints away; alone: all\n"
      "  s               step                                    runs one statement, into a routine that it "
      "calls\n"
      "  n               next                                    runs one statement, with all that it calls\n"
      "  fin out         finish                                  runs to the statement behind this call\n"
      "  c cont          continue                                runs to the next breakpoint\n"
      "  p               print EXPRESSION                        shows a value\n"
      "  lo              locals                                  shows the variables of the routine\n"
      "  g               globals                                 shows the variables of the program's own "
      "level\n"
      "  bt stack where  backtrace                               shows the calls, innermost first\n"
      "  u               up                                      looks at the call that led here\n"
      "  do              down                                    goes back by one call\n"
      "  f               frame [NUMBER]                          looks at that call\n"
      "  l               list [LINE | ROUTINE]                   shows the program; again: its next lines\n"
      "  e               exceptions [raised | uncaught | never]  which exceptions halt; alone: shows it\n"
      "  r run           restart                                 runs the program again from its beginning\n"
      "  h ?             help                                    shows this\n"
      "  q exit          quit                                    ends\n"
      "An empty line repeats step, next, continue and list. Ctrl-C halts a program that runs.\n");
}

TEST(Debug, WantsARunningProgramForWhatNeedsOne) {
  std::string commands = "continue\n";
  std::string refused;
  for (const std::string name : {"step", "next", "finish", "continue", "print", "locals", "globals",
                                 "backtrace", "up", "down", "frame"}) {
    commands += name + "\n";
    refused += name + ": wanted a program that runs, found one that has ended; restart runs it again\n";
  }
  EXPECT_EQ(ErrorOf("Print 1\n", commands), refused);
  const std::string said = OutOf("Print 1\n", "continue\nbreak 1\nlist\nexceptions\ndelete\nbreak\nhelp\n");
  EXPECT_NE(said.find(std::string(kEnd) +
                      "breakpoint 1: debugged.bas:1\n*     1  Print 1\nuncaught\nno breakpoints\n  b "),
            std::string::npos)
      << said;
}

TEST(Debug, TakesNoProgramFromStandardInput) {
  const Finished finished = RunHostrun({"debug", "-"}, "Print 1\n");
  EXPECT_EQ(finished.status, 2);
  EXPECT_EQ(finished.err,
            "hostrun debug: wanted a program file, found -: standard input is for the commands\n");
  EXPECT_EQ(RunHostrun({"debug", "--help"}).out.find("- reads it"), std::string::npos);
}

}  // namespace
}  // namespace command_tests
