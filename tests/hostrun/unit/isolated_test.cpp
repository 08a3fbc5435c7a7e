// tests/hostrun/unit/isolated_test.cpp - what runs in a process of its own, and how its end is told.
#include "hostrun/commands/isolated.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <stdexcept>
#include <vector>

namespace hostrun {
namespace {

constexpr std::chrono::minutes kPatience(5);

Outcome RunPatiently(const std::function<Problem(const SendLine&)>& body,
                     const std::function<void(const std::string&)>& onLine = {}) {
  return RunIsolated(kPatience, body, onLine);
}

TEST(Isolated, PassesWithoutAProblem) {
  const Outcome outcome = RunPatiently([](const SendLine&) { return Problem(); });
  EXPECT_EQ(outcome.status, Status::Passed);
  EXPECT_EQ(outcome.reason, "");
}

TEST(Isolated, FailsByAProblemAndByAnException) {
  const Outcome told = RunPatiently([](const SendLine&) { return Problem("two\nlines"); });
  EXPECT_EQ(told.status, Status::Failed);
  EXPECT_EQ(told.reason, "two\nlines");
  const Outcome thrown = RunPatiently([](const SendLine&) -> Problem { throw std::runtime_error("thrown"); });
  EXPECT_EQ(thrown.status, Status::Failed);
  EXPECT_EQ(thrown.reason, "thrown");
}

TEST(Isolated, TellsHowItsProcessEnded) {
  const Outcome crashed =
      RunPatiently([](const SendLine&) -> Problem { _exit((kill(getpid(), SIGKILL), 0)); });
  EXPECT_EQ(crashed.status, Status::Crashed);
  EXPECT_EQ(crashed.reason, "crashed with signal 9 (Killed)");
  const Outcome ended = RunPatiently([](const SendLine&) -> Problem { _exit(7); });
  EXPECT_EQ(ended.status, Status::Crashed);
  EXPECT_EQ(ended.reason, "ended its process with status 7");
}

TEST(Isolated, SendsItsLinesInTheirOrder) {
  std::vector<std::string> lines;
  const std::string large(20'000, 'x');
  const Outcome outcome = RunPatiently(
      [&large](const SendLine& send) {
        for (const std::string& line : {std::string("one"), large, std::string("of\ntwo"), std::string()})
          send(line);
        return Problem("at last");
      },
      [&lines](const std::string& line) { lines.push_back(line); });
  EXPECT_EQ(lines, (std::vector<std::string>{"one", large, "of\ntwo", ""}));
  EXPECT_EQ(outcome.reason, "at last");
}

TEST(Isolated, HasStreamsThatLeadNowhere) {
  const Outcome outcome = RunPatiently([](const SendLine&) -> Problem {
    char byte = 0;
    if (read(STDIN_FILENO, &byte, 1) != 0) return "wanted nothing to read";
    if (write(STDOUT_FILENO, "lost", 4) != 4 || write(STDERR_FILENO, "lost", 4) != 4)
      return "wanted to write";
    return {};
  });
  EXPECT_EQ(outcome.reason, "");
}

TEST(Isolated, IsEndedWhereItIsSilentForTooLong) {
  const Outcome outcome = RunIsolated(std::chrono::milliseconds(30), [](const SendLine&) -> Problem {
    for (;;) pause();
  });
  EXPECT_EQ(outcome.status, Status::TimedOut);
  EXPECT_EQ(outcome.reason, "did not come back within 30 ms");
}

TEST(Isolated, IsHeardThoughSignalsInterruptTheWait) {
  struct sigaction action {};
  action.sa_handler = [](int) {};
  struct sigaction before {};
  sigaction(SIGUSR1, &action, &before);
  int lines = 0;
  const Outcome outcome = RunPatiently(
      [](const SendLine& send) {
        for (int i = 0; i < 200; ++i) {
          kill(getppid(), SIGUSR1);
          send("line");
        }
        return Problem();
      },
      [&lines](const std::string&) { ++lines; });
  sigaction(SIGUSR1, &before, nullptr);
  EXPECT_EQ(outcome.status, Status::Passed);
  EXPECT_EQ(lines, 200);
}

}  // namespace
}  // namespace hostrun
