// libcocoa/profiles/colour_transforms.h - numbers from one profile to another, through cached Little CMS
// transforms.
//
// Relative colorimetric, no black point compensation, double precision. May be called from any thread.
#pragma once

#include "libcocoa/profiles/colour_profiles.h"

// Converts one colour. Components are 0 to 1, but Lab is in its own units (L 0 to 100, a and b about -128 to
// 127). A component that is not a number counts as 0; results outside 0 to 1 are clipped, Lab is not. Returns
// 0, and writes nothing, if there is no way from one profile to the other.
int QVXConvert(QVXProfile* from, const double* in, QVXProfile* to, double* out);

// Whether there is a way from one profile to the other.
int QVXCanConvert(QVXProfile* from, QVXProfile* to);

// Frees the cached transforms of a profile that goes away. Called by the profiles themselves.
void QVXForgetTransforms(uint64_t profileNumber);

// How many transforms are cached; for tests.
unsigned QVXCachedTransforms(void);
