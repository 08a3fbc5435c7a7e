// libcocoa/colours/NSColor+Archives.m - reading colours back from archives.
//
// Corrects what GNUstep can't read of its own: keyed CMYK (it swaps magenta and yellow) and unkeyed patterns.
// A keyed archive that holds an exact colour gives that. What can't be read is nil.
#import "libcocoa/colours/exact_colours.h"
#import "libcocoa/colours/gnustep_colours.h"
#import "libcocoa/runtime/stock_methods.h"

enum { kKeyedCMYK = 5 };    // GNUstep's number, under the key NSColorSpace
enum { kNameVersion = 3 };  // from this version on, an unkeyed colour starts with its colour-space name

// From the numbers "c m y k" or "c m y k a", as GNUstep writes them; nil if there are none.
static NSColor* KeyedCMYK(NSCoder* coder) {
  NSUInteger size = 0;
  const uint8_t* bytes = [coder decodeBytesForKey:@"NSCYMK" returnedLength:&size];
  if (!bytes) return nil;
  NSString* text = [[[NSString alloc] initWithBytes:bytes length:size
                                           encoding:NSISOLatin1StringEncoding] autorelease];
  NSScanner* scanner = [NSScanner scannerWithString:text];
  float c[5] = {[4] = 1};
  unsigned found = 0;
  while (found < 5 && [scanner scanFloat:&c[found]]) ++found;
  return found < 4 ? nil : [NSColor colorWithDeviceCyan:c[0] magenta:c[1] yellow:c[2] black:c[3] alpha:c[4]];
}

static id StockInit(NSColor* self, SEL selector, NSCoder* coder) {
  static QVXMethod stock;
  return ((id(*)(id, SEL, NSCoder*))QVXStockMethod("NSColor", selector, &stock))(self, selector, coder);
}

static id KeyedColor(NSColor* self, SEL selector, NSCoder* coder) {
  NSColor* color = QVXDecodeExactColor(coder);
  if (!color && [coder containsValueForKey:@"NSColorSpace"] &&
      [coder decodeIntForKey:@"NSColorSpace"] == kKeyedCMYK)
    color = KeyedCMYK(coder);
  if (!color) return StockInit(self, selector, coder);
  [self release];
  return [color retain];
}

// The class that reads the rest of an unkeyed colour, by the name that it starts with.
static Class ReaderOf(NSString* name) {
  const struct {
    NSString* name;
    Class reader;
  } readers[] = {
      {NSDeviceWhiteColorSpace, [GSDeviceWhiteColor class]},
      {NSCalibratedWhiteColorSpace, [GSCalibratedWhiteColor class]},
      {NSDeviceCMYKColorSpace, [GSDeviceCMYKColor class]},
      {NSDeviceRGBColorSpace, [GSDeviceRGBColor class]},
      {NSCalibratedRGBColorSpace, [GSCalibratedRGBColor class]},
      {NSNamedColorSpace, [GSNamedColor class]},
      {NSPatternColorSpace, [GSPatternColor class]},
  };
  for (unsigned i = 0; i < sizeof readers / sizeof *readers; ++i)
    if ([readers[i].name isEqual:name]) return readers[i].reader;
  return Nil;
}

@implementation NSColor (QVXArchives)
- (id)initWithCoder:(NSCoder*)coder {
  if ([coder allowsKeyedCoding]) return KeyedColor(self, _cmd, coder);
  if ([coder versionForClassName:@"NSColor"] < kNameVersion) return StockInit(self, _cmd, coder);
  [self release];
  return [[ReaderOf([coder decodeObject]) alloc] initWithCoder:coder];
}
@end
