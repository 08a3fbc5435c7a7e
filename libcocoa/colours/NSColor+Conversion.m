// libcocoa/colours/NSColor+Conversion.m - which space a colour is in, conversion to another, and the hash.
#import "libcocoa/colours/colour_conversion.h"
#include "libcocoa/profiles/components.h"

@implementation NSColor (QVXConversion)

// nil for named colours and patterns, which have no space of their own.
- (NSColorSpace*)colorSpace {
  return [NSColorSpace colorSpaceForColorSpaceName:[self colorSpaceName]];
}

- (NSColor*)colorUsingColorSpace:(NSColorSpace*)space {
  return QVXColorInSpace(self, space);
}

// Inherited by the kinds that can't be converted: patterns.
- (NSColor*)colorUsingColorSpaceName:(NSString*)name device:(NSDictionary*)device {
  return [name isEqual:[self colorSpaceName]] ? self : nil;
}

// Inherited by the kinds that have components.
- (NSUInteger)hash {
  CGFloat components[QVXMostComponents];
  [self getComponents:components];
  return QVXHashOfComponents(components, (unsigned)[self numberOfComponents]);
}

@end
