// libcocoa/colours/six_digits.h - numbers as texts, for components.
#pragma once

#include <stddef.h>

// The longest text that "%g" makes of a float, with its end.
enum { QVXNumberRoom = sizeof "-1.17549e-38" };

// Writes what "%g" writes, with a point in every locale: six significant digits, rounded from the exact value
// to the nearest, without trailing zeros. Answers the length; 0, and nothing is written, for what it leaves
// to others: a magnitude below 0.0001 that is not zero, one from 100,000 on, infinity, no number. `text` has
// room for QVXNumberRoom bytes.
size_t QVXWriteSixDigits(float number, char* text);
