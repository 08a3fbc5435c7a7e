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

// `interrupted` is called when a signal interrupts the wait for input. It may throw, which gives up the wait;
// else the wait goes on, as it does where this is empty.
void SetInputInterrupted(std::function<void()> interrupted);

}  // namespace hostrun
