// tests/libcocoa/colours/conversion_scenarios.m - colours from one space to another.
#import "tests/libcocoa/colours/scenario.h"

static NSColorSpace* SpaceNamed(NSString* file) {
  return [[[NSColorSpace alloc] initWithICCProfileData:ProfileNamed(file)] autorelease];
}

// Of four components with the alpha, or of four inks, which are opaque.
static NSColor* Made(NSColorSpace* space, CGFloat a, CGFloat b, CGFloat c, CGFloat d) {
  const CGFloat components[] = {a, b, c, d, 1};
  return [NSColor colorWithColorSpace:space components:components count:[space numberOfColorComponents] + 1];
}

SCENARIO("asking for generic RGB gives a calibrated colour", "1.000 0.500 0.250 0.500 DeviceRGB",
         "1.000 0.500 0.250 0.500 CalibratedRGB") {
  NSColor* red = [NSColor colorWithDeviceRed:1 green:0.5 blue:0.25 alpha:0.5];
  return Shown([red colorUsingColorSpace:[NSColorSpace genericRGBColorSpace]]);
}

SCENARIO("asking for device RGB gives a device colour", "0.250 0.250 0.250 1.000 DeviceRGB",
         "0.250 0.250 0.250 1.000 DeviceRGB") {
  NSColor* grey = [NSColor colorWithCalibratedWhite:0.25 alpha:1];
  return Shown([grey colorUsingColorSpace:[NSColorSpace deviceRGBColorSpace]]);
}

SCENARIO("asking for no space gives no colour", "0.333 1.000 DeviceWhite", "nil") {
  return Shown([[NSColor redColor] colorUsingColorSpace:nil]);
}

SCENARIO("a colour that is in the space already is itself", "yes", "yes") {
  NSColor* color = [NSColor colorWithCalibratedRed:1 green:0.5 blue:0.25 alpha:1];
  return YesNo([color colorUsingColorSpace:[NSColorSpace genericRGBColorSpace]] == color);
}

SCENARIO("a colour that is in an equal space already is itself", "no", "yes") {
  NSColor* color = Made(SpaceNamed(@"a98.icc"), 1, 0.5, 0.25, 1);
  return YesNo(color && [color colorUsingColorSpace:SpaceNamed(@"a98.icc")] == color);
}

SCENARIO("generic red is the desktop's FF2600 in sRGB", "raises NSInvalidArgumentException",
         "1.000 0.149 0.000 1.000 Custom sRGB IEC61966-2.1") {
  return Shown([[NSColor redColor] colorUsingColorSpace:[NSColorSpace sRGBColorSpace]]);
}

SCENARIO("generic orange is the desktop's FF9300 in sRGB", "raises NSInvalidArgumentException",
         "1.000 0.576 0.000 1.000 Custom sRGB IEC61966-2.1") {
  return Shown([[NSColor orangeColor] colorUsingColorSpace:[NSColorSpace sRGBColorSpace]]);
}

SCENARIO("generic half gray is .572 in sRGB", "raises NSInvalidArgumentException",
         "0.572 0.572 0.572 1.000 Custom sRGB IEC61966-2.1") {
  return Shown([[NSColor grayColor] colorUsingColorSpace:[NSColorSpace sRGBColorSpace]]);
}

SCENARIO("device RGB has sRGB's numbers", "raises NSInvalidArgumentException",
         "0.250 0.500 0.750 0.500 Custom sRGB IEC61966-2.1") {
  NSColor* color = [NSColor colorWithDeviceRed:0.25 green:0.5 blue:0.75 alpha:0.5];
  return Shown([color colorUsingColorSpace:[NSColorSpace sRGBColorSpace]]);
}

SCENARIO("sRGB becomes Adobe RGB with its alpha", "raises NSInvalidArgumentException",
         "0.444 0.258 0.732 0.500 Custom Adobe RGB (1998)") {
  return Shown([[NSColor colorWithSRGBRed:0.5 green:0.25 blue:0.75
                                    alpha:0.5] colorUsingColorSpace:[NSColorSpace adobeRGB1998ColorSpace]]);
}

