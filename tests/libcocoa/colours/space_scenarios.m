// tests/libcocoa/colours/space_scenarios.m - the predefined colour spaces.
#import "tests/libcocoa/colours/scenario.h"

#include <stdlib.h>

SCENARIO("the three new predefined spaces are shared objects", "raises NSInvalidArgumentException", "yes") {
  return YesNo([NSColorSpace sRGBColorSpace] == [NSColorSpace sRGBColorSpace] &&
               [NSColorSpace adobeRGB1998ColorSpace] == [NSColorSpace adobeRGB1998ColorSpace] &&
               [NSColorSpace genericGamma22GrayColorSpace] == [NSColorSpace genericGamma22GrayColorSpace]);
}

SCENARIO("the six stock spaces are shared objects, generic unlike device", "yes", "yes") {
  return YesNo([NSColorSpace genericRGBColorSpace] == [NSColorSpace genericRGBColorSpace] &&
               [NSColorSpace deviceCMYKColorSpace] == [NSColorSpace deviceCMYKColorSpace] &&
               [NSColorSpace genericGrayColorSpace] != [NSColorSpace deviceGrayColorSpace]);
}

static volatile BOOL go;
static NSColorSpace* seen[8];

@interface SpaceAsker : NSObject
+ (void)ask:(NSNumber*)number;
@end
@implementation SpaceAsker
+ (void)ask:(NSNumber*)number {
  while (!go) {
  }
  __atomic_store_n(&seen[[number intValue]], [NSColorSpace genericCMYKColorSpace], __ATOMIC_RELEASE);
}
@end

SCENARIO("threads that ask for a space at once get the same object", "", "8 of 8 the same") {
  for (int i = 0; i < 8; i++)
    [NSThread detachNewThreadSelector:@selector(ask:)
                             toTarget:[SpaceAsker class]
                           withObject:[NSNumber numberWithInt:i]];
  [NSThread sleepForTimeInterval:0.1];
  go = YES;
  int same = 0;
  for (int i = 0; i < 8; i++) {
    while (!__atomic_load_n(&seen[i], __ATOMIC_ACQUIRE)) [NSThread sleepForTimeInterval:0.001];
    same += seen[i] == seen[0];
  }
  return [NSString stringWithFormat:@"%d of 8 the same", same];
}

SCENARIO("stock spaces have the platform's names", "RGB, Grayscale, CMYK, RGB, Grayscale, CMYK",
         "Device RGB, Device Gray, Device CMYK, Generic RGB, Generic Gray, Generic CMYK") {
  return Joined([NSArray arrayWithObjects:[[NSColorSpace deviceRGBColorSpace] localizedName],
                                          [[NSColorSpace deviceGrayColorSpace] localizedName],
                                          [[NSColorSpace deviceCMYKColorSpace] localizedName],
                                          [[NSColorSpace genericRGBColorSpace] localizedName],
                                          [[NSColorSpace genericGrayColorSpace] localizedName],
                                          [[NSColorSpace genericCMYKColorSpace] localizedName], nil]);
}

SCENARIO("the new spaces have the platform's names", "raises NSInvalidArgumentException",
         "sRGB IEC61966-2.1, Adobe RGB (1998), Generic Gray Gamma 2.2 Profile") {
  return Joined([NSArray arrayWithObjects:[[NSColorSpace sRGBColorSpace] localizedName],
                                          [[NSColorSpace adobeRGB1998ColorSpace] localizedName],
                                          [[NSColorSpace genericGamma22GrayColorSpace] localizedName], nil]);
}

static NSString* Describe(NSColorSpace* space) {
  NSData* data = [space ICCProfileData];
  BOOL signature = [data length] > 40 && memcmp((const char*)[data bytes] + 36, "acsp", 4) == 0;
  return [NSString stringWithFormat:@"%d/%d/%@", [space colorSpaceModel], [space numberOfColorComponents],
                                    !data       ? @"none"
                                    : signature ? @"acsp"
                                                : @"junk"];
}

SCENARIO("stock spaces tell model, components and profile",
         "1/3/none, 0/1/none, 2/4/none, 1/3/none, 0/1/none, 2/4/none",
         "1/3/none, 0/1/none, 2/4/none, 1/3/acsp, 0/1/acsp, 2/4/acsp") {
  return Joined([NSArray arrayWithObjects:Describe([NSColorSpace deviceRGBColorSpace]),
                                          Describe([NSColorSpace deviceGrayColorSpace]),
                                          Describe([NSColorSpace deviceCMYKColorSpace]),
                                          Describe([NSColorSpace genericRGBColorSpace]),
                                          Describe([NSColorSpace genericGrayColorSpace]),
                                          Describe([NSColorSpace genericCMYKColorSpace]), nil]);
}

