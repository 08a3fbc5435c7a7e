// tests/hostrun/commands/early_interrupt.c - an interrupt that comes just before the first wait for a key. It
// is preloaded. One that the program does not hold would be lost to the wait: the process ends.
#include <poll.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/syscall.h>
#include <unistd.h>

int ppoll(struct pollfd* files, nfds_t count, const struct timespec* limit, const sigset_t* mask) {
  static int waits;
  if (waits++ == 0) {
    sigset_t held;
    raise(SIGINT);
    sigpending(&held);
    if (!sigismember(&held, SIGINT)) _exit(EXIT_FAILURE);
  }
  return (int)syscall(SYS_ppoll, files, count, limit, mask, _NSIG / 8);
}
