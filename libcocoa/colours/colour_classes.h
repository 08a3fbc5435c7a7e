// libcocoa/colours/colour_classes.h - the public methods that this library adds to GNUstep's colour classes.
//
// The desktop platform's names and meanings; docs/platform-colours.md compares them one by one.
#pragma once

#import <AppKit/AppKit.h>

// A handle is the object behind it, borrowed: valid while that object lives, and only then accepted back.
typedef struct CGColorSpace* CGColorSpaceRef;

// The model of spaces that are lists of colours, and of patterns: no space here has them.
enum { NSIndexedColorSpaceModel = 5, NSPatternColorSpaceModel = 6 };

@interface NSColorSpace (QVXAdditions) <NSCopying>
+ (NSColorSpace*)sRGBColorSpace;
+ (NSColorSpace*)adobeRGB1998ColorSpace;
+ (NSColorSpace*)genericGamma22GrayColorSpace;

// The predefined spaces of a model, in a fixed order: device, generic, then those with a name of their own.
// -1 stands for every model; a model that no space has gives an empty array.
+ (NSArray*)availableColorSpacesWithModel:(NSColorSpaceModel)model;

// The space that a colour-space name stands for; nil for names of no space (named, pattern, custom, unknown).
+ (NSColorSpace*)colorSpaceForColorSpaceName:(NSString*)name;
- (NSString*)colorSpaceName;

- (id)initWithCGColorSpace:(CGColorSpaceRef)space;
- (CGColorSpaceRef)CGColorSpace;
@end

@interface NSColor (QVXAdditions)
+ (NSColor*)colorWithCGColor:(CGColorRef)color;
+ (NSColor*)underPageBackgroundColor;
@end
