// hostrun/host/crash.cpp - what must still be written when a signal ends the process.
#include "hostrun/host/crash.h"

#include <signal.h>

#include <array>
#include <cstddef>
#include <cstdlib>

namespace hostrun {
namespace {

constexpr std::array kSignals = {SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT, SIGTERM, SIGHUP, SIGINT};

constinit std::array<void (*)(), 4> rescues{};
constinit std::size_t rescueCount = 0;
constinit std::array<struct sigaction, kSignals.size()> before{};

// A crash for want of stack needs another one.
constexpr std::size_t kStackSize = 64U << 10U;
alignas(16) constinit std::array<char, kStackSize> spareStack{};

// Whoever handled the signal before gets it once more.
void Rescue(int number) {
  for (std::size_t i = 0; i < kSignals.size(); ++i) sigaction(kSignals[i], &before[i], nullptr);
  for (std::size_t i = 0; i < rescueCount; ++i) rescues[i]();
  raise(number);
}

void Install() {
  stack_t stack{};
  stack.ss_sp = spareStack.data();
  stack.ss_size = spareStack.size();
  sigaltstack(&stack, nullptr);
  struct sigaction action {};
  action.sa_handler = &Rescue;
  action.sa_flags = SA_ONSTACK;
  for (std::size_t i = 0; i < kSignals.size(); ++i) {
    sigaction(kSignals[i], nullptr, &before[i]);
    // A signal that is ignored ends nothing.
    if (before[i].sa_handler != SIG_IGN) sigaction(kSignals[i], &action, nullptr);
  }
}

}  // namespace

void AtCrash(void (*rescue)()) {
  if (rescueCount == rescues.size()) std::abort();
  if (rescueCount == 0) Install();
  rescues[rescueCount++] = rescue;
}

}  // namespace hostrun
