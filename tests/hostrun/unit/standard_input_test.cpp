// tests/hostrun/unit/standard_input_test.cpp - lines from standard input, and waits for them that are
// interrupted.
#include "hostrun/host/standard_input.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <string_view>
#include <utility>

#include "hostrun/host/interrupts.h"

namespace hostrun {
namespace {

// Standard input is a pipe while it lives; what is typed into it stays to be read.
class Typist {
 public:
  Typist() : before_(dup(STDIN_FILENO)) {
    std::array<int, 2> ends{};
    EXPECT_EQ(pipe(ends.data()), 0);
    dup2(ends[0], STDIN_FILENO);
    close(ends[0]);
    keys = ends[1];
  }
  Typist(const Typist&) = delete;
  Typist& operator=(const Typist&) = delete;
  ~Typist() {
    Leave();
    dup2(before_, STDIN_FILENO);
    close(before_);
  }

  static void Type(std::string_view text) {
    EXPECT_EQ(write(keys, text.data(), text.size()), static_cast<ssize_t>(text.size()));
  }
  static void Leave() {
    if (keys >= 0) close(keys);
    keys = -1;
  }

 private:
  static inline int keys = -1;
  int before_;
};

// Calls `handler` for a SIGALRM that comes soon, once; system calls end by it.
class Alarm {
 public:
  explicit Alarm(void (*handler)(int)) {
    struct sigaction action {};
    action.sa_handler = handler;
    sigaction(SIGALRM, &action, &before_);
    const itimerval soon = {{0, 0}, {0, 20'000}};
    setitimer(ITIMER_REAL, &soon, nullptr);
  }
  Alarm(const Alarm&) = delete;
  Alarm& operator=(const Alarm&) = delete;
  ~Alarm() { sigaction(SIGALRM, &before_, nullptr); }

 private:
  struct sigaction before_ {};
};

bool interruptBeforeWait = false;

TEST(StandardInput, GivesLinesWithoutTheirEnds) {
  const Typist typist;
  Typist::Type("one\ntwo\r\n\nfour");
  Typist::Leave();
  EXPECT_FALSE(AtEndOfInput());
  EXPECT_EQ(ReadInputLine(), "one");
  EXPECT_EQ(ReadInputLine(), "two");
  EXPECT_EQ(ReadInputLine(), "");
  EXPECT_FALSE(AtEndOfInput());
  EXPECT_EQ(ReadInputLine(), "four");
  EXPECT_TRUE(AtEndOfInput());
  EXPECT_EQ(ReadInputLine(), std::nullopt);
}

TEST(StandardInput, GivesALineThatIsLongerThanWhatIsReadAtOnce) {
  const Typist typist;
  const std::string line(10'000, 'x');
  Typist::Type(line + "\nlast\n");
  EXPECT_EQ(ReadInputLine(), line);
  EXPECT_EQ(ReadInputLine(), "last");
}

TEST(StandardInput, IsReadOnAfterASignalForSomebodyElse) {
  const Typist typist;
  Typist::Type("before\n");
  EXPECT_EQ(ReadInputLine(), "before");
  const Alarm alarm([](int) { Typist::Type("after\n"); });
  EXPECT_EQ(ReadInputLine(), "after");
}

// The interrupt's handler lets system calls go on, so only the wait itself can notice it.
TEST(StandardInput, GivesWayToAnInterruptThatComesJustBeforeItWaits) {
  static volatile std::sig_atomic_t asked = 0;
  struct sigaction action {};
  action.sa_handler = [](int) { asked = 1; };
  action.sa_flags = SA_RESTART;
  struct sigaction before {};
  sigaction(SIGINT, &action, &before);
  int handled = 0;
  SetInputInterrupt({[] { return asked != 0; },
                     [&handled] {
                       asked = 0;
                       ++handled;
                       Typist::Type("handled\n");
                     }});
  {
    const Typist typist;
    interruptBeforeWait = true;
    EXPECT_EQ(ReadInputLine(), "handled");
    EXPECT_EQ(handled, 1);
  }
  SetInputInterrupt({});
  sigaction(SIGINT, &before, nullptr);
}

TEST(StandardInput, IsNotAskedForWhileAnInterruptWaits) {
  int handled = 0;
  SetInputInterrupt({[&handled] { return handled == 0; }, [&handled] { ++handled; }});
  {
    const Typist typist;
    Typist::Type("there\n");
    EXPECT_EQ(ReadInputLine(), "there");
    EXPECT_EQ(handled, 1);
  }
  SetInputInterrupt({});
}

}  // namespace
}  // namespace hostrun

// The system's wait, which an interrupt may come just before. One that is not held is lost to it.
extern "C" int ppoll(pollfd* files, nfds_t count, const timespec* limit, const sigset_t* mask) {
  if (std::exchange(hostrun::interruptBeforeWait, false)) {
    raise(SIGINT);
    sigset_t held;
    sigpending(&held);
    if (sigismember(&held, SIGINT) == 0) hostrun::Typist::Type("lost\n");
  }
  return static_cast<int>(syscall(SYS_ppoll, files, count, limit, mask, _NSIG / 8));
}
