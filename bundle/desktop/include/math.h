// bundle/desktop/include/math.h - the desktop's <math.h>: what libc++ names; the bundle calls none.
#pragma once

extern "C" {

double hypot(double x, double y);
double sqrt(double x);
double frexp(double value, int* exponent);

}  // extern "C"

template <typename Number>
constexpr bool signbit(Number value) {
  return __builtin_signbit(value) != 0;
}
template <typename Number>
constexpr bool isfinite(Number value) {
  return __builtin_isfinite(value);
}
template <typename Number>
constexpr bool isinf(Number value) {
  return __builtin_isinf(value) != 0;
}
template <typename Number>
constexpr bool isnan(Number value) {
  return __builtin_isnan(value);
}
