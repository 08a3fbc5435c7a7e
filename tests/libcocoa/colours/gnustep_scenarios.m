// tests/libcocoa/colours/gnustep_scenarios.m - what programs written for GNUstep count on, promise by
// promise.
//
// Each scenario holds many promises, tells how many are kept, and names those that are not. What GNUstep
// alone keeps has to be kept here.
#import "tests/libcocoa/colours/scenario.h"

#include <math.h>

static NSMutableArray* broken;
static int promises;

static void Begin(void) {
  broken = [NSMutableArray array];
  promises = 0;
}

static NSString* Kept(void) {
  NSString* kept = [NSString stringWithFormat:@"%d of %d", promises - (int)[broken count], promises];
  return [broken count] ? [NSString stringWithFormat:@"%@, not: %@", kept, Joined(broken)] : kept;
}

// A promise is a sentence and what it takes to be true; raising breaks it.
#define PROMISE(sentence, condition)           \
  do {                                         \
    BOOL holds = NO;                           \
    @try {                                     \
      holds = (condition);                     \
    } @catch (NSException * exception) {       \
    }                                          \
    promises++;                                \
    if (!holds) [broken addObject:(sentence)]; \
  } while (0)

static BOOL Is(CGFloat value, double wanted) {
  return fabs((double)value - wanted) < 0.0005;
}

SCENARIO("programs count on components and the names of their spaces", "15 of 15", "15 of 15") {
  Begin();
  NSColor* rgb = [NSColor colorWithCalibratedRed:0.2 green:0.4 blue:0.6 alpha:0.8];
  PROMISE(@"red is read", Is([rgb redComponent], 0.2));
  PROMISE(@"green is read", Is([rgb greenComponent], 0.4));
  PROMISE(@"blue is read", Is([rgb blueComponent], 0.6));
  PROMISE(@"alpha is read", Is([rgb alphaComponent], 0.8));
  PROMISE(@"RGB is named", [[rgb colorSpaceName] isEqual:NSCalibratedRGBColorSpace]);
  CGFloat r = 9, g = 9, b = 9, a = 9;
  [rgb getRed:&r green:&g blue:&b alpha:&a];
  PROMISE(@"all of RGB is read at once", Is(r, 0.2) && Is(g, 0.4) && Is(b, 0.6) && Is(a, 0.8));

  NSColor* white = [NSColor colorWithCalibratedWhite:0.25 alpha:0.5];
  PROMISE(@"white is read", Is([white whiteComponent], 0.25));
  PROMISE(@"white's alpha is read", Is([white alphaComponent], 0.5));
  PROMISE(@"white is named", [[white colorSpaceName] isEqual:NSCalibratedWhiteColorSpace]);
  [white getWhite:&r alpha:&a];
  PROMISE(@"all of white is read at once", Is(r, 0.25) && Is(a, 0.5));

  NSColor* inks = [NSColor colorWithDeviceCyan:0.1 magenta:0.2 yellow:0.3 black:0.4 alpha:0.5];
  PROMISE(@"cyan is read", Is([inks cyanComponent], 0.1));
  PROMISE(@"magenta is read", Is([inks magentaComponent], 0.2));
  PROMISE(@"yellow is read", Is([inks yellowComponent], 0.3));
  PROMISE(@"black is read", Is([inks blackComponent], 0.4));
  PROMISE(@"the inks' alpha is read", Is([inks alphaComponent], 0.5));
  return Kept();
}

SCENARIO("programs count on clamping", "5 of 5", "5 of 5") {
  Begin();
  NSColor* rgb = [NSColor colorWithCalibratedRed:-0.5 green:1.5 blue:0.5 alpha:2];
  PROMISE(@"too little becomes 0", Is([rgb redComponent], 0));
  PROMISE(@"too much becomes 1", Is([rgb greenComponent], 1));
  PROMISE(@"what is inside stays", Is([rgb blueComponent], 0.5));
  PROMISE(@"too much alpha becomes 1", Is([rgb alphaComponent], 1));
  NSColor* white = [NSColor colorWithCalibratedWhite:-1 alpha:-1];
  PROMISE(@"white is clamped", Is([white whiteComponent], 0) && Is([white alphaComponent], 0));
  return Kept();
}

SCENARIO("programs count on hues and alphas", "9 of 9", "9 of 9") {
  Begin();
  NSColor* green = [NSColor colorWithCalibratedHue:1.0 / 3 saturation:1 brightness:1 alpha:1];
  PROMISE(@"a third of the circle is green",
          Is([green redComponent], 0) && Is([green greenComponent], 1) && Is([green blueComponent], 0));
  NSColor* blue = [NSColor colorWithCalibratedRed:0 green:0 blue:1 alpha:1];
  PROMISE(@"blue's hue is two thirds", Is([blue hueComponent], 2.0 / 3));
  PROMISE(@"blue is saturated", Is([blue saturationComponent], 1));
  PROMISE(@"blue is bright", Is([blue brightnessComponent], 1));
  NSColor* grey = [NSColor colorWithCalibratedRed:0.5 green:0.5 blue:0.5 alpha:1];
  PROMISE(@"grey has no saturation", Is([grey saturationComponent], 0));
  PROMISE(@"grey's brightness is its level", Is([grey brightnessComponent], 0.5));
  NSColor* faint = [blue colorWithAlphaComponent:0.25];
  PROMISE(@"another alpha is taken", Is([faint alphaComponent], 0.25));
  PROMISE(@"another alpha leaves the rest", Is([faint blueComponent], 1) && Is([faint redComponent], 0));
  PROMISE(@"another alpha leaves the receiver", Is([blue alphaComponent], 1));
  return Kept();
}

