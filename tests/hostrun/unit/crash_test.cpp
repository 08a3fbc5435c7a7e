// tests/hostrun/unit/crash_test.cpp - what is still done when a signal ends the process.
#include "hostrun/host/crash.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <string>

namespace hostrun {
namespace {

int told = -1;  // where a dying process says what it still does

void Say(char what) {
  if (write(told, &what, 1) != 1) _exit(8);
}

// The second time it is no longer rescued, so that none goes on for ever.
void Tell() {
  static int times = 0;
  if (++times > 1) _exit(7);
  Say('!');
}

struct End {
  int status;
  std::string said;
};

// How a process ends that does this and no more.
End EndOf(void (*done)()) {
  std::array<int, 2> ends{};
  if (pipe(ends.data()) != 0) return {-1, "no pipe"};
  const pid_t child = fork();
  if (child == 0) {
    told = ends[1];
    done();
    _exit(9);
  }
  close(ends[1]);
  End end{};
  std::array<char, 8> said{};
  for (ssize_t size = 0; (size = read(ends[0], said.data(), said.size())) > 0;)
    end.said.append(said.data(), static_cast<std::size_t>(size));
  close(ends[0]);
  waitpid(child, &end.status, 0);
  return end;
}

template <int number>
void ExpectRescue() {
  const End end = EndOf([] {
    AtCrash(&Tell);
    raise(number);
  });
  EXPECT_TRUE(WIFSIGNALED(end.status) && WTERMSIG(end.status) == number) << number << ": " << end.status;
  EXPECT_EQ(end.said, "!") << number;
}

TEST(Crash, IsRescuedFromOnceAndEndsByItsSignal) {
  ExpectRescue<SIGSEGV>();
  ExpectRescue<SIGBUS>();
  ExpectRescue<SIGILL>();
  ExpectRescue<SIGFPE>();
  ExpectRescue<SIGABRT>();
  ExpectRescue<SIGTERM>();
  ExpectRescue<SIGHUP>();
  ExpectRescue<SIGINT>();
}

TEST(Crash, IsNoneWhereTheSignalWasIgnored) {
  const End end = EndOf([] {
    signal(SIGHUP, SIG_IGN);  // as nohup does
    AtCrash(&Tell);
    raise(SIGHUP);
    Say('.');
  });
  EXPECT_TRUE(WIFEXITED(end.status) && WEXITSTATUS(end.status) == 9) << end.status;
  EXPECT_EQ(end.said, ".");
}

TEST(Crash, GoesToWhoeverHandledItBefore) {
  const End end = EndOf([] {
    signal(SIGTERM, [](int) { Say('h'); });
    AtCrash(&Tell);
    raise(SIGTERM);
  });
  EXPECT_TRUE(WIFEXITED(end.status) && WEXITSTATUS(end.status) == 9) << end.status;
  EXPECT_EQ(end.said, "!h");
}

}  // namespace
}  // namespace hostrun
