// gnustep/NSColor+Drawing.m - drawing with a colour in a process that draws nowhere.
//
// GNUstep follows a null pointer there; with no graphics context there is nothing to set, and nothing happens.
#import "GNUstepColours.h"
#import "MethodReplacement.h"

static QVXMethod stockSetWhite;
static QVXMethod stockSetRGB;
static QVXMethod stockSetCMYK;
static QVXMethod stockSwatch;

static void Set(NSColor* self, SEL selector, QVXMethod stock) {
  if ([NSGraphicsContext currentContext]) ((void (*)(id, SEL))stock)(self, selector);
}

static void SetWhite(NSColor* self, SEL selector) { Set(self, selector, stockSetWhite); }
static void SetRGB(NSColor* self, SEL selector) { Set(self, selector, stockSetRGB); }
static void SetCMYK(NSColor* self, SEL selector) { Set(self, selector, stockSetCMYK); }

static void DrawSwatch(NSColor* self, SEL selector, NSRect rect) {
  if ([NSGraphicsContext currentContext]) ((void (*)(id, SEL, NSRect))stockSwatch)(self, selector, rect);
}

@interface QVXDrawingCorrections : NSObject
@end

@implementation QVXDrawingCorrections
+ (void)load {
  stockSetWhite = QVXReplaceMethod("GSWhiteColor", @selector(set), (QVXMethod)SetWhite);
  stockSetRGB = QVXReplaceMethod("GSRGBColor", @selector(set), (QVXMethod)SetRGB);
  stockSetCMYK = QVXReplaceMethod("GSDeviceCMYKColor", @selector(set), (QVXMethod)SetCMYK);
  stockSwatch = QVXReplaceMethod("NSColor", @selector(drawSwatchInRect:), (QVXMethod)DrawSwatch);
}
@end
