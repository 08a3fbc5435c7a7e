// tests/libcocoa/colours/colour_scenarios.m - making colours, their components, equality, handles and
// drawing.
#import "tests/libcocoa/colours/scenario.h"

#include <math.h>

static NSColorSpace* SpaceNamed(NSString* file) {
  return [[[NSColorSpace alloc] initWithICCProfileData:ProfileNamed(file)] autorelease];
}

static const CGFloat kNumbers[20] = {0.1, 0.2, 0.3, 0.4, 0.5, 0.6};

static NSColor* InSpace(NSColorSpace* space, int count) {
  return [NSColor colorWithColorSpace:space components:kNumbers count:count];
}

SCENARIO("components of stock spaces make stock colours",
         "0.100 0.200 0.300 0.400 CalibratedRGB, 0.100 0.200 DeviceWhite, 0.100 0.200 0.300 0.400 0.500 "
         "DeviceCMYK",
         "0.100 0.200 0.300 0.400 CalibratedRGB, 0.100 0.200 DeviceWhite, 0.100 0.200 0.300 0.400 0.500 "
         "DeviceCMYK") {
  return Joined([NSArray arrayWithObjects:Shown(InSpace([NSColorSpace genericRGBColorSpace], 4)),
                                          Shown(InSpace([NSColorSpace deviceGrayColorSpace], 2)),
                                          Shown(InSpace([NSColorSpace deviceCMYKColorSpace], 5)), nil]);
}

SCENARIO("a generic CMYK colour is in generic CMYK", "0.1, in the space asked for: no",
         "0.1, in the space asked for: yes") {
  NSColor* color = InSpace([NSColorSpace genericCMYKColorSpace], 5);
  return [NSString stringWithFormat:@"%.1f, in the space asked for: %@", (double)[color cyanComponent],
                                    YesNo([color colorSpace] == [NSColorSpace genericCMYKColorSpace])];
}

SCENARIO("a colour can be made in a space with a profile", "nil, no", "NSCustomColorSpace, yes") {
  NSColorSpace* space = SpaceNamed(@"a98.icc");
  NSColor* color = InSpace(space, 4);
  return [NSString stringWithFormat:@"%@, %@", color ? [color colorSpaceName] : @"nil",
                                    YesNo(color && [[color colorSpace] isEqual:space])];
}

SCENARIO("a wrong number of components raises", "nothing, nothing, nothing, nothing",
         "NSInvalidArgumentException, NSInvalidArgumentException, NSInvalidArgumentException, "
         "NSInvalidArgumentException") {
  return Joined([NSArray arrayWithObjects:RAISED(InSpace([NSColorSpace genericRGBColorSpace], 3)),
                                          RAISED(InSpace([NSColorSpace genericRGBColorSpace], 20)),
                                          RAISED(InSpace([NSColorSpace deviceGrayColorSpace], 4)),
                                          RAISED(InSpace([NSColorSpace deviceGrayColorSpace], -1)), nil]);
}

SCENARIO("no space makes no colour", "nil", "nil") {
  return Shown(InSpace(nil, 4));
}

SCENARIO(
    "the factories of named spaces make colours there",
    "0.100 0.200 0.300 0.400 CalibratedRGB, 0.100 0.400 CalibratedWhite, 0.100 0.200 0.300 0.400 "
    "CalibratedRGB, 0.100 0.400 CalibratedWhite",
    "0.100 0.200 0.300 0.400 Custom sRGB IEC61966-2.1, 0.100 0.400 Custom Generic Gray Gamma 2.2 Profile, "
    "0.100 0.200 0.300 0.400 Custom sRGB IEC61966-2.1, 0.100 0.400 Custom Generic Gray Gamma 2.2 Profile") {
  return Joined([NSArray arrayWithObjects:Shown([NSColor colorWithSRGBRed:0.1 green:0.2 blue:0.3 alpha:0.4]),
                                          Shown([NSColor colorWithGenericGamma22White:0.1 alpha:0.4]),
                                          Shown([NSColor colorWithRed:0.1 green:0.2 blue:0.3 alpha:0.4]),
                                          Shown([NSColor colorWithWhite:0.1 alpha:0.4]), nil]);
}

