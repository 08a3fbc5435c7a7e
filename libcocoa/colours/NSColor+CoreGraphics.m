// libcocoa/colours/NSColor+CoreGraphics.m - colours as Core Graphics handles, and back.
//
// The handle of a colour is the colour itself: it stays valid while the colour lives, and comes back as the
// same colour in the same space, patterns and named colours included.
#import "libcocoa/colours/NSColor+CoreGraphics.h"

#include <objc/message.h>

#import "libcocoa/colours/exported_handles.h"
#include "libcocoa/runtime/kept_class.h"
#include "libcocoa/runtime/stock_methods.h"

@implementation NSColor (QVXCoreGraphics)

- (CGColorRef)CGColor {
  QVXExportHandle(self);
  return (CGColorRef)self;
}

+ (NSColor*)colorWithCGColor:(CGColorRef)handle {
  if (!QVXIsLiveHandle(handle)) return nil;
  NSColor* color = (NSColor*)handle;
  return [color isKindOfClass:[NSColor class]] ? [[color retain] autorelease] : nil;
}

// Every kind of colour ends here when it is deallocated. In a category the compiler looks the class of
// `super` up by its name each time, which is a third of what ending a colour costs.
- (void)dealloc {
  static Class kept;
  QVXForgetHandle(self);
  struct objc_super inherited = {self, QVXKeptClass(&kept, "NSObject")};
  ((void (*)(id, SEL))(QVXMethod)objc_msg_lookup_super(&inherited, _cmd))(self, _cmd);
  return;
  [super dealloc];  // never reached: it is what was just done
}

@end
