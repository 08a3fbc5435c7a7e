// tests/libcocoa/colours/archive_scenarios.m - colours to archives and back.
#import "tests/libcocoa/colours/scenario.h"

#include <objc/runtime.h>

static id Unkeyed(id object) {
  return [NSUnarchiver unarchiveObjectWithData:[NSArchiver archivedDataWithRootObject:object]];
}
static id Keyed(id object) {
  return [NSKeyedUnarchiver unarchiveObjectWithData:[NSKeyedArchiver archivedDataWithRootObject:object]];
}

static NSArray* StockKinds(void) {
  return [NSArray arrayWithObjects:[NSColor colorWithDeviceWhite:0.25 alpha:0.5],
                                   [NSColor colorWithCalibratedWhite:0.25 alpha:0.5],
                                   [NSColor colorWithDeviceRed:0.25 green:0.5 blue:0.75 alpha:0.5],
                                   [NSColor colorWithCalibratedRed:0.25 green:0.5 blue:0.75 alpha:0.5],
                                   [NSColor controlColor], nil];
}

SCENARIO("stock colours come back from an unkeyed archive", "yes", "yes") {
  return YesNo([Unkeyed(StockKinds()) isEqual:StockKinds()]);
}
SCENARIO("stock colours come back from a keyed archive", "yes", "yes") {
  return YesNo([Keyed(StockKinds()) isEqual:StockKinds()]);
}

static NSColor* CMYK(void) {
  return [NSColor colorWithDeviceCyan:0.1 magenta:0.2 yellow:0.3 black:0.4 alpha:0.5];
}
SCENARIO("a CMYK colour comes back from an unkeyed archive", "0.100 0.200 0.300 0.400 0.500 DeviceCMYK",
         "0.100 0.200 0.300 0.400 0.500 DeviceCMYK") {
  return Shown(Unkeyed(CMYK()));
}
SCENARIO("a CMYK colour comes back from a keyed archive in the right order",
         "0.100 0.300 0.200 0.400 0.500 DeviceCMYK", "0.100 0.200 0.300 0.400 0.500 DeviceCMYK") {
  return Shown(Keyed(CMYK()));
}

SCENARIO("an opaque CMYK colour comes back from a keyed archive opaque",
         "0.100 0.300 0.200 0.400 1.000 DeviceCMYK", "0.100 0.200 0.300 0.400 1.000 DeviceCMYK") {
  return Shown(Keyed([NSColor colorWithDeviceCyan:0.1 magenta:0.2 yellow:0.3 black:0.4 alpha:1]));
}

// Decodes a keyed CMYK colour with that text for its components.
@interface CMYKCoder : NSCoder {
 @public
  const char* components;
}
@end

@implementation CMYKCoder
- (BOOL)allowsKeyedCoding {
  return YES;
}
- (BOOL)containsValueForKey:(NSString*)key {
  return [key isEqual:@"NSColorSpace"];
}
- (int)decodeIntForKey:(NSString*)key {
  return [key isEqual:@"NSColorSpace"] ? 5 : 0;
}
- (const uint8_t*)decodeBytesForKey:(NSString*)key returnedLength:(NSUInteger*)length {
  if (![key isEqual:@"NSCYMK"]) return NULL;
  *length = strlen(components);
  return (const uint8_t*)components;
}
@end

static NSString* CMYKFrom(const char* components) {
  CMYKCoder* coder = [[CMYKCoder new] autorelease];
  coder->components = components;
  return Shown([[[NSColor alloc] initWithCoder:coder] autorelease]);
}

SCENARIO("a keyed CMYK colour may have an alpha, and what follows does not count", "",
         "0.100 0.200 0.300 0.400 1.000 DeviceCMYK, 0.100 0.200 0.300 0.400 0.500 DeviceCMYK, "
         "0.100 0.200 0.300 0.400 0.500 DeviceCMYK") {
  return Joined([NSArray arrayWithObjects:CMYKFrom("0.1 0.2 0.3 0.4"), CMYKFrom("0.1 0.2 0.3 0.4 0.5"),
                                          CMYKFrom("0.1 0.2 0.3 0.4 0.5 0.6"), nil]);
}

static BOOL (*scanFloat)(id self, SEL selector, float* value);
static int scans;
static BOOL ScanFloat(id self, SEL selector, float* value) {
  ++scans;
  return scanFloat(self, selector, value);
}

SCENARIO("a keyed CMYK colour's text is read as far as the alpha", "", "5") {
  CMYKFrom("0");
  Method method = class_getInstanceMethod([NSScanner class], @selector(scanFloat:));
  scanFloat = (BOOL(*)(id, SEL, float*))(void (*)(void))method_setImplementation(
      method, (IMP)(void (*)(void))ScanFloat);
  CMYKFrom("0.1 0.2 0.3 0.4 0.5 0.6");
  return [NSString stringWithFormat:@"%d", scans];
}

SCENARIO("a pattern comes back from an unkeyed archive", "nil", "NSPatternColorSpace") {
  return [Unkeyed(Pattern()) colorSpaceName] ?: @"nil";
}
SCENARIO("a pattern comes back from a keyed archive", "NSPatternColorSpace", "NSPatternColorSpace") {
  return [Keyed(Pattern()) colorSpaceName] ?: @"nil";
}

SCENARIO("a custom colour comes back from an unkeyed archive as its device twin",
         "0.250 0.500 0.750 0.500 CalibratedRGB", "0.250 0.500 0.750 0.500 DeviceRGB") {
  return Shown(Unkeyed([NSColor colorWithSRGBRed:0.25 green:0.5 blue:0.75 alpha:0.5]));
}

SCENARIO("a custom colour comes back from a keyed archive exactly", "no", "yes") {
  NSColorSpace* space = [[[NSColorSpace alloc] initWithICCProfileData:ProfileNamed(@"lab.icc")] autorelease];
  const CGFloat lab[] = {50, 1.0F / 3, -20, 0.5};
  NSColor* color = [NSColor colorWithColorSpace:space components:lab count:4];
  return YesNo(color && [Keyed(color) isEqual:color]);
}

// What a program without this library sees.
SCENARIO("a reader that knows nothing of custom colours sees the device twin",
         "0.250 0.500 0.750 0.500 CalibratedRGB", "0.250 0.500 0.750 0.500 DeviceRGB") {
  NSData* data = [NSKeyedArchiver archivedDataWithRootObject:[NSColor colorWithSRGBRed:0.25
                                                                                 green:0.5
                                                                                  blue:0.75
                                                                                 alpha:0.5]];
  NSMutableData* stripped = [NSMutableData dataWithData:data];
  const char key[] = "QVXExactColour";
  NSRange found = [stripped rangeOfData:[NSData dataWithBytes:key length:strlen(key)]
                                options:0
                                  range:NSMakeRange(0, [stripped length])];
  if (found.length) [stripped replaceBytesInRange:found withBytes:"xxxxxxxxxxxxxx"];
  return Shown([NSKeyedUnarchiver unarchiveObjectWithData:stripped]);
}

SCENARIO("a colour of an unheard-of kind is read as no colour", "nil", "nil") {
  return Shown(Unkeyed(Unheard()));
}
