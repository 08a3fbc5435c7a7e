// libcocoa/colours/NSColor+Factories.m - colours made from components in a given space.
#import "libcocoa/colours/colour_conversion.h"
#import "libcocoa/colours/hue_saturation_brightness.h"
#include "libcocoa/profiles/components.h"

@implementation NSColor (QVXFactories)

// The components end with the alpha. nil if colours can't be made in the space (nil, or a model that is
// none); NSInvalidArgumentException if the number of components is not the space's.
+ (NSColor*)colorWithColorSpace:(NSColorSpace*)space
                     components:(const CGFloat*)components
                          count:(NSInteger)count {
  int channels = QVXChannelsOfSpace(space);
  if (channels < 1 || channels > QVXMostChannels) return nil;
  if (!components || count != channels + 1)
    [NSException
         raise:NSInvalidArgumentException
        format:@"*** +%@ wanted %d components for a colour in %@ (%d and the alpha), found %d; pass them all",
               NSStringFromSelector(_cmd), channels + 1, space, channels, components ? (int)count : 0];
  return QVXColorWithComponents(space, components);
}

+ (NSColor*)colorWithSRGBRed:(CGFloat)red green:(CGFloat)green blue:(CGFloat)blue alpha:(CGFloat)alpha {
  return QVXColorWithComponents(QVXSpaceOfKind(QVXSRGBSpace), (CGFloat[]){red, green, blue, alpha});
}

+ (NSColor*)colorWithGenericGamma22White:(CGFloat)white alpha:(CGFloat)alpha {
  return QVXColorWithComponents(QVXSpaceOfKind(QVXGamma22GraySpace), (CGFloat[]){white, alpha});
}

+ (NSColor*)colorWithRed:(CGFloat)red green:(CGFloat)green blue:(CGFloat)blue alpha:(CGFloat)alpha {
  return [self colorWithSRGBRed:red green:green blue:blue alpha:alpha];
}

+ (NSColor*)colorWithWhite:(CGFloat)white alpha:(CGFloat)alpha {
  return [self colorWithGenericGamma22White:white alpha:alpha];
}

+ (NSColor*)colorWithHue:(CGFloat)hue
              saturation:(CGFloat)saturation
              brightness:(CGFloat)brightness
                   alpha:(CGFloat)alpha {
  return [self colorWithColorSpace:QVXSpaceOfKind(QVXSRGBSpace)
                               hue:hue
                        saturation:saturation
                        brightness:brightness
                             alpha:alpha];
}

// nil for a space whose model is not RGB.
+ (NSColor*)colorWithColorSpace:(NSColorSpace*)space
                            hue:(CGFloat)hue
                     saturation:(CGFloat)saturation
                     brightness:(CGFloat)brightness
                          alpha:(CGFloat)alpha {
  if ([space colorSpaceModel] != NSRGBColorSpaceModel) return nil;
  QVXRGB rgb = QVXRGBFromHSB(hue, saturation, brightness);
  return QVXColorWithComponents(space, (CGFloat[]){rgb.red, rgb.green, rgb.blue, alpha});
}

@end
