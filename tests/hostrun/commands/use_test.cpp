// tests/hostrun/commands/use_test.cpp - what all sub-commands have in common.
#include <gtest/gtest.h>

#include "tests/hostrun/commands/run_hostrun.h"

namespace command_tests {
namespace {

const char* const kCommands[] = {"classes", "check", "check-syntax", "debug",      "trace",
                                 "repl",    "docs",  "swatches",     "completion", "manual"};

// Runs a program on a host without the platform.
Finished RunSmall(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), WithoutPlatform().begin(), WithoutPlatform().end());
  return RunHostrun(arguments);
}

TEST(Use, EachCommandHelpsWithAnExampleAndItsExitStatus) {
  for (const std::string command : kCommands) {
    const Finished finished = RunHostrun({command, "--help"});
    EXPECT_EQ(finished.status, 0) << command;
    EXPECT_NE(finished.out.find("Usage: hostrun " + command), std::string::npos) << finished.out;
    const std::size_t example = finished.out.find("\nExample");
    ASSERT_NE(example, std::string::npos) << command;
    EXPECT_NE(finished.out.find("hostrun " + std::string(command), example), std::string::npos)
        << finished.out;
    EXPECT_NE(finished.out.find("Exit status: "), std::string::npos) << command;
  }
}

TEST(Use, TheHelpOfHostrunNamesEachCommand) {
  const std::string help = RunHostrun({"--help"}).out;
  for (const std::string command : kCommands)
    EXPECT_NE(help.find("\n  " + command + " "), std::string::npos) << help;
}

TEST(Use, EachCommandRefusesWhatItDoesNotKnow) {
  for (const std::string command : kCommands) {
    const Finished finished = RunHostrun({command, "--frobnicate"});
    EXPECT_EQ(finished.status, 2) << command;
    EXPECT_EQ(finished.out, "") << command;
    EXPECT_NE(finished.err.find("hostrun " + command + " --help says more"), std::string::npos)
        << finished.err;
  }
}

TEST(Use, AMissingFileIsRefusedByItsName) {
  const std::vector<std::vector<std::string>> uses = {
      {"nowhere.bas"},
      {"--bundle", "nowhere.so", TemporaryFile("fine.bas", "Print 1\n")},
      {"trace", "nowhere.bas"},
      {"check", "nowhere.so"},
      {"check-syntax", "nowhere.bas"},
      {"check-syntax", "--json", "nowhere.bas"},
      {"classes", "--bundle", "nowhere.so"},
      {"debug", "nowhere.bas"},
      {"repl", "--bundle", "nowhere.so"},
      {"docs", "--descriptions", "nowhere.txt"},
      {"swatches", "nowhere.clr"}};
  for (const std::vector<std::string>& use : uses) {
    const Finished finished = RunHostrun(use);
    EXPECT_EQ(finished.status, 2) << use[0];
    EXPECT_EQ(finished.out, "") << use[0];
    EXPECT_NE(finished.err.find("nowhere."), std::string::npos) << finished.err;
    EXPECT_NE(finished.err.find("wanted "), std::string::npos) << finished.err;
    EXPECT_EQ(Lines(finished.err).size(), 1U) << finished.err;
  }
}

TEST(Use, ACommandThatIsSpelledWrongIsToldFromAProgram) {
  const Finished finished = RunHostrun({"clases"});
  EXPECT_EQ(finished.status, 2);
  EXPECT_EQ(finished.err,
            "clases: wanted a program file or a command, found neither; did you mean classes?; hostrun "
            "--help lists the commands\n");
}

