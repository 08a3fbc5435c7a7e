// tests/libcocoa/colours/system_colour_scenarios.m - the colours of the catalogue "System".
#import "tests/libcocoa/colours/scenario.h"

#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

// Every colour of the catalogue that a class method names, and its light value in calibrated RGB.
static const struct {
  const char* name;
  double red, green, blue;
} kLight[] = {
    {"alternateSelectedControlColor", 0.068, 0.425, 0.841},
    {"alternateSelectedControlTextColor", 1, 1, 1},
    {"controlBackgroundColor", 1, 1, 1},
    {"controlColor", 0.93, 0.93, 0.93},
    {"controlDarkShadowColor", 0.335, 0.335, 0.335},
    {"controlHighlightColor", 0.888, 0.888, 0.888},
    {"controlLightHighlightColor", 0.947, 0.947, 0.947},
    {"controlShadowColor", 0.558, 0.558, 0.558},
    {"controlTextColor", 0, 0, 0},
    {"disabledControlTextColor", 0.5, 0.5, 0.5},
    {"gridColor", 0.802, 0.802, 0.802},
    {"headerColor", 0.968, 0.968, 0.968},
    {"headerTextColor", 0, 0, 0},
    {"highlightColor", 1, 1, 1},
    {"keyboardFocusIndicatorColor", 0.233, 0.602, 0.99},
    {"knobColor", 0.758, 0.758, 0.758},
    {"scrollBarColor", 0.982, 0.982, 0.982},
    {"secondarySelectedControlColor", 0.864, 0.864, 0.864},
    {"selectedControlColor", 0.703, 0.845, 1},
    {"selectedControlTextColor", 0, 0, 0},
    {"selectedKnobColor", 0.492, 0.492, 0.492},
    {"selectedMenuItemColor", 0.245, 0.511, 0.97},
    {"selectedMenuItemTextColor", 1, 1, 1},
    {"selectedTextBackgroundColor", 0.703, 0.845, 1},
    {"selectedTextColor", 0, 0, 0},
    {"shadowColor", 0, 0, 0},
    {"textBackgroundColor", 1, 1, 1},
    {"textColor", 0, 0, 0},
    {"underPageBackgroundColor", 0.59, 0.59, 0.59},
    {"windowBackgroundColor", 0.927, 0.927, 0.927},
    {"windowFrameColor", 0.668, 0.668, 0.668},
    {"windowFrameTextColor", 0, 0, 0},
};
enum { kLightCount = sizeof kLight / sizeof *kLight };

static NSColor* Sent(const char* selector) {
  return [NSColor performSelector:sel_registerName(selector)];
}

static BOOL IsRGB(NSColor* color, double red, double green, double blue) {
  NSColor* rgb = [color colorUsingColorSpaceName:NSCalibratedRGBColorSpace];
  return [rgb isEqual:[NSColor colorWithCalibratedRed:red green:green blue:blue alpha:1]];
}

// "all", or the colours but for the one left out that do not have their light values.
static NSString* LightBut(const char* leftOut) {
  NSMutableArray* others = [NSMutableArray array];
  for (int i = 0; i < kLightCount; i++) {
    if (leftOut && strcmp(leftOut, kLight[i].name) == 0) continue;
    NSColor* color = Sent(kLight[i].name);
    if (!IsRGB(color, kLight[i].red, kLight[i].green, kLight[i].blue))
      [others addObject:[NSString stringWithFormat:@"%s is %@", kLight[i].name,
                                                   Shown([color
                                                       colorUsingColorSpaceName:NSCalibratedRGBColorSpace])]];
  }
  return [others count] ? Joined(others) : @"all";
}

SCENARIO("system colours have the light values", "", "all") {
  return LightBut(NULL);
}

