// libcocoa/colours/NSColor+System.h - the colours of the catalogue "System", in the light appearance.
#pragma once

#import <AppKit/AppKit.h>

// The name of the catalogue, and of the list that holds its colours.
extern NSString* const QVXSystemCatalogue;

// The light value of a system colour, in calibrated RGB, whatever the lists hold; nil for a name that is
// none.
NSColor* QVXLightColor(NSString* name);

@interface NSColor (QVXSystem)
+ (NSColor*)underPageBackgroundColor;
@end