SCENARIO("hue, saturation and brightness make a colour in the space", "0.400 0.800 0.800 1.000 CalibratedRGB",
         "0.400 0.800 0.800 1.000 DeviceRGB") {
  return Shown([NSColor colorWithColorSpace:[NSColorSpace deviceRGBColorSpace]
                                        hue:0.5
                                 saturation:0.5
                                 brightness:0.8
                                      alpha:1]);
}

static NSString* Hexcone(CGFloat hue, CGFloat saturation, CGFloat brightness) {
  return Shown([NSColor colorWithColorSpace:[NSColorSpace sRGBColorSpace]
                                        hue:hue
                                 saturation:saturation
                                 brightness:brightness
                                      alpha:1]);
}

// "r g b" of each, in front of what all have in common.
static NSString* Hexcones(int count, const CGFloat (*parts)[3]) {
  NSMutableArray* shown = [NSMutableArray array];
  for (int i = 0; i < count; i++)
    [shown addObject:[Hexcone(parts[i][0], parts[i][1], parts[i][2]) substringToIndex:17]];
  return Joined(shown);
}

SCENARIO("hue, saturation and brightness outside of their range count as its end", "",
         "0.800 0.000 0.000, 0.800 0.400 0.400, 0.000 0.560 0.800, 0.800 0.800 0.800, 0.500 0.850 1.000, "
         "0.000 0.000 0.000") {
  const CGFloat parts[][3] = {{1.25, 1, 0.8},    {-0.25, 0.5, 0.8}, {0.55, 1.7, 0.8},
                              {0.55, -0.5, 0.8}, {0.55, 0.5, 1.5},  {0.55, 0.5, -1}};
  return Hexcones(6, parts);
}

SCENARIO("each sixth of the hues has its order of red, green and blue", "",
         "0.800 0.500 0.200, 0.500 0.800 0.200, 0.200 0.800 0.500, 0.200 0.500 0.800, 0.500 0.200 0.800, "
         "0.800 0.200 0.500") {
  CGFloat parts[6][3];
  for (int i = 0; i < 6; i++) {
    parts[i][0] = ((CGFloat)i + 0.5F) / 6;
    parts[i][1] = 0.75F;
    parts[i][2] = 0.8F;
  }
  return Hexcones(6, (const CGFloat(*)[3])parts);
}

SCENARIO("a custom colour of each sixth tells its hue, saturation and brightness", "",
         "0.0833 0.2500 0.4167 0.5833 0.7500 0.9167") {
  static const CGFloat colors[6][4] = {{0.8F, 0.5F, 0.2F, 1}, {0.5F, 0.8F, 0.2F, 1}, {0.2F, 0.8F, 0.5F, 1},
                                       {0.2F, 0.5F, 0.8F, 1}, {0.5F, 0.2F, 0.8F, 1}, {0.8F, 0.2F, 0.5F, 1}};
  NSMutableArray* hues = [NSMutableArray array];
  for (int i = 0; i < 6; i++) {
    NSColor* color = [NSColor colorWithColorSpace:[NSColorSpace sRGBColorSpace] components:colors[i] count:4];
    if (fabs((double)[color saturationComponent] - 0.75) > 1e-6 || [color brightnessComponent] != 0.8F)
      return [NSString stringWithFormat:@"%d has another saturation or brightness", i];
    [hues addObject:[NSString stringWithFormat:@"%.4f", (double)[color hueComponent]]];
  }
  return [hues componentsJoinedByString:@" "];
}

SCENARIO("custom red is where the circle of hues begins", "", "0.0000 0.3333 0.6667") {
  NSMutableArray* hues = [NSMutableArray array];
  for (int i = 0; i < 3; i++) {
    NSColor* color = [NSColor colorWithSRGBRed:i == 0 green:i == 1 blue:i == 2 alpha:1];
    [hues addObject:[NSString stringWithFormat:@"%.4f", (double)[color hueComponent]]];
  }
  return [hues componentsJoinedByString:@" "];
}

SCENARIO("a gray space has no hue", "0.400 0.800 0.800 1.000 CalibratedRGB", "nil") {
  return Shown([NSColor colorWithColorSpace:[NSColorSpace deviceGrayColorSpace]
                                        hue:0.5
                                 saturation:0.5
                                 brightness:0.8
                                      alpha:1]);
}

