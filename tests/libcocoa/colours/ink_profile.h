// tests/libcocoa/colours/ink_profile.h - profiles that no package has: a printer with many inks, and a
// scanner.
//
// The printer has 1 to 15 channels, both directions. The first ink darkens; the second and the third shift
// from green to red and from blue to yellow, and do nothing at one half. The others darken too, each its
// share of a half:
//   L = 100 (1 - c0) (1 - mean(c3 ...) / 2), a = 200 c1 - 100, b = 200 c2 - 100.
// Separating uses the first three only.
//
// The scanner sees greys only, and leads one way:
//   L = 100 c1, a = b = 0.
#pragma once

#include <lcms2.h>
#include <stddef.h>  // NOLINT(modernize-deprecated-headers): for C too

#ifdef __cplusplus
extern "C" {
#endif

// The printer's or the scanner's bytes, to be freed; NULL if Little CMS can't make it.
void* MakeInkProfile(unsigned inks, size_t* size);
void* MakeInputProfile(cmsColorSpaceSignature space, size_t* size);

#ifdef __cplusplus
}
#endif
