// gnustep/NSColor+Components.m - what a colour answers when it is asked for a component of another kind.
//
// GNUstep's exception, with a reason that says which method was sent to which colour. These are the methods that every
// kind of colour inherits where it has no such component.
#import "ColourConversion.h"
#import "MethodReplacement.h"

void QVXRefuseComponent(NSColor* color, SEL selector) {
  [NSException raise:NSInternalInconsistencyException
              format:@"*** -%@ not valid for the NSColor %@; need to first convert colorspace.",
                     NSStringFromSelector(selector), color];
  __builtin_unreachable();
}

// One function serves every method: it never returns, and takes nothing but the receiver and the selector.
static void Refuse(NSColor* self, SEL selector) { QVXRefuseComponent(self, selector); }

@interface QVXComponentCorrections : NSObject
@end

@implementation QVXComponentCorrections
+ (void)load {
  const SEL refused[] = {
      @selector(redComponent),
      @selector(greenComponent),
      @selector(blueComponent),
      @selector(hueComponent),
      @selector(saturationComponent),
      @selector(brightnessComponent),
      @selector(whiteComponent),
      @selector(cyanComponent),
      @selector(magentaComponent),
      @selector(yellowComponent),
      @selector(blackComponent),
      @selector(getRed:green:blue:alpha:),
      @selector(getHue:saturation:brightness:alpha:),
      @selector(getWhite:alpha:),
      @selector(getCyan:magenta:yellow:black:alpha:),
      @selector(numberOfComponents),
      @selector(getComponents:),
      @selector(catalogNameComponent),
      @selector(colorNameComponent),
      @selector(localizedCatalogNameComponent),
      @selector(localizedColorNameComponent),
      @selector(patternImage),
  };
  for (unsigned i = 0; i < sizeof refused / sizeof *refused; i++)
    QVXReplaceMethod("NSColor", refused[i], (QVXMethod)Refuse);
}
@end
