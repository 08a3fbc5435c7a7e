// tests/libcocoa/colours/trailer.c - the end of a trailer with exact colours, made as anybody can make it.
#include "tests/libcocoa/colours/trailer.h"

#include <stdint.h>
#include <string.h>

static void PutWord(unsigned char* place, uint32_t word) {
  for (int i = 0; i < 4; ++i) place[i] = (unsigned char)(word >> 8 * i);
}

void MakeSeal(const unsigned char* bytes, size_t size, size_t trailerSize, unsigned char* seal) {
  uint32_t sum = 2166136261u;
  for (size_t i = 0; i < size; ++i) sum = (sum ^ bytes[i]) * 16777619u;
  PutWord(seal, sum);
  PutWord(seal + 4, (uint32_t)trailerSize + 4);
  memcpy(seal + 8, "QVXexact", 8);
}
