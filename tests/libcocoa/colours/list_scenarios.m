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

static NSString* AddedAndReplaced(void) {
  NSColorList* list = ABC();
  [list setColor:[NSColor whiteColor] forKey:@"b"];
  return [NSString stringWithFormat:@"%@, %@", Keys(list), Shown([list colorWithKey:@"b"])];
}

static NSString* Inserted(void) {
  NSColorList* list = ABC();
  [list insertColor:[NSColor whiteColor] key:@"x" atIndex:1];
  [list insertColor:[NSColor whiteColor] key:@"y" atIndex:4];
  return Keys(list);
}

static NSString* Moved(void) {
  NSColorList* list = ABC();
  [list insertColor:[NSColor whiteColor] key:@"a" atIndex:2];
  return Keys(list);
}

static NSString* Removed(void) {
  NSColorList* list = ABC();
  [list removeColorWithKey:@"b"];
  [list removeColorWithKey:@"nothing"];
  return Keys(list);
}

static NSString* RangeNewKey(void) {
  NSColorList* list = ABC();
  NSString* raised = RAISED([list insertColor:[NSColor whiteColor] key:@"x" atIndex:4]);
  return [NSString stringWithFormat:@"%@, %@, x %@", raised, Keys(list),
                                    [list colorWithKey:@"x"] ? @"is in" : @"is not in"];
}

static NSString* RangeOldKey(void) {
  NSColorList* list = ABC();
  NSString* raised = RAISED([list insertColor:[NSColor whiteColor] key:@"a" atIndex:3]);
  return [NSString stringWithFormat:@"%@, %@, %@", raised, Keys(list), Shown([list colorWithKey:@"a"])];
}

static NSString* RangeNegative(void) {
  NSColorList* list = ABC();
  NSString* raised = RAISED([list insertColor:[NSColor whiteColor] key:@"x" atIndex:(unsigned)-1]);
  return [NSString stringWithFormat:@"%@, %@, x %@", raised, Keys(list),
                                    [list colorWithKey:@"x"] ? @"is in" : @"is not in"];
}

static NSString* NilArguments(void) {
  NSColorList* list = ABC();
  return Joined([NSArray arrayWithObjects:RAISED([list setColor:nil forKey:@"x"]),
                                          RAISED([list setColor:[NSColor redColor] forKey:nil]),
                                          RAISED([list insertColor:nil key:@"x" atIndex:0]),
                                          RAISED([list removeColorWithKey:nil]), Keys(list), nil]);
}

static NSString* NoColour(void) {
  NSColorList* list = ABC();
  return Joined(
      [NSArray arrayWithObjects:RAISED([list setColor:(NSColor*)@"a string" forKey:@"x"]), Keys(list), nil]);
}

static NSString* MutableKey(void) {
  NSColorList* list = ABC();
  NSMutableString* key = [NSMutableString stringWithString:@"d"];
  [list setColor:[NSColor redColor] forKey:key];
  [key appendString:@"!"];
  return Keys(list);
}

static NSString* MutableName(void) {
  NSMutableString* name = [NSMutableString stringWithString:@"Name"];
  NSColorList* list = [[[NSColorList alloc] initWithName:name] autorelease];
  [name appendString:@"!"];
  return [list name];
}

static NSString* UnknownKey(void) {
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

static NSString* NotifiedAtOnce(void) {
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

static NSString* NotRetainedByEdits(void) {
  NSAutoreleasePool* pool = [NSAutoreleasePool new];
  NSColorList* list = [[NSColorList alloc] initWithName:@"Short-lived"];
  [list setColor:[NSColor redColor] forKey:@"a"];
  [pool release];
  return [NSString stringWithFormat:@"%u reference", (unsigned)[list retainCount]];
}

static NSString* CodedListRefuses(void) {
  NSColorList* list =
      [NSKeyedUnarchiver unarchiveObjectWithData:[NSKeyedArchiver archivedDataWithRootObject:ABC()]];
  return Joined([NSArray arrayWithObjects:Keys(list), YesNo([list isEditable]),
                                          RAISED([list removeColorWithKey:@"nothing"]), nil]);
}

const Scenario listScenarios[] = {
    {"a colour is added last, or replaced in its place", "abc, 1.000 1.000 CalibratedWhite",
     "abc, 1.000 1.000 CalibratedWhite", AddedAndReplaced},
    {"a colour is inserted up to the end", "axbcy", "axbcy", Inserted},
    {"an inserted key leaves its old place first", "bca", "bca", Moved},
    {"a removed colour is gone, a missing one is no error", "ac", "ac", Removed},
    {"an index beyond the end changes nothing", "NSRangeException, abc, x is in",
     "NSRangeException, abc, x is not in", RangeNewKey},
    {"an index beyond the end for a key that is in changes nothing",
     "NSRangeException, bc, 1.000 1.000 CalibratedWhite",
     "NSRangeException, abc, 1.000 0.000 0.000 1.000 CalibratedRGB", RangeOldKey},
    {"a negative index changes nothing", "NSRangeException, abc, x is in",
     "NSRangeException, abc, x is not in", RangeNegative},
    {"a missing colour or key changes nothing",
     "NSInvalidArgumentException, NSInvalidArgumentException, NSInvalidArgumentException, nothing, abc",
     "NSInvalidArgumentException, NSInvalidArgumentException, NSInvalidArgumentException, nothing, abc",
     NilArguments},
    {"only colours can be members", "nothing, abc", "NSInvalidArgumentException, abc", NoColour},
    {"a list keeps its own copy of a key", "abcd!(lost)", "abcd", MutableKey},
    {"a list keeps its own copy of its name", "Name!", "Name", MutableName},
    {"a key that is not in has no colour", "nil", "nil", UnknownKey},
    {"each change is told at once", "0", "3", NotifiedAtOnce},
    {"an edit does not keep a list alive", "2 reference", "1 reference", NotRetainedByEdits},
    {"a list from a coder can't be edited", "abc, no, NSColorListNotEditableException",
     "abc, no, NSColorListNotEditableException", CodedListRefuses},
    {NULL, NULL, NULL, NULL},
};
