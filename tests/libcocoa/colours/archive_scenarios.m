// tests/libcocoa/colours/archive_scenarios.m - colours to archives and back.
#import "tests/libcocoa/colours/scenario.h"

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

static NSString* StockUnkeyed(void) {
  return YesNo([Unkeyed(StockKinds()) isEqual:StockKinds()]);
}
static NSString* StockKeyed(void) {
  return YesNo([Keyed(StockKinds()) isEqual:StockKinds()]);
}

static NSColor* CMYK(void) {
  return [NSColor colorWithDeviceCyan:0.1 magenta:0.2 yellow:0.3 black:0.4 alpha:0.5];
}
static NSString* CMYKUnkeyed(void) {
  return Shown(Unkeyed(CMYK()));
}
static NSString* CMYKKeyed(void) {
  return Shown(Keyed(CMYK()));
}

static NSString* OpaqueCMYKKeyed(void) {
  return Shown(Keyed([NSColor colorWithDeviceCyan:0.1 magenta:0.2 yellow:0.3 black:0.4 alpha:1]));
}

static NSString* PatternUnkeyed(void) {
  return [Unkeyed(Pattern()) colorSpaceName] ?: @"nil";
}
static NSString* PatternKeyed(void) {
  return [Keyed(Pattern()) colorSpaceName] ?: @"nil";
}

static NSString* CustomUnkeyed(void) {
  return Shown(Unkeyed([NSColor colorWithSRGBRed:0.25 green:0.5 blue:0.75 alpha:0.5]));
}

static NSString* CustomKeyed(void) {
  NSColorSpace* space = [[[NSColorSpace alloc] initWithICCProfileData:ProfileNamed(@"lab.icc")] autorelease];
  const CGFloat lab[] = {50, 1.0F / 3, -20, 0.5};
  NSColor* color = [NSColor colorWithColorSpace:space components:lab count:4];
  return YesNo(color && [Keyed(color) isEqual:color]);
}

// What a program without this library sees.
static NSString* CustomKeyedTwin(void) {
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

static NSString* UnknownKind(void) {
  return Shown(Unkeyed(Unheard()));
}

const Scenario archiveScenarios[] = {
    {"stock colours come back from an unkeyed archive", "yes", "yes", StockUnkeyed},
    {"stock colours come back from a keyed archive", "yes", "yes", StockKeyed},
    {"a CMYK colour comes back from an unkeyed archive", "0.100 0.200 0.300 0.400 0.500 DeviceCMYK",
     "0.100 0.200 0.300 0.400 0.500 DeviceCMYK", CMYKUnkeyed},
    {"a CMYK colour comes back from a keyed archive in the right order",
     "0.100 0.300 0.200 0.400 0.500 DeviceCMYK", "0.100 0.200 0.300 0.400 0.500 DeviceCMYK", CMYKKeyed},
    {"an opaque CMYK colour comes back from a keyed archive opaque",
     "0.100 0.300 0.200 0.400 1.000 DeviceCMYK", "0.100 0.200 0.300 0.400 1.000 DeviceCMYK", OpaqueCMYKKeyed},
    {"a pattern comes back from an unkeyed archive", "nil", "NSPatternColorSpace", PatternUnkeyed},
    {"a pattern comes back from a keyed archive", "NSPatternColorSpace", "NSPatternColorSpace", PatternKeyed},
    {"a custom colour comes back from an unkeyed archive as its device twin",
     "0.250 0.500 0.750 0.500 CalibratedRGB", "0.250 0.500 0.750 0.500 DeviceRGB", CustomUnkeyed},
    {"a custom colour comes back from a keyed archive exactly", "no", "yes", CustomKeyed},
    {"a reader that knows nothing of custom colours sees the device twin",
     "0.250 0.500 0.750 0.500 CalibratedRGB", "0.250 0.500 0.750 0.500 DeviceRGB", CustomKeyedTwin},
    {"a colour of an unheard-of kind is read as no colour", "nil", "nil", UnknownKind},
    {NULL, NULL, NULL, NULL},
};
