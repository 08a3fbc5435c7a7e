// libcocoa/colours/QVXProfileColor+Conversion.m - a colour with a profile as one of GNUstep's own kinds, for
// drawing too.
#import "libcocoa/colours/QVXProfileColor.h"
#import "libcocoa/colours/colour_conversion.h"

@implementation QVXProfileColor (QVXConversion)

- (NSColor*)colorUsingColorSpaceName:(NSString*)name device:(NSDictionary*)device {
  if (!name) name = [device objectForKey:NSDeviceColorSpaceName];
  if (!name) name = NSCalibratedRGBColorSpace;
  if ([name isEqual:NSCustomColorSpace]) return self;
  return QVXColorInSpace(self, [NSColorSpace colorSpaceForColorSpaceName:name]);
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
