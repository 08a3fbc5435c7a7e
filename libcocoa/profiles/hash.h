// libcocoa/profiles/hash.h - the library's hash function: 32-bit FNV-1a, one piece at a time.
//
// Checksums in files are made with it: it never changes.
#pragma once

#include <stdint.h>

// The hash of nothing.
static const uint32_t QVXHashOfNothing = 2166136261u;

// The hash of what `hash` stands for, followed by the piece: a byte, or a word taken as a whole.
static inline uint32_t QVXHashWith(uint32_t hash, uint32_t piece) {
  return (hash ^ piece) * 16777619u;
}