SCENARIO("programs count on blends and equality", "6 of 6", "6 of 6") {
  Begin();
  NSColor* black = [NSColor colorWithCalibratedRed:0 green:0 blue:0 alpha:1];
  NSColor* red = [NSColor colorWithCalibratedRed:1 green:0 blue:0 alpha:0];
  NSColor* half = [black blendedColorWithFraction:0.5 ofColor:red];
  PROMISE(@"a blend lies between", Is([half redComponent], 0.5) && Is([half greenComponent], 0));
  PROMISE(@"a blend's alpha lies between", Is([half alphaComponent], 0.5));
  PROMISE(@"nothing of the other is the receiver", [black blendedColorWithFraction:0 ofColor:red] == black);
  PROMISE(@"all of the other is the other", [black blendedColorWithFraction:1 ofColor:red] == red);
  PROMISE(@"colours of the same kind and components are equal",
          [black isEqual:[NSColor colorWithCalibratedRed:0 green:0 blue:0 alpha:1]]);
  PROMISE(@"colours of other components are not", ![black isEqual:red]);
  return Kept();
}

SCENARIO("programs count on GNUstep's formulas and counts", "10 of 10", "10 of 10") {
  Begin();
  NSColor* calibrated = [NSColor colorWithCalibratedRed:0.9 green:0.6 blue:0.3 alpha:0.5];
  NSColor* device = [calibrated colorUsingColorSpaceName:NSDeviceRGBColorSpace];
  PROMISE(@"calibrated to device keeps the numbers", Is([device redComponent], 0.9) &&
                                                         Is([device greenComponent], 0.6) &&
                                                         Is([device blueComponent], 0.3));
  PROMISE(@"calibrated to device keeps the alpha", Is([device alphaComponent], 0.5));
  NSColor* grey = [NSColor colorWithDeviceWhite:0.25 alpha:1];
  NSColor* ofGrey = [grey colorUsingColorSpaceName:NSDeviceRGBColorSpace];
  PROMISE(@"grey becomes three equal components", Is([ofGrey redComponent], 0.25) &&
                                                      Is([ofGrey greenComponent], 0.25) &&
                                                      Is([ofGrey blueComponent], 0.25));
  PROMISE(@"three equal components become the grey again",
          Is([[ofGrey colorUsingColorSpaceName:NSDeviceWhiteColorSpace] whiteComponent], 0.25));
  NSColor* inks = [device colorUsingColorSpaceName:NSDeviceCMYKColorSpace];
  PROMISE(@"RGB becomes its complement in inks",
          Is([inks cyanComponent], 0.1) && Is([inks magentaComponent], 0.4) &&
              Is([inks yellowComponent], 0.7) && Is([inks blackComponent], 0));
  NSColor* ofInks = [[NSColor colorWithDeviceCyan:0.1 magenta:0.2 yellow:0.3 black:0.4
                                            alpha:1] colorUsingColorSpaceName:NSDeviceRGBColorSpace];
  PROMISE(@"inks become RGB by what they leave", Is([ofInks redComponent], 0.5) &&
                                                     Is([ofInks greenComponent], 0.4) &&
                                                     Is([ofInks blueComponent], 0.3));
  NSColor* inksOfGrey = [grey colorUsingColorSpaceName:NSDeviceCMYKColorSpace];
  PROMISE(@"grey becomes black ink alone",
          Is([inksOfGrey cyanComponent], 0) && Is([inksOfGrey blackComponent], 0.75));
  PROMISE(@"grey has two components", [grey numberOfComponents] == 2);
  PROMISE(@"RGB has four components", [device numberOfComponents] == 4);
  PROMISE(@"inks have five components", [inks numberOfComponents] == 5);
  return Kept();
}

