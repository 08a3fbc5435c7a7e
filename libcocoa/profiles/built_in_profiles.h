// libcocoa/profiles/built_in_profiles.h - the profiles that the library makes itself: the same bytes in every
// run.
#pragma once

#include <stddef.h>

typedef enum {
  QVXBuiltInSRGB,
  QVXBuiltInAdobeRGB,
  QVXBuiltInGenericRGB,
  QVXBuiltInGenericGray,
  QVXBuiltInGamma22Gray,
  QVXBuiltInCount
} QVXBuiltIn;

// The bytes of a new profile, to be freed by the caller, and their number; NULL only when memory is
// exhausted.
void* QVXMakeBuiltIn(QVXBuiltIn which, size_t* size);
