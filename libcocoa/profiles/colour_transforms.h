// libcocoa/profiles/colour_transforms.h - numbers from one profile to another, through cached Little CMS
// transforms.
//
// Relative colorimetric, no black point compensation, double precision. May be called from any thread.
#pragma once

#include <stdbool.h>
#include <stdint.h>

// One end of a transform: what must be known of a profile. Little CMS reads tags through the handle, which is
// not safe from two threads: once two know the profile, only these functions use it.
typedef struct {
  void* handle;     // the open profile, a cmsHPROFILE
  uint64_t number;  // of the profile, never used twice in a process
  unsigned channels;
  bool isLab;
} QVXTransformEnd;

// Converts one colour. Components are 0 to 1, but Lab is in its own units (L 0 to 100, a and b about -128 to
// 127). A component that is not a number counts as 0; results outside 0 to 1 are clipped, Lab is not. False,
// and nothing is written, if there is no way from one profile to the other.
bool QVXTransform(const QVXTransformEnd* from, const double* in, const QVXTransformEnd* to, double* out);

// Whether there is a way from one profile to the other.
bool QVXCanTransform(const QVXTransformEnd* from, const QVXTransformEnd* to);

// Frees the cached transforms of a profile that goes away.
void QVXForgetTransforms(uint64_t profileNumber);