SCENARIO(
    "programs count on patterns that convert to nothing",
    "5 of 9, not: calibrated RGB of a pattern is nil, device RGB of a pattern is nil, grey of a pattern is "
    "nil, inks of a pattern are nil",
    "9 of 9") {
  Begin();
  NSImage* image = [[[NSImage alloc] initWithSize:NSMakeSize(2, 2)] autorelease];
  NSColor* pattern = [NSColor colorWithPatternImage:image];
  PROMISE(@"a pattern is a colour", [pattern isKindOfClass:[NSColor class]]);
  PROMISE(@"a pattern is named", [[pattern colorSpaceName] isEqual:NSPatternColorSpace]);
  PROMISE(@"a pattern keeps its image", [pattern patternImage] == image);
  PROMISE(@"a pattern as a pattern is itself",
          [pattern colorUsingColorSpaceName:NSPatternColorSpace] == pattern);
  PROMISE(@"a pattern has no red", [RAISED([pattern redComponent]) isEqual:NSInternalInconsistencyException]);
  PROMISE(@"calibrated RGB of a pattern is nil",
          [pattern colorUsingColorSpaceName:NSCalibratedRGBColorSpace] == nil);
  PROMISE(@"device RGB of a pattern is nil", [pattern colorUsingColorSpaceName:NSDeviceRGBColorSpace] == nil);
  PROMISE(@"grey of a pattern is nil", [pattern colorUsingColorSpaceName:NSCalibratedWhiteColorSpace] == nil);
  PROMISE(@"inks of a pattern are nil", [pattern colorUsingColorSpaceName:NSDeviceCMYKColorSpace] == nil);
  return Kept();
}

static BOOL HasKeys(NSColorList* list, NSString* keys) {
  return [[[list allKeys] componentsJoinedByString:@""] isEqual:keys];
}

SCENARIO("programs count on the order of a list", "9 of 9", "9 of 9") {
  Begin();
  NSColorList* list = [[[NSColorList alloc] initWithName:@"Promises"] autorelease];
  PROMISE(@"a new list is empty", [[list allKeys] count] == 0);
  [list setColor:[NSColor redColor] forKey:@"a"];
  PROMISE(@"a colour is added", [[list colorWithKey:@"a"] isEqual:[NSColor redColor]]);
  [list setColor:[NSColor greenColor] forKey:@"b"];
  PROMISE(@"the next comes behind", HasKeys(list, @"ab"));
  [list setColor:[NSColor blueColor] forKey:@"a"];
  PROMISE(@"a colour is replaced", [[list colorWithKey:@"a"] isEqual:[NSColor blueColor]]);
  PROMISE(@"a replaced colour stays in its place", HasKeys(list, @"ab"));
  [list insertColor:[NSColor whiteColor] key:@"c" atIndex:1];
  PROMISE(@"a colour is inserted before another", HasKeys(list, @"acb"));
  [list insertColor:[NSColor whiteColor] key:@"b" atIndex:0];
  PROMISE(@"an inserted colour leaves its old place", HasKeys(list, @"bac"));
  [list removeColorWithKey:@"a"];
  PROMISE(@"a removed key is gone", HasKeys(list, @"bc"));
  PROMISE(@"a removed colour is gone", [list colorWithKey:@"a"] == nil);
  return Kept();
}

SCENARIO("programs count on the predefined spaces",
         "13 of 15, not: generic RGB has a profile, the profile has a profile's signature", "15 of 15") {
  Begin();
  PROMISE(@"the unknown model is -1", NSUnknownColorSpaceModel == -1);
  PROMISE(@"models count from gray", NSGrayColorSpaceModel == 0 && NSRGBColorSpaceModel == 1 &&
                                         NSCMYKColorSpaceModel == 2 && NSLABColorSpaceModel == 3 &&
                                         NSDeviceNColorSpaceModel == 4);
  NSColorSpace* rgb = [NSColorSpace genericRGBColorSpace];
  NSColorSpace* gray = [NSColorSpace genericGrayColorSpace];
  NSColorSpace* cmyk = [NSColorSpace genericCMYKColorSpace];
  PROMISE(@"generic RGB is of the model RGB", [rgb colorSpaceModel] == NSRGBColorSpaceModel);
  PROMISE(@"generic gray is of the model gray", [gray colorSpaceModel] == NSGrayColorSpaceModel);
  PROMISE(@"generic CMYK is of the model CMYK", [cmyk colorSpaceModel] == NSCMYKColorSpaceModel);
  PROMISE(@"RGB has three components", [rgb numberOfColorComponents] == 3);
  PROMISE(@"gray has one component", [gray numberOfColorComponents] == 1);
  PROMISE(@"CMYK has four components", [cmyk numberOfColorComponents] == 4);
  PROMISE(@"generic RGB has a name", [[rgb localizedName] length] > 0);
  PROMISE(@"device RGB is of the model RGB",
          [[NSColorSpace deviceRGBColorSpace] colorSpaceModel] == NSRGBColorSpaceModel);
  PROMISE(@"device CMYK has four components",
          [[NSColorSpace deviceCMYKColorSpace] numberOfColorComponents] == 4);
  PROMISE(@"generic RGB is one object", rgb == [NSColorSpace genericRGBColorSpace]);
  PROMISE(@"generic RGB is not device RGB", rgb != [NSColorSpace deviceRGBColorSpace]);
  NSData* data = [rgb ICCProfileData];
  PROMISE(@"generic RGB has a profile", [data length] >= 128);
  PROMISE(@"the profile has a profile's signature",
          [data length] >= 128 && memcmp((const char*)[data bytes] + 36, "acsp", 4) == 0);
  return Kept();
}
