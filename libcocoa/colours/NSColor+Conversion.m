// libcocoa/colours/NSColor+Conversion.m - which space a colour is in, conversion to another, blends and
// the hash.
#include <math.h>

#import "libcocoa/colours/colour_conversion.h"
#include "libcocoa/profiles/components.h"
#include "libcocoa/runtime/kept_class.h"
#import "libcocoa/runtime/stock_methods.h"

@implementation NSColor (QVXConversion)

// nil for named colours and patterns, which have no space of their own.
- (NSColorSpace*)colorSpace {
  static Class kept;
  return [QVXKeptClass(&kept, "NSColorSpace") colorSpaceForColorSpaceName:[self colorSpaceName]];
}

- (NSColor*)colorUsingColorSpace:(NSColorSpace*)space {
  return QVXColorInSpace(self, space);
}

// Inherited by the kinds that can't be converted: patterns.
- (NSColor*)colorUsingColorSpaceName:(NSString*)name device:(NSDictionary*)device {
  return [name isEqual:[self colorSpaceName]] ? self : nil;
}

// A fraction that is not a number gives the receiver, whatever the other colour is.
- (NSColor*)blendedColorWithFraction:(CGFloat)fraction ofColor:(NSColor*)other {
  static QVXMethod stock;
  if (isnan(fraction)) return self;
  return ((id(*)(id, SEL, CGFloat, id))QVXStockMethod("NSColor", _cmd, &stock))(self, _cmd, fraction, other);
}

// Inherited by the kinds that have components.
- (NSUInteger)hash {
  CGFloat components[QVXMostComponents];
  [self getComponents:components];
  return QVXHashOfComponents(components, (unsigned)[self numberOfComponents]);
}

@end
