// libcocoa/colours/NSColor+Drawing.m - drawing with a colour in a process that draws nowhere.
//
// Without a graphics context GNUstep follows a null pointer; here nothing happens.
#import "libcocoa/colours/gnustep_colours.h"
#import "libcocoa/runtime/stock_methods.h"

static void Set(NSColor* self, SEL selector, const char* className, QVXMethod* kept) {
  if (![NSGraphicsContext currentContext]) return;
  ((void (*)(id, SEL))QVXStockMethod(className, selector, kept))(self, selector);
}

@implementation GSWhiteColor (QVXDrawing)
- (void)set {
  static QVXMethod stock;
  Set(self, _cmd, "GSWhiteColor", &stock);
}
@end

@implementation GSRGBColor (QVXDrawing)
- (void)set {
  static QVXMethod stock;
  Set(self, _cmd, "GSRGBColor", &stock);
}
@end

@implementation GSDeviceCMYKColor (QVXDrawing)
- (void)set {
  static QVXMethod stock;
  Set(self, _cmd, "GSDeviceCMYKColor", &stock);
}
@end

@implementation NSColor (QVXDrawing)
- (void)drawSwatchInRect:(NSRect)rect {
  static QVXMethod stock;
  if (![NSGraphicsContext currentContext]) return;
  ((void (*)(id, SEL, NSRect))QVXStockMethod("NSColor", _cmd, &stock))(self, _cmd, rect);
}
@end