SCENARIO("each system colour is one shared object of the catalogue", "31 of 32", "32 of 32") {
  int right = 0;
  for (int i = 0; i < kLightCount; i++) {
    if (![NSColor respondsToSelector:sel_registerName(kLight[i].name)]) continue;
    NSColor* color = Sent(kLight[i].name);
    right += color == Sent(kLight[i].name) && [[color catalogNameComponent] isEqual:@"System"] &&
             [[color colorNameComponent] isEqual:[NSString stringWithUTF8String:kLight[i].name]];
  }
  return [NSString stringWithFormat:@"%d of %d", right, (int)kLightCount];
}

SCENARIO("rows alternate between white and a tinge",
         "1.000 1.000 1.000 1.000 CalibratedRGB, 0.667 0.667 0.667 1.000 CalibratedRGB",
         "1.000 1.000 1.000 1.000 CalibratedRGB, 0.955 0.966 0.982 1.000 CalibratedRGB") {
  NSMutableArray* shown = [NSMutableArray array];
  for (NSColor* color in [NSColor controlAlternatingRowBackgroundColors])
    [shown addObject:Shown([color colorUsingColorSpaceName:NSCalibratedRGBColorSpace])];
  return Joined(shown);
}

SCENARIO("each control tint has a colour of its own, and an unknown one is the current one",
         "blue is graphite: yes, blue is clear: yes, default is blue: yes, unknown is blue: yes",
         "blue is graphite: no, blue is clear: no, default is blue: yes, unknown is blue: yes") {
  NSColor* blue = [NSColor colorForControlTint:NSBlueControlTint];
  NSColor* graphite = [NSColor colorForControlTint:NSGraphiteControlTint];
  NSColor* clear = [NSColor colorForControlTint:NSClearControlTint];
  return [NSString
      stringWithFormat:@"blue is graphite: %@, blue is clear: %@, default is blue: %@, unknown is blue: %@",
                       YesNo([blue isEqual:graphite]), YesNo([blue isEqual:clear]),
                       YesNo([[NSColor colorForControlTint:NSDefaultControlTint] isEqual:blue]),
                       YesNo([[NSColor colorForControlTint:(NSControlTint)99] isEqual:blue])];
}

SCENARIO("control tints have the light values",
         "0.000 0.000 1.000 1.000 CalibratedRGB, 0.000 0.000 1.000 1.000 CalibratedRGB, 0.000 0.000 1.000 "
         "1.000 CalibratedRGB",
         "0.217 0.461 0.845 1.000 CalibratedRGB, 0.526 0.554 0.589 1.000 CalibratedRGB, 0.930 0.930 0.930 "
         "1.000 CalibratedRGB") {
  return Joined([NSArray arrayWithObjects:Shown([NSColor colorForControlTint:NSBlueControlTint]),
                                          Shown([NSColor colorForControlTint:NSGraphiteControlTint]),
                                          Shown([NSColor colorForControlTint:NSClearControlTint]), nil]);
}

static void WriteSystem(void) {
  NSAutoreleasePool* pool = [NSAutoreleasePool new];
  NSColorList* list = [[[NSColorList alloc] initWithName:@"System"] autorelease];
  [list setColor:[NSColor redColor] forKey:@"gridColor"];
  [list writeToFile:[SystemColours() stringByAppendingPathComponent:@"System.clr"]];
  [pool release];
}

SCENARIO("a list of that name in a colour folder comes before the light values",
         "1.000 0.000 0.000 1.000 CalibratedRGB", "1.000 0.000 0.000 1.000 CalibratedRGB") {
  InChild(WriteSystem);
  return Shown([[NSColor gridColor] colorUsingColorSpaceName:NSCalibratedRGBColorSpace]);
}

SCENARIO("what such a list lacks has the light values", "", "all") {
  InChild(WriteSystem);
  return LightBut("gridColor");
}

// From here on this program may read its folder and write nothing: root could write everything.
static void LoseRights(NSString* list) {
  chmod([list fileSystemRepresentation], 0444);
  if (geteuid() != 0) return;
  chmod(getenv("QVX_SCENARIO_FOLDER"), 0755);
  if (setuid(65534) != 0) [NSException raise:@"NoOtherUser" format:@"wanted to become another user"];
}

