// tests/libcocoa/colours/gray_scenarios.m - how light a colour is: red, green and blue as gray.
#import "tests/libcocoa/colours/scenario.h"

#include <math.h>

static CGFloat White(NSColor* color, NSString* space) {
  return [[color colorUsingColorSpaceName:space] whiteComponent];
}

static NSColor* Calibrated(double red, double green, double blue) {
  return [NSColor colorWithCalibratedRed:red green:green blue:blue alpha:1];
}

static NSColor* Device(double red, double green, double blue) {
  return [NSColor colorWithDeviceRed:red green:green blue:blue alpha:1];
}

static NSString* RedGreenBlue(NSColor* (*made)(double, double, double), NSString* space) {
  return [NSString stringWithFormat:@"%.3f %.3f %.3f", (double)White(made(1, 0, 0), space),
                                    (double)White(made(0, 1, 0), space), (double)White(made(0, 0, 1), space)];
}

// The generic profiles' red, green and blue have .2419, .6737 and .0844 of white's light, and the gamma 1.8.
SCENARIO("pure calibrated colours are as light as the generic profiles say", "0.333 0.333 0.333",
         "0.455 0.803 0.253") {
  return RedGreenBlue(Calibrated, NSCalibratedWhiteColorSpace);
}

// sRGB's red, green and blue have .2126, .7152 and .0722 of white's light.
SCENARIO("pure device colours are as light as sRGB says", "0.333 0.333 0.333", "0.498 0.862 0.298") {
  return RedGreenBlue(Device, NSDeviceWhiteColorSpace);
}

SCENARIO("how light a colour is depends on its own space, not on the gray that is asked for",
         "0.333 0.333 0.333, 0.333 0.333 0.333", "0.455 0.803 0.253, 0.498 0.862 0.298") {
  return Joined([NSArray arrayWithObjects:RedGreenBlue(Calibrated, NSDeviceWhiteColorSpace),
                                          RedGreenBlue(Device, NSCalibratedWhiteColorSpace), nil]);
}

SCENARIO("asking for a space or for black gives the same gray",
         "0.333 1.000 DeviceWhite, 0.333 1.000 DeviceWhite, 0.333 1.000 CalibratedWhite, 0.333 1.000 "
         "DeviceWhite",
         "0.803 1.000 CalibratedWhite, 0.862 1.000 DeviceWhite, 0.803 1.000 CalibratedWhite, 0.862 1.000 "
         "DeviceWhite") {
  return Joined([NSArray
      arrayWithObjects:Shown([Calibrated(0, 1, 0) colorUsingColorSpace:[NSColorSpace genericGrayColorSpace]]),
                       Shown([Device(0, 1, 0) colorUsingColorSpace:[NSColorSpace deviceGrayColorSpace]]),
                       Shown([Calibrated(0, 1, 0) colorUsingColorSpaceName:NSCalibratedBlackColorSpace]),
                       Shown([Device(0, 1, 0) colorUsingColorSpaceName:NSDeviceBlackColorSpace]), nil]);
}

// As IEC 61966-2-1 has them: from a component to light, and back.
static double Light(double component) {
  return component <= 0.04045 ? component / 12.92 : pow((component + 0.055) / 1.055, 2.4);
}
static double Component(double light) {
  return light <= 0.0031308 ? light * 12.92 : 1.055 * pow(light, 1 / 2.4) - 0.055;
}

SCENARIO("device gray has the luminance that sRGB's formulas give", "far off", "at most .0001 off") {
  double most = 0;
  for (int i = 0; i < 11 * 11 * 11; i++) {
    double red = i % 11 / 10.0, green = i / 11 % 11 / 10.0, blue = i / 121 / 10.0;
    double wanted = Component(0.2126 * Light(red) + 0.7152 * Light(green) + 0.0722 * Light(blue));
    most = fmax(most, fabs((double)White(Device(red, green, blue), NSDeviceWhiteColorSpace) - wanted));
  }
  return most <= 0.0001 ? @"at most .0001 off" : @"far off";
}

// How far a gray is off that was RGB meanwhile.
static double MostOff(NSColor* (*made)(double, double, double), NSString* space) {
  double most = 0;
  for (int i = 0; i <= 1000; i++)
    most = fmax(most, fabs((double)White(made(i / 1000.0, i / 1000.0, i / 1000.0), space) - i / 1000.0));
  return most;
}

SCENARIO("grays keep their value", "at most .001 off: yes", "at most .001 off: yes") {
  BOOL kept = MostOff(Calibrated, NSCalibratedWhiteColorSpace) < 0.001 &&
              MostOff(Calibrated, NSDeviceWhiteColorSpace) < 0.001 &&
              MostOff(Device, NSCalibratedWhiteColorSpace) < 0.001 &&
              MostOff(Device, NSDeviceWhiteColorSpace) < 0.001;
  return [@"at most .001 off: " stringByAppendingString:YesNo(kept)];
}

SCENARIO("a colour that becomes gray keeps its alpha", "0.25", "0.25") {
  NSColor* faint = [NSColor colorWithDeviceRed:1 green:0 blue:0 alpha:0.25];
  return [NSString
      stringWithFormat:@"%g",
                       (double)[[faint colorUsingColorSpaceName:NSCalibratedWhiteColorSpace] alphaComponent]];
}

SCENARIO("a device that is gray decides for a colour without a name", "0.333 1.000 DeviceWhite",
         "0.862 1.000 DeviceWhite") {
  NSDictionary* printer = [NSDictionary dictionaryWithObject:NSDeviceWhiteColorSpace
                                                      forKey:NSDeviceColorSpaceName];
  return Shown([Device(0, 1, 0) colorUsingColorSpaceName:nil device:printer]);
}

SCENARIO("cyan ink becomes gray by GNUstep's formula", "0.667 1.000 DeviceWhite", "0.667 1.000 DeviceWhite") {
  NSColor* cyan = [NSColor colorWithDeviceCyan:1 magenta:0 yellow:0 black:0 alpha:1];
  return Shown([cyan colorUsingColorSpaceName:NSDeviceWhiteColorSpace]);
}

SCENARIO("cyan ink becomes RGB by GNUstep's formula", "0.000 1.000 1.000 1.000 DeviceRGB",
         "0.000 1.000 1.000 1.000 DeviceRGB") {
  NSColor* cyan = [NSColor colorWithDeviceCyan:1 magenta:0 yellow:0 black:0 alpha:1];
  return Shown([cyan colorUsingColorSpaceName:NSDeviceRGBColorSpace]);
}
