// hostrun/host/interrupts.h - interrupts from the terminal.
#pragma once

#include <csignal>

namespace hostrun {

// While it lives, an interrupt from the terminal calls the handler; afterwards it does what it did before.
class InterruptHandler {
 public:
  explicit InterruptHandler(void (*handler)(int)) {
    struct sigaction action {};
    action.sa_handler = handler;
    sigaction(SIGINT, &action, &before_);
  }
  InterruptHandler(const InterruptHandler&) = delete;
  InterruptHandler& operator=(const InterruptHandler&) = delete;
  ~InterruptHandler() { sigaction(SIGINT, &before_, nullptr); }

 private:
  struct sigaction before_ {};
};

// While it lives, an interrupt waits; ppoll with the mask from before lets it in. So none is lost between a
// look at what the handler has noted and the wait.
class HeldInterrupt {
 public:
  HeldInterrupt() {
    sigset_t held;
    sigemptyset(&held);
    sigaddset(&held, SIGINT);
    sigprocmask(SIG_BLOCK, &held, &before_);
  }
  HeldInterrupt(const HeldInterrupt&) = delete;
  HeldInterrupt& operator=(const HeldInterrupt&) = delete;
  ~HeldInterrupt() { sigprocmask(SIG_SETMASK, &before_, nullptr); }
  const sigset_t& before() const { return before_; }

 private:
  sigset_t before_ = {};
};

}  // namespace hostrun
