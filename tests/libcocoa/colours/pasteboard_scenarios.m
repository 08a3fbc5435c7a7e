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

static NSString* Empty(void) {
  return Shown([NSColor colorFromPasteboard:Board()]);
}
static NSString* NoBoard(void) {
  return Shown([NSColor colorFromPasteboard:nil]);
}
static NSString* Stock(void) {
  return RoundTrip([NSColor colorWithDeviceRed:0.25 green:0.5 blue:0.75 alpha:1]);
}
static NSString* Custom(void) {
  return RoundTrip([NSColor colorWithSRGBRed:0.25 green:0.5 blue:0.75 alpha:1]);
}

static NSString* Alpha(void) {
  return RoundTrip([NSColor colorWithDeviceRed:0.25 green:0.5 blue:0.75 alpha:0.5]);
}

static NSString* AlphaKept(void) {
  [NSColor setIgnoresAlpha:NO];
  return RoundTrip([NSColor colorWithDeviceRed:0.25 green:0.5 blue:0.75 alpha:0.5]);
}

static NSString* AlphaByDefault(void) {
  [[NSUserDefaults standardUserDefaults] setObject:@"NO" forKey:@"NSIgnoreAlpha"];
  return YesNo([NSColor ignoresAlpha]);
}

static NSString* AlphaUnasked(void) {
  return YesNo([NSColor ignoresAlpha]);
}

static NSString* PatternOnBoard(void) {
  NSPasteboard* board = Board();
  [Pattern() writeToPasteboard:board];
  return [[NSColor colorFromPasteboard:board] colorSpaceName] ?: @"nil";
}

static NSString* Junk(void) {
  return Shown(
      [NSColor colorFromPasteboard:BoardWith([@"no archive" dataUsingEncoding:NSASCIIStringEncoding])]);
}

static NSString* NoColour(void) {
  id read = [NSColor colorFromPasteboard:BoardWith([NSArchiver archivedDataWithRootObject:@"a string"])];
  return read ? NSStringFromClass([read class]) : @"nil";
}

const Scenario pasteboardScenarios[] = {
    {"an empty pasteboard has no colour", "nil", "nil", Empty},
    {"no pasteboard has no colour", "nil", "nil", NoBoard},
    {"a stock colour comes back from the pasteboard", "0.250 0.500 0.750 1.000 DeviceRGB",
     "0.250 0.500 0.750 1.000 DeviceRGB", Stock},
    {"a custom colour comes back from the pasteboard exactly", "0.250 0.500 0.750 1.000 CalibratedRGB",
     "0.250 0.500 0.750 1.000 Custom sRGB IEC61966-2.1", Custom},
    {"a pasted colour is opaque where alpha is ignored", "0.250 0.500 0.750 0.500 DeviceRGB",
     "0.250 0.500 0.750 1.000 DeviceRGB", Alpha},
    {"a pasted colour keeps its alpha where that counts", "0.250 0.500 0.750 0.500 DeviceRGB",
     "0.250 0.500 0.750 0.500 DeviceRGB", AlphaKept},
    {"alpha is ignored at first", "yes", "yes", AlphaUnasked},
    {"a user default says whether alpha is ignored", "yes", "no", AlphaByDefault},
    {"a pattern comes back from the pasteboard", "nil", "NSPatternColorSpace", PatternOnBoard},
    {"junk on the pasteboard is no colour", "raises NSRangeException", "nil", Junk},
    {"something else in an archive on the pasteboard is no colour", "GSCInlineString", "nil", NoColour},
    {NULL, NULL, NULL, NULL},
};