SCENARIO("custom components are clipped", "0.000 1.000 0.500 1.000 CalibratedRGB",
         "0.000 1.000 0.500 1.000 Custom sRGB IEC61966-2.1") {
  return Shown([NSColor colorWithSRGBRed:-1 green:2 blue:0.5 alpha:7]);
}

SCENARIO("stock components are clipped", "0.000 1.000 0.500 1.000 CalibratedRGB",
         "0.000 1.000 0.500 1.000 CalibratedRGB") {
  return Shown([NSColor colorWithCalibratedRed:-1 green:2 blue:0.5 alpha:7]);
}

SCENARIO("Lab components keep their units, the alpha is clipped", "nil",
         "50.000 -60.000 70.000 1.000 Custom Lab2Lab") {
  const CGFloat lab[] = {50, -60, 70, 2};
  return Shown([NSColor colorWithColorSpace:SpaceNamed(@"lab.icc") components:lab count:4]);
}

SCENARIO("a custom RGB colour tells hue, saturation and brightness", "0.0000 0.0000 0.0000, no",
         "0.5833 0.6667 0.3000, yes") {
  NSColor* color = InSpace(SpaceNamed(@"a98.icc"), 4);
  CGFloat h = 0, s = 0, b = 0;
  [color getHue:&h saturation:&s brightness:&b alpha:NULL];
  return [NSString stringWithFormat:@"%.4f %.4f %.4f, %@", (double)h, (double)s, (double)b,
                                    YesNo(h == [color hueComponent] && s == [color saturationComponent] &&
                                          b == [color brightnessComponent])];
}

SCENARIO("a custom RGB colour without a hue has hue and saturation 0", "",
         "0.00 0.00 0.00, 0.00 0.00 0.25, 0.00 0.00 1.00") {
  NSMutableArray* parts = [NSMutableArray array];
  for (int i = 0; i < 3; ++i) {
    const CGFloat value = i == 2 ? 1 : (CGFloat)i / 4;
    NSColor* color = [NSColor colorWithSRGBRed:value green:value blue:value alpha:1];
    [parts addObject:[NSString stringWithFormat:@"%.2f %.2f %.2f", (double)[color hueComponent],
                                                (double)[color saturationComponent],
                                                (double)[color brightnessComponent]]];
  }
  return Joined(parts);
}

SCENARIO("a stock colour's hue, saturation and brightness make it again",
         "0.5833 0.6667 0.6000, 0.200 0.400 0.600 1.000 CalibratedRGB",
         "0.5833 0.6667 0.6000, 0.200 0.400 0.600 1.000 CalibratedRGB") {
  NSColor* color = [NSColor colorWithCalibratedRed:0.2 green:0.4 blue:0.6 alpha:1];
  NSColor* back = [NSColor colorWithCalibratedHue:[color hueComponent]
                                       saturation:[color saturationComponent]
                                       brightness:[color brightnessComponent]
                                            alpha:1];
  return [NSString stringWithFormat:@"%.4f %.4f %.4f, %@", (double)[color hueComponent],
                                    (double)[color saturationComponent], (double)[color brightnessComponent],
                                    Shown(back)];
}

SCENARIO("components that nobody wants are not written", "nothing happens", "nothing happens") {
  [InSpace(SpaceNamed(@"a98.icc"), 4) getRed:NULL green:NULL blue:NULL alpha:NULL];
  [[NSColor redColor] getRed:NULL green:NULL blue:NULL alpha:NULL];
  return @"nothing happens";
}

SCENARIO("a missing buffer for all components is left alone", "nothing happens", "nothing happens") {
  [InSpace(SpaceNamed(@"a98.icc"), 4) getComponents:NULL];
  return @"nothing happens";
}

SCENARIO(
    "a component of another kind raises under GNUstep's name",
    "NSInternalInconsistencyException, NSInternalInconsistencyException, NSInternalInconsistencyException, "
    "NSInternalInconsistencyException, NSInternalInconsistencyException, NSInternalInconsistencyException, "
    "NSInternalInconsistencyException",
    "NSInternalInconsistencyException, NSInternalInconsistencyException, NSInternalInconsistencyException, "
    "NSInternalInconsistencyException, NSInternalInconsistencyException, NSInternalInconsistencyException, "
    "NSInternalInconsistencyException") {
  NSColor* custom = [NSColor colorWithSRGBRed:0 green:0 blue:0 alpha:1];
  CGFloat f;
  return Joined([NSArray
      arrayWithObjects:RAISED([[NSColor whiteColor] redComponent]),
                       RAISED([[NSColor redColor] whiteComponent]), RAISED([custom cyanComponent]),
                       RAISED([custom getWhite:&f alpha:NULL]), RAISED([Pattern() numberOfComponents]),
                       RAISED([[NSColor redColor] catalogNameComponent]),
                       RAISED([[NSColor redColor] patternImage]), nil]);
}

