// libcocoa/profiles/components.c - the hash of a colour's components.
#include "libcocoa/profiles/components.h"

#include <string.h>

#include "libcocoa/profiles/hash.h"

uint32_t QVXHashOfComponents(const float* components, unsigned count) {
  uint32_t hash = QVXHashOfNothing;
  for (unsigned i = 0; i < count; ++i) {
    float value = components[i] == 0 ? 0 : components[i];  // minus zero equals zero
    uint32_t bits;
    memcpy(&bits, &value, sizeof bits);
    hash = QVXHashWith(hash, bits);
    hash ^= hash >> 20;  // most components end with zeros, which only the upper bits notice
  }
  return hash;
}
