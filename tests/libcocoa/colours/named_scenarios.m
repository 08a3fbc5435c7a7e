// tests/libcocoa/colours/named_scenarios.m - predefined, system and named colours.
#import "tests/libcocoa/colours/scenario.h"

static NSArray* PresetNames(void) {
  return [@"black blue brown clear cyan darkGray gray green lightGray magenta orange purple red white yellow"
      componentsSeparatedByString:@" "];
}

static NSColor* Preset(NSString* name) {
  return [NSColor performSelector:NSSelectorFromString([name stringByAppendingString:@"Color"])];
}

SCENARIO("each predefined colour is one shared object", "0 of 15", "15 of 15") {
  int same = 0;
  for (NSString* name in PresetNames()) same += Preset(name) == Preset(name);
  return [NSString stringWithFormat:@"%d of 15", same];
}

SCENARIO("each of the colours named after the system is one shared object, and another colour", "",
         "9 shared, 9 different") {
  int shared = 0;
  NSMutableSet* different = [NSMutableSet set];
  for (NSString* name in
       [@"Blue Brown Gray Green Orange Pink Purple Red Yellow" componentsSeparatedByString:@" "]) {
    NSColor* color = Preset([@"system" stringByAppendingString:name]);
    shared += color && color == Preset([@"system" stringByAppendingString:name]);
    [different addObject:Shown(color)];
  }
  return [NSString stringWithFormat:@"%d shared, %u different", shared, (unsigned)[different count]];
}

SCENARIO(
    "predefined colours have their documented values",
    "0/1, 0 0 1, 0.6 0.4 0.2, 0/0, 0 1 1, 0.333/1, 0.5/1, 0 1 0, 0.667/1, 1 0 1, 1 0.5 0, 0.5 0 0.5, 1 0 0, "
    "1/1, 1 1 0",
    "0/1, 0 0 1, 0.6 0.4 0.2, 0/0, 0 1 1, 0.333/1, 0.5/1, 0 1 0, 0.667/1, 1 0 1, 1 0.5 0, 0.5 0 0.5, 1 0 0, "
    "1/1, 1 1 0") {
  NSMutableArray* shown = [NSMutableArray array];
  for (NSString* name in PresetNames()) {
    NSColor* color = Preset(name);
    CGFloat c[4];
    [color getComponents:c];
    [shown addObject:[color numberOfComponents] == 2
                         ? [NSString stringWithFormat:@"%.3g/%g", (double)c[0], (double)c[1]]
                         : [NSString stringWithFormat:@"%g %g %g", (double)c[0], (double)c[1], (double)c[2]]];
  }
  return Joined(shown);
}

SCENARIO("a predefined colour outlives every pool", "another object",
         "1.000 0.000 0.000 1.000 CalibratedRGB") {
  NSColor* red = nil;
  for (int i = 0; i < 3; i++) {
    NSAutoreleasePool* pool = [NSAutoreleasePool new];
    NSColor* now = [NSColor redColor];
    if (red && now != red) return @"another object";
    red = now;
    [pool release];
  }
  return Shown(red);
}

SCENARIO("a system colour converts to a space with a profile", "raises NSInvalidArgumentException",
         "0.000 0.000 0.000 1.000 Custom sRGB IEC61966-2.1") {
  return Shown([[NSColor blackColor] isEqual:[NSColor controlTextColor]]
                   ? nil
                   : [[NSColor controlTextColor] colorUsingColorSpace:[NSColorSpace sRGBColorSpace]]);
}

SCENARIO("a named colour without its names is no colour",
         "NSInvalidArgumentException, NSInvalidArgumentException", "nothing, nothing") {
  return Joined([NSArray arrayWithObjects:RAISED([NSColor colorWithCatalogName:nil colorName:@"a"]),
                                          RAISED([NSColor colorWithCatalogName:@"a" colorName:nil]), nil]);
}