// Why the colour has no cyan.
static NSString* WhyNoCyan(NSColor* color) {
  @try {
    [color cyanComponent];
  } @catch (NSException* exception) {
    return [exception reason];
  }
  return @"it has";
}

SCENARIO(
    "the reason of such an exception names method and colour", "Called cyanComponent on non-CMYK colour",
    "*** -cyanComponent not valid for the NSColor NSCalibratedWhiteColorSpace 0.5 1; need to first convert "
    "colorspace.") {
  return WhyNoCyan([NSColor colorWithCalibratedWhite:0.5 alpha:1]);
}

SCENARIO("such a reason names a system colour by catalogue and name",
         "Called cyanComponent on non-CMYK colour",
         "*** -cyanComponent not valid for the NSColor NSNamedColorSpace System controlColor; need to first "
         "convert colorspace.") {
  return WhyNoCyan([NSColor controlColor]);
}

SCENARIO(
    "such a reason names a custom colour by space and components", "Called cyanComponent on non-CMYK colour",
    "*** -cyanComponent not valid for the NSColor NSCustomColorSpace sRGB IEC61966-2.1 colorspace 1 0.5 0 "
    "0.25; need to first convert colorspace.") {
  return WhyNoCyan([NSColor colorWithSRGBRed:1 green:0.5 blue:0 alpha:0.25]);
}

SCENARIO("such a reason shows six digits of a component, and what is none as it is",
         "Called cyanComponent on non-CMYK colour",
         "*** -cyanComponent not valid for the NSColor NSCustomColorSpace sRGB IEC61966-2.1 colorspace 1e-05 "
         "0.333333 nan 0.0001; need to first convert colorspace.") {
  return WhyNoCyan([NSColor colorWithSRGBRed:0.00001 green:0.33333333 blue:NAN alpha:0.0001]);
}

// An image that nothing can be learnt of.
@interface UndecodableImage : NSImage
@end

@implementation UndecodableImage
- (NSString*)description {
  [NSException raise:@"UndecodableImage" format:@"the image was asked what it is"];
  return nil;
}
- (NSArray*)representations {
  [NSException raise:@"UndecodableImage" format:@"the image was decoded"];
  return nil;
}
@end

static NSString* WhyNoCount(NSImage* image) {
  @try {
    [[NSColor colorWithPatternImage:image] numberOfComponents];
  } @catch (NSException* exception) {
    return [NSString stringWithFormat:@"%@: %@", [exception name], [exception reason]];
  }
  return @"it has";
}

SCENARIO("a pattern whose image can't be decoded says itself why it has no components",
         "NSInternalInconsistencyException: Called numberOfComponents on non-standard colour, the same for a "
         "file of junk: yes, for no image: yes",
         "NSInternalInconsistencyException: *** -numberOfComponents not valid for the NSColor "
         "NSPatternColorSpace; need to first convert colorspace., the same for a file of junk: yes, for no "
         "image: yes") {
  NSString* why = WhyNoCount([[[UndecodableImage alloc] initWithSize:NSMakeSize(2, 2)] autorelease]);
  [@"no picture" writeToFile:InScratch(@"junk.png") atomically:NO];
  NSImage* junk = [[[NSImage alloc] initByReferencingFile:InScratch(@"junk.png")] autorelease];
  return
      [NSString stringWithFormat:@"%@, the same for a file of junk: %@, for no image: %@", why,
                                 YesNo([WhyNoCount(junk) isEqual:why]), YesNo([WhyNoCount(nil) isEqual:why])];
}

SCENARIO("only colours with components have a space", "yes, yes, yes", "yes, yes, yes") {
  return Joined(
      [NSArray arrayWithObjects:YesNo([[NSColor redColor] colorSpace] == [NSColorSpace genericRGBColorSpace]),
                                YesNo([[NSColor controlColor] colorSpace] == nil),
                                YesNo([Pattern() colorSpace] == nil), nil]);
}

