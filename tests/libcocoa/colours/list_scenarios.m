// tests/libcocoa/colours/list_scenarios.m - editing colour lists.
#import "tests/libcocoa/colours/scenario.h"

static NSColorList* ABC(void) {
  NSColorList* list = [[[NSColorList alloc] initWithName:@"Letters"] autorelease];
  [list setColor:[NSColor redColor] forKey:@"a"];
  [list setColor:[NSColor greenColor] forKey:@"b"];
  [list setColor:[NSColor blueColor] forKey:@"c"];
  return list;
}

static NSString* Keys(NSColorList* list) {
  NSMutableArray* shown = [NSMutableArray array];
  for (NSString* key in [list allKeys])
    [shown addObject:[list colorWithKey:key] ? key : [key stringByAppendingString:@"(lost)"]];
  return [shown componentsJoinedByString:@""];
}

SCENARIO("a colour is added last, or replaced in its place", "abc, 1.000 1.000 CalibratedWhite",
         "abc, 1.000 1.000 CalibratedWhite") {
  NSColorList* list = ABC();
  [list setColor:[NSColor whiteColor] forKey:@"b"];
  return [NSString stringWithFormat:@"%@, %@", Keys(list), Shown([list colorWithKey:@"b"])];
}

SCENARIO("a colour is inserted up to the end", "axbcy", "axbcy") {
  NSColorList* list = ABC();
  [list insertColor:[NSColor whiteColor] key:@"x" atIndex:1];
  [list insertColor:[NSColor whiteColor] key:@"y" atIndex:4];
  return Keys(list);
}

SCENARIO("an inserted key leaves its old place first", "bca", "bca") {
  NSColorList* list = ABC();
  [list insertColor:[NSColor whiteColor] key:@"a" atIndex:2];
  return Keys(list);
}

SCENARIO("a removed colour is gone, a missing one is no error", "ac", "ac") {
  NSColorList* list = ABC();
  [list removeColorWithKey:@"b"];
  [list removeColorWithKey:@"nothing"];
  return Keys(list);
}

// Keys "0" to "999", then the changes; what differs from the same changes to an array of strings.
static NSString* AfterChanges(void (*change)(NSColorList*, NSMutableArray*, unsigned step), unsigned steps) {
  NSColorList* list = [[[NSColorList alloc] initWithName:@"Numbers"] autorelease];
  NSMutableArray* expected = [NSMutableArray array];
  for (unsigned i = 0; i < 1000; ++i) {
    NSString* key = [NSString stringWithFormat:@"%u", i];
    [list setColor:[NSColor redColor] forKey:key];
    [expected addObject:key];
  }
  for (unsigned step = 0; step < steps; ++step) {
    change(list, expected, step);
    if (![[list allKeys] isEqual:expected]) return [NSString stringWithFormat:@"differs at step %u", step];
  }
  return [NSString stringWithFormat:@"%u keys in order", (unsigned)[expected count]];
}

static void RemoveFirst(NSColorList* list, NSMutableArray* expected, unsigned step) {
  (void)step;
  [list removeColorWithKey:[expected objectAtIndex:0]];
  [expected removeObjectAtIndex:0];
}

SCENARIO("a list emptied from the front stays in order", "0 keys in order", "0 keys in order") {
  return AfterChanges(RemoveFirst, 1000);
}

static void InsertOrRemoveAnywhere(NSColorList* list, NSMutableArray* expected, unsigned step) {
  unsigned place = step * 7919u % (unsigned)[expected count];
  if (step % 3 != 0) {
    [list removeColorWithKey:[expected objectAtIndex:place]];
    [expected removeObjectAtIndex:place];
  } else {
    NSString* key = [NSString stringWithFormat:@"new %u", step];
    [list insertColor:[NSColor blueColor] key:key atIndex:place];
    [expected insertObject:key atIndex:place];
  }
}

SCENARIO("a list changed anywhere stays in order", "400 keys in order", "400 keys in order") {
  return AfterChanges(InsertOrRemoveAnywhere, 1800);
}

static void MoveAnywhere(NSColorList* list, NSMutableArray* expected, unsigned step) {
  NSString* key = [[[expected objectAtIndex:step * 31u % 1000u] retain] autorelease];
  unsigned place = step * 17u % 1000u;
  [list insertColor:[NSColor blueColor] key:key atIndex:place];
  [expected removeObject:key];
  [expected insertObject:key atIndex:place];
}

SCENARIO("keys that move anywhere stay in order", "1000 keys in order", "1000 keys in order") {
  return AfterChanges(MoveAnywhere, 1000);
}

SCENARIO("the keys of a list are an array like any other", "", "abc, axc, x at 1, b not found, xc, c at 1") {
  NSMutableArray* keys = [[[NSClassFromString(@"QVXColorKeys") alloc] init] autorelease];
  for (NSString *key in [NSArray arrayWithObjects:@"a", @"b", @"c", nil]) [keys addObject:key];
  NSString* all = [keys componentsJoinedByString:@""];
  [keys replaceObjectAtIndex:1 withObject:@"x"];
  NSString* replaced = [keys componentsJoinedByString:@""];
  NSUInteger found = [keys indexOfObject:@"x"];
  NSString* lost = [keys indexOfObject:@"b"] == NSNotFound ? @"not found" : @"found";
  [keys removeLastObject];
  [keys addObject:@"c"];
  [keys removeObjectAtIndex:0];
  return
      [NSString stringWithFormat:@"%@, %@, x at %u, b %@, %@, c at %u", all, replaced, (unsigned)found, lost,
                                 [keys componentsJoinedByString:@""], (unsigned)[keys indexOfObject:@"c"]];
}

