// tests/hostrun/commands/loss_test.cpp - nothing is lost silently: what can't be written is said, and what
// the platform logs is shown when it matters.
#include <gtest/gtest.h>

#include <filesystem>
#include <regex>

#include "tests/hostrun/commands/run_hostrun.h"

namespace command_tests {
namespace {

namespace fs = std::filesystem;

const char* const kFull = "hostrun: wanted to write standard output, found: No space left on device\n";

// A name for a file that takes nothing.
std::string FullFile(const std::string& name) {
  const std::string path = TemporaryFile(name, "");
  fs::remove(path);
  fs::create_symlink("/dev/full", path);
  return path;
}

std::string FreshName(const std::string& name) {
  const std::string path = TemporaryFile(name, "");
  fs::remove(path);
  return path;
}

std::vector<std::string> NamesBeside(const std::string& path) {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(fs::path(path).parent_path())) {
    const std::string name = entry.path().filename().native();
    if (name.starts_with(fs::path(path).filename().native())) names.push_back(name);
  }
  return names;
}

// A log line without its date and process.
std::string WithoutDates(const std::string& text) {
  return std::regex_replace(text, std::regex("[0-9-]+ [0-9:.]+ hostrun\\[[0-9:]+\\] "), "LOG ");
}

TEST(Loss, AFullStandardOutputIsSaidInOneLine) {
  const std::string hello = TemporaryFile("hello.bas", "Print \"hello\"\n");
  const std::string much = TemporaryFile("much.bas", "For i As Integer = 1 To 9999\n  Print i\nNext\n");
  const std::vector<std::vector<std::string>> uses = {{hello},
                                                      {much},
                                                      {"classes"},
                                                      {"classes", "--json"},
                                                      {"check", "--json", "--filter", "file/"},
                                                      {"--help"},
                                                      {"check", "--filter", "file/"},
                                                      {"--version"}};
  for (const std::vector<std::string>& use : uses) {
    const Finished finished = RunHostrunOntoFullDisk(use);
    EXPECT_EQ(finished.status, 2) << use[0];
    EXPECT_EQ(finished.err, kFull) << use[0];
  }
}

TEST(Loss, AFullDiskIsSaidInOneLine) {
  const std::string program = TemporaryFile("red.bas", "Print NSColorQVX.redColor\n");
  const std::vector<std::vector<std::string>> uses = {{"docs", "--out", FullFile("full.html")},
                                                      {"swatches", "--out", FullFile("full.png")},
                                                      {"swatches", "--out", FullFile("full.svg")},
                                                      {"trace", "--out", FullFile("full.txt"), program}};
  for (const std::vector<std::string>& use : uses) {
    const Finished finished = RunHostrun(use);
    EXPECT_EQ(finished.status, 2) << use[0];
    EXPECT_NE(finished.err.find(use[2] + ": wanted a file to write to, found: No space left on device\n"),
              std::string::npos)
        << finished.err;
    EXPECT_EQ(Lines(finished.err).size(), 1U) << finished.err;
  }
}

TEST(Loss, AFileIsNamedByEitherOption) {
  const std::string program = TemporaryFile("red.bas", "Print NSColorQVX.redColor\n");
  for (const std::string option : {"--out", "--output"}) {
    const std::string page = FreshName("page.html");
    const std::string picture = FreshName("picture.png");
    const std::string calls = FreshName("calls.txt");
    EXPECT_EQ(RunHostrun({"docs", option, page}).status, 0);
    EXPECT_EQ(RunHostrun({"swatches", option, picture, program}).status, 0);
    EXPECT_EQ(RunHostrun({"trace", option, calls, program}).status, 0);
    for (const std::string& file : {page, picture, calls}) {
      EXPECT_GT(ReadFile(file).size(), 0U) << file;
      EXPECT_EQ(NamesBeside(file).size(), 1U) << file;
    }
  }
}

TEST(Loss, AFileThatIsReplacedKeepsItsRightsAndItsLink) {
  const std::string file = TemporaryFile("kept.html", "old");
  fs::permissions(file, fs::perms::owner_read | fs::perms::owner_write);
  const std::string link = FreshName("link.html");
  fs::create_symlink(file, link);
  EXPECT_EQ(RunHostrun({"docs", "--out", link}).status, 0);
  EXPECT_TRUE(fs::is_symlink(link));
  EXPECT_NE(ReadFile(file), "old");
  EXPECT_EQ(fs::status(file).permissions(), fs::perms::owner_read | fs::perms::owner_write);
}

TEST(Loss, AFolderIsNoFileToWriteTo) {
  const Finished finished = RunHostrun({"docs", "--out", "/"});
  EXPECT_EQ(finished.status, 2);
  EXPECT_EQ(finished.err, "/: wanted a file to write to, found: Is a directory\n");
}

const char* const kCaught =
    "Dim w As Double\nTry\n  NSColorQVX.redColor.getWhite w\nCatch e As NSExceptionQVX\n  Print e.name\nEnd "
    "Try\n";

TEST(Loss, WhatThePlatformLogsOfACaughtExceptionIsDropped) {
  const Finished finished = RunHostrun({TemporaryFile("caught.bas", kCaught)});
  EXPECT_EQ(finished.out, "NSInternalInconsistencyException\n");
  EXPECT_EQ(finished.err, "");
}

TEST(Loss, ThePlatformsLogIsShownWhenAsked) {
  const std::vector<std::string> lines =
      Lines(RunHostrun({"--platform-log", TemporaryFile("caught.bas", kCaught)}).err);
  ASSERT_EQ(lines.size(), 1U);
  EXPECT_TRUE(WithoutDates(lines[0]).starts_with("LOG A NSInternalInconsistencyException: ")) << lines[0];
}

TEST(Loss, WhatThePlatformLogsOfAnExceptionThatEndsTheProgramStandsBeforeIt) {
  const Finished finished =
      RunHostrun({TemporaryFile("uncaught.bas", std::string(kCaught) + "NSColorQVX.redColor.getWhite w\n")});
  EXPECT_EQ(finished.status, 1);
  const std::vector<std::string> lines = Lines(WithoutDates(finished.err));
  ASSERT_EQ(lines.size(), 4U) << finished.err;
  EXPECT_TRUE(lines[0].starts_with("LOG A NSInternalInconsistencyException: ")) << lines[0];
  EXPECT_NE(lines[1].find("uncaught.bas:7:21: uncaught NSExceptionQVX"), std::string::npos) << lines[1];
}

TEST(Loss, AnExceptionThatIsRaisedAgainKeepsItsLog) {
  const Finished finished = RunHostrun({TemporaryFile("again.bas",
                                                      "Dim w As Double\nTry\n  NSColorQVX.redColor.getWhite "
                                                      "w\nCatch e As NSExceptionQVX\n  Raise e\nEnd Try\n")});
  EXPECT_EQ(finished.status, 1);
  EXPECT_TRUE(WithoutDates(finished.err).starts_with("LOG A NSInternalInconsistencyException: "))
      << finished.err;
}

// A bundle that logs by itself and raises nothing.
Finished RunLogging(const std::string& fault, std::vector<std::string> arguments) {
  arguments.insert(arguments.end(), {"--bundle", BuiltFile("broken/Any.so"),
                                     TemporaryFile("use.bas", "Dim s As Sound = Sound.Make\ns.Use s\n")});
  return RunHostrun(arguments, {}, {"BROKEN_BUNDLE_FAULT=" + fault});
}

TEST(Loss, WhatIsLoggedWithoutAnExceptionIsWritten) {
  const Finished finished = RunLogging("Logs", {});
  EXPECT_EQ(finished.status, 0);
  EXPECT_EQ(WithoutDates(finished.err), "LOG last words\n");
}

TEST(Loss, ACrashWritesTheLogFirst) {
  const Finished finished = RunLogging("LogsAndCrashes", {});
  EXPECT_EQ(finished.status, -1);
  EXPECT_EQ(WithoutDates(finished.err), "LOG last words\n");
}

TEST(Loss, ACrashLeavesTheTraceUntilThen) {
  const std::string calls = FreshName("crash.txt");
  EXPECT_EQ(RunLogging("Crash", {"trace", "--out", calls}).status, -1);
  EXPECT_EQ(Lines(ReadFile(calls)).back(), "      with self = Sound#1, other = Sound#1");
  EXPECT_EQ(NamesBeside(calls).size(), 1U);
}

}  // namespace
}  // namespace command_tests