@interface NamedConverter : NSObject
+ (void)convert:(id)unused;
@end
static volatile BOOL converted;
@implementation NamedConverter
+ (void)convert:(id)unused {
  (void)unused;
  NSAutoreleasePool* pool = [NSAutoreleasePool new];
  [[NSColor controlColor] colorUsingColorSpaceName:NSCalibratedRGBColorSpace];
  [[NSColor colorWithCatalogName:@"System"
                       colorName:@"gridColor"] colorUsingColorSpaceName:NSDeviceRGBColorSpace];
  converted = YES;
  [pool release];
}
@end

SCENARIO("a named colour without its names holds no lock", "another thread hangs", "another thread goes on") {
  @try {
    [NSColor colorWithCatalogName:nil colorName:@"a"];
  } @catch (NSException* exception) {
  }
  [NSThread detachNewThreadSelector:@selector(convert:) toTarget:[NamedConverter class] withObject:nil];
  for (int i = 0; i < 300 && !converted; i++) [NSThread sleepForTimeInterval:0.01];
  return converted ? @"another thread goes on" : @"another thread hangs";
}

SCENARIO("a name that no list knows converts to nothing", "nil, nil", "nil, nil") {
  NSColor* color = [NSColor colorWithCatalogName:@"Nowhere" colorName:@"Nothing"];
  return Joined([NSArray
      arrayWithObjects:Shown([color colorUsingColorSpaceName:NSCalibratedRGBColorSpace]),
                       Shown([color colorUsingColorSpace:[NSColorSpace genericRGBColorSpace]]), nil]);
}

static NSColorList* ListInTable(NSString* name) {
  NSColorList* list = [[[NSColorList alloc] initWithName:name] autorelease];
  [list setColor:[NSColor colorWithCalibratedRed:1 green:0 blue:0 alpha:1] forKey:@"signal"];
  [list writeToFile:nil];
  return list;
}

SCENARIO("a named colour follows its list",
         "1.000 0.000 0.000 1.000 CalibratedRGB, 1.000 0.000 0.000 1.000 CalibratedRGB",
         "1.000 0.000 0.000 1.000 CalibratedRGB, 0.000 1.000 0.000 1.000 CalibratedRGB") {
  NSColorList* list = ListInTable(@"Signals");
  NSColor* named = [NSColor colorWithCatalogName:@"Signals" colorName:@"signal"];
  NSString* before = Shown([named colorUsingColorSpaceName:NSCalibratedRGBColorSpace]);
  [list setColor:[NSColor colorWithCalibratedRed:0 green:1 blue:0 alpha:1] forKey:@"signal"];
  return Joined([NSArray
      arrayWithObjects:before, Shown([named colorUsingColorSpaceName:NSCalibratedRGBColorSpace]), nil]);
}

SCENARIO("a named colour is found when its list has it later", "nil, nil",
         "nil, 0.000 1.000 0.000 1.000 CalibratedRGB") {
  NSColorList* list = ListInTable(@"Signals");
  NSColor* named = [NSColor colorWithCatalogName:@"Signals" colorName:@"later"];
  NSString* before = Shown([named colorUsingColorSpaceName:NSCalibratedRGBColorSpace]);
  [list setColor:[NSColor colorWithCalibratedRed:0 green:1 blue:0 alpha:1] forKey:@"later"];
  return Joined([NSArray
      arrayWithObjects:before, Shown([named colorUsingColorSpaceName:NSCalibratedRGBColorSpace]), nil]);
}

SCENARIO("a name that stands for itself converts to nothing", "crashes with signal 11", "nil") {
  NSColorList* list = ListInTable(@"Signals");
  NSColor* named = [NSColor colorWithCatalogName:@"Signals" colorName:@"me"];
  [list setColor:named forKey:@"me"];
  return Shown([named colorUsingColorSpaceName:NSCalibratedRGBColorSpace]);
}

SCENARIO("a colour is named by a catalogue and a name, and the next one is when one of them was missing", "",
         "nil, nil, nil, gridColor") {
  NSMutableArray* names = [NSMutableArray array];
  for (int i = 0; i < 4; ++i) {
    NSColor* color = [NSColor colorWithCatalogName:i & 1 ? @"System" : nil
                                         colorName:i & 2 ? @"gridColor" : nil];
    [names addObject:color ? [color colorNameComponent] : @"nil"];
  }
  return Joined(names);
}