SCENARIO("custom colours are equal by space and components", "no, no, no, no", "yes, no, no, no") {
  NSColor* one = InSpace(SpaceNamed(@"a98.icc"), 4);
  NSColor* twin = InSpace(SpaceNamed(@"a98.icc"), 4);
  NSColor* other = InSpace(SpaceNamed(@"srgb.icc"), 4);
  NSColor* stock = InSpace([NSColorSpace genericRGBColorSpace], 4);
  return Joined([NSArray arrayWithObjects:YesNo(one && [one isEqual:twin] && [one hash] == [twin hash]),
                                          YesNo([one isEqual:other]),
                                          YesNo([one isEqual:stock] || [stock isEqual:one]),
                                          YesNo([one isEqual:@"no colour"]), nil]);
}

SCENARIO("colours that differ in the sign of zero have equal hashes", "equal, hashes unequal",
         "equal, hashes equal") {
  NSColor* zero = [NSColor colorWithDeviceRed:0 green:1 blue:1 alpha:1];
  NSColor* minus = [NSColor colorWithDeviceRed:-0.0 green:1 blue:1 alpha:1];
  return [NSString stringWithFormat:@"%@, hashes %@", [zero isEqual:minus] ? @"equal" : @"unequal",
                                    [zero hash] == [minus hash] ? @"equal" : @"unequal"];
}

static NSUInteger HashInAdobeRGB(CGFloat blue) {
  CGFloat components[] = {0.1, 0.2, blue, 1};
  return [[NSColor colorWithColorSpace:SpaceNamed(@"a98.icc") components:components count:4] hash];
}

SCENARIO("colours of each kind that differ have different hashes", "yes, yes, yes, no",
         "yes, yes, yes, yes") {
  return Joined([NSArray
      arrayWithObjects:YesNo([[NSColor colorWithDeviceRed:0.1 green:0.2 blue:0.3
                                                    alpha:1] hash] != [[NSColor colorWithDeviceRed:0.1
                                                                                             green:0.2
                                                                                              blue:0.4
                                                                                             alpha:1] hash]),
                       YesNo([[NSColor colorWithDeviceWhite:0.1 alpha:1] hash] !=
                             [[NSColor colorWithDeviceWhite:0.2 alpha:1] hash]),
                       YesNo([[NSColor colorWithDeviceCyan:0.1 magenta:0 yellow:0 black:0 alpha:1] hash] !=
                             [[NSColor colorWithDeviceCyan:0.2 magenta:0 yellow:0 black:0 alpha:1] hash]),
                       YesNo(HashInAdobeRGB(0.3) != HashInAdobeRGB(0.4)), nil]);
}

SCENARIO("stock colours are equal by kind and components", "yes, no", "yes, no") {
  NSColor* one = [NSColor colorWithDeviceRed:0.1 green:0.2 blue:0.3 alpha:1];
  NSColor* twin = [NSColor colorWithDeviceRed:0.1 green:0.2 blue:0.3 alpha:1];
  NSColor* calibrated = [NSColor colorWithCalibratedRed:0.1 green:0.2 blue:0.3 alpha:1];
  return Joined([NSArray arrayWithObjects:YesNo([one isEqual:twin] && [one hash] == [twin hash]),
                                          YesNo([one isEqual:calibrated]), nil]);
}

SCENARIO("a custom colour can be copied", "no", "yes") {
  NSColor* color = InSpace(SpaceNamed(@"a98.icc"), 4);
  return YesNo(color && [[color copy] isEqual:color]);
}

SCENARIO("a custom colour takes another alpha", "-nan, same components: no, receiver for its own: yes",
         "0.0, same components: yes, receiver for its own: yes") {
  NSColor* color = InSpace(SpaceNamed(@"a98.icc"), 4);
  NSColor* clear = [color colorWithAlphaComponent:-1];
  return [NSString stringWithFormat:@"%.1f, same components: %@, receiver for its own: %@",
                                    (double)[clear alphaComponent],
                                    YesNo([clear redComponent] == [color redComponent]),
                                    YesNo([color colorWithAlphaComponent:[color alphaComponent]] == color)];
}

