// libcocoa/colours/NSColor+Components.m - components as text, and refusing one that a colour does not have.
//
// The exception is GNUstep's; the reason names the method and the colour. Every kind of colour inherits these
// methods for the components that it lacks.
#import "libcocoa/colours/NSColor+Components.h"

#import "libcocoa/colours/gnustep_colours.h"
#include "libcocoa/profiles/components.h"

NSString* QVXWithComponents(NSString* text, NSColor* color) {
  CGFloat components[QVXMostComponents];
  NSMutableString* all = [NSMutableString stringWithString:text];
  [color getComponents:components];
  for (NSInteger i = 0; i < [color numberOfComponents]; ++i) [all appendFormat:@" %g", (double)components[i]];
  return all;
}

// As the desktop platform describes the colour, where GNUstep's description is a dictionary. A pattern's
// image is not asked what it is: one that can't be decoded may raise.
static NSString* NameInReasons(NSColor* color) {
  if ([color isKindOfClass:[GSPatternColor class]]) return NSPatternColorSpace;
  if ([color isKindOfClass:[GSNamedColor class]])
    return [NSString stringWithFormat:@"%@ %@ %@", NSNamedColorSpace, [color catalogNameComponent],
                                      [color colorNameComponent]];
  if ([color isKindOfClass:[GSWhiteColor class]] || [color isKindOfClass:[GSRGBColor class]] ||
      [color isKindOfClass:[GSDeviceCMYKColor class]])
    return QVXWithComponents([color colorSpaceName], color);
  return [color description];
}

void QVXRefuseComponent(NSColor* color, SEL selector) {
  [NSException raise:NSInternalInconsistencyException
              format:@"*** -%@ not valid for the NSColor %@; need to first convert colorspace.",
                     NSStringFromSelector(selector), NameInReasons(color)];
  __builtin_unreachable();
}

@implementation NSColor (QVXComponents)

// clang-format off
- (CGFloat)redComponent { QVXRefuseComponent(self, _cmd); }
- (CGFloat)greenComponent { QVXRefuseComponent(self, _cmd); }
- (CGFloat)blueComponent { QVXRefuseComponent(self, _cmd); }
- (CGFloat)hueComponent { QVXRefuseComponent(self, _cmd); }
- (CGFloat)saturationComponent { QVXRefuseComponent(self, _cmd); }
- (CGFloat)brightnessComponent { QVXRefuseComponent(self, _cmd); }
- (CGFloat)whiteComponent { QVXRefuseComponent(self, _cmd); }
- (CGFloat)cyanComponent { QVXRefuseComponent(self, _cmd); }
- (CGFloat)magentaComponent { QVXRefuseComponent(self, _cmd); }
- (CGFloat)yellowComponent { QVXRefuseComponent(self, _cmd); }
- (CGFloat)blackComponent { QVXRefuseComponent(self, _cmd); }
- (NSInteger)numberOfComponents { QVXRefuseComponent(self, _cmd); }
- (void)getComponents:(CGFloat*)components { QVXRefuseComponent(self, _cmd); }
- (NSString*)catalogNameComponent { QVXRefuseComponent(self, _cmd); }
- (NSString*)colorNameComponent { QVXRefuseComponent(self, _cmd); }
- (NSString*)localizedCatalogNameComponent { QVXRefuseComponent(self, _cmd); }
- (NSString*)localizedColorNameComponent { QVXRefuseComponent(self, _cmd); }
- (NSImage*)patternImage { QVXRefuseComponent(self, _cmd); }
// clang-format on

- (void)getRed:(CGFloat*)red green:(CGFloat*)green blue:(CGFloat*)blue alpha:(CGFloat*)alpha {
  QVXRefuseComponent(self, _cmd);
}

- (void)getHue:(CGFloat*)hue
    saturation:(CGFloat*)saturation
    brightness:(CGFloat*)brightness
         alpha:(CGFloat*)alpha {
  QVXRefuseComponent(self, _cmd);
}

- (void)getWhite:(CGFloat*)white alpha:(CGFloat*)alpha {
  QVXRefuseComponent(self, _cmd);
}

- (void)getCyan:(CGFloat*)cyan
        magenta:(CGFloat*)magenta
         yellow:(CGFloat*)yellow
          black:(CGFloat*)black
          alpha:(CGFloat*)alpha {
  QVXRefuseComponent(self, _cmd);
}

@end
