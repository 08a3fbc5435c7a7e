// libcocoa/profiles/colour_profiles.h - ICC profiles, checked, shared and reference-counted.
//
// Every profile that enters the process comes through here. Profiles whose bytes differ only in what does not
// touch colour (date, flags, rendering intent, identifier) are one and the same QVXProfile, so that "same
// pointer" is "same colour space". All functions may be called from any thread.
#pragma once

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

#include "libcocoa/profiles/built_in_profiles.h"

typedef struct QVXProfile QVXProfile;

// The values of NSColorSpaceModel.
enum { QVXGrayModel = 0, QVXRGBModel = 1, QVXCMYKModel = 2, QVXLabModel = 3, QVXDeviceNModel = 4 };

// Profiles above this size, in bytes, are refused before they are looked at.
enum { QVXLargestProfile = 32 * 1024 * 1024 };

// A checked profile, with one reference for the caller; NULL if the bytes are no profile that colours can be
// converted from. Bytes after the size that the header declares are ignored.
QVXProfile* QVXProfileOpen(const void* bytes, size_t size);

// The built-in profile, borrowed: it is made when it is first asked for, and then lives for ever. NULL only
// when memory is exhausted.
QVXProfile* QVXProfileBuiltIn(QVXBuiltIn which);

// The live profile behind a handle that a program hands in, with one reference for the caller; NULL if the
// pointer is not, or no longer, a profile. The pointer is never followed before it is known.
QVXProfile* QVXProfileFromHandle(const void* handle);

// Gives a reference back; NULL is allowed.
void QVXProfileRelease(QVXProfile* profile);

int QVXProfileModel(const QVXProfile* profile);
unsigned QVXProfileChannels(const QVXProfile* profile);  // 1 to QVXMostChannels
uint32_t QVXProfileHash(const QVXProfile* profile);

// Whether colours can be converted to the profile too: many a camera's and scanner's only leads out of its
// space.
bool QVXProfileLeadsBothWays(const QVXProfile* profile);

// The bytes and their number; they live as long as the profile.
const void* QVXProfileBytes(const QVXProfile* profile, size_t* size);

// The description tag as UTF-16 and its number of units, 0 if there is none; a byte-order mark is kept. Lives
// as long as the profile.
const uint16_t* QVXProfileDescription(const QVXProfile* profile, size_t* length);

// Converts one colour from one profile to another, as QVXTransform does. False if the second leads one way.
bool QVXConvert(const QVXProfile* from, const double* in, const QVXProfile* to, double* out);