SCENARIO("the new spaces tell model, components and profile", "raises NSInvalidArgumentException",
         "1/3/acsp, 1/3/acsp, 0/1/acsp") {
  return Joined([NSArray arrayWithObjects:Describe([NSColorSpace sRGBColorSpace]),
                                          Describe([NSColorSpace adobeRGB1998ColorSpace]),
                                          Describe([NSColorSpace genericGamma22GrayColorSpace]), nil]);
}

SCENARIO("a space's description names it", "no", "yes") {
  return YesNo([[[NSColorSpace genericRGBColorSpace] description] isEqual:@"Generic RGB colorspace"]);
}

static NSString* NamesOf(NSArray* spaces) {
  NSMutableArray* names = [NSMutableArray array];
  for (NSColorSpace* space in spaces) [names addObject:[space localizedName]];
  return Joined(names);
}

SCENARIO("all available spaces come in a fixed order", "raises NSInvalidArgumentException",
         "Device RGB, Device Gray, Device CMYK, Generic RGB, Generic Gray, Generic CMYK, sRGB IEC61966-2.1, "
         "Adobe RGB (1998), Generic Gray Gamma 2.2 Profile") {
  return NamesOf([NSColorSpace availableColorSpacesWithModel:-1]);
}

SCENARIO("available gray spaces come in the same order", "raises NSInvalidArgumentException",
         "Device Gray, Generic Gray, Generic Gray Gamma 2.2 Profile") {
  return NamesOf([NSColorSpace availableColorSpacesWithModel:NSGrayColorSpaceModel]);
}

SCENARIO("a model that no space has gives an empty array", "raises NSInvalidArgumentException",
         "array of 0, array of 0") {
  NSArray* lab = [NSColorSpace availableColorSpacesWithModel:NSLABColorSpaceModel];
  NSArray* unknown = [NSColorSpace availableColorSpacesWithModel:99];
  return [NSString stringWithFormat:@"%@ %u, %@ %u", lab ? @"array of" : @"nil", (unsigned)[lab count],
                                    unknown ? @"array of" : @"nil", (unsigned)[unknown count]];
}

SCENARIO(
    "each colour-space name stands for its space", "raises NSInvalidArgumentException",
    "Generic RGB, Generic Gray, Generic Gray, Device RGB, Device Gray, Device Gray, Device CMYK, nil, nil, "
    "nil, nil, nil") {
  NSArray* names =
      [NSArray arrayWithObjects:NSCalibratedRGBColorSpace, NSCalibratedWhiteColorSpace,
                                NSCalibratedBlackColorSpace, NSDeviceRGBColorSpace, NSDeviceWhiteColorSpace,
                                NSDeviceBlackColorSpace, NSDeviceCMYKColorSpace, NSNamedColorSpace,
                                NSPatternColorSpace, NSCustomColorSpace, @"Nothing", nil];
  NSMutableArray* found = [NSMutableArray array];
  for (NSString* name in names) {
    NSColorSpace* space = [NSColorSpace colorSpaceForColorSpaceName:name];
    [found addObject:space ? [space localizedName] : @"nil"];
  }
  [found addObject:[NSColorSpace colorSpaceForColorSpaceName:nil] ? @"a space" : @"nil"];
  return Joined(found);
}

SCENARIO("each space tells the name of its colours", "raises NSInvalidArgumentException",
         "NSDeviceRGBColorSpace, NSDeviceWhiteColorSpace, NSDeviceCMYKColorSpace, NSCalibratedRGBColorSpace, "
         "NSCalibratedWhiteColorSpace, NSCustomColorSpace, NSCustomColorSpace, NSCustomColorSpace, "
         "NSCustomColorSpace") {
  NSMutableArray* names = [NSMutableArray array];
  for (NSColorSpace* space in [NSColorSpace availableColorSpacesWithModel:-1])
    [names addObject:[space colorSpaceName]];
  return Joined(names);
}

SCENARIO("a space can be copied, and the copy is itself", "raises NSInvalidArgumentException", "yes") {
  NSColorSpace* space = [NSColorSpace genericRGBColorSpace];
  return YesNo([space copy] == space);
}

SCENARIO("a predefined space comes back from a keyed archive as itself", "no", "yes") {
  NSColorSpace* space = [NSColorSpace genericCMYKColorSpace];
  id back = [NSKeyedUnarchiver unarchiveObjectWithData:[NSKeyedArchiver archivedDataWithRootObject:space]];
  return YesNo(back == space);
}