SCENARIO("such a list may be one that the user can't write", "raises NSColorListNotEditableException",
         "1.000 0.000 0.000 1.000 CalibratedRGB, all, no, NSColorListNotEditableException") {
  InChild(WriteSystem);
  LoseRights([SystemColours() stringByAppendingPathComponent:@"System.clr"]);
  NSString* grid = Shown([[NSColor gridColor] colorUsingColorSpaceName:NSCalibratedRGBColorSpace]);
  NSColorList* list = [NSColorList colorListNamed:@"System"];
  return Joined([NSArray arrayWithObjects:grid, LightBut("gridColor"), YesNo([list isEditable]),
                                          RAISED([list setColor:[NSColor redColor] forKey:@"gridColor"]),
                                          nil]);
}

// A theme with a single colour, as GNUstep asks it.
@interface RedGridTheme : NSObject
@end

@implementation RedGridTheme
- (NSColorList*)colors {
  NSColorList* list = [[[NSColorList alloc] initWithName:@"System"] autorelease];
  [list setColor:[NSColor redColor] forKey:@"gridColor"];
  return list;
}
@end

SCENARIO("what a theme's list lacks has the light values", "", "1.000 0.000 0.000 1.000 CalibratedRGB, all") {
  [NSColor gridColor];
  [[NSNotificationCenter defaultCenter] postNotificationName:@"GSThemeDidActivateNotification"
                                                      object:[[RedGridTheme new] autorelease]];
  return Joined([NSArray
      arrayWithObjects:Shown([[NSColor gridColor] colorUsingColorSpaceName:NSCalibratedRGBColorSpace]),
                       LightBut("gridColor"), nil]);
}

// A theme whose colours are a list that the program made before.
@interface ListTheme : NSObject {
 @public
  NSColorList* list;
}
@end

@implementation ListTheme
- (NSColorList*)colors {
  return list;
}
@end

SCENARIO("a theme's list that the program has written gets what it lacks all the same", "",
         "no, nothing, 0.930 0.930 0.930 1.000 CalibratedRGB") {
  [NSColor gridColor];
  ListTheme* theme = [[ListTheme new] autorelease];
  theme->list = [[[NSColorList alloc] initWithName:@"System"] autorelease];
  [theme->list setColor:[NSColor redColor] forKey:@"gridColor"];
  [theme->list writeToFile:nil];
  NSString* isEditable = YesNo([theme->list isEditable]);
  NSNotificationCenter* center = [NSNotificationCenter defaultCenter];
  NSString* raised = RAISED([center postNotificationName:@"GSThemeDidActivateNotification" object:theme]);
  return Joined(
      [NSArray arrayWithObjects:isEditable, raised, Shown([theme->list colorWithKey:@"controlColor"]), nil]);
}

SCENARIO("the colour under pages is there when such a list lacks it", "raises NSInvalidArgumentException",
         "0.590 0.590 0.590 1.000 CalibratedRGB") {
  InChild(WriteSystem);
  return Shown([[NSColor underPageBackgroundColor] colorUsingColorSpaceName:NSCalibratedRGBColorSpace]);
}

SCENARIO("the name of a system colour stands for nothing in another catalogue", "nil", "nil") {
  return Shown([[NSColor colorWithCatalogName:@"Mine" colorName:@"gridColor"]
      colorUsingColorSpaceName:NSCalibratedRGBColorSpace]);
}

SCENARIO("a user default comes before the light values when a program starts",
         "0.100 0.200 0.300 1.000 CalibratedRGB", "0.100 0.200 0.300 1.000 CalibratedRGB") {
  [[NSUserDefaults standardUserDefaults] setObject:@"0.1 0.2 0.3" forKey:@"gridColor"];
  return Shown([[NSColor gridColor] colorUsingColorSpaceName:NSCalibratedRGBColorSpace]);
}

