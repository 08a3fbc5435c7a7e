// tests/libcocoa/first_use_test.cpp - the first use of the colour classes, by several threads at once.
//
// This process sends no message, so each child is as new as a program that has just been started. A deadlock
// does not end, and neither does the test then.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <barrier>
#include <thread>

#include "tests/libcocoa/first_use.h"

namespace {

// In the child: all questions at the same moment. The number of those without an answer.
int askAll() {
  std::barrier together(kFirstQuestions);
  std::array<int, kFirstQuestions> answered{};
  {
    std::array<std::jthread, kFirstQuestions> threads;
    for (int i = 0; i < kFirstQuestions; ++i)
      threads.at(i) = std::jthread([&, i] {
        together.arrive_and_wait();
        answered.at(i) = AskFirst(i);
      });
  }
  int missing = 0;
  for (const int each : answered) missing += each == 1 ? 0 : 1;
  return missing;
}

TEST(FirstUse, OfFourThreadsAtOnceEndsInEachOfFiftyProcesses) {
  constexpr int kProcesses = 50;
  for (int i = 0; i < kProcesses; ++i) {
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) _exit(askAll());
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_EQ(status, 0) << "process " << i;
  }
}

}  // namespace
