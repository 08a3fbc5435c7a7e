// libcocoa/colours/NSColor+CoreGraphics.m - colours as Core Graphics handles, and back.
//
// The handle of a colour is the colour itself: it stays valid while the colour lives, and comes back as the
// same colour in the same space, patterns and named colours included.
#import "libcocoa/colours/NSColor+CoreGraphics.h"

#import "libcocoa/colours/exported_handles.h"

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

// Every kind of colour ends here when it is deallocated.
- (void)dealloc {
  QVXForgetHandle(self);
  [super dealloc];
}

@end
