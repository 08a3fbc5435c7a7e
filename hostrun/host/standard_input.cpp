// hostrun/host/standard_input.cpp - lines from standard input.
#include "hostrun/host/standard_input.h"

#include <poll.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <utility>

#include "hostrun/host/interrupts.h"

namespace hostrun {
namespace {

InputInterrupt& Interrupt() {
  static InputInterrupt interrupt;
  return interrupt;
}

void WaitForInput() {
  if (!Interrupt().asked) return;
  for (;;) {
    {
      const HeldInterrupt held;
      pollfd input = {STDIN_FILENO, POLLIN, 0};
      if (!Interrupt().asked() && (ppoll(&input, 1, nullptr, &held.before()) >= 0 || errno != EINTR)) return;
    }
    if (Interrupt().asked()) Interrupt().handle();
  }
}

std::array<char, 4096> buffer;
std::size_t next = 0;
std::size_t end = 0;

// Whether there is a byte at `next`.
bool HasByte() {
  while (next == end) {
    WaitForInput();
    const ssize_t got = read(STDIN_FILENO, buffer.data(), buffer.size());
    if (got == 0 || (got < 0 && errno != EINTR)) return false;
    next = 0;
    end = got < 0 ? 0 : static_cast<std::size_t>(got);
  }
  return true;
}

}  // namespace

std::optional<std::string> ReadInputLine() {
  if (!HasByte()) return std::nullopt;
  std::string line;
  while (HasByte() && buffer[next] != '\n') line += buffer[next++];
  if (next != end) ++next;  // past the line's end
  if (line.ends_with('\r')) line.pop_back();
  return line;
}

bool AtEndOfInput() {
  return !HasByte();
}

void SetInputInterrupt(InputInterrupt interrupt) {
  Interrupt() = std::move(interrupt);
}

}  // namespace hostrun
