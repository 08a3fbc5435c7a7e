// tests/platform/colours/pasteboard_scenarios.m - colours on a pasteboard.
//
// The pasteboard is a stand-in that keeps data by type: what is tested is what colours write and read.
#import "Scenario.h"

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

static NSPasteboard* Board(void) { return (NSPasteboard*)[[KeptData new] autorelease]; }

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

static NSString* Empty(void) { return Shown([NSColor colorFromPasteboard:Board()]); }
static NSString* NoBoard(void) { return Shown([NSColor colorFromPasteboard:nil]); }
static NSString* Stock(void) { return RoundTrip([NSColor colorWithDeviceRed:0.25 green:0.5 blue:0.75 alpha:1]); }
static NSString* Custom(void) { return RoundTrip([NSColor colorWithSRGBRed:0.25 green:0.5 blue:0.75 alpha:1]); }

static NSString* Alpha(void) { return RoundTrip([NSColor colorWithDeviceRed:0.25 green:0.5 blue:0.75 alpha:0.5]); }

static NSString* AlphaKept(void) {
  [NSColor setIgnoresAlpha:NO];
  return RoundTrip([NSColor colorWithDeviceRed:0.25 green:0.5 blue:0.75 alpha:0.5]);
}

static NSString* AlphaByDefault(void) {
  [[NSUserDefaults standardUserDefaults] setObject:@"NO" forKey:@"NSIgnoreAlpha"];
  return YesNo([NSColor ignoresAlpha]);
}

static NSString* AlphaUnasked(void) { return YesNo([NSColor ignoresAlpha]); }

static NSString* PatternOnBoard(void) {
  NSPasteboard* board = Board();
  [Pattern() writeToPasteboard:board];
  return [[NSColor colorFromPasteboard:board] colorSpaceName] ?: @"nil";
}

static NSString* Junk(void) {
  return Shown([NSColor colorFromPasteboard:BoardWith([@"no archive" dataUsingEncoding:NSASCIIStringEncoding])]);
}

static NSString* NoColour(void) {
  id read = [NSColor colorFromPasteboard:BoardWith([NSArchiver archivedDataWithRootObject:@"a string"])];
  return read ? NSStringFromClass([read class]) : @"nil";
}

const Scenario pasteboardScenarios[] = {
    {"an empty pasteboard has no colour", "?", "?", Empty},
    {"no pasteboard has no colour", "?", "?", NoBoard},
    {"a stock colour comes back from the pasteboard", "?", "?", Stock},
    {"a custom colour comes back from the pasteboard exactly", "?", "?", Custom},
    {"a pasted colour is opaque where alpha is ignored", "?", "?", Alpha},
    {"a pasted colour keeps its alpha where that counts", "?", "?", AlphaKept},
    {"alpha is ignored at first", "?", "?", AlphaUnasked},
    {"a user default says whether alpha is ignored", "?", "?", AlphaByDefault},
    {"a pattern comes back from the pasteboard", "?", "?", PatternOnBoard},
    {"junk on the pasteboard is no colour", "?", "?", Junk},
    {"something else in an archive on the pasteboard is no colour", "?", "?", NoColour},
    {NULL, NULL, NULL, NULL},
};
