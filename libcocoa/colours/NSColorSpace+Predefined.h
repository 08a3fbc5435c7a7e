// libcocoa/colours/NSColorSpace+Predefined.h - what the colour classes know of a colour space beyond its public
// methods.
#pragma once

#import "libcocoa/colours/colour_classes.h"
#include "libcocoa/profiles/colour_profiles.h"

// The predefined spaces, one object each. The numbers are written to archives: never change them.
typedef enum {
  QVXOtherSpace = 0,
  QVXDeviceRGBSpace = 1,
  QVXDeviceGraySpace = 2,
  QVXDeviceCMYKSpace = 3,
  QVXGenericRGBSpace = 4,
  QVXGenericGraySpace = 5,
  QVXGenericCMYKSpace = 6,
  QVXSRGBSpace = 7,
  QVXAdobeRGBSpace = 8,
  QVXGamma22GraySpace = 9,
  QVXSpaceKinds
} QVXSpaceKind;

// The one object of a kind; nil for a number that is none.
NSColorSpace* QVXSpaceOfKind(int kind);

// Which predefined space it is; QVXOtherSpace for those made from ICC data, and for nil.
QVXSpaceKind QVXKindOfSpace(NSColorSpace* space);

// The name of GNUstep's own colours in the space, or nil if colours in it are QVXProfileColor objects.
NSString* QVXStockNameOfSpace(NSColorSpace* space);

// The profile that the space carries, borrowed; NULL for the device spaces, and for generic CMYK where no
// CMYK profile is installed.
QVXProfile* QVXProfileOfSpace(NSColorSpace* space);

// The profile that colours of the space are converted with, borrowed: the carried one; sRGB for device RGB;
// gamma 2.2 for device gray; NULL for the CMYK spaces without a profile, which are converted by formula
// through device RGB.
QVXProfile* QVXWorkingProfileOfSpace(NSColorSpace* space);

@interface NSColorSpace (QVXProfiles)
// Makes the receiver, just allocated, the space of a profile and takes over the caller's reference to that.
// The bytes are kept as they are; NULL stands for the profile's own.
- (id)qvx_initWithProfile:(QVXProfile*)profile data:(NSData*)data;
@end
