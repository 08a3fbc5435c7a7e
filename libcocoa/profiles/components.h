// libcocoa/profiles/components.h - the components of a colour: how many, their range, their hash.
#pragma once

#include <math.h>
#include <stdbool.h>
#include <stdint.h>

// The most channels a space can have, and the most components a colour: those, then the alpha.
enum { QVXMostChannels = 15, QVXMostComponents = QVXMostChannels + 1 };

// The value clipped to 0 to 1; 0 if it is not a number.
static inline double QVXClip(double value) {
  return value > 0 ? (value < 1 ? value : 1) : 0;
}

// A component as a space can hold it: clipped to 0 to 1, or, where the space is Lab with its own units, 0 if
// it is not finite.
static inline double QVXHeldComponent(double value, bool isLab) {
  if (!isLab) return QVXClip(value);
  return isfinite(value) ? value : 0;
}

// Equal components have equal hashes, zero and minus zero included.
uint32_t QVXHashOfComponents(const float* components, unsigned count);
