// tests/libcocoa/colours/folder_scenarios.m - what lies in the colour folders when a program starts.
#import "tests/libcocoa/colours/scenario.h"

static void Put(NSString* folder, NSString* name, NSData* data) {
  [data writeToFile:[folder stringByAppendingPathComponent:name] atomically:NO];
}

static NSString* Names(void) {
  NSMutableArray* names = [NSMutableArray array];
  for (NSColorList* list in [NSColorList availableColorLists]) [names addObject:[list name]];
  return Joined(names);
}

static void WriteGood(void) {
  NSAutoreleasePool* pool = [NSAutoreleasePool new];
  NSColorList* list = [[[NSColorList alloc] initWithName:@"Good"] autorelease];
  [list setColor:[NSColor redColor] forKey:@"red"];
  [list writeToFile:InScratch(@"Good.clr")];
  [pool release];
}

static NSColorList* WithPattern(void) {
  NSColorList* list = [[[NSColorList alloc] initWithName:@"Pattern"] autorelease];
  [list setColor:Pattern() forKey:@"pattern"];
  return list;
}

// As GNUstep writes it, and can't read it.
static void WritePoison(void) {
  NSAutoreleasePool* pool = [NSAutoreleasePool new];
  [[NSArchiver archivedDataWithRootObject:WithPattern()] writeToFile:InScratch(@"Pattern.clr") atomically:NO];
  [pool release];
}

static void WritePattern(void) {
  NSAutoreleasePool* pool = [NSAutoreleasePool new];
  [WithPattern() writeToFile:InScratch(@"Pattern.clr")];
  [pool release];
}

// A list with a colour that nobody can read.
static void WriteUnreadable(void) {
  NSAutoreleasePool* pool = [NSAutoreleasePool new];
  NSColorList* list = [[[NSColorList alloc] initWithName:@"Unreadable"] autorelease];
  [list setColor:Unheard() forKey:@"unheard"];
  [list writeToFile:InScratch(@"Unreadable.clr")];
  [pool release];
}

static void PutFromScratch(NSString* folder, NSString* name) {
  Put(folder, name, [NSData dataWithContentsOfFile:InScratch(name)]);
}

SCENARIO("a list in the user's folder is found by name",
         "System, Good, System, 1.000 0.000 0.000 1.000 CalibratedRGB",
         "Good, System, 1.000 0.000 0.000 1.000 CalibratedRGB") {
  InChild(WriteGood);
  PutFromScratch(UserColours(), @"Good.clr");
  NSColorList* list = [NSColorList colorListNamed:@"Good"];
  return [NSString stringWithFormat:@"%@, %@", Names(), Shown([list colorWithKey:@"red"])];
}

SCENARIO("a list in the system's folder is found", "Good, System", "Good, System") {
  InChild(WriteGood);
  PutFromScratch(SystemColours(), @"Good.clr");
  return Names();
}

SCENARIO("no list has an unknown name, or none", "nil, nil", "nil, nil") {
  return Joined([NSArray arrayWithObjects:[NSColorList colorListNamed:@"Nothing"] ? @"a list" : @"nil",
                                          [NSColorList colorListNamed:nil] ? @"a list" : @"nil", nil]);
}

SCENARIO("junk in a colour folder is passed over", "system colours, Empty, Folder, Good, Junk, Prose, System",
         "system colours, Good, System") {
  InChild(WriteGood);
  PutFromScratch(UserColours(), @"Good.clr");
  Put(UserColours(), @"Junk.clr", [@"GNUstep archive of nothing" dataUsingEncoding:NSASCIIStringEncoding]);
  Put(UserColours(), @"Empty.clr", [NSData data]);
  Put(UserColours(), @"Prose.clr", [@"Dear reader,\n" dataUsingEncoding:NSASCIIStringEncoding]);
  [[NSFileManager defaultManager]
      createDirectoryAtPath:[UserColours() stringByAppendingPathComponent:@"Folder.clr"]
                 attributes:nil];
  NSString* color = Shown([[NSColor controlColor] colorUsingColorSpaceName:NSCalibratedRGBColorSpace]);
  return
      [NSString stringWithFormat:@"%@, %@", [color isEqual:@"nil"] ? @"no system colours" : @"system colours",
                                 Joined([[Names() componentsSeparatedByString:@", "]
                                     sortedArrayUsingSelector:@selector(compare:)])];
}

SCENARIO("another program's list with a pattern in a colour folder is read", "NSInvalidArgumentException, ",
         "nothing, Pattern, System") {
  InChild(WritePoison);
  PutFromScratch(UserColours(), @"Pattern.clr");
  NSString* raised = RAISED([NSColor redColor]);
  return [NSString stringWithFormat:@"%@, %@", raised, Names()];
}

SCENARIO("a list with a pattern, written to a colour folder, takes no program down",
         "NSInvalidArgumentException, ", "nothing, Pattern, System") {
  InChild(WritePattern);
  PutFromScratch(UserColours(), @"Pattern.clr");
  NSString* raised = RAISED([NSColor redColor]);
  return [NSString stringWithFormat:@"%@, %@", raised, Names()];
}

SCENARIO("another program's list with a pattern is read on request", "raises NSInvalidArgumentException",
         "NSPatternColorSpace") {
  InChild(WritePoison);
  [NSColor redColor];
  NSColorList* list = [[[NSColorList alloc] initWithName:@"x"
                                                fromFile:InScratch(@"Pattern.clr")] autorelease];
  return [[list colorWithKey:@"pattern"] colorSpaceName] ?: @"nil";
}

