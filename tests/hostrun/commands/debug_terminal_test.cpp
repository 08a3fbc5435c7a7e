// tests/hostrun/commands/debug_terminal_test.cpp - "hostrun debug" at a terminal: prompt, keys, interrupts.
#include <gtest/gtest.h>

#include "tests/hostrun/commands/at_terminal.h"
#include "tests/hostrun/commands/run_hostrun.h"

namespace command_tests {
namespace {

constexpr const char* kPrompt = "(debug) ";
constexpr const char* kUp = "\033[A";
constexpr const char* kEndOfInput = "\004";
constexpr const char* kInterrupt = "\003";

std::vector<std::string> Debug(const std::string& program) {
  std::vector<std::string> arguments = PlatformFor(program);
  arguments.insert(arguments.begin(), {"debug", TemporaryFile("at_terminal.bas", program)});
  return arguments;
}

TEST(DebugTerminal, AsksForCommandsUntilItIsLeft) {
  AtTerminal terminal(Debug("Print 6 * 7\nPrint 2\n"));
  ASSERT_TRUE(terminal.Shows("help lists the commands.\r\n")) << terminal.screen();
  ASSERT_TRUE(terminal.Shows(" >    1  Print 6 * 7\r\n")) << terminal.screen();
  ASSERT_TRUE(terminal.Prompts(kPrompt));
  terminal.Type("step\n");
  ASSERT_TRUE(terminal.Shows("\r\n42\r\n >    2  Print 2\r\n")) << terminal.screen();
  ASSERT_TRUE(terminal.Prompts(kPrompt));
  terminal.Type("continue\n");
  ASSERT_TRUE(terminal.Shows("the program has ended with status 0\r\n")) << terminal.screen();
  ASSERT_TRUE(terminal.Prompts(kPrompt));
  terminal.Type(kEndOfInput);
  EXPECT_EQ(terminal.Status(), 0);
  EXPECT_TRUE(terminal.screen().ends_with("\r\n")) << terminal.screen();
}

TEST(DebugTerminal, CompletesCommandsAndBehindThemTheNamesOfTheProgram) {
  AtTerminal terminal(Debug("Dim favourite As NSColorQVX = NSColorQVX.orangeColor\nPrint 1\n"));
  ASSERT_TRUE(terminal.Prompts(kPrompt));
  terminal.Type("ste\t\n");
  ASSERT_TRUE(terminal.Shows(" >    2  Print 1\r\n")) << terminal.screen();
  ASSERT_TRUE(terminal.Prompts(kPrompt));
  terminal.Type("pri\t favou\t.greenC\t\n");
  EXPECT_TRUE(terminal.Shows("\r\n0.5\r\n")) << terminal.screen();
}

TEST(DebugTerminal, KeepsAHistoryOfItsOwn) {
  const std::vector<std::string> own = {"XDG_STATE_HOME=" + TemporaryFile("", "") + "debugged"};
  {
    AtTerminal terminal(Debug("Print 1\n"), own);
    ASSERT_TRUE(terminal.Prompts(kPrompt));
    terminal.Type("print 12 * 12\n");
    ASSERT_TRUE(terminal.Shows("\r\n144\r\n")) << terminal.screen();
    ASSERT_TRUE(terminal.Prompts(kPrompt));
  }
  {
    std::vector<std::string> arguments = WithoutPlatform();
    arguments.insert(arguments.begin(), "repl");
    AtTerminal repl(arguments, own);
    ASSERT_TRUE(repl.Prompts());
    repl.Type(std::string(kUp) + "7 * 7\n");
    EXPECT_TRUE(repl.Shows("\r\n49\r\n")) << repl.screen();
  }
  AtTerminal next(Debug("Print 1\n"), own);
  ASSERT_TRUE(next.Prompts(kPrompt));
  next.Type(std::string(kUp) + "\n");
  EXPECT_TRUE(next.Shows("\r\n144\r\n")) << next.screen();
}

TEST(DebugTerminal, HaltsARunningProgramAtItsNextStatementWhenItIsInterrupted) {
  AtTerminal terminal(Debug("Dim n As Integer\nPrint \"begun\"\nWhile True\n  n = 1 - n\nWend\n"));
  ASSERT_TRUE(terminal.Prompts(kPrompt));
  terminal.Type("continue\n");
  ASSERT_TRUE(terminal.Shows("\r\nbegun\r\n")) << terminal.screen();
  terminal.Type(kInterrupt);
  ASSERT_TRUE(terminal.Shows(": interrupted\r\n")) << terminal.screen();  // at the loop's head, or in it
  ASSERT_TRUE(terminal.Prompts(kPrompt));
  terminal.Type("step\n");
  EXPECT_TRUE(terminal.Shows(" >    4    n = 1 - n\r\n")) << terminal.screen();
}

TEST(DebugTerminal, HaltsALoopWithoutStatements) {
  AtTerminal terminal(Debug("Print \"begun\"\nWhile True\nWend\n"));
  ASSERT_TRUE(terminal.Prompts(kPrompt));
  terminal.Type("continue\n");
  ASSERT_TRUE(terminal.Shows("\r\nbegun\r\n")) << terminal.screen();
  terminal.Type(kInterrupt);
  EXPECT_TRUE(terminal.Shows("at_terminal.bas:2: interrupted\r\n")) << terminal.screen();
}

TEST(DebugTerminal, HaltsAProgramThatWaitsForInputAndLetsItGoOnWaiting) {
  AtTerminal terminal(Debug("Dim name As String = Input(\"name? \")\nPrint \"hello \" + name\n"));
  ASSERT_TRUE(terminal.Prompts(kPrompt));
  terminal.Type("continue\n");
  ASSERT_TRUE(terminal.Shows("\r\nname? ")) << terminal.screen();
  terminal.Type(kInterrupt);
  ASSERT_TRUE(terminal.Shows("at_terminal.bas:1: interrupted\r\n")) << terminal.screen();
  ASSERT_TRUE(terminal.Prompts(kPrompt));
  terminal.Type("continue\n");
  ASSERT_TRUE(terminal.Takes(AtTerminal::Keys::InLines)) << terminal.screen();
  terminal.Type("Anna\n");
  EXPECT_TRUE(terminal.Shows("\r\nhello Anna\r\n")) << terminal.screen();
}

TEST(DebugTerminal, GivesUpAnExpressionThatIsInterrupted) {
  AtTerminal terminal(
      Debug("Function Endless() As Integer\n  Print \"begun\"\n  While True\n  Wend\n"
            "End Function\nPrint 1\n"));
  ASSERT_TRUE(terminal.Prompts(kPrompt));
  terminal.Type("print Endless()\n");
  ASSERT_TRUE(terminal.Shows("\r\nbegun\r\n")) << terminal.screen();
  terminal.Type(kInterrupt);
  ASSERT_TRUE(terminal.Shows("print: interrupted\r\n")) << terminal.screen();
  ASSERT_TRUE(terminal.Prompts(kPrompt));
  terminal.Type("step\n");
  EXPECT_TRUE(terminal.Shows("\r\n1\r\n")) << terminal.screen();
}

TEST(DebugTerminal, DropsALineWhenItIsInterrupted) {
  AtTerminal terminal(Debug("Print 1\n"));
  ASSERT_TRUE(terminal.Prompts(kPrompt));
  terminal.Type("quit");
  ASSERT_TRUE(terminal.Shows("quit"));
  terminal.Type(kInterrupt);
  ASSERT_TRUE(terminal.Shows("\r\n")) << terminal.screen();
  ASSERT_TRUE(terminal.Prompts(kPrompt)) << terminal.screen();
  terminal.Type("print 2 + 3\n");
  EXPECT_TRUE(terminal.Shows("\r\n5\r\n")) << terminal.screen();
}

}  // namespace
}  // namespace command_tests
