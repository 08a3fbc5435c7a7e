// tests/libcocoa/colours/ink_profile.h - a printer with many inks: a profile of 5 to 8 channels, both
// directions.
//
// The first ink darkens; the second and the third shift from green to red and from blue to yellow, and do
// nothing at one half. The others darken too, each its share of a half:
//   L = 100 (1 - c0) (1 - mean(c3 ...) / 2), a = 200 c1 - 100, b = 200 c2 - 100.
// Separating uses the first three only.
#pragma once

#include <stddef.h>  // NOLINT(modernize-deprecated-headers): for C too

#ifdef __cplusplus
extern "C" {
#endif

// The profile's bytes, to be freed; NULL if Little CMS can't make it.
void* MakeInkProfile(unsigned inks, size_t* size);

#ifdef __cplusplus
}
#endif
