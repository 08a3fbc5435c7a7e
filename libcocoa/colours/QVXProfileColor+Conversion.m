// libcocoa/colours/QVXProfileColor+Conversion.m - a colour with a profile as one of GNUstep's own kinds, for
// drawing too.
#import "libcocoa/colours/QVXProfileColor.h"
#import "libcocoa/colours/colour_conversion.h"

@implementation QVXProfileColor (QVXConversion)

- (NSColor*)colorUsingColorSpaceName:(NSString*)name device:(NSDictionary*)device {
  NSString* asked = QVXAskedName(name, device);
  if ([asked isEqual:NSCustomColorSpace]) return self;
  return QVXColorInSpace(self, [NSColorSpace colorSpaceForColorSpaceName:asked]);
}

- (void)set {
  [[self colorUsingColorSpaceName:NSDeviceRGBColorSpace] set];
}

- (void)setFill {
  [[self colorUsingColorSpaceName:NSDeviceRGBColorSpace] setFill];
}

- (void)setStroke {
  [[self colorUsingColorSpaceName:NSDeviceRGBColorSpace] setStroke];
}

@end
