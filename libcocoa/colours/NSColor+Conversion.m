// libcocoa/colours/NSColor+Conversion.m - which space a colour is in, conversion to another, and the hash.
#import "libcocoa/colours/colour_conversion.h"

@implementation NSColor (QVXConversion)

// nil for named colours and patterns, which have no space of their own.
- (NSColorSpace*)colorSpace {
  return [NSColorSpace colorSpaceForColorSpaceName:[self colorSpaceName]];
}

- (NSColor*)colorUsingColorSpace:(NSColorSpace*)space {
  return QVXColourInSpace(self, space);
}

// What a kind of colour that can't be converted (a pattern) inherits.
- (NSColor*)colorUsingColorSpaceName:(NSString*)name device:(NSDictionary*)device {
  (void)device;
  return [name isEqual:[self colorSpaceName]] ? self : nil;
}

// What the kinds with components inherit.
- (NSUInteger)hash {
  CGFloat components[QVXMostChannels + 1];
  [self getComponents:components];
  return QVXHashOfComponents(components, (unsigned)[self numberOfComponents]);
}

@end
