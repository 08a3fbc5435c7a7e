// libcocoa/profiles/components.c - the components of a colour: their range, their hash.
#include "libcocoa/profiles/components.h"

#include <math.h>
#include <string.h>

#include "libcocoa/profiles/hash.h"

double QVXClip(double value) {
  return value > 0 ? (value < 1 ? value : 1) : 0;
}

double QVXHeldComponent(double value, bool isLab) {
  if (!isLab) return QVXClip(value);
  return isfinite(value) ? value : 0;
}

uint32_t QVXHashOfComponents(const float* components, unsigned count) {
  uint32_t hash = QVXHashOfNothing;
  for (unsigned i = 0; i < count; ++i) {
    float value = components[i] == 0 ? 0 : components[i];  // minus zero equals zero
    uint32_t bits;
    memcpy(&bits, &value, sizeof bits);
    hash = QVXHashWith(hash, bits);
    hash ^= hash >> 15;
  }
  return hash;
}
