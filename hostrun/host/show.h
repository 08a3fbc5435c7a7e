// hostrun/host/show.h - values as people read them.
#pragma once

#include <string>

#include "hostrun/host/value.h"

namespace hostrun {

// One line; of a long array its first elements, of an array deep in others its length. With `trueColour` a
// colour is followed by a block painted in it, for terminals with 24-bit colours.
std::string ReadableText(const Value& value, bool trueColour);

}  // namespace hostrun
