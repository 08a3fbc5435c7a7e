// hostrun/host/standard_input.h - lines from standard input.
#pragma once

#include <functional>
#include <optional>
#include <string>

namespace hostrun {

// The next line without its end, LF or CR LF; nothing at the end of the input. Programs and commands that
// read here take turns: none of them gets a part of another's line.
std::optional<std::string> ReadInputLine();
// Whether no line is left; waits until that is known.
bool AtEndOfInput();

// What a wait for input gives way to: `asked` tells whether an interrupt (SIGINT, handled) has come that
// concerns the wait, `handle` deals with it. That one may throw, which gives up the wait; else the wait goes
// on, as it does where both are empty. No interrupt is lost between the last look and the wait.
struct InputInterrupt {
  std::function<bool()> asked;
  std::function<void()> handle;
};
void SetInputInterrupt(InputInterrupt interrupt);

}  // namespace hostrun
