// hostrun/host/output.h - standard output, and whether everything arrived there.
#pragma once

#include <string_view>

#include "hostrun/host/problem.h"

namespace hostrun {

// Prints a text as it is.
void WriteOutput(std::string_view text);

// Hands on what is printed so far. Why that failed first is kept for OutputProblem.
void FlushOutput();

// Whoever was to read it has gone, as behind "| head -1": nothing that is printed from now on can arrive.
bool OutputAbandoned();

// Hands on the rest. Gives what kept anything that was printed, at any time, from arriving.
Problem OutputProblem();

}  // namespace hostrun