// What a program without this library reads.
SCENARIO("other programs read a grey in a pattern's place", "nil", "0.500 1.000 DeviceWhite") {
  InChild(WritePattern);
  [NSColor redColor];
  NSData* data = [NSData dataWithContentsOfFile:InScratch(@"Pattern.clr")];
  return Shown([[NSUnarchiver unarchiveObjectWithData:data] colorWithKey:@"pattern"]);
}

SCENARIO("a list that nobody can read in a colour folder takes no program down",
         "NSInvalidArgumentException, ", "nothing, System") {
  InChild(WriteUnreadable);
  PutFromScratch(UserColours(), @"Unreadable.clr");
  NSString* raised = RAISED([NSColor redColor]);
  return [NSString stringWithFormat:@"%@, %@", raised, Names()];
}

@interface ListAsker : NSObject
+ (void)ask:(id)unused;
@end
static volatile BOOL asked;
@implementation ListAsker
+ (void)ask:(id)unused {
  (void)unused;
  NSAutoreleasePool* pool = [NSAutoreleasePool new];
  [NSColorList availableColorLists];
  asked = YES;
  [pool release];
}
@end

SCENARIO("a list that nobody can read leaves no lock held", "another thread hangs",
         "another thread goes on") {
  InChild(WriteUnreadable);
  PutFromScratch(UserColours(), @"Unreadable.clr");
  @try {
    [NSColor redColor];
  } @catch (NSException* exception) {
  }
  [NSThread detachNewThreadSelector:@selector(ask:) toTarget:[ListAsker class] withObject:nil];
  for (int i = 0; i < 300 && !asked; i++) [NSThread sleepForTimeInterval:0.01];
  return asked ? @"another thread goes on" : @"another thread hangs";
}

SCENARIO("a list that nobody can read is no list", "raises NSInvalidArgumentException", "nil") {
  InChild(WriteUnreadable);
  [NSColor redColor];
  NSColorList* list = [[[NSColorList alloc] initWithName:@"x"
                                                fromFile:InScratch(@"Unreadable.clr")] autorelease];
  return list ? @"a list" : @"nil";
}

SCENARIO("a list written to the user's folder is available", "no, yes, System, Mine",
         "no, yes, System, Mine") {
  NSColorList* list = [[[NSColorList alloc] initWithName:@"Mine"] autorelease];
  [list setColor:[NSColor redColor] forKey:@"red"];
  BOOL before = [NSColorList colorListNamed:@"Mine"] != nil;
  [list writeToFile:nil];
  return Joined([NSArray
      arrayWithObjects:YesNo(before), YesNo([NSColorList colorListNamed:@"Mine"] == list), Names(), nil]);
}

SCENARIO("many lists written to the user's folder are available, in that order",
         "0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, System", "System, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11") {
  for (int i = 0; i < 12; i++)
    [[[[NSColorList alloc] initWithName:[NSString stringWithFormat:@"%d", i]] autorelease] writeToFile:nil];
  return Names();
}

SCENARIO("removing one list leaves the others available", "", "System, 0, 2, 3") {
  NSMutableArray* lists = [NSMutableArray array];
  for (int i = 0; i < 4; i++) {
    NSColorList* list = [[NSColorList alloc] initWithName:[NSString stringWithFormat:@"%d", i]];
    [list writeToFile:nil];
    [lists addObject:[list autorelease]];
  }
  [[lists objectAtIndex:1] removeFile];
  return Names();
}

SCENARIO("a list written to the system's folder is available", "", "System, Mine") {
  NSColorList* list = [[[NSColorList alloc] initWithName:@"Mine"] autorelease];
  [list writeToFile:SystemColours()];
  return Names();
}

SCENARIO("a list that is removed and written again is where it was", "", "System; Good, System") {
  InChild(WriteGood);
  PutFromScratch(UserColours(), @"Good.clr");
  NSColorList* list = [NSColorList colorListNamed:@"Good"];
  [list removeFile];
  NSString* without = Names();
  [list writeToFile:nil];
  return [NSString stringWithFormat:@"%@; %@", without, Names()];
}

SCENARIO("a list written twice is available once", "Mine, System", "System, Mine") {
  NSColorList* list = [[[NSColorList alloc] initWithName:@"Mine"] autorelease];
  [list writeToFile:nil];
  [list writeToFile:nil];
  return Names();
}

SCENARIO("a list that is available has one reference for that, however often it was written", "", "2, 2, 1") {
  NSAutoreleasePool* pool = [NSAutoreleasePool new];
  NSColorList* list = [[NSColorList alloc] initWithName:@"Mine"];
  [list writeToFile:nil];
  [pool release];
  unsigned once = (unsigned)[list retainCount];
  pool = [NSAutoreleasePool new];
  [list writeToFile:nil];
  Names();
  [pool release];
  unsigned twice = (unsigned)[list retainCount];
  pool = [NSAutoreleasePool new];
  [list removeFile];
  [pool release];
  return [NSString stringWithFormat:@"%u, %u, %u", once, twice, (unsigned)[list retainCount]];
}

SCENARIO("a list written over another takes its place", "Good, System, Good, no", "System, Good, yes") {
  InChild(WriteGood);
  PutFromScratch(UserColours(), @"Good.clr");
  [NSColorList availableColorLists];
  NSColorList* list = [[[NSColorList alloc] initWithName:@"Good"] autorelease];
  [list writeToFile:nil];
  return Joined([NSArray arrayWithObjects:Names(), YesNo([NSColorList colorListNamed:@"Good"] == list), nil]);
}
