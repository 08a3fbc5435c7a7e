// libcocoa/colours/QVXProfileColor+Archives.m - writing a colour with a profile to an archive.
#import "libcocoa/colours/QVXProfileColor.h"
#import "libcocoa/colours/exact_colours.h"

@implementation QVXProfileColor (QVXArchives)

// Every GNUstep program can read the archive: it holds the device RGB twin, with sRGB's numbers. A keyed
// archive also holds the colour itself, under a key that other programs ignore.
- (void)encodeWithCoder:(NSCoder*)coder {
  NSColor* twin = [self colorUsingColorSpaceName:NSDeviceRGBColorSpace];
  if (!twin)
    [NSException raise:NSInvalidArchiveOperationException
                format:@"wanted a colour that can be converted to device RGB, found %@; convert it before it "
                       @"is archived",
                       self];
  [twin encodeWithCoder:coder];
  if ([coder allowsKeyedCoding]) QVXEncodeExactColor(self, coder);
}

@end
