// tests/libcocoa/colours/pasteboard_scenarios.m - colours on a pasteboard.
//
// The pasteboard is a stand-in that keeps data by type: what is tested is what colours write and read.
#import "tests/libcocoa/colours/scenario.h"

@interface KeptData : NSObject {
  NSMutableDictionary* data;
}
@end

@implementation KeptData
- (BOOL)setData:(NSData*)bytes forType:(NSString*)type {
  if (!data) data = [NSMutableDictionary new];
  [data setObject:bytes forKey:type];
  return YES;
}
- (NSData*)dataForType:(NSString*)type {
  return [data objectForKey:type];
}
- (void)dealloc {
  [data release];
  [super dealloc];
}
@end

static NSPasteboard* Board(void) {
  return (NSPasteboard*)[[KeptData new] autorelease];
}

static NSPasteboard* BoardWith(NSData* bytes) {
  NSPasteboard* board = Board();
  [board setData:bytes forType:NSColorPboardType];
  return board;
}

static NSString* RoundTrip(NSColor* color) {
  NSPasteboard* board = Board();
  [color writeToPasteboard:board];
  return Shown([NSColor colorFromPasteboard:board]);
}

SCENARIO("an empty pasteboard has no colour", "nil", "nil") {
  return Shown([NSColor colorFromPasteboard:Board()]);
}
SCENARIO("no pasteboard has no colour", "nil", "nil") {
  return Shown([NSColor colorFromPasteboard:nil]);
}
SCENARIO("a stock colour comes back from the pasteboard", "0.250 0.500 0.750 1.000 DeviceRGB",
         "0.250 0.500 0.750 1.000 DeviceRGB") {
  return RoundTrip([NSColor colorWithDeviceRed:0.25 green:0.5 blue:0.75 alpha:1]);
}
SCENARIO("a custom colour comes back from the pasteboard exactly", "0.250 0.500 0.750 1.000 CalibratedRGB",
         "0.250 0.500 0.750 1.000 Custom sRGB IEC61966-2.1") {
  return RoundTrip([NSColor colorWithSRGBRed:0.25 green:0.5 blue:0.75 alpha:1]);
}

SCENARIO("a pasted colour is opaque where alpha is ignored", "0.250 0.500 0.750 0.500 DeviceRGB",
         "0.250 0.500 0.750 1.000 DeviceRGB") {
  return RoundTrip([NSColor colorWithDeviceRed:0.25 green:0.5 blue:0.75 alpha:0.5]);
}

SCENARIO("a pasted colour keeps its alpha where that counts", "0.250 0.500 0.750 0.500 DeviceRGB",
         "0.250 0.500 0.750 0.500 DeviceRGB") {
  [NSColor setIgnoresAlpha:NO];
  return RoundTrip([NSColor colorWithDeviceRed:0.25 green:0.5 blue:0.75 alpha:0.5]);
}

SCENARIO("a user default says whether alpha is ignored", "yes", "no") {
  [[NSUserDefaults standardUserDefaults] setObject:@"NO" forKey:@"NSIgnoreAlpha"];
  return YesNo([NSColor ignoresAlpha]);
}

SCENARIO("a user default that is no flag says no", "yes", "no") {
  [[NSUserDefaults standardUserDefaults] setObject:[NSArray arrayWithObject:@"NO"] forKey:@"NSIgnoreAlpha"];
  return YesNo([NSColor ignoresAlpha]);
}

SCENARIO("alpha is ignored at first", "yes", "yes") {
  return YesNo([NSColor ignoresAlpha]);
}

SCENARIO("a pattern comes back from the pasteboard", "nil", "NSPatternColorSpace") {
  NSPasteboard* board = Board();
  [Pattern() writeToPasteboard:board];
  return [[NSColor colorFromPasteboard:board] colorSpaceName] ?: @"nil";
}

// The archive with the seven numbers of its RGB colour as doubles: so machines of 64 bits write them.
static NSData* WithDoubles(NSData* archive) {
  enum { kNumbers = 7, kItem = 5, kFloat = 0x0B, kDouble = 0x0C };
  const unsigned char* bytes = [archive bytes];
  for (NSUInteger at = 0; at + kNumbers * kItem <= [archive length]; ++at) {
    int found = 0;
    while (found < kNumbers && bytes[at + (NSUInteger)found * kItem] == kFloat) ++found;
    if (found < kNumbers) continue;
    NSMutableData* changed = [NSMutableData dataWithBytes:bytes length:at];
    for (int i = 0; i < kNumbers; ++i) {
      NSSwappedFloat stored;
      memcpy(&stored, bytes + at + i * kItem + 1, sizeof stored);
      const NSSwappedDouble wide = NSSwapHostDoubleToBig((double)NSSwapBigFloatToHost(stored));
      const unsigned char tag = kDouble;
      [changed appendBytes:&tag length:1];
      [changed appendBytes:&wide length:sizeof wide];
    }
    const NSUInteger end = at + kNumbers * kItem;
    [changed appendBytes:bytes + end length:[archive length] - end];
    return changed;
  }
  return nil;
}

SCENARIO("a colour that a machine of 64 bits put on the pasteboard is read", "",
         "0.250 0.500 0.750 1.000 DeviceRGB") {
  NSColor* color = [NSColor colorWithDeviceRed:0.25 green:0.5 blue:0.75 alpha:1];
  return Shown(
      [NSColor colorFromPasteboard:BoardWith(WithDoubles([NSArchiver archivedDataWithRootObject:color]))]);
}

SCENARIO("junk on the pasteboard is no colour", "raises NSRangeException", "nil") {
  return Shown(
      [NSColor colorFromPasteboard:BoardWith([@"no archive" dataUsingEncoding:NSASCIIStringEncoding])]);
}

SCENARIO("something else in an archive on the pasteboard is no colour", "GSCInlineString", "nil") {
  id read = [NSColor colorFromPasteboard:BoardWith([NSArchiver archivedDataWithRootObject:@"a string"])];
  return read ? NSStringFromClass([read class]) : @"nil";
}