SCENARIO("an index beyond the end changes nothing", "NSRangeException, abc, x is in",
         "NSRangeException, abc, x is not in") {
  NSColorList* list = ABC();
  NSString* raised = RAISED([list insertColor:[NSColor whiteColor] key:@"x" atIndex:4]);
  return [NSString stringWithFormat:@"%@, %@, x %@", raised, Keys(list),
                                    [list colorWithKey:@"x"] ? @"is in" : @"is not in"];
}

SCENARIO("an index beyond the end for a key that is in changes nothing",
         "NSRangeException, bc, 1.000 1.000 CalibratedWhite",
         "NSRangeException, abc, 1.000 0.000 0.000 1.000 CalibratedRGB") {
  NSColorList* list = ABC();
  NSString* raised = RAISED([list insertColor:[NSColor whiteColor] key:@"a" atIndex:3]);
  return [NSString stringWithFormat:@"%@, %@, %@", raised, Keys(list), Shown([list colorWithKey:@"a"])];
}

SCENARIO("a negative index changes nothing", "NSRangeException, abc, x is in",
         "NSRangeException, abc, x is not in") {
  NSColorList* list = ABC();
  NSString* raised = RAISED([list insertColor:[NSColor whiteColor] key:@"x" atIndex:(unsigned)-1]);
  return [NSString stringWithFormat:@"%@, %@, x %@", raised, Keys(list),
                                    [list colorWithKey:@"x"] ? @"is in" : @"is not in"];
}

SCENARIO("a missing colour or key changes nothing",
         "NSInvalidArgumentException, NSInvalidArgumentException, NSInvalidArgumentException, nothing, abc",
         "NSInvalidArgumentException, NSInvalidArgumentException, NSInvalidArgumentException, nothing, abc") {
  NSColorList* list = ABC();
  return Joined([NSArray arrayWithObjects:RAISED([list setColor:nil forKey:@"x"]),
                                          RAISED([list setColor:[NSColor redColor] forKey:nil]),
                                          RAISED([list insertColor:nil key:@"x" atIndex:0]),
                                          RAISED([list removeColorWithKey:nil]), Keys(list), nil]);
}

SCENARIO("only colours can be members", "nothing, abc", "NSInvalidArgumentException, abc") {
  NSColorList* list = ABC();
  return Joined(
      [NSArray arrayWithObjects:RAISED([list setColor:(NSColor*)@"a string" forKey:@"x"]), Keys(list), nil]);
}

SCENARIO("a list keeps its own copy of a key", "abcd!(lost)", "abcd") {
  NSColorList* list = ABC();
  NSMutableString* key = [NSMutableString stringWithString:@"d"];
  [list setColor:[NSColor redColor] forKey:key];
  [key appendString:@"!"];
  return Keys(list);
}

SCENARIO("a list keeps its own copy of its name", "Name!", "Name") {
  NSMutableString* name = [NSMutableString stringWithString:@"Name"];
  NSColorList* list = [[[NSColorList alloc] initWithName:name] autorelease];
  [name appendString:@"!"];
  return [list name];
}

SCENARIO("a key that is not in has no colour", "nil", "nil") {
  return Shown([ABC() colorWithKey:@"x"]);
}

@interface Listener : NSObject {
 @public
  int heard;
}
- (void)hear:(NSNotification*)notification;
@end
@implementation Listener
- (void)hear:(NSNotification*)notification {
  (void)notification;
  heard++;
}
@end

SCENARIO("each change is told at once", "0", "3") {
  NSColorList* list = ABC();
  Listener* listener = [[Listener new] autorelease];
  [[NSNotificationCenter defaultCenter] addObserver:listener
                                           selector:@selector(hear:)
                                               name:NSColorListDidChangeNotification
                                             object:list];
  [list setColor:[NSColor redColor] forKey:@"d"];
  [list insertColor:[NSColor redColor] key:@"e" atIndex:0];
  [list removeColorWithKey:@"a"];
  [list removeColorWithKey:@"nothing"];
  return [NSString stringWithFormat:@"%d", listener->heard];
}

SCENARIO("an edit does not keep a list alive", "2 reference", "1 reference") {
  NSAutoreleasePool* pool = [NSAutoreleasePool new];
  NSColorList* list = [[NSColorList alloc] initWithName:@"Short-lived"];
  [list setColor:[NSColor redColor] forKey:@"a"];
  [pool release];
  return [NSString stringWithFormat:@"%u reference", (unsigned)[list retainCount]];
}

SCENARIO("an edit does not keep a key alive", "", "1 reference") {
  NSColorList* list = ABC();
  NSString* key = [[NSString alloc] initWithFormat:@"a key of %@", @"its own"];
  NSAutoreleasePool* pool = [NSAutoreleasePool new];
  [list setColor:[NSColor redColor] forKey:key];
  [list insertColor:[NSColor redColor] key:key atIndex:0];
  [list removeColorWithKey:key];
  [pool release];
  return [NSString stringWithFormat:@"%u reference", (unsigned)[key retainCount]];
}

SCENARIO("a list from a coder can't be edited", "abc, no, NSColorListNotEditableException",
         "abc, no, NSColorListNotEditableException") {
  NSColorList* list =
      [NSKeyedUnarchiver unarchiveObjectWithData:[NSKeyedArchiver archivedDataWithRootObject:ABC()]];
  return Joined([NSArray arrayWithObjects:Keys(list), YesNo([list isEditable]),
                                          RAISED([list removeColorWithKey:@"nothing"]), nil]);
}
