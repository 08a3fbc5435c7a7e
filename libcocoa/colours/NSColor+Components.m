// libcocoa/colours/NSColor+Components.m - components as text, and refusing one that a colour does not have.
//
// The exception is GNUstep's; the reason names the method and the colour. Every kind of colour inherits these
// methods for the components that it lacks.
#import "libcocoa/colours/NSColor+Components.h"

#import "libcocoa/colours/gnustep_colours.h"
#include "libcocoa/colours/six_digits.h"
#include "libcocoa/profiles/components.h"

typedef struct {
  char bytes[QVXMostComponents * QVXNumberRoom + 1];
} ComponentText;

// The components with the alpha, a blank before each. By GNUstep's formats, the numbers would be half the
// cost of an exception.
static ComponentText TextOfComponents(NSColor* color) {
  ComponentText text;
  CGFloat components[QVXMostComponents];
  [color getComponents:components];
  NSInteger count = [color numberOfComponents];
  char* end = text.bytes;
  for (NSInteger i = 0; i < count; ++i) {
    *end++ = ' ';
    size_t length = QVXWriteSixDigits(components[i], end);
    if (length == 0)
      length = strlen(strcpy(end, [[NSString stringWithFormat:@"%g", (double)components[i]] UTF8String]));
    end += length;
  }
  *end = 0;
  return text;
}

NSString* QVXWithComponents(NSString* text, NSColor* color) {
  return [text stringByAppendingString:[NSString stringWithUTF8String:TextOfComponents(color).bytes]];
}

// As the desktop platform describes the colour, where GNUstep's description is a dictionary. A pattern's
// image is not asked what it is: one that can't be decoded may raise.
static NSString* NameInReasons(NSColor* color, ComponentText* components) {
  if ([color isKindOfClass:[GSPatternColor class]]) return NSPatternColorSpace;
  if ([color isKindOfClass:[GSNamedColor class]])
    return [NSString stringWithFormat:@"%@ %@ %@", NSNamedColorSpace, [color catalogNameComponent],
                                      [color colorNameComponent]];
  if ([color isKindOfClass:[GSWhiteColor class]] || [color isKindOfClass:[GSRGBColor class]] ||
      [color isKindOfClass:[GSDeviceCMYKColor class]]) {
    *components = TextOfComponents(color);
    return [color colorSpaceName];
  }
  return [NSString stringWithFormat:@"%@", color];
}

void QVXRefuseComponent(NSColor* color, SEL selector) {
  ComponentText components = {""};
  NSString* name = NameInReasons(color, &components);
  char text[sizeof components + 100];
  snprintf(text, sizeof text, "*** -%s not valid for the NSColor ", sel_getName(selector));
  NSMutableString* reason = [NSMutableString stringWithUTF8String:text];
  [reason appendString:name];
  snprintf(text, sizeof text, "%s; need to first convert colorspace.", components.bytes);
  [reason appendString:[NSString stringWithUTF8String:text]];
  [[NSException exceptionWithName:NSInternalInconsistencyException reason:reason userInfo:nil] raise];
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