SCENARIO("sRGB red becomes Lab in Lab's own units", "nil", "54.290 80.809 69.895 1.000 Custom Lab2Lab") {
  return Shown([[NSColor colorWithSRGBRed:1 green:0 blue:0
                                    alpha:1] colorUsingColorSpace:SpaceNamed(@"lab.icc")]);
}

SCENARIO("Lab grey becomes sRGB grey", "raises NSInvalidArgumentException",
         "0.466 0.466 0.466 1.000 Custom sRGB IEC61966-2.1") {
  return Shown(
      [Made(SpaceNamed(@"lab.icc"), 50, 0, 0, 1) colorUsingColorSpace:[NSColorSpace sRGBColorSpace]]);
}

SCENARIO("sRGB red becomes inks of a CMYK profile", "nil",
         "0.000 1.000 1.000 0.000 1.000 Custom Artifex CMYK SWOP Profile") {
  return Shown([[NSColor colorWithSRGBRed:1 green:0 blue:0
                                    alpha:1] colorUsingColorSpace:SpaceNamed(@"default_cmyk.icc")]);
}

SCENARIO("sRGB becomes gray of gamma 2.2", "raises NSInvalidArgumentException",
         "0.643 1.000 Custom Generic Gray Gamma 2.2 Profile") {
  return Shown([[NSColor colorWithSRGBRed:1 green:0.5 blue:0.25 alpha:1]
      colorUsingColorSpace:[NSColorSpace genericGamma22GrayColorSpace]]);
}

SCENARIO("sRGB becomes device CMYK by formula", "0.000 0.500 0.750 0.000 0.500 DeviceCMYK",
         "0.000 0.500 0.750 0.000 0.500 DeviceCMYK") {
  return Shown([[NSColor colorWithSRGBRed:1 green:0.5 blue:0.25
                                    alpha:0.5] colorUsingColorSpaceName:NSDeviceCMYKColorSpace]);
}

SCENARIO("device CMYK becomes sRGB by formula", "raises NSInvalidArgumentException",
         "0.250 0.500 0.750 0.500 Custom sRGB IEC61966-2.1") {
  return Shown([[NSColor colorWithDeviceCyan:0.5 magenta:0.25 yellow:0 black:0.25
                                       alpha:0.5] colorUsingColorSpace:[NSColorSpace sRGBColorSpace]]);
}

SCENARIO("a colour outside the target's range is clipped", "raises NSInvalidArgumentException",
         "0.000 1.000 0.000 1.000 Custom sRGB IEC61966-2.1") {
  return Shown([Made([NSColorSpace adobeRGB1998ColorSpace], 0, 1, 0, 1)
      colorUsingColorSpace:[NSColorSpace sRGBColorSpace]]);
}

SCENARIO("a custom colour is asked for by name", "no, nil, 1.000 0.500 0.250 1.000 CalibratedRGB",
         "yes, nil, 0.989 0.413 0.195 1.000 CalibratedRGB") {
  NSColor* color = [NSColor colorWithSRGBRed:1 green:0.5 blue:0.25 alpha:1];
  NSColor* unnamed = [color colorUsingColorSpaceName:nil];
  return [NSString
      stringWithFormat:@"%@, %@, %@", YesNo([color colorUsingColorSpaceName:NSCustomColorSpace] == color),
                       Shown([color colorUsingColorSpaceName:NSNamedColorSpace]), Shown(unnamed)];
}

SCENARIO("a pattern converts to nothing but a pattern", "raises NSInvalidArgumentException", "nil, yes") {
  NSColor* pattern = Pattern();
  return
      [NSString stringWithFormat:@"%@, %@", Shown([pattern colorUsingColorSpaceName:NSDeviceRGBColorSpace]),
                                 YesNo([pattern colorUsingColorSpaceName:NSPatternColorSpace] == pattern)];
}

SCENARIO("a pattern converts to no space", "raises NSInvalidArgumentException", "nil") {
  return Shown([Pattern() colorUsingColorSpace:[NSColorSpace genericRGBColorSpace]]);
}

