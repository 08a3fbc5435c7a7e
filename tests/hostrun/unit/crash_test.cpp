// tests/hostrun/unit/crash_test.cpp - what is still done when a signal ends the process.
#include "hostrun/host/crash.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>

namespace hostrun {
namespace {

int told = -1;  // where a dying process says that it has been rescued

// The second time it is no longer rescued, so that none goes on for ever.
void Tell() {
  static int times = 0;
  if (++times > 1) _exit(7);
  if (write(told, "!", 1) != 1) _exit(8);
}

TEST(Crash, IsRescuedFromOnceAndEndsByItsSignal) {
  for (const int number : {SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT, SIGTERM, SIGHUP, SIGINT}) {
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe(ends.data()), 0);
    const pid_t child = fork();
    if (child == 0) {
      told = ends[1];
      AtCrash(&Tell);
      raise(number);
      _exit(9);
    }
    close(ends[1]);
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == number) << number << ": " << status;
    std::array<char, 4> said{};
    EXPECT_EQ(read(ends[0], said.data(), said.size()), 1) << number;
    close(ends[0]);
  }
}

}  // namespace
}  // namespace hostrun
