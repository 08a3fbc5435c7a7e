// tests/hostrun/commands/trace_test.cpp - "hostrun trace".
#include <gtest/gtest.h>

#include <regex>

#include "tests/hostrun/commands/run_hostrun.h"

namespace command_tests {
namespace {

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
            "      > NSColorQVX: its constructor\n"
            "      < returns, TIME\n"
            "      sends -[GSDeviceRGBColor retain]\n"
            "      calls CFDictionarySetValue(..., <GSDeviceRGBColor>)\n"
            "  < gives NSColorQVX, TIME\n"
            "  > NSColorQVX: redComponent(parameter as integer) as double\n"
            "      with self = NSColorQVX, parameter = 0\n"
            "      sends -[GSDeviceRGBColor redComponent]\n"
            "  < gives 1, TIME\n"
            "  > NSColorQVX: its destructor\n"
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
