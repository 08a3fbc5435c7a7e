// tests/libcocoa/colours/at_once_scenarios.m - what is made once, and is asked for again while it is being
// made: as two threads do it, but on one, so that the second always comes first.
#define _GNU_SOURCE
#include <dlfcn.h>
#import <objc/runtime.h>

#import "tests/libcocoa/colours/scenario.h"

// Of GNUstep's headers, only those for debugging declare them.
extern BOOL GSDebugAllocationActive(BOOL active);
extern int GSDebugAllocationCount(Class class);

typedef void (*Implementation)(void);

static Implementation Replace(Method method, Implementation replacement) {
  return (Implementation)method_setImplementation(method, (IMP)replacement);
}

static id (*makeRGB)(id, SEL, CGFloat, CGFloat, CGFloat, CGFloat);
static NSColor* firstRed;
static id MakeAfterAnother(id self, SEL selector, CGFloat red, CGFloat green, CGFloat blue, CGFloat alpha) {
  static BOOL isSecond;
  if (!isSecond) {
    isSecond = YES;
    firstRed = [NSColor redColor];
  }
  return makeRGB(self, selector, red, green, blue, alpha);
}

SCENARIO("a predefined colour that is asked for twice at once is one object, and no other is left", "",
         "yes, yes, 1 more") {
  [NSColor class];
  makeRGB = (id(*)(id, SEL, CGFloat, CGFloat, CGFloat, CGFloat))Replace(
      class_getClassMethod([NSColor class], @selector(colorWithCalibratedRed:green:blue:alpha:)),
      (Implementation)MakeAfterAnother);
  GSDebugAllocationActive(YES);
  Class made = NSClassFromString(@"GSCalibratedRGBColor");
  int before = GSDebugAllocationCount(made);
  NSAutoreleasePool* pool = [NSAutoreleasePool new];
  NSColor* red = [NSColor redColor];
  [pool release];
  return [NSString stringWithFormat:@"%@, %@, %d more", YesNo(red == firstRed),
                                    YesNo(red == [NSColor redColor]), GSDebugAllocationCount(made) - before];
}

static id ConnectAfterAnother(id self, SEL selector, NSString* name, NSString* host) {
  static BOOL isSecond;
  if (!isSecond) {
    isSecond = YES;
    NSPasteboard* pasteboard = [NSPasteboard pasteboardWithName:@"at once"];
    [pasteboard declareTypes:[NSArray arrayWithObject:@"A"] owner:nil];
    [pasteboard setString:@"first" forType:@"A"];
  }
  return nil;
}

SCENARIO("a pasteboard that is asked for twice at once has one server", "", "first, 1 server") {
  GSDebugAllocationActive(YES);
  Replace(class_getClassMethod([NSConnection class], @selector(rootProxyForConnectionWithRegisteredName:
                                                                                                   host:)),
          (Implementation)ConnectAfterAnother);
  NSString* text = [[NSPasteboard pasteboardWithName:@"at once"] stringForType:@"A"];
  return [NSString stringWithFormat:@"%@, %d server", text,
                                    GSDebugAllocationCount(NSClassFromString(@"QVXPasteboardServer"))];
}

static BOOL flagMeanwhile, flagOfDefault;
static BOOL FlagAfterAnother(id self, SEL selector, NSString* key) {
  [NSColor setIgnoresAlpha:flagMeanwhile];
  return flagOfDefault;
}

// While the user default is asked, the program says something else.
static NSString* IgnoresAlphaMeanwhile(BOOL flag) {
  [[NSUserDefaults standardUserDefaults] setObject:@"a flag" forKey:@"NSIgnoreAlpha"];
  flagMeanwhile = flag;
  flagOfDefault = !flag;
  Replace(class_getInstanceMethod([NSUserDefaults class], @selector(boolForKey:)),
          (Implementation)FlagAfterAnother);
  BOOL atFirst = [NSColor ignoresAlpha];
  return [NSString stringWithFormat:@"%@, %@", YesNo(atFirst), YesNo([NSColor ignoresAlpha])];
}

SCENARIO("alpha that the program does not ignore counts, whatever the user default says meanwhile", "",
         "no, no") {
  return IgnoresAlphaMeanwhile(NO);
}
SCENARIO("alpha that the program ignores does not count, whatever the user default says meanwhile", "",
         "yes, yes") {
  return IgnoresAlphaMeanwhile(YES);
}

static BOOL isWatched;
static int tables;
static NSColor* firstExported;

// Take the place of GNUstep's own, which they call.
NSHashTable* NSCreateHashTable(NSHashTableCallBacks callBacks, NSUInteger capacity) {
  NSHashTable* (*own)(NSHashTableCallBacks, NSUInteger) =
      (NSHashTable * (*)(NSHashTableCallBacks, NSUInteger)) dlsym(RTLD_NEXT, "NSCreateHashTable");
  if (isWatched && ++tables == 1) [firstExported CGColor];
  return own(callBacks, capacity);
}

void NSFreeHashTable(NSHashTable* table) {
  void (*own)(NSHashTable*) = (void (*)(NSHashTable*))dlsym(RTLD_NEXT, "NSFreeHashTable");
  if (isWatched) --tables;
  own(table);
}

SCENARIO("handles that are asked for twice at once are both known", "", "yes, yes, 1 table") {
  firstExported = [NSColor colorWithDeviceWhite:0.25 alpha:1];
  NSColor* second = [NSColor colorWithDeviceWhite:0.75 alpha:1];
  isWatched = YES;
  CGColorRef handle = [second CGColor];
  isWatched = NO;
  return [NSString
      stringWithFormat:@"%@, %@, %d table", YesNo([NSColor colorWithCGColor:handle] == second),
                       YesNo([NSColor colorWithCGColor:(CGColorRef)firstExported] == firstExported), tables];
}
