// tests/libcocoa/colours/no_number_scenarios.m - components and fractions that are not a number.
#import "tests/libcocoa/colours/scenario.h"

#include <math.h>

SCENARIO(
    "a component that is no number is kept",
    "0.500 nan 0.250 1.000 CalibratedRGB, nan 1.000 DeviceWhite, 0.500 nan 0.250 1.000 CalibratedRGB, nan "
    "1.000 CalibratedWhite",
    "0.500 nan 0.250 1.000 CalibratedRGB, nan 1.000 DeviceWhite, 0.500 nan 0.250 1.000 Custom sRGB "
    "IEC61966-2.1, nan 1.000 Custom Generic Gray Gamma 2.2 Profile") {
  return Joined([NSArray arrayWithObjects:Shown([NSColor colorWithCalibratedRed:0.5
                                                                          green:NAN
                                                                           blue:0.25
                                                                          alpha:1]),
                                          Shown([NSColor colorWithDeviceWhite:NAN alpha:1]),
                                          Shown([NSColor colorWithSRGBRed:0.5 green:NAN blue:0.25 alpha:1]),
                                          Shown([NSColor colorWithGenericGamma22White:NAN alpha:1]), nil]);
}

SCENARIO("a Lab component that is no number is kept, and an infinite one is 0", "nil",
         "nan 0.000 7.000 1.000 Custom Lab2Lab") {
  NSColorSpace* lab = [[[NSColorSpace alloc] initWithICCProfileData:ProfileNamed(@"lab.icc")] autorelease];
  const CGFloat components[] = {NAN, INFINITY, 7, 1};
  return Shown([NSColor colorWithColorSpace:lab components:components count:4]);
}

SCENARIO("an alpha that is no number is kept",
         "0.500 nan DeviceWhite, 0.500 nan CalibratedWhite, 0.500 nan DeviceWhite",
         "0.500 nan DeviceWhite, 0.500 nan Custom Generic Gray Gamma 2.2 Profile, 0.500 nan DeviceWhite") {
  NSColor* half = [NSColor colorWithDeviceWhite:0.5 alpha:1];
  return Joined([NSArray arrayWithObjects:Shown([NSColor colorWithDeviceWhite:0.5 alpha:NAN]),
                                          Shown([[NSColor colorWithGenericGamma22White:0.5 alpha:1]
                                              colorWithAlphaComponent:NAN]),
                                          Shown([half colorWithAlphaComponent:NAN]), nil]);
}

SCENARIO("a conversion that keeps the numbers keeps what is none", "0.500 nan 0.250 nan DeviceRGB",
         "0.500 nan 0.250 nan DeviceRGB") {
  return Shown([[NSColor colorWithCalibratedRed:0.5 green:NAN blue:0.25
                                          alpha:NAN] colorUsingColorSpaceName:NSDeviceRGBColorSpace]);
}

SCENARIO("a conversion that reckons takes a component that is no number for 0",
         "raises NSInvalidArgumentException", "yes") {
  NSColorSpace* adobe = [NSColorSpace adobeRGB1998ColorSpace];
  NSColor* color = [NSColor colorWithSRGBRed:0.5 green:NAN blue:0.25 alpha:1];
  NSColor* twin = [NSColor colorWithSRGBRed:0.5 green:0 blue:0.25 alpha:1];
  return YesNo([[color colorUsingColorSpace:adobe] isEqual:[twin colorUsingColorSpace:adobe]]);
}

SCENARIO("a colour without a number becomes a gray that is one", "nan nan", "0.268 0.274") {
  NSColor* calibrated = [NSColor colorWithCalibratedRed:0.5 green:NAN blue:0.5 alpha:1];
  NSColor* device = [NSColor colorWithDeviceRed:0.5 green:NAN blue:0.5 alpha:1];
  return [NSString
      stringWithFormat:@"%.3f %.3f",
                       (double)[[calibrated colorUsingColorSpaceName:NSCalibratedWhiteColorSpace]
                           whiteComponent],
                       (double)[[device colorUsingColorSpaceName:NSDeviceWhiteColorSpace] whiteComponent]];
}

SCENARIO("a custom colour's hue takes a component that is no number for 0", "no", "yes") {
  NSColor* color = [NSColor colorWithSRGBRed:NAN green:0.5 blue:0.25 alpha:1];
  NSColor* twin = [NSColor colorWithSRGBRed:0 green:0.5 blue:0.25 alpha:1];
  return YesNo([color hueComponent] == [twin hueComponent] &&
               [color saturationComponent] == [twin saturationComponent] &&
               [color brightnessComponent] == [twin brightnessComponent]);
}

SCENARIO("a colour without a number equals itself and no twin", "yes, no, yes, no", "yes, no, yes, no") {
  NSColor* stock = [NSColor colorWithDeviceWhite:NAN alpha:1];
  NSColor* custom = [NSColor colorWithGenericGamma22White:NAN alpha:1];
  return Joined([NSArray
      arrayWithObjects:YesNo([stock isEqual:stock]),
                       YesNo([stock isEqual:[NSColor colorWithDeviceWhite:NAN alpha:1]]),
                       YesNo([custom isEqual:custom]),
                       YesNo([custom isEqual:[NSColor colorWithGenericGamma22White:NAN alpha:1]]), nil]);
}

static NSColor* Blended(NSColor* color, NSColor* other) {
  return [color blendedColorWithFraction:NAN ofColor:other];
}

SCENARIO("a blend by what is no number is the receiver", "no, no, no, no, no", "yes, yes, yes, yes, yes") {
  NSColor* red = [NSColor redColor];
  NSColor* custom = [NSColor colorWithSRGBRed:0.5 green:0.25 blue:0.125 alpha:1];
  NSColor* pattern = Pattern();
  return Joined(
      [NSArray arrayWithObjects:YesNo(Blended(red, [NSColor whiteColor]) == red),
                                YesNo(Blended(custom, red) == custom),
                                YesNo(Blended([NSColor controlColor], red) == [NSColor controlColor]),
                                YesNo([RAISED(Blended(pattern, red)) isEqual:@"nothing"] &&
                                      Blended(pattern, red) == pattern),
                                YesNo(Blended(red, nil) == red), nil]);
}

SCENARIO("a highlight and a shadow by what is no number are the receiver", "no, no", "yes, yes") {
  NSColor* red = [NSColor redColor];
  return Joined([NSArray arrayWithObjects:YesNo([red highlightWithLevel:NAN] == red),
                                          YesNo([red shadowWithLevel:NAN] == red), nil]);
}