SCENARIO("a pattern keeps its alpha", "yes", "yes") {
  NSColor* pattern = Pattern();
  return YesNo([pattern colorWithAlphaComponent:0.5] == pattern);
}

SCENARIO("a custom colour's description names its space", "raises NSInvalidArgumentException",
         "NSCustomColorSpace sRGB IEC61966-2.1 colorspace 0.1 0.2 0.3 0.4") {
  return [InSpace([NSColorSpace sRGBColorSpace], 4) description];
}
SCENARIO("a stock colour's description is what themes and defaults parse", "1 0.5 0.25", "1 0.5 0.25") {
  return [[NSColor colorWithCalibratedRed:1 green:0.5 blue:0.25 alpha:1] description];
}

SCENARIO("a colour comes back from its Core Graphics handle", "raises NSInvalidArgumentException",
         "0.100 0.200 0.300 0.400 Custom sRGB IEC61966-2.1, yes") {
  NSColor* color = [NSColor colorWithSRGBRed:0.1 green:0.2 blue:0.3 alpha:0.4];
  NSColor* pattern = Pattern();
  return Joined(
      [NSArray arrayWithObjects:Shown([NSColor colorWithCGColor:[color CGColor]]),
                                YesNo([[NSColor colorWithCGColor:[pattern CGColor]] isEqual:pattern]), nil]);
}

SCENARIO("handles that never were colours give none", "raises NSInvalidArgumentException", "nil, nil") {
  return Joined([NSArray arrayWithObjects:Shown([NSColor colorWithCGColor:NULL]),
                                          Shown([NSColor colorWithCGColor:(CGColorRef)0x1234]), nil]);
}

SCENARIO("the handle of a colour that is gone gives none", "raises NSInvalidArgumentException", "nil") {
  NSAutoreleasePool* pool = [NSAutoreleasePool new];
  CGColorRef handle = [[NSColor colorWithDeviceRed:0.1 green:0.2 blue:0.3 alpha:0.4] CGColor];
  [pool release];
  return Shown([NSColor colorWithCGColor:handle]);
}

// What the reason says behind the name of the method.
static NSString* WhyNoColor(const CGFloat* components, NSInteger count) {
  @try {
    [NSColor colorWithColorSpace:SpaceNamed(@"srgb.icc") components:components count:count];
  } @catch (NSException* exception) {
    return [[[exception reason] componentsSeparatedByString:@"*** +colorWithColorSpace:components:count: "]
        componentsJoinedByString:@""];
  }
  return @"it can";
}

#define WANTED_FOUR                                                                                      \
  "wanted 4 components for a colour in Artifex Software sRGB ICC Profile colorspace (3 and the alpha), " \
  "found"

SCENARIO("the reason why a colour can't be made names what was wanted and what was found", "",
         WANTED_FOUR " 3; pass them all, " WANTED_FOUR " 0; pass them all") {
  return Joined(
      [NSArray arrayWithObjects:WhyNoColor((const CGFloat[]){0, 0, 0}, 3), WhyNoColor(NULL, 4), nil]);
}

static NSString* DrawnNowhere(NSColor* color) {
  [color set];
  [color setFill];
  [color setStroke];
  [color drawSwatchInRect:NSMakeRect(0, 0, 1, 1)];
  return @"nothing happens";
}

SCENARIO("drawing RGB with no graphics context does nothing", "crashes with signal 11", "nothing happens") {
  return DrawnNowhere([NSColor redColor]);
}
SCENARIO("drawing white with no graphics context does nothing", "crashes with signal 11", "nothing happens") {
  return DrawnNowhere([NSColor whiteColor]);
}
SCENARIO("drawing CMYK with no graphics context does nothing", "crashes with signal 11", "nothing happens") {
  return DrawnNowhere([NSColor colorWithDeviceCyan:0 magenta:0 yellow:0 black:0 alpha:1]);
}
SCENARIO("drawing a custom colour with no graphics context does nothing", "crashes with signal 11",
         "nothing happens") {
  return DrawnNowhere(InSpace(SpaceNamed(@"a98.icc"), 4) ?: [NSColor redColor]);
}
SCENARIO("drawing a pattern with no graphics context does nothing", "raises NSInvalidArgumentException",
         "nothing happens") {
  return DrawnNowhere(Pattern());
}