SCENARIO("a blend with a pattern is no colour", "raises NSInvalidArgumentException", "nil, nil") {
  return Joined([NSArray
      arrayWithObjects:Shown([Pattern() blendedColorWithFraction:0.5 ofColor:[NSColor redColor]]),
                       Shown([[NSColor redColor] blendedColorWithFraction:0.5 ofColor:Pattern()]), nil]);
}

SCENARIO("highlight and shadow of a pattern are no colours", "raises NSInvalidArgumentException",
         "nil, nil") {
  return Joined([NSArray arrayWithObjects:Shown([Pattern() highlightWithLevel:0.5]),
                                          Shown([Pattern() shadowWithLevel:0.5]), nil]);
}

SCENARIO("custom colours blend in calibrated RGB like their twins",
         "1.000 0.500 0.500 0.500 CalibratedRGB, as its twins",
         "0.993 0.500 0.514 0.500 CalibratedRGB, as its twins") {
  NSColor* white = [NSColor colorWithSRGBRed:1 green:1 blue:1 alpha:1];
  NSColor* red = [NSColor colorWithSRGBRed:1 green:0 blue:0 alpha:0];
  NSColor* blend = [white blendedColorWithFraction:0.5 ofColor:red];
  NSColor* twins = [[white colorUsingColorSpaceName:NSCalibratedRGBColorSpace]
      blendedColorWithFraction:0.5
                       ofColor:[red colorUsingColorSpaceName:NSCalibratedRGBColorSpace]];
  return [NSString stringWithFormat:@"%@, %@", Shown(blend),
                                    [blend isEqual:twins] ? @"as its twins" : @"unlike its twins"];
}

SCENARIO("a blend at either end is one of the colours itself", "yes", "yes") {
  NSColor* a = [NSColor redColor];
  NSColor* b = [NSColor colorWithDeviceWhite:0 alpha:1];
  return YesNo([a blendedColorWithFraction:0 ofColor:b] == a && [a blendedColorWithFraction:1
                                                                                    ofColor:b] == b);
}

SCENARIO("stock colours keep their formulas from RGB",
         "0.100 0.400 0.700 0.000 1.000 DeviceCMYK, 0.900 0.600 0.300 1.000 DeviceRGB",
         "0.100 0.400 0.700 0.000 1.000 DeviceCMYK, 0.900 0.600 0.300 1.000 DeviceRGB") {
  NSColor* rgb = [NSColor colorWithCalibratedRed:0.9 green:0.6 blue:0.3 alpha:1];
  return Joined([NSArray arrayWithObjects:Shown([rgb colorUsingColorSpaceName:NSDeviceCMYKColorSpace]),
                                          Shown([rgb colorUsingColorSpaceName:NSDeviceRGBColorSpace]), nil]);
}

SCENARIO("stock colours keep their formulas from CMYK and gray",
         "0.500 0.400 0.300 1.000 CalibratedRGB, 0.400 1.000 DeviceWhite, 0.000 0.000 0.000 0.750 1.000 "
         "DeviceCMYK",
         "0.500 0.400 0.300 1.000 CalibratedRGB, 0.400 1.000 DeviceWhite, 0.000 0.000 0.000 0.750 1.000 "
         "DeviceCMYK") {
  NSColor* cmyk = [NSColor colorWithDeviceCyan:0.1 magenta:0.2 yellow:0.3 black:0.4 alpha:1];
  NSColor* grey = [NSColor colorWithCalibratedWhite:0.25 alpha:1];
  return Joined([NSArray arrayWithObjects:Shown([cmyk colorUsingColorSpaceName:NSCalibratedRGBColorSpace]),
                                          Shown([cmyk colorUsingColorSpaceName:NSDeviceWhiteColorSpace]),
                                          Shown([grey colorUsingColorSpaceName:NSDeviceCMYKColorSpace]),
                                          nil]);
}

SCENARIO("a blend with nothing is no colour", "nil, nil", "nil, nil") {
  NSColor* custom = [NSColor colorWithSRGBRed:1 green:0.5 blue:0.25 alpha:1];
  return Joined([NSArray arrayWithObjects:Shown([[NSColor redColor] blendedColorWithFraction:0.5
                                                                                     ofColor:nil]),
                                          Shown([custom blendedColorWithFraction:0.5 ofColor:nil]), nil]);
}