// A damaged default must not keep NSColor from starting.
static NSString* StartedWith(NSString* value) {
  [[NSUserDefaults standardUserDefaults] setObject:value forKey:@"gridColor"];
  NSString* raised = RAISED([NSColor redColor]);
  return Joined([NSArray
      arrayWithObjects:raised,
                       Shown([[NSColor gridColor] colorUsingColorSpaceName:NSCalibratedRGBColorSpace]),
                       Shown([[NSColor headerColor] colorUsingColorSpaceName:NSCalibratedRGBColorSpace]),
                       nil]);
}

SCENARIO("a user default that breaks off leaves the light value",
         "NSGenericException, 0.500 0.500 0.500 1.000 CalibratedRGB, 0.667 0.667 0.667 1.000 CalibratedRGB",
         "nothing, 0.802 0.802 0.802 1.000 CalibratedRGB, 0.968 0.968 0.968 1.000 CalibratedRGB") {
  return StartedWith(@"{ ColorSpace = ");
}

SCENARIO("a user default without its numbers leaves the light value", "",
         "nothing, 0.802 0.802 0.802 1.000 CalibratedRGB, 0.968 0.968 0.968 1.000 CalibratedRGB") {
  return StartedWith(@"{ ColorSpace = NSCalibratedRGBColorSpace; R = 1; }");
}

SCENARIO("a user default without its first number leaves the light value", "",
         "nothing, 0.802 0.802 0.802 1.000 CalibratedRGB, 0.968 0.968 0.968 1.000 CalibratedRGB") {
  return StartedWith(@"{ ColorSpace = NSCalibratedRGBColorSpace; G = 0.1; B = 0.2; Alpha = 1; }");
}

SCENARIO("a user default of a space and its numbers is read", "",
         "nothing, 0.100 0.200 0.300 0.500 CalibratedRGB, 0.968 0.968 0.968 1.000 CalibratedRGB") {
  return StartedWith(@"{ ColorSpace = NSCalibratedRGBColorSpace; R = 0.1; G = 0.2; B = 0.3; Alpha = 0.5; }");
}

SCENARIO("a user default that is broken later leaves the colour as it was", "",
         "0.930 0.930 0.930 1.000 CalibratedRGB") {
  [NSColor controlColor];
  [[NSUserDefaults standardUserDefaults] setObject:@"{ bad" forKey:@"controlColor"];
  return Shown([[NSColor controlColor] colorUsingColorSpaceName:NSCalibratedRGBColorSpace]);
}

SCENARIO("a user default changes a system colour at once", "0.100 0.200 0.300 1.000 CalibratedRGB",
         "0.100 0.200 0.300 1.000 CalibratedRGB") {
  [NSColor controlColor];
  [[NSUserDefaults standardUserDefaults] setObject:@"0.1 0.2 0.3" forKey:@"controlColor"];
  return Shown([[NSColor controlColor] colorUsingColorSpaceName:NSCalibratedRGBColorSpace]);
}

SCENARIO(
    "the system's list can't be edited", "yes, nothing, nothing, nothing",
    "no, NSColorListNotEditableException, NSColorListNotEditableException, NSColorListNotEditableException") {
  NSColor* red = [NSColor redColor];
  NSColorList* system = [NSColorList colorListNamed:@"System"];
  return Joined([NSArray arrayWithObjects:YesNo([system isEditable]),
                                          RAISED([system setColor:red forKey:@"controlColor"]),
                                          RAISED([system insertColor:red key:@"new" atIndex:0]),
                                          RAISED([system removeColorWithKey:@"gridColor"]), nil]);
}

SCENARIO("a program's own list of that name can be edited", "yes", "yes") {
  NSColorList* own = [[[NSColorList alloc] initWithName:@"System"] autorelease];
  [own setColor:[NSColor redColor] forKey:@"mine"];
  return YesNo([own isEditable] && [[own allKeys] count] == 1);
}

SCENARIO("the system's list keeps its keys, and has the colour under pages too", "39", "40") {
  [NSColor redColor];
  return
      [NSString stringWithFormat:@"%u", (unsigned)[[[NSColorList colorListNamed:@"System"] allKeys] count]];
}