// Decodes a keyed space that is known by a number.
@interface NumberCoder : NSCoder {
 @public
  int number;
}
@end

@implementation NumberCoder
- (BOOL)allowsKeyedCoding {
  return YES;
}
- (BOOL)containsValueForKey:(NSString*)key {
  return [key isEqual:@"NSID"];
}
- (int)decodeIntForKey:(NSString*)key {
  return [key isEqual:@"NSID"] ? number : 0;
}
- (id)decodeObjectForKey:(NSString*)key {
  (void)key;
  return nil;
}
@end

SCENARIO("an archive's number is that of a predefined space, or there is no space", "",
         "nil, nil, yes, yes, nil") {
  NumberCoder* coder = [[NumberCoder new] autorelease];
  NSMutableArray* answers = [NSMutableArray array];
  NSColorSpace* expected[] = {nil, nil, [NSColorSpace deviceRGBColorSpace],
                              [NSColorSpace genericGamma22GrayColorSpace], nil};
  const int numbers[] = {-1, 0, 1, 9, 10};
  for (int i = 0; i < 5; ++i) {
    coder->number = numbers[i];
    id space = [[[NSColorSpace alloc] initWithCoder:coder] autorelease];
    [answers addObject:space ? YesNo(space == expected[i]) : @"nil"];
  }
  return Joined(answers);
}

SCENARIO("spaces come back from an unkeyed archive, and so does what follows", "no", "yes") {
  NSArray* spaces = [NSArray
      arrayWithObjects:[NSColorSpace genericRGBColorSpace],
                       [[[NSColorSpace alloc] initWithICCProfileData:ProfileNamed(@"lab.icc")] autorelease],
                       @"what follows", nil];
  NSArray* back = [NSUnarchiver unarchiveObjectWithData:[NSArchiver archivedDataWithRootObject:spaces]];
  return YesNo([back isEqual:spaces]);
}

SCENARIO("generic CMYK carries the CMYK profile that is installed", "no", "yes") {
  NSData* installed = ProfileNamed(@"default_cmyk.icc");
  return YesNo([[[NSColorSpace genericCMYKColorSpace] ICCProfileData] isEqual:installed]);
}

SCENARIO(
    "generic CMYK without a profile converts by formula",
    "none, CMYK, 0.100 0.200 0.300 0.400 0.500 DeviceCMYK, 0.500 0.400 0.300 0.500 DeviceRGB, 0.000 1.000 "
    "1.000 0.000 1.000 DeviceCMYK",
    "none, Generic CMYK, 0.100 0.200 0.300 0.400 0.500 Custom Generic CMYK, 0.500 0.400 0.300 0.500 "
    "DeviceRGB, 0.000 1.000 1.000 0.000 1.000 Custom Generic CMYK") {
  setenv("QVX_CMYK_PROFILE", "/nowhere", 1);
  NSColorSpace* space = [NSColorSpace genericCMYKColorSpace];
  const CGFloat inks[] = {0.1, 0.2, 0.3, 0.4, 0.5};
  NSColor* color = [NSColor colorWithColorSpace:space components:inks count:5];
  return Joined([NSArray arrayWithObjects:[space ICCProfileData] ? @"a profile" : @"none",
                                          [space localizedName], Shown(color),
                                          Shown([color colorUsingColorSpaceName:NSDeviceRGBColorSpace]),
                                          Shown([[NSColor redColor] colorUsingColorSpace:space]), nil]);
}

SCENARIO("generic CMYK takes no profile of another model", "none", "none") {
  setenv("QVX_CMYK_PROFILE", [InScratch(@"rgb.icc") fileSystemRepresentation], 1);
  [ProfileNamed(@"srgb.icc") writeToFile:InScratch(@"rgb.icc") atomically:NO];
  return [[NSColorSpace genericCMYKColorSpace] ICCProfileData] ? @"a profile" : @"none";
}

// GNUstep's leak counters; its header hides them from builds without assertions.
extern BOOL GSDebugAllocationActive(BOOL active);
extern int GSDebugAllocationCount(Class class);

SCENARIO("a space from a handle, or from none, leaves no other space behind", "", "0 left") {
  CGColorSpaceRef handle = [[NSColorSpace sRGBColorSpace] CGColorSpace];
  GSDebugAllocationActive(YES);
  int before = GSDebugAllocationCount([NSColorSpace class]);
  [[[NSColorSpace alloc] initWithCGColorSpace:handle] release];
  [[NSColorSpace alloc] initWithCGColorSpace:NULL];
  return [NSString stringWithFormat:@"%d left", GSDebugAllocationCount([NSColorSpace class]) - before];
}
