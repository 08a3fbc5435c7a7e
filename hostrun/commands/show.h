// hostrun/commands/show.h - values as people read them.
#pragma once

#include <string>

#include "hostrun/host/value.h"

namespace hostrun {

// One line, or a few for a long array. A colour gets a block of itself where the terminal shows 24-bit
// colours.
std::string ReadableText(const Value& value, bool trueColour);

}  // namespace hostrun
