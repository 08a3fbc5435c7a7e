// hostrun/host/problem.h - what a step gives that may fail without being an error of the program.
#pragma once

#include <optional>
#include <string>

namespace hostrun {

// Why it failed, in one line for the user: "wanted X, found Y; do Z". Nothing: it did not fail.
using Problem = std::optional<std::string>;

}  // namespace hostrun
