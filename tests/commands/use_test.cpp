// tests/commands/use_test.cpp - what all sub-commands have in common.
#include <gtest/gtest.h>

#include "run_hostrun.h"

namespace command_tests {
namespace {

const char* const kCommands[] = {"classes", "check", "trace", "repl"};

TEST(Use, EachCommandHelpsWithAnExampleAndItsExitStatus) {
  for (const std::string command : kCommands) {
    const Finished finished = RunHostrun({command, "--help"});
    EXPECT_EQ(finished.status, 0) << command;
    EXPECT_NE(finished.out.find("Usage: hostrun " + command), std::string::npos) << finished.out;
    EXPECT_NE(finished.out.find("Example"), std::string::npos) << command;
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

TEST(Use, OnlyTheFirstWordIsACommand) {
  const std::string program = TemporaryFile("program.bas", "Print Arguments(0)\n");
  EXPECT_EQ(RunHostrun({program, "check"}).out, "check\n");
}

TEST(Use, NothingIsColouredOffATerminal) {
  const std::vector<std::string> colourful = {"TERM=xterm-256color", "COLORTERM=truecolor"};
  EXPECT_EQ(RunHostrun({"classes"}, {}, colourful).out.find('\033'), std::string::npos);
  EXPECT_EQ(RunHostrun({"check", "--filter", "file/"}, {}, colourful).out.find('\033'), std::string::npos);
}

TEST(Use, AnUncaughtExceptionShowsClassMessageNumberAndTheLinesOfTheProgram) {
  const std::string program = TemporaryFile("deep.bas",
                                            "Sub Inner()\n  Raise New UnsupportedOperationException(\"why\", "
                                            "42)\nEnd Sub\nSub Outer()\n  Inner\nEnd Sub\nOuter\n");
  const Finished finished = RunHostrun({program});
  EXPECT_EQ(finished.status, 1);
  EXPECT_EQ(finished.err, program +
                              ":2:3: uncaught UnsupportedOperationException: why (error 42)\n"
                              "    Raise New UnsupportedOperationException(\"why\", 42)\n"
                              "    ^\n"
                              "  in Inner, called from line 5\n"
                              "  in Outer, called from line 7\n");
}

}  // namespace
}  // namespace command_tests
