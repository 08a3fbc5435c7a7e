// hostrun/host/position.h - where a program stands.
#pragma once

#include <cstdint>

namespace hostrun {

// Both count from 1; line 0 is outside of any program.
struct Position {
  std::int32_t line = 0;
  std::int32_t column = 0;
};

// What runs right now. New objects and new exceptions note it.
inline constinit Position currentPosition;

}  // namespace hostrun