SCENARIO("a custom colour has a highlight and a shadow", "yes, lighter, darker", "yes, lighter, darker") {
  NSColor* color = [NSColor colorWithSRGBRed:0 green:0 blue:0 alpha:1];
  NSColor* lighter = [color highlightWithLevel:0.5];
  NSColor* darker = [[NSColor colorWithSRGBRed:1 green:1 blue:1 alpha:1] shadowWithLevel:0.5];
  return [NSString stringWithFormat:@"%@, %@, %@", YesNo([color highlightWithLevel:0] == color),
                                    [lighter redComponent] > 0 ? @"lighter" : @"no lighter",
                                    [darker redComponent] < 1 ? @"darker" : @"no darker"];
}

SCENARIO("generic CMYK converts by the installed profile",
         "0.000 1.000 1.000 0.000 1.000 DeviceCMYK, 0.500 0.400 0.300 1.000 DeviceRGB",
         "0.000 1.000 1.000 0.000 1.000 Custom Generic CMYK, 0.604 0.545 0.488 1.000 DeviceRGB") {
  NSColorSpace* generic = [NSColorSpace genericCMYKColorSpace];
  NSColor* red = [[NSColor colorWithSRGBRed:1 green:0 blue:0 alpha:1] colorUsingColorSpace:generic];
  NSColor* mixed = [Made(generic, 0.1, 0.2, 0.3, 0.4) colorUsingColorSpaceName:NSDeviceRGBColorSpace];
  return Joined([NSArray arrayWithObjects:Shown(red), Shown(mixed), nil]);
}

@interface NSColorSpace (StockInitialiser)
- (id)_initWithColorSpaceModel:(NSColorSpaceModel)model;
@end

// A colour of a space that has a model and no profile, in sRGB, and sRGB's half grey in that space.
static NSString* WithoutProfile(NSColorSpaceModel model) {
  NSColorSpace* space = [[[NSColorSpace alloc] _initWithColorSpaceModel:model] autorelease];
  const CGFloat components[] = {0.25, 0.5, 0.75, 0, 1};
  const NSInteger count = [space numberOfColorComponents];
  NSColor* color = [NSColor colorWithColorSpace:space
                                     components:count == 1 ? (const CGFloat[]){0.5, 1} : components
                                          count:count + 1];
  NSColor* half = [NSColor colorWithSRGBRed:0.5 green:0.5 blue:0.5 alpha:1];
  return
      [NSString stringWithFormat:@"%@; %@", Shown([color colorUsingColorSpace:[NSColorSpace sRGBColorSpace]]),
                                 Shown([half colorUsingColorSpace:space])];
}

SCENARIO("a space that has a model only is that of the device", "",
         "0.504 0.504 0.504 1.000 Custom sRGB IEC61966-2.1; 0.496 1.000 Custom (null), "
         "0.250 0.500 0.750 0.000 Custom sRGB IEC61966-2.1; 0.500 0.500 0.500 1.000 Custom (null), "
         "0.750 0.500 0.250 1.000 Custom sRGB IEC61966-2.1; 0.500 0.500 0.500 0.000 1.000 Custom (null)") {
  return Joined([NSArray arrayWithObjects:WithoutProfile(NSGrayColorSpaceModel),
                                          WithoutProfile(NSRGBColorSpaceModel),
                                          WithoutProfile(NSCMYKColorSpaceModel), nil]);
}

SCENARIO("a space of Lab without a profile leads nowhere", "", "nil; nil") {
  return WithoutProfile(NSLABColorSpaceModel);
}

SCENARIO("a space made of nothing is one of grey", "", "0.504 0.504 0.504 1.000 Custom sRGB IEC61966-2.1") {
  NSColorSpace* space = [[[NSColorSpace alloc] init] autorelease];
  NSColor* color = [NSColor colorWithColorSpace:space components:(const CGFloat[]){0.5, 1} count:2];
  return Shown([color colorUsingColorSpace:[NSColorSpace sRGBColorSpace]]);
}
