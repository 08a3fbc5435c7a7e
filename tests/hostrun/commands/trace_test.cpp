// tests/hostrun/commands/trace_test.cpp - "hostrun trace".
#include <gtest/gtest.h>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <nlohmann/json.hpp>
#include <regex>

#include "tests/hostrun/commands/run_hostrun.h"

namespace command_tests {
namespace {

using nlohmann::json;

// The same on each run: without times.
std::string WithoutTimes(const std::string& trace) {
  return std::regex_replace(trace, std::regex(", [0-9.]+ µs"), ", TIME");
}

Finished TraceOf(const std::string& program, std::vector<std::string> options = {}) {
  const std::string file = TemporaryFile("traced.bas", program);
  options.insert(options.begin(), "trace");
  options.push_back(file);
  Finished finished = RunHostrun(options);
  for (std::size_t at = finished.err.find(file); at != std::string::npos; at = finished.err.find(file)) {
    finished.err.replace(at, file.size(), "traced.bas");
  }
  finished.err = WithoutTimes(finished.err);
  return finished;
}

TEST(Trace, ShowsDeclarationArgumentsMessagesServicesResultAndTimeOfEachCall) {
  const Finished finished = TraceOf("Print NSColorQVX.colorWithDeviceRGB(1, 0.5, 0).redComponent\n");
  EXPECT_EQ(finished.status, 0);
  EXPECT_EQ(finished.out, "1\n");
  EXPECT_EQ(finished.err,
            "traced.bas:1: Print NSColorQVX.colorWithDeviceRGB(1, 0.5, 0).redComponent\n"
            "  > NSColorQVX: colorWithDeviceRGB(red as double, green as double, blue as double, alpha as "
            "double=1.0) "
            "as NSColorQVX\n"
            "      with red = 1, green = 0.5, blue = 0, alpha = 1\n"
            "      sends +[NSException respondsToSelector: @GetInstancesDictionaryQVX]\n"
            "      sends +[NSException GetInstancesDictionaryQVX]\n"
            "      sends +[NSException respondsToSelector: @PrepareNSExceptionQVX]\n"
            "      sends +[NSException PrepareNSExceptionQVX]\n"
            "      sends +[NSColor colorWithDeviceRed: 1 green: 0.5 blue: 0 alpha: 1]\n"
            "      calls CFDictionaryGetValue(..., <GSDeviceRGBColor>)\n"
            "      uses PluginNewInstance(\"NSColorQVX\")\n"
            "      > NSColorQVX#1: its constructor\n"
            "      < returns, TIME\n"
            "      sends -[GSDeviceRGBColor retain]\n"
            "      calls CFDictionarySetValue(..., <GSDeviceRGBColor>)\n"
            "  < gives NSColorQVX#1, TIME\n"
            "  > NSColorQVX: redComponent(parameter as integer) as double\n"
            "      with self = NSColorQVX#1, parameter = 0\n"
            "      sends -[GSDeviceRGBColor redComponent]\n"
            "  < gives 1, TIME\n"
            "  > NSColorQVX#1: its destructor\n"
            "      calls CFDictionaryRemoveValue(..., <GSDeviceRGBColor>)\n"
            "      sends -[GSDeviceRGBColor release]\n"
            "  < returns, TIME\n");
}

TEST(Trace, ShowsWhatByReferenceArgumentsHoldAfterwards) {
  const Finished finished =
      TraceOf("Dim r, g, b As Double\nNSColorQVX.colorWithDeviceRGB(0.25, 0.5, 0.75).getRGB r, g, b\n");
  EXPECT_NE(finished.err.find("red = byref 0, green = byref 0, blue = byref 0\n"), std::string::npos)
      << finished.err;
  EXPECT_NE(finished.err.find("< returns, red = 0.25, green = 0.5, blue = 0.75, TIME\n"), std::string::npos);
}

TEST(Trace, ShowsAnExceptionThatComesOutOfACall) {
  const Finished finished = TraceOf(
      "Dim l As New NSColorListQVX\nDim made As Boolean = l.Create(\"few\")\n"
      "l.insertColor NSColorQVX.redColor, \"key\", 9\n");
  EXPECT_EQ(finished.status, 1);
  EXPECT_NE(finished.err.find("uses RuntimeRaiseException(NSExceptionQVX)\n"), std::string::npos)
      << finished.err;
  EXPECT_NE(finished.err.find("  < raises NSExceptionQVX: "), std::string::npos);
  EXPECT_EQ(finished.err.find("libcocoa: wanted"), std::string::npos) << finished.err;
}

TEST(Trace, ShowsThatOfTwoFormsWhichFitAlikeTheFirstIsCalled) {
  const Finished finished = TraceOf("Print NSColorSpaceQVX.ColorSpaceWithICCProfileData(Nil) Is Nil\n");
  EXPECT_EQ(finished.out, "True\n");
  EXPECT_NE(finished.err.find("  > NSColorSpaceQVX: ColorSpaceWithICCProfileData(File as "),
            std::string::npos)
      << finished.err;
}

TEST(Trace, AlsoShowsLookUpsAndFramesWhenAsked) {
  const std::string program = "Print NSColorQVX.colorWithDeviceWhite(1).whiteComponent\n";
  EXPECT_EQ(TraceOf(program).err.find("objc_exception_try_enter"), std::string::npos);
  const Finished all = TraceOf(program, {"--all"});
  EXPECT_NE(all.err.find("calls objc_exception_try_enter\n"), std::string::npos) << all.err;
  EXPECT_NE(all.err.find("calls sel_registerName(\"whiteComponent\")\n"), std::string::npos);
}

TEST(Trace, WritesToAFileAndLeavesTheProgramsOutputAlone) {
  const std::string file = TemporaryFile("trace.txt", "");
  const Finished finished =
      TraceOf("Print \"said\"\nPrint NSColorQVX.redColor.redComponent\n", {"--output", file});
  EXPECT_EQ(finished.out, "said\n1\n");
  EXPECT_EQ(finished.err, "");
}

TEST(Trace, RefusesAFileThatCanNotBeWritten) {
  const Finished finished = TraceOf("Print 1\n", {"--output", "/nowhere/trace.txt"});
  EXPECT_EQ(finished.status, 2);
  EXPECT_EQ(finished.out, "");
  EXPECT_NE(finished.err.find("wanted a file to write to, found: No such file"), std::string::npos);
}

// Two colours live at once, a third after them.
const char* const kThree =
    "Dim a As NSColorQVX = NSColorQVX.colorWithDeviceWhite(0.1)\n"
    "Dim b As NSColorQVX = NSColorQVX.colorWithDeviceWhite(0.2)\nb = Nil\n"
    "b = NSColorQVX.colorWithDeviceWhite(0.3)\nPrint a.whiteComponent < b.whiteComponent\n";

TEST(Trace, TellsObjectsApartByNumbersThatAreNeverUsedAgain) {
  const std::string trace = TraceOf(kThree).err;
  for (const std::string number : {"#1", "#2", "#3"})
    EXPECT_NE(trace.find("< gives NSColorQVX" + number), std::string::npos) << trace;
  EXPECT_EQ(trace.find("#4"), std::string::npos) << trace;
  EXPECT_NE(trace.find("> NSColorQVX#2: its destructor"), std::string::npos) << trace;
  EXPECT_NE(trace.find("self = NSColorQVX#1, parameter"), std::string::npos) << trace;
  EXPECT_NE(trace.find("self = NSColorQVX#3, parameter"), std::string::npos) << trace;
}

std::vector<std::string> Headings(const std::string& trace) {
  std::vector<std::string> headings;
  for (const std::string& line : Lines(trace)) {
    if (line.starts_with("  > ")) headings.push_back(line.substr(4, line.find('(') - 4));
  }
  return headings;
}

TEST(Trace, TellsOnlyOfTheMemberThatAFilterNames) {
  const std::string trace = TraceOf(kThree, {"--filter", "nscolorqvx.whitecomponent"}).err;
  EXPECT_EQ(Headings(trace),
            (std::vector<std::string>{"NSColorQVX: whiteComponent", "NSColorQVX: whiteComponent"}));
  EXPECT_EQ(trace.find("colorWithDeviceWhite("), std::string::npos) << trace;
  EXPECT_NE(trace.find("      sends -[GSDeviceWhiteColor whiteComponent]\n"), std::string::npos) << trace;
}

TEST(Trace, RefusesAFilterThatNamesNothing) {
  for (const std::string filter : {"NSColorQVX.rosyComponent", "Nowhere", "Nowhere.at"}) {
    const Finished finished = TraceOf("Print 1\n", {"--filter", filter});
    EXPECT_EQ(finished.status, 2);
    EXPECT_EQ(finished.out, "");
    EXPECT_NE(finished.err.find("--filter: wanted CLASS or CLASS.MEMBER of the bundle, found " + filter),
              std::string::npos)
        << finished.err;
  }
}

TEST(Trace, SumsUpCallsMessagesAndServicesOfEachMember) {
  const std::vector<std::string> lines = Lines(TraceOf(kThree, {"--summary"}).err);
  ASSERT_EQ(lines.size(), 5U);
  EXPECT_EQ(lines[0], "   calls     time ms  µs a call    messages    services  member");
  const auto row = [&](const std::string& member) {
    for (const std::string& line : lines) {
      if (line.find("  " + member) != std::string::npos)
        return std::regex_replace(line, std::regex("^ *(\\d+) +[\\d.]+ +[\\d.]+ +(\\d+) +(\\d+) .*"),
                                  "$1 $2 $3");
    }
    return std::string();
  };
  EXPECT_EQ(row("NSColorQVX.whiteComponent"), "2 2 0");
  EXPECT_EQ(row("NSColorQVX: its constructor"), "3 0 0");
  EXPECT_EQ(row("NSColorQVX: its destructor"), "3 3 0");
  // Once four look-ups of the sibling part; each time the message and a retain; each time a new instance.
  EXPECT_EQ(row("NSColorQVX.colorWithDeviceWhite"), "3 10 3");
}

TEST(Trace, AnswersToolsInJsonLines) {
  const Finished finished = TraceOf("Print NSColorQVX.colorWithDeviceWhite(0.5).whiteComponent\n",
                                    {"--json", "--filter", "NSColorQVX.whiteComponent"});
  const std::vector<std::string> lines = Lines(finished.err);
  ASSERT_EQ(lines.size(), 3U) << finished.err;
  EXPECT_EQ(json::parse(lines[0]), (json{{"event", "call"},
                                         {"depth", 0},
                                         {"line", 1},
                                         {"member", "NSColorQVX.whiteComponent"},
                                         {"declaration", "whiteComponent(parameter as integer) as double"},
                                         {"arguments", {{"self", "NSColorQVX#1"}, {"parameter", "0"}}}}));
  EXPECT_EQ(json::parse(lines[1]),
            (json{{"event", "message"}, {"depth", 1}, {"text", "-[GSDeviceWhiteColor whiteComponent]"}}));
  const json left = json::parse(lines[2]);
  EXPECT_EQ(left["event"], "return");
  EXPECT_EQ(left["result"], "0.5");
  EXPECT_GT(left["nanoseconds"], 0);
  const json sum = json::parse(
      Lines(TraceOf("Print NSColorQVX.redColor.redComponent\n", {"--json", "--summary"}).err).back());
  EXPECT_EQ(sum["calls"], 1);
}

TEST(Trace, NeedsNoMoreMemoryForMoreCalls) {
  const auto peak = [](int colours) {
    const std::string file = TemporaryFile(
        "many.bas", "For i As Integer = 1 To " + std::to_string(colours) +
                        "\n  Print NSColorQVX.colorWithDeviceWhite(i / 1000).whiteComponent >= 0\nNext\n");
    rusage before{};
    const pid_t child = fork();
    if (child == 0) {
      if (freopen("/dev/null", "w", stdout) == nullptr) _exit(126);
      BecomeHostrun({"trace", "--out", "/dev/null", file}, {});
    }
    int status = 0;
    wait4(child, &status, 0, &before);
    EXPECT_EQ(status, 0);
    return before.ru_maxrss;  // in KiB
  };
  EXPECT_LT(peak(4000), peak(1000) + 1024);
}

TEST(Trace, ChangesNothingOfWhatAProgramDoes) {
  const std::string program =
      "Dim a As NSColorQVX = NSColorQVX.redColor\nDim b As NSColorQVX = NSColorQVX.redColor\nPrint a Is b\n"
      "Print NSColorSpaceQVX.sRGBColorSpace.localizedName\nPrint a.blendedColorWithFraction(0.5, "
      "b).Components.Ubound\n";
  const std::string file = TemporaryFile("plain.bas", program);
  const Finished plain = RunHostrun({"--leaks", file});
  const Finished traced = TraceOf(program, {"--leaks"});
  EXPECT_EQ(traced.status, plain.status);
  EXPECT_EQ(traced.out, plain.out);
}

}  // namespace
}  // namespace command_tests