SCENARIO("a named colour is one object and tells its names", "yes, NSNamedColorSpace, controlColor",
         "yes, NSNamedColorSpace, controlColor") {
  NSColor* one = [NSColor colorWithCatalogName:@"System" colorName:@"controlColor"];
  return Joined([NSArray arrayWithObjects:YesNo(one == [NSColor controlColor]), [one colorSpaceName],
                                          [one localizedColorNameComponent], nil]);
}

SCENARIO("a named colour with another alpha has components", "raises NSInternalInconsistencyException",
         "0.000 0.000 0.000 0.500 CalibratedRGB, 0.000 0.000 0.000 1.000 CalibratedRGB") {
  NSColor* named = [NSColor controlTextColor];
  return Joined([NSArray arrayWithObjects:Shown([named colorWithAlphaComponent:0.5]),
                                          Shown([named colorWithAlphaComponent:1]), nil]);
}

SCENARIO("a named colour that is in a custom space takes another alpha there",
         "raises NSInternalInconsistencyException", "0.100 0.200 0.300 0.500 Custom sRGB IEC61966-2.1") {
  NSColorList* list = ListInTable(@"Signals");
  [list setColor:[NSColor colorWithSRGBRed:0.1 green:0.2 blue:0.3 alpha:1] forKey:@"exact"];
  return Shown([[NSColor colorWithCatalogName:@"Signals" colorName:@"exact"] colorWithAlphaComponent:0.5]);
}

SCENARIO("a named colour that stands for a pattern is the pattern with any alpha", "no", "yes") {
  NSColor* pattern = Pattern();
  [ListInTable(@"Signals") setColor:pattern forKey:@"tiles"];
  NSColor* named = [NSColor colorWithCatalogName:@"Signals" colorName:@"tiles"];
  return YesNo([named colorWithAlphaComponent:0.5] == pattern);
}

SCENARIO("a name that no list knows is no colour with another alpha", "yes", "no") {
  NSColor* named = [NSColor colorWithCatalogName:@"Nowhere" colorName:@"Nothing"];
  return YesNo([named colorWithAlphaComponent:0.5] != nil);
}

SCENARIO("a named colour's Core Graphics handle has components", "raises NSInvalidArgumentException",
         "0.000 0.000 0.000 1.000 CalibratedRGB, 0.000 0.000 0.000 0.500 CalibratedRGB") {
  NSColor* named = [NSColor controlTextColor];
  NSColor* faint = [named colorWithAlphaComponent:0.5];
  return Joined([NSArray arrayWithObjects:Shown([NSColor colorWithCGColor:[named CGColor]]),
                                          Shown([NSColor colorWithCGColor:[faint CGColor]]), nil]);
}

SCENARIO("a named colour's Core Graphics handle lasts as long as its list holds the colour",
         "raises NSInvalidArgumentException", "1.000 0.000 0.000 1.000 CalibratedRGB, nil") {
  NSAutoreleasePool* pool = [NSAutoreleasePool new];
  NSColorList* list = ListInTable(@"Signals");
  CGColorRef handle = [[NSColor colorWithCatalogName:@"Signals" colorName:@"signal"] CGColor];
  [pool release];
  pool = [NSAutoreleasePool new];
  NSString* held = [Shown([NSColor colorWithCGColor:handle]) retain];
  [list removeColorWithKey:@"signal"];
  [pool release];
  return Joined([NSArray arrayWithObjects:[held autorelease], Shown([NSColor colorWithCGColor:handle]), nil]);
}

SCENARIO("the handle of a name that no list knows is the name's own", "raises NSInvalidArgumentException",
         "yes") {
  NSColor* named = [NSColor colorWithCatalogName:@"Nowhere" colorName:@"Nothing"];
  return YesNo([NSColor colorWithCGColor:[named CGColor]] == named);
}
