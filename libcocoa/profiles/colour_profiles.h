// libcocoa/profiles/colour_profiles.h - ICC profiles, checked, shared and reference-counted.
//
// Every profile that enters the process comes through here. Profiles whose bytes differ only in what does not
// touch colour (date, flags, rendering intent, identifier) are one and the same QVXProfile, so that "same
// pointer" is "same colour space". All functions may be called from any thread.
#pragma once

#include <stddef.h>
#include <stdint.h>

typedef struct QVXProfile QVXProfile;

// The values of NSColorSpaceModel.
enum { QVXGrayModel = 0, QVXRGBModel = 1, QVXCMYKModel = 2, QVXLabModel = 3, QVXDeviceNModel = 4 };

// The most channels a profile can have.
enum { QVXMostChannels = 15 };

// Profiles above this size are refused before they are looked at.
enum { QVXLargestProfile = 32 * 1024 * 1024 };

// The profile that the library makes itself. Each is made when it is first asked for, and then lives for
// ever.
typedef enum {
  QVXBuiltInSRGB,
  QVXBuiltInAdobeRGB,
  QVXBuiltInGenericRGB,
  QVXBuiltInGenericGray,
  QVXBuiltInGamma22Gray,
  QVXBuiltInCount
} QVXBuiltIn;

// A checked profile, with one reference for the caller; NULL if the bytes are no profile that colours can be
// converted to and from. Bytes after the size that the header declares are ignored.
QVXProfile* QVXProfileOpen(const void* bytes, size_t size);

// The built-in profile, borrowed. NULL only when memory is exhausted.
QVXProfile* QVXProfileBuiltIn(QVXBuiltIn which);

QVXProfile* QVXProfileRetain(QVXProfile* profile);
void QVXProfileRelease(QVXProfile* profile);  // NULL is allowed

// The live profile behind a handle that a program hands in, with one reference for the caller; NULL if the
// pointer is not, or no longer, a profile. The pointer is never followed before it is known.
QVXProfile* QVXProfileFromHandle(const void* handle);

int QVXProfileModel(const QVXProfile* profile);
unsigned QVXProfileChannels(const QVXProfile* profile);
uint32_t QVXProfileHash(const QVXProfile* profile);
uint64_t QVXProfileNumber(const QVXProfile* profile);  // never used twice in a process
const void* QVXProfileBytes(const QVXProfile* profile, size_t* size);

// The description tag in UTF-8, "" if there is none. Lives as long as the profile.
const char* QVXProfileDescription(const QVXProfile* profile);
