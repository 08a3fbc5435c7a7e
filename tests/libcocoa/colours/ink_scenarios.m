// tests/libcocoa/colours/ink_scenarios.m - spaces of more than four components.
#import "tests/libcocoa/colours/scenario.h"

static NSColorSpace* SpaceOf(NSData* data) {
  return [[[NSColorSpace alloc] initWithICCProfileData:data] autorelease];
}

static NSColor* Inked(NSColorSpace* space, CGFloat first, CGFloat fourth, NSInteger count) {
  const CGFloat inks[10] = {first, 0.5, 0.5, fourth, 0, 0, 0.75};
  return [NSColor colorWithColorSpace:space components:inks count:count];
}

static NSString* Told(NSColorSpace* space) {
  return [NSString stringWithFormat:@"%d/%d %@", [space colorSpaceModel], [space numberOfColorComponents],
                                    [space localizedName]];
}

SCENARIO("profiles of five, six and eight inks make spaces of so many components",
         "-1/0 unknown, -1/0 unknown, -1/0 unknown", "4/5 Many Inks, 4/6 Many Inks, 4/8 Many Inks") {
  return Joined([NSArray arrayWithObjects:Told(SpaceOf(InkProfile(5))), Told(SpaceOf(InkProfile(6))),
                                          Told(SpaceOf(InkProfile(8))), nil]);
}

SCENARIO("a profile may have two to fifteen inks", "", "nil, 4/2, 4/9, 4/10, 4/14, 4/15") {
  static const unsigned counts[] = {1, 2, 9, 10, 14, 15};
  NSMutableArray* told = [NSMutableArray array];
  for (unsigned i = 0; i < sizeof counts / sizeof *counts; ++i) {
    NSColorSpace* space = SpaceOf(InkProfile(counts[i]));
    [told addObject:space ? [Told(space) stringByReplacingOccurrencesOfString:@" Many Inks" withString:@""]
                          : @"nil"];
  }
  return Joined(told);
}

SCENARIO("a colour of fifteen inks becomes sRGB and keeps its alpha", "",
         "0.466 0.466 0.466 0.250 Custom sRGB IEC61966-2.1") {
  const CGFloat inks[16] = {0.5, 0.5, 0.5, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0.25};
  NSColor* color = [NSColor colorWithColorSpace:SpaceOf(InkProfile(15)) components:inks count:16];
  return Shown([color colorUsingColorSpace:[NSColorSpace sRGBColorSpace]]);
}

SCENARIO("a file of six inks makes a space that equals the one of its data", "-1/0 unknown, unequal",
         "4/6 Many Inks, equal") {
  NSString* file = InScratch(@"inks.icc");
  [InkProfile(6) writeToFile:file atomically:NO];
  NSColorSpace* space = SpaceOf([NSData dataWithContentsOfFile:file]);
  return [NSString stringWithFormat:@"%@, %@", Told(space),
                                    [space isEqual:SpaceOf(InkProfile(6))] ? @"equal" : @"unequal"];
}

SCENARIO("a colour of six inks has six components and alpha", "nil; space 0/0 (null); alpha -1.00",
         "0.250 0.500 0.500 0.125 0.000 0.000 0.750 Custom Many Inks; space 4/6 Many Inks; alpha 0.75") {
  NSColor* color = Inked(SpaceOf(InkProfile(6)), 0.25, 0.125, 7);
  return [NSString stringWithFormat:@"%@; space %@; alpha %.2f", Shown(color), Told([color colorSpace]),
                                    color ? (double)[color alphaComponent] : -1.0];
}

SCENARIO("a wrong number of inks raises", "nothing, nothing, nothing, nothing",
         "NSInvalidArgumentException, NSInvalidArgumentException, NSInvalidArgumentException, nothing") {
  NSColorSpace* space = SpaceOf(InkProfile(6));
  return Joined([NSArray arrayWithObjects:RAISED(Inked(space, 0, 0, 6)), RAISED(Inked(space, 0, 0, 8)),
                                          RAISED(Inked(space, 0, 0, 5)), RAISED(Inked(space, 0, 0, 7)), nil]);
}

SCENARIO(
    "inks become sRGB, each with its share", "raises NSInvalidArgumentException",
    "0.466 0.466 0.466 0.750 Custom sRGB IEC61966-2.1, 0.385 0.385 0.385 0.750 Custom sRGB IEC61966-2.1") {
  NSColorSpace* space = SpaceOf(InkProfile(6));
  NSColorSpace* srgb = [NSColorSpace sRGBColorSpace];
  return Joined([NSArray arrayWithObjects:Shown([Inked(space, 0.5, 0, 7) colorUsingColorSpace:srgb]),
                                          Shown([Inked(space, 0.5, 1, 7) colorUsingColorSpace:srgb]), nil]);
}

SCENARIO("a colour is separated into inks", "nil",
         "0.500 0.500 0.500 0.000 0.000 0.000 0.750 Custom Many Inks") {
  const CGFloat lab[] = {50, 0, 0, 0.75};
  NSColor* grey = [NSColor colorWithColorSpace:SpaceOf(ProfileNamed(@"lab.icc")) components:lab count:4];
  return Shown([grey colorUsingColorSpace:SpaceOf(InkProfile(6))]);
}

SCENARIO("a colour that went through five inks is as before", "0 components, nil",
         "6 components, 0.700 0.500 0.400 0.500 Custom sRGB IEC61966-2.1") {
  NSColorSpace* space = SpaceOf(InkProfile(5));
  NSColor* color = [NSColor colorWithSRGBRed:0.7 green:0.5 blue:0.4 alpha:0.5];
  NSColor* there = [color colorUsingColorSpace:space];
  return [NSString stringWithFormat:@"%u components, %@", (unsigned)[there numberOfComponents],
                                    Shown([there colorUsingColorSpace:[color colorSpace]])];
}

SCENARIO("a colour of six inks is asked for by name", "nil, yes", "0.466 0.466 0.466 0.750 DeviceRGB, yes") {
  NSColor* color = Inked(SpaceOf(InkProfile(6)), 0.5, 0, 7);
  return Joined([NSArray arrayWithObjects:Shown([color colorUsingColorSpaceName:NSDeviceRGBColorSpace]),
                                          YesNo([color colorUsingColorSpaceName:NSCustomColorSpace] == color),
                                          nil]);
}

SCENARIO(
    "a colour of six inks has no component with a name", "nothing, nothing, nothing",
    "NSInternalInconsistencyException, NSInternalInconsistencyException, NSInternalInconsistencyException") {
  NSColor* color = Inked(SpaceOf(InkProfile(6)), 0.5, 0, 7);
  return Joined([NSArray arrayWithObjects:RAISED([color redComponent]), RAISED([color cyanComponent]),
                                          RAISED([color hueComponent]), nil]);
}

SCENARIO("a colour of six inks comes back from a keyed archive", "no", "yes") {
  NSColor* color = Inked(SpaceOf(InkProfile(6)), 0.25, 0.125, 7);
  id back = [NSKeyedUnarchiver unarchiveObjectWithData:[NSKeyedArchiver archivedDataWithRootObject:color]];
  return YesNo(color && [back isEqual:color]);
}
