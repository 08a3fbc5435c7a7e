// libcocoa/colours/NSColorSpace+Predefined.h - the nine predefined spaces, and what colours know of a space
// beyond its public methods.
#pragma once

#import <AppKit/AppKit.h>

#include "libcocoa/profiles/colour_profiles.h"

// The models of spaces that are lists of colours, and of patterns: no space here has them.
enum { NSIndexedColorSpaceModel = 5, NSPatternColorSpaceModel = 6 };

@interface NSColorSpace (QVXPredefined)
+ (NSColorSpace*)sRGBColorSpace;
+ (NSColorSpace*)adobeRGB1998ColorSpace;
+ (NSColorSpace*)genericGamma22GrayColorSpace;

// The predefined spaces of a model, in a fixed order: device, generic, then those with a name of their own.
// -1 stands for every model; a model that no space has gives an empty array.
+ (NSArray*)availableColorSpacesWithModel:(NSColorSpaceModel)model;

// The space that a colour-space name stands for; nil for names of no space (named, pattern, custom, unknown).
+ (NSColorSpace*)colorSpaceForColorSpaceName:(NSString*)name;
- (NSString*)colorSpaceName;
@end

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

// The predefined space that is known by what its profile says; nil if the profile is no such space's. Generic
// CMYK is not among them: a space made from the profile that it happens to carry is equal to it, but keeps
// the profile's own name.
NSColorSpace* QVXSpaceOfBuiltIn(const QVXProfile* profile);

// The name of the space that a conversion by name is to lead to: the name; for nil that of the device's
// space; calibrated RGB where neither says.
NSString* QVXAskedName(NSString* name, NSDictionary* device);

// The name of GNUstep's own colours in the space; nil if colours in it are QVXProfileColor objects.
NSString* QVXStockNameOfSpace(NSColorSpace* space);

// The profile that the space carries, borrowed; NULL for the device spaces, and for generic CMYK where no
// CMYK profile is installed.
QVXProfile* QVXProfileOfSpace(NSColorSpace* space);

// Whether the two are one object or carry one profile.
BOOL QVXSpacesAreEqual(NSColorSpace* one, NSColorSpace* other);

// Its model; NSUnknownColorSpaceModel for nil.
NSColorSpaceModel QVXModelOfSpace(NSColorSpace* space);

// How many components its colours have beside the alpha; 0 for nil, and for a space that has no colours.
int QVXChannelsOfSpace(NSColorSpace* space);

// What a conversion asks of a space, looked up at once.
typedef struct {
  QVXSpaceKind kind;
  NSString* stockName;  // as QVXStockNameOfSpace
  QVXProfile* profile;  // as QVXProfileOfSpace
  int channels;         // as QVXChannelsOfSpace
} QVXSpaceFacts;
QVXSpaceFacts QVXFactsOfSpace(NSColorSpace* space);

// The profile that colours of the space are converted with, borrowed: the carried one; sRGB for device RGB;
// gamma 2.2 for device gray; the device space's for one of gray or RGB that has nothing but its model. NULL
// for the CMYK spaces without a profile, which are converted by formula through device RGB, and for any other
// without one, which no conversion leads from or to.
QVXProfile* QVXWorkingProfileOfSpace(NSColorSpace* space);