TEST(Use, TheExitStatusesOfARunAreThoseThatTheHelpNames) {
  EXPECT_NE(RunHostrun({"--help"}).out.find("Exit status: 0 fine, 1 an uncaught host exception"),
            std::string::npos);
  EXPECT_EQ(RunSmall({TemporaryFile("fine.bas", "Print 1\n")}).status, 0);
  EXPECT_EQ(RunSmall({TemporaryFile("raises.bas", "Raise New RuntimeException(\"x\", 1)\n")}).status, 1);
  const std::string ring = TemporaryFile("ring.bas", "Dim r() As Variant\nr.Append r\n");
  EXPECT_EQ(RunSmall({ring}).status, 0);
  EXPECT_EQ(RunSmall({"--leaks", ring}).status, 1);
  EXPECT_EQ(RunSmall({TemporaryFile("wrong.bas", "Dim x As Nothing\n")}).status, 2);
  EXPECT_EQ(RunSmall({TemporaryFile("quits.bas", "Quit 9\n")}).status, 9);
}

TEST(Use, OnlyTheFirstWordIsACommand) {
  const std::string program = TemporaryFile("program.bas", "Print Arguments(0)\n");
  EXPECT_EQ(RunSmall({program, "check"}).out, "check\n");
}

TEST(Use, NothingIsColouredOffATerminal) {
  const std::vector<std::string> colourful = {"TERM=xterm-256color", "COLORTERM=truecolor"};
  EXPECT_EQ(RunHostrun({"classes"}, {}, colourful).out.find('\033'), std::string::npos);
  EXPECT_EQ(
      RunHostrun({"check", "--filter", "/order", "--host-version", "2015.0"}, {}, colourful).out.find('\033'),
      std::string::npos);
}

TEST(Use, AnUncaughtExceptionShowsClassMessageNumberAndTheLinesOfTheProgram) {
  const std::string program = TemporaryFile("deep.bas",
                                            "Sub Inner()\n  Raise New UnsupportedOperationException(\"why\", "
                                            "42)\nEnd Sub\nSub Outer()\n  Inner\nEnd Sub\nOuter\n");
  const Finished finished = RunSmall({program});
  EXPECT_EQ(finished.status, 1);
  EXPECT_EQ(finished.err, program +
                              ":2:3: uncaught UnsupportedOperationException: why (error 42)\n"
                              "    Raise New UnsupportedOperationException(\"why\", 42)\n"
                              "    ^\n"
                              "  in Inner, called from line 5\n"
                              "  in Outer, called from line 7\n");
}

// The line before each has had the last word of where the program stands.
TEST(Use, WhatAProgramLeaksIsNamedByTheLineThatMadeIt) {
  const std::string program = TemporaryFile("rings.bas",
                                            "Dim n As Integer = Len(\"x\")\n"
                                            "Dim a() As Variant = Array(1)\n"
                                            "a.Append a\n"
                                            "n = Len(\"x\")\n"
                                            "Dim b() As Variant\n"
                                            "b.Append b\n"
                                            "n = Len(\"x\")\n"
                                            "Dim c As New Dictionary\n"
                                            "c.Value(1) = c\n");
  EXPECT_EQ(RunSmall({"--leaks", program}).err,
            "still alive at the end:\n  1 Dictionary, made in line 8\n  1 array, made in line 2\n"
            "  1 array, made in line 5\n");
}

TEST(Use, WhatABundleLeaksIsNamedByTheLineThatCalledIt) {
  const std::string program = TemporaryFile("calls.bas", "Dim s As Sound\ns = Sound.Make\ns = Sound.Make\n");
  const auto leaksOf = [&](const std::string& fault) {
    std::vector<std::string> arguments = WithoutPlatform();
    arguments.insert(arguments.end(), {"--leaks", program});
    return RunHostrun(arguments, {}, {"BROKEN_BUNDLE_FAULT=" + fault});
  };
  EXPECT_EQ(leaksOf("LeaksObject").err,
            "still alive at the end:\n  1 Sound, made in line 2\n  1 Sound, made in line 3\n");
  EXPECT_EQ(leaksOf("LeaksString").err,
            "still alive at the end:\n  1 string, made in line 2\n  1 string, made in line 3\n");
  EXPECT_EQ(leaksOf("LeaksString").status, 1);
  EXPECT_EQ(leaksOf("None").err, "");
  EXPECT_EQ(leaksOf("None").status, 0);
}

}  // namespace
}  // namespace command_tests
