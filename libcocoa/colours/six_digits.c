// libcocoa/colours/six_digits.c - numbers as texts, for components.
#include "libcocoa/colours/six_digits.h"

#include <math.h>
#include <stdint.h>
#include <string.h>

enum { kDigits = 6, kFirstDigit = 100000, kFractionBits = 23 };

// The power of ten of the first digit, for 0.0001 to 100,000. No float lies between a power of ten and the
// double nearest to it.
static int PowerOfFirstDigit(double size) {
  static const double kPowers[] = {1e-3, 1e-2, 1e-1, 1, 1e1, 1e2, 1e3, 1e4};
  int power = -4;
  for (unsigned i = 0; i < sizeof kPowers / sizeof *kPowers && size >= kPowers[i]; ++i) ++power;
  return power;
}

// size * 10^decimals as a whole number: to the nearest, to the even one of two. All bits are there to decide:
// 24 of a float, and 30 of a power of ten up to the ninth.
static uint32_t Scaled(float size, int decimals) {
  static const uint32_t kPowers[] = {1,      10,      100,      1000,      10000,
                                     100000, 1000000, 10000000, 100000000, 1000000000};
  uint32_t bits;
  memcpy(&bits, &size, sizeof bits);
  int shift = 127 + kFractionBits - (int)(bits >> kFractionBits);  // 7 to 37
  uint32_t significand = (bits & ((1U << kFractionBits) - 1)) | 1U << kFractionBits;
  uint64_t exact = (uint64_t)significand * kPowers[decimals];
  uint64_t half = (uint64_t)1 << (shift - 1);
  uint32_t whole = (uint32_t)(exact >> shift);
  uint64_t rest = exact - ((uint64_t)whole << shift);
  return rest > half || (rest == half && whole % 2 != 0) ? whole + 1 : whole;
}

size_t QVXWriteSixDigits(float number, char* text) {
  char* end = text;
  float size = fabsf(number);
  if (!(size == 0 || ((double)size >= 1e-4 && size < 1e5F))) return 0;
  if (signbit(number)) *end++ = '-';
  if (size == 0) {
    *end++ = '0';
    *end = 0;
    return (size_t)(end - text);
  }
  int power = PowerOfFirstDigit(size);
  uint32_t digits = Scaled(size, kDigits - 1 - power);
  if (digits == 10 * kFirstDigit) {
    digits = kFirstDigit;
    ++power;
  }
  if (power < 0) {
    memcpy(end, "0.000", 5);
    end += 1 - power;
  }
  for (; digits != 0 || power >= 0; --power) {
    *end++ = (char)('0' + digits / kFirstDigit);
    digits = digits % kFirstDigit * 10;
    if (power == 0 && digits != 0) *end++ = '.';
  }
  *end = 0;
  return (size_t)(end - text);
}
