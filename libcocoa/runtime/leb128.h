// libcocoa/runtime/leb128.h - numbers of variable length, as unwind tables have them.
#pragma once

#include <stdint.h>

// Each reads a number of at most 32 bits at `p` and answers where it ends.

static inline const uint8_t* QVXReadUnsigned(const uint8_t* p, uint32_t* value) {
  unsigned shift = 0;
  *value = 0;
  do {
    if (shift < 32) *value |= (uint32_t)(*p & 0x7f) << shift;
    shift += 7;
  } while (*p++ & 0x80);
  return p;
}

static inline const uint8_t* QVXReadSigned(const uint8_t* p, int32_t* value) {
  uint32_t bits = 0;
  unsigned shift = 0;
  do {
    if (shift < 32) bits |= (uint32_t)(*p & 0x7f) << shift;
    shift += 7;
  } while (*p++ & 0x80);
  if (shift < 32 && (p[-1] & 0x40)) bits |= ~0u << shift;
  *value = (int32_t)bits;
  return p;
}
