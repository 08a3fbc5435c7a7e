// tests/hostrun/commands/terminal_test.cpp - what hostrun does at a terminal and nowhere else: colour,
// progress, line editing.
#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <fstream>

#include "tests/hostrun/commands/at_terminal.h"
#include "tests/hostrun/commands/run_hostrun.h"

namespace command_tests {
namespace {

constexpr const char* kUp = "\033[A";
constexpr const char* kEndOfInput = "\004";
constexpr const char* kInterrupt = "\003";

// On a host without the platform.
std::vector<std::string> Small(std::vector<std::string> arguments) {
  arguments.insert(arguments.end(), WithoutPlatform().begin(), WithoutPlatform().end());
  return arguments;
}
const std::vector<std::string> kRepl = Small({"repl"});

std::string ScreenOf(const std::vector<std::string>& arguments,
                     const std::vector<std::string>& environment = {}) {
  AtTerminal terminal(arguments, environment);
  EXPECT_EQ(terminal.Status(), 0);
  return terminal.screen();
}

// Of a session that shows a red.
std::string ScreenOfColour(const std::vector<std::string>& environment) {
  AtTerminal terminal(kRepl, environment);
  EXPECT_TRUE(terminal.Prompts());
  terminal.Type("RGB(255, 0, 0)\n");
  EXPECT_TRUE(terminal.Shows("\r\n&cFF0000")) << terminal.screen();
  EXPECT_TRUE(terminal.Prompts());
  terminal.Type(kEndOfInput);
  EXPECT_EQ(terminal.Status(), 0);
  return terminal.screen();
}

const std::vector<std::string> kCheckSound = {"check", "--platform", "none", "--host-version", "2015.0"};
std::vector<std::string> CheckSound(const std::string& option) {
  std::vector<std::string> arguments = kCheckSound;
  arguments.insert(arguments.end(), {option, BuiltFile("broken/Any.so")});
  return arguments;
}

TEST(Terminal, ColoursHeadingsUnlessTheUserObjects) {
  const std::vector<std::string> arguments = Small({"classes", "Sound"});
  EXPECT_NE(ScreenOf(arguments).find("\033[1mSound\033[0m"), std::string::npos);
  EXPECT_EQ(ScreenOf(arguments, {"NO_COLOR=1"}).find('\033'), std::string::npos);
  EXPECT_EQ(ScreenOf(arguments, {"TERM=dumb"}).find('\033'), std::string::npos);
  EXPECT_NE(ScreenOf(arguments, {"NO_COLOR="}).find('\033'), std::string::npos);
}

TEST(Terminal, ColoursTheStatusOfEachCheck) {
  AtTerminal terminal({"check", "--platform", "none", "--host-version", "2015.0", "--verbose",
                       BuiltFile("broken/NoRelro.so")});
  EXPECT_EQ(terminal.Status(), 1);
  EXPECT_NE(terminal.screen().find("\033[32mpassed    \033[0mfile/format"), std::string::npos)
      << terminal.screen();
  EXPECT_NE(terminal.screen().find("\033[31mfailed    \033[0mfile/relro"), std::string::npos);
  EXPECT_NE(terminal.screen().find("\033[31m" + Tally(kSoundChecks, 1) + "\033[0m"), std::string::npos);
}

TEST(Terminal, ShowsProgressWhereNothingElseShowsThatTimePasses) {
  for (const std::string option : {"--only-failed", "--json"}) {
    const std::string screen = ScreenOf(CheckSound(option));
    EXPECT_NE(screen.find("\r\033[K1 check, 0 failed: file/format\r\033[K2 checks, 0 failed: "),
              std::string::npos)
        << screen;
    const std::size_t last = screen.find(std::to_string(kSoundChecks) +
                                         " checks, 0 failed: 2015.0/call/Sound.Make as Sound\r\033[K");
    EXPECT_NE(last, std::string::npos) << "progress is taken away at the end: " << screen;
  }
}

TEST(Terminal, ShowsNoProgressOnADumbOneOrBesideTheLinesThemselves) {
  EXPECT_EQ(ScreenOf(CheckSound("--only-failed"), {"TERM=dumb"}), Tally(kSoundChecks) + "\r\n");
  EXPECT_EQ(ScreenOf(CheckSound("--verbose")).find("checks, 0 failed: "), std::string::npos);
}

TEST(Terminal, ShowsOfAPassedCheckNothingButTheTallyUnlessAsked) {
  const std::vector<std::string> plain = {"TERM=dumb"};
  EXPECT_EQ(ScreenOf(CheckSound("--time-limit=9"), plain), Tally(kSoundChecks) + "\r\n");
  EXPECT_NE(ScreenOf(CheckSound("--verbose"), plain).find("passed    file/format\r\n"), std::string::npos);
}

TEST(Terminal, ShowsAColourAsABlockWhereTheTerminalCan) {
  const std::string block = "\033[48;2;255;0;0m    \033[0m";
  EXPECT_NE(ScreenOfColour({"COLORTERM=truecolor"}).find(block), std::string::npos);
  EXPECT_NE(ScreenOfColour({"COLORTERM=24bit"}).find(block), std::string::npos);
  EXPECT_EQ(ScreenOfColour({}).find("\033[48"), std::string::npos);
  EXPECT_EQ(ScreenOfColour({"COLORTERM=truecolor", "NO_COLOR=1"}).find("\033[48"), std::string::npos);
}

TEST(Terminal, CompletesClassesMembersAndVariablesAndShowsTheirColours) {
  AtTerminal terminal({"repl"}, {"COLORTERM=truecolor"});
  ASSERT_TRUE(terminal.Prompts());
  terminal.Type("Dim favourite As NSColorQVX = NSColorQ\t.orangeC\t\n");
  ASSERT_TRUE(terminal.Prompts()) << terminal.screen();
  terminal.Type("favou\t.numberOfC\t\n");
  EXPECT_TRUE(terminal.Shows("\r\n4\r\n")) << terminal.screen();
  terminal.Type("Print favourite.colorSpaceN\t\n");
  EXPECT_TRUE(terminal.Shows("\r\nNSCalibratedRGBColorSpace\r\n")) << terminal.screen();
  ASSERT_TRUE(terminal.Prompts());
  terminal.Type("favourite\n");
  EXPECT_TRUE(terminal.Shows("NSCalibratedRGBColorSpace 1 0.5 0 1 \033[48;2;255;127;0m    \033[0m"))
      << terminal.screen();
}

TEST(Terminal, ListsWhatABeginningMayBecome) {
  AtTerminal terminal(kRepl);
  ASSERT_TRUE(terminal.Prompts());
  terminal.Type("Encodings.UTF\t\t");
  EXPECT_TRUE(terminal.Shows("Encodings.UTF16")) << terminal.screen();
  EXPECT_TRUE(terminal.Shows("Encodings.UTF32")) << terminal.screen();
  EXPECT_TRUE(terminal.Shows("Encodings.UTF8")) << terminal.screen();
}

TEST(Terminal, EndsTheLineOfThePromptWhenTheInputEnds) {
  AtTerminal terminal(kRepl);
  ASSERT_TRUE(terminal.Prompts());
  terminal.Type(kEndOfInput);
  EXPECT_EQ(terminal.Status(), 0);
  EXPECT_TRUE(terminal.screen().ends_with("\r\n")) << terminal.screen();
}

TEST(Terminal, KeepsAHistoryFromOneSessionToTheNext) {
  const std::vector<std::string> own = {"XDG_STATE_HOME=" + TemporaryFile("", "") + "history"};
  {
    AtTerminal terminal(kRepl, own);
    ASSERT_TRUE(terminal.Prompts());
    terminal.Type("6 * 7\n");
    ASSERT_TRUE(terminal.Shows("\r\n42\r\n")) << terminal.screen();
    ASSERT_TRUE(terminal.Prompts());
    terminal.Type(std::string(kUp) + "\n");
    EXPECT_TRUE(terminal.Shows("\r\n42\r\n")) << terminal.screen();
    ASSERT_TRUE(terminal.Prompts());
    terminal.Type(kEndOfInput);
    EXPECT_EQ(terminal.Status(), 0);
  }
  AtTerminal next(kRepl, own);
  ASSERT_TRUE(next.Prompts());
  next.Type(std::string(kUp) + "\n");
  EXPECT_TRUE(next.Shows("\r\n42\r\n")) << next.screen();
}

TEST(Terminal, KeepsItsHistoryInTheHomeFolderWhereNoOtherIsNamed) {
  const std::string home = TemporaryFile("", "") + "home";
  std::filesystem::create_directory(home);
  for (const std::string state : {"XDG_STATE_HOME=", "XDG_STATE_HOME=not/from/the/root"}) {
    AtTerminal terminal(kRepl, {state, "HOME=" + home});
    ASSERT_TRUE(terminal.Prompts());
    terminal.Type("12*12\n");
    ASSERT_TRUE(terminal.Shows("\r\n144\r\n")) << terminal.screen();
    ASSERT_TRUE(terminal.Prompts());
  }
  EXPECT_EQ(Lines(ReadFile(home + "/.local/state/hostrun/history")),
            (std::vector<std::string>{"_HiStOrY_V2_", "12*12", "12*12"}));
  EXPECT_FALSE(std::filesystem::exists("not"));
}

TEST(Terminal, KeepsNoHistoryWhereThereIsNoFolderForIt) {
  AtTerminal terminal(kRepl, {"XDG_STATE_HOME=", "HOME="});
  ASSERT_TRUE(terminal.Prompts());
  terminal.Type("12*12\n");
  ASSERT_TRUE(terminal.Shows("\r\n144\r\n")) << terminal.screen();
  ASSERT_TRUE(terminal.Prompts());
  terminal.Type(kEndOfInput);
  EXPECT_EQ(terminal.Status(), 0);
}

// The file as the library writes it: a line of its own, and a blank as its number.
std::string KeptLine(int number) {
  return "Print\\040" + std::to_string(number);
}

// The kept lines after a session that began with so many and repeats the last.
std::vector<std::string> HistoryAfterASession(int lines) {
  const std::string state = TemporaryFile("", "") + "state" + std::to_string(lines);
  std::filesystem::create_directories(state + "/hostrun");
  {
    std::ofstream file(state + "/hostrun/history");
    file << "_HiStOrY_V2_\n";
    for (int i = 1; i <= lines; ++i) file << KeptLine(i) << "\n";
  }
  AtTerminal terminal(kRepl, {"XDG_STATE_HOME=" + state});
  EXPECT_TRUE(terminal.Prompts());
  terminal.Type(std::string(kUp) + "\n");
  EXPECT_TRUE(terminal.Shows("\r\n" + std::to_string(lines) + "\r\n")) << terminal.screen();
  EXPECT_TRUE(terminal.Prompts());
  terminal.Type(kEndOfInput);
  EXPECT_EQ(terminal.Status(), 0);
  std::vector<std::string> kept = Lines(ReadFile(state + "/hostrun/history"));
  EXPECT_EQ(kept.front(), "_HiStOrY_V2_");
  kept.erase(kept.begin());
  return kept;
}

TEST(Terminal, ShortensAHistoryThatHasGrownToTwiceWhatIsKept) {
  const std::vector<std::string> whole = HistoryAfterASession(1999);
  ASSERT_EQ(whole.size(), 2000U);
  EXPECT_EQ(whole.front(), KeptLine(1));
  const std::vector<std::string> shortened = HistoryAfterASession(2000);
  ASSERT_EQ(shortened.size(), 1001U);
  EXPECT_EQ(shortened.front(), KeptLine(1001));
  EXPECT_EQ(shortened.back(), KeptLine(2000));
}

TEST(Terminal, DropsALineWhenItIsInterrupted) {
  AtTerminal terminal(kRepl);
  ASSERT_TRUE(terminal.Prompts());
  terminal.Type("Print 1 +");
  ASSERT_TRUE(terminal.Shows("+"));
  terminal.Type(kInterrupt);
  ASSERT_TRUE(terminal.Shows("\r\n")) << terminal.screen();
  ASSERT_TRUE(terminal.Prompts()) << terminal.screen();
  terminal.Type("Print 2 + 3\n");
  EXPECT_TRUE(terminal.Shows("\r\n5\r\n")) << terminal.screen();
}

TEST(Terminal, LosesNoInterruptThatComesJustBeforeItWaitsForAKey) {
  AtTerminal terminal(kRepl, {"LD_PRELOAD=" + BuiltFile("libearly_interrupt.so")});
  ASSERT_TRUE(terminal.Prompts());
  ASSERT_TRUE(terminal.Prompts()) << "the line is dropped: " << terminal.screen();
  terminal.Type(kEndOfInput);
  EXPECT_EQ(terminal.Status(), 0);
}

TEST(Terminal, TakesLettersBeyondAscii) {
  AtTerminal terminal(kRepl);
  ASSERT_TRUE(terminal.Prompts());
  terminal.Type("Print \"äöü€\".Length, \"äöü€\"\n");
  EXPECT_TRUE(terminal.Shows("\r\n4 äöü€\r\n")) << terminal.screen();
}

TEST(Terminal, TakesAByteThatBelongsToNoLetterForAQuestionMark) {
  AtTerminal terminal(kRepl);
  ASSERT_TRUE(terminal.Prompts());
  terminal.Type("Print \"a\xFFz\"\n");
  EXPECT_TRUE(terminal.Shows("\r\na?z\r\n")) << terminal.screen();
}

TEST(Terminal, IsAskedToMarkPastesWhileALineIsReadUnlessItIsDumb) {
  AtTerminal terminal(kRepl);
  ASSERT_TRUE(terminal.Shows("\033[?2004h"));
  ASSERT_TRUE(terminal.Prompts());
  terminal.Type("Print 12*12\n");
  ASSERT_TRUE(terminal.Shows("\033[?2004l")) << terminal.screen();
  ASSERT_TRUE(terminal.Shows("\r\n144\r\n")) << terminal.screen();
  AtTerminal dumb(kRepl, {"TERM=dumb"});
  ASSERT_TRUE(dumb.Prompts());
  dumb.Type("Print 12*12\n");
  ASSERT_TRUE(dumb.Shows("144\r\n")) << dumb.screen();
  EXPECT_EQ(dumb.screen().find("2004"), std::string::npos) << dumb.screen();
}

TEST(Terminal, InterruptsWhatIsRunningAndKeepsTheSession) {
  AtTerminal terminal(kRepl);
  ASSERT_TRUE(terminal.Prompts());
  terminal.Type("Dim kept As Integer = 42\n");
  ASSERT_TRUE(terminal.Prompts());
  terminal.Type("Print \"begun\" : While True : Wend\n");
  ASSERT_TRUE(terminal.Shows("\r\nbegun\r\n")) << terminal.screen();
  terminal.Type(kInterrupt);
  ASSERT_TRUE(terminal.Shows("input:2:")) << terminal.screen();
  ASSERT_TRUE(terminal.Shows("interrupted")) << terminal.screen();
  ASSERT_TRUE(terminal.Prompts("3> "));
  terminal.Type("kept\n");
  EXPECT_TRUE(terminal.Shows("\r\n42\r\n")) << terminal.screen();
}

TEST(Terminal, InterruptsAStatementThatWaitsForInputAndKeepsTheSession) {
  AtTerminal terminal(kRepl);
  ASSERT_TRUE(terminal.Prompts());
  terminal.Type("Dim kept As String = Input(\"name? \") : Print \"not reached\"\n");
  ASSERT_TRUE(terminal.Shows("\r\nname? ")) << terminal.screen();
  terminal.Type(kInterrupt);
  ASSERT_TRUE(terminal.Shows("input:1:22: interrupted")) << terminal.screen();
  ASSERT_TRUE(terminal.Prompts("2> "));
  terminal.Type("kept = Input(\"again? \")\n");
  ASSERT_TRUE(terminal.Shows("\r\nagain? ")) << terminal.screen();
  terminal.Type("Anna\n");
  ASSERT_TRUE(terminal.Prompts("3> "));
  terminal.Type("kept\n");
  EXPECT_TRUE(terminal.Shows("\r\n\"Anna\"\r\n")) << terminal.screen();
  EXPECT_EQ(terminal.screen().find("\r\nnot reached"), std::string::npos);
}

TEST(Terminal, EndsAProgramThatWaitsForInputWhenItIsInterrupted) {
  std::vector<std::string> arguments = Small({});
  arguments.push_back(TemporaryFile("waits.bas", "Dim s As String = Input(\"name? \")\nPrint \"on\"\n"));
  AtTerminal terminal(arguments);
  ASSERT_TRUE(terminal.Shows("name? "));
  terminal.Type(kInterrupt);
  EXPECT_EQ(terminal.Status(), 128 + SIGINT);
  EXPECT_EQ(terminal.screen().find("on\r\n"), std::string::npos) << terminal.screen();
}

TEST(Terminal, NumbersThePromptAsErrorsDo) {
  AtTerminal terminal(kRepl);
  ASSERT_TRUE(terminal.Prompts("1> "));
  terminal.Type("Print 1\n");
  ASSERT_TRUE(terminal.Prompts("2> ")) << terminal.screen();
  terminal.Type("Print missing\n");
  EXPECT_TRUE(terminal.Shows("input:2:7: ")) << terminal.screen();
}

TEST(Terminal, TakesAPastedBlockWithEmptyLines) {
  AtTerminal terminal(kRepl);
  ASSERT_TRUE(terminal.Shows("\033[?2004h"));
  ASSERT_TRUE(terminal.Prompts());
  terminal.Type("\033[200~For i As Integer = 6 To 7\n\n  Print i * 10\n\nNext\n\033[201~");
  EXPECT_TRUE(terminal.Shows("\r\n60\r\n70\r\n")) << terminal.screen();
  ASSERT_TRUE(terminal.Prompts("6> "));
  terminal.Type("If True Then\n");
  ASSERT_TRUE(terminal.Prompts("... "));
  terminal.Type("\n");
  EXPECT_TRUE(terminal.Shows("wanted 'End If'")) << terminal.screen();
}

TEST(Terminal, KeepsEachLineOfTwoSessionsAtOnce) {
  const std::vector<std::string> own = {"XDG_STATE_HOME=" + TemporaryFile("", "") + "two"};
  {
    AtTerminal one(kRepl, own);
    AtTerminal two(kRepl, own);
    ASSERT_TRUE(one.Prompts());
    ASSERT_TRUE(two.Prompts());
    one.Type("11 * 11\n");
    ASSERT_TRUE(one.Shows("\r\n121\r\n")) << one.screen();
    ASSERT_TRUE(one.Prompts());
    two.Type("12 * 12\n");
    ASSERT_TRUE(two.Shows("\r\n144\r\n")) << two.screen();
    ASSERT_TRUE(two.Prompts());
    // Both are killed: nothing is left to be written at their end.
  }
  AtTerminal next(kRepl, own);
  ASSERT_TRUE(next.Prompts());
  next.Type(std::string(kUp) + "\n");
  EXPECT_TRUE(next.Shows("\r\n144\r\n")) << next.screen();
  ASSERT_TRUE(next.Prompts());
  next.Type(std::string(kUp) + kUp + kUp + "\n");  // behind 12 * 12, which was run again
  EXPECT_TRUE(next.Shows("\r\n121\r\n")) << next.screen();
}

TEST(Terminal, CompletesKeywords) {
  AtTerminal terminal(kRepl);
  ASSERT_TRUE(terminal.Prompts());
  terminal.Type("Pri\t 2 + 3\n");
  EXPECT_TRUE(terminal.Shows("\r\n5\r\n")) << terminal.screen();
}

TEST(Terminal, AsksForTheRestOfABlock) {
  AtTerminal terminal(kRepl);
  ASSERT_TRUE(terminal.Prompts());
  terminal.Type("For i As Integer = 8 To 9\n");
  ASSERT_TRUE(terminal.Prompts("... ")) << terminal.screen();
  terminal.Type("Print i\n");
  ASSERT_TRUE(terminal.Prompts("... "));
  terminal.Type("Next\n");
  EXPECT_TRUE(terminal.Shows("\r\n8\r\n9\r\n")) << terminal.screen();
}

}  // namespace
}  // namespace command_tests
