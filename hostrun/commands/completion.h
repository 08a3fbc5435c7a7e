// hostrun/commands/completion.h - what the beginning of a word may become.
#pragma once

#include <string>
#include <vector>

#include "hostrun/language/binder.h"

namespace hostrun {

// The classes, functions, keywords and the binder's names that begin so; behind a dot the members of what
// stands before it. Whole words, with what stands before the dot, in alphabetical order.
std::vector<std::string> CompleteWord(const Binder& binder, const std::string& beginning);

}  // namespace hostrun
