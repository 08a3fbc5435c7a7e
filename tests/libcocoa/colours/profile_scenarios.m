// tests/libcocoa/colours/profile_scenarios.m - spaces from ICC data and from handles.
#import "tests/libcocoa/colours/scenario.h"

#include <lcms2.h>

#include "tests/libcocoa/colours/ink_profile.h"

static NSColorSpace* SpaceOf(NSData* data) {
  return [[[NSColorSpace alloc] initWithICCProfileData:data] autorelease];
}

static NSString* Told(NSColorSpace* space) {
  if (!space) return @"nil";
  return [NSString stringWithFormat:@"%d/%d", [space colorSpaceModel], [space numberOfColorComponents]];
}

SCENARIO("profiles of every model make spaces of that model", "-1/0, -1/0, -1/0, -1/0",
         "0/1, 1/3, 2/4, 3/3") {
  return Joined([NSArray arrayWithObjects:Told(SpaceOf(ProfileNamed(@"sgray.icc"))),
                                          Told(SpaceOf(ProfileNamed(@"srgb.icc"))),
                                          Told(SpaceOf(ProfileNamed(@"default_cmyk.icc"))),
                                          Told(SpaceOf(ProfileNamed(@"lab.icc"))), nil]);
}

SCENARIO("a space made from a profile has the profile's name", "unknown", "Artifex CMYK SWOP Profile") {
  return [SpaceOf(ProfileNamed(@"default_cmyk.icc")) localizedName];
}

// The UTF-16 units of the name of a space whose profile has this description.
static NSString* NameFrom(const wchar_t* description) {
  cmsHPROFILE profile = cmsCreate_sRGBProfile();
  cmsMLU* text = cmsMLUalloc(NULL, 1);
  cmsMLUsetWide(text, "en", "US", description);
  cmsWriteTag(profile, cmsSigProfileDescriptionTag, text);
  cmsMLUfree(text);
  cmsUInt32Number size = 0;
  cmsSaveProfileToMem(profile, NULL, &size);
  NSMutableData* data = [NSMutableData dataWithLength:size];
  cmsSaveProfileToMem(profile, [data mutableBytes], &size);
  cmsCloseProfile(profile);
  NSString* name = [SpaceOf(data) localizedName];
  NSMutableArray* units = [NSMutableArray array];
  for (NSUInteger i = 0; i < [name length]; i++)
    [units addObject:[NSString stringWithFormat:@"%x", [name characterAtIndex:i]]];
  return [units componentsJoinedByString:@" "];
}

SCENARIO("a profile's name may hold any character", "75 6e 6b 6e 6f 77 6e", "61 fc 4e2d d83d de00 62") {
  return NameFrom((const wchar_t[]){'a', 0xFC, 0x4E2D, 0xD83D, 0xDE00, 'b', 0});
}

SCENARIO("a profile's name may hold the characters beside those that come in halves", "",
         "d7ff e000 ffff d800 dc00 dbff dfff") {
  return NameFrom((const wchar_t[]){0xD7FF, 0xE000, 0xFFFF, 0xD800, 0xDC00, 0xDBFF, 0xDFFF, 0});
}

SCENARIO("a profile's name with half a character in it is none", "75 6e 6b 6e 6f 77 6e", "") {
  return NameFrom((const wchar_t[]){'a', 0xD83D, 'b', 0});
}

SCENARIO("a byte-order mark is no part of a profile's name", "75 6e 6b 6e 6f 77 6e", "61 feff") {
  return NameFrom((const wchar_t[]){0xFEFF, 'a', 0xFEFF, 0});
}

SCENARIO("a space gives back the data that it was made from", "yes", "yes") {
  NSData* data = ProfileNamed(@"a98.icc");
  return YesNo([[SpaceOf(data) ICCProfileData] isEqual:data]);
}

SCENARIO("bytes behind the profile are dropped", "no", "yes") {
  NSData* data = ProfileNamed(@"a98.icc");
  NSMutableData* longer = [NSMutableData dataWithData:data];
  [longer appendBytes:"behind the profile" length:18];
  return YesNo([[SpaceOf(longer) ICCProfileData] isEqual:data]);
}

SCENARIO("a space keeps its own copy of the data", "no", "yes") {
  NSMutableData* data = [NSMutableData dataWithData:ProfileNamed(@"a98.icc")];
  NSColorSpace* space = SpaceOf(data);
  memset([data mutableBytes], 0, [data length]);
  return YesNo([[space ICCProfileData] isEqual:ProfileNamed(@"a98.icc")]);
}

SCENARIO("no data makes no space", "-1/0", "nil") {
  return Told(SpaceOf(nil));
}
SCENARIO("empty data makes no space", "-1/0", "nil") {
  return Told(SpaceOf([NSData data]));
}

SCENARIO("data that is no profile makes no space", "-1/0", "nil") {
  return Told(SpaceOf(
      [@"This is no profile, but it is long enough to be one if nobody looked at what it says; "
        "a header alone has one hundred and twenty-eight bytes." dataUsingEncoding:NSASCIIStringEncoding]));
}

SCENARIO("a truncated profile makes no space", "-1/0, -1/0, -1/0", "nil, nil, nil") {
  NSData* data = ProfileNamed(@"default_cmyk.icc");
  return Joined(
      [NSArray arrayWithObjects:Told(SpaceOf([data subdataWithRange:NSMakeRange(0, [data length] - 1)])),
                                Told(SpaceOf([data subdataWithRange:NSMakeRange(0, [data length] / 2)])),
                                Told(SpaceOf([data subdataWithRange:NSMakeRange(0, 131)])), nil]);
}

SCENARIO("a profile may have 32 MiB and no byte more", "-1/0, -1/0", "1/3, nil") {
  NSMutableData* data = [NSMutableData dataWithData:ProfileNamed(@"srgb.icc")];
  [data setLength:32 * 1024 * 1024];
  NSString* largest = Told(SpaceOf(data));
  [data increaseLengthBy:1];
  return Joined([NSArray arrayWithObjects:largest, Told(SpaceOf(data)), nil]);
}

static NSData* WithWord(NSData* data, NSUInteger at, const char* word) {
  NSMutableData* changed = [NSMutableData dataWithData:data];
  [changed replaceBytesInRange:NSMakeRange(at, 4) withBytes:word];
  return changed;
}

SCENARIO("links, abstract profiles and named colours make no space", "-1/0, -1/0, -1/0", "nil, nil, nil") {
  NSData* data = ProfileNamed(@"srgb.icc");
  return Joined([NSArray arrayWithObjects:Told(SpaceOf(WithWord(data, 12, "link"))),
                                          Told(SpaceOf(WithWord(data, 12, "abst"))),
                                          Told(SpaceOf(WithWord(data, 12, "nmcl"))), nil]);
}

SCENARIO("a profile whose header belies its contents makes no space", "-1/0, -1/0", "nil, nil") {
  NSData* data = ProfileNamed(@"srgb.icc");
  return Joined([NSArray arrayWithObjects:Told(SpaceOf(WithWord(data, 16, "CMYK"))),
                                          Told(SpaceOf(WithWord(data, 16, "abcd"))), nil]);
}

static NSColorSpace* OneWay(cmsColorSpaceSignature signature) {
  size_t size = 0;
  void* bytes = MakeInputProfile(signature, &size);
  return SpaceOf([NSData dataWithBytesNoCopy:bytes length:size freeWhenDone:YES]);
}

static NSColor* OneWayGrey(void) {
  const CGFloat components[] = {0.25, 0.5, 0.75, 0.125};
  return [NSColor colorWithColorSpace:OneWay(cmsSigRgbData) components:components count:4];
}

SCENARIO("a profile that only leads out of its space makes a space", "-1/0", "1/3") {
  return Told(OneWay(cmsSigRgbData));
}

// Lab 50 0 0 is .466 in sRGB, by transicc too.
SCENARIO("a colour of such a space can be converted", "raises NSInvalidArgumentException",
         "0.466 0.466 0.466 0.125 Custom sRGB IEC61966-2.1, 0.466 0.466 0.466 0.125 DeviceRGB") {
  return Joined(
      [NSArray arrayWithObjects:Shown([OneWayGrey() colorUsingColorSpace:[NSColorSpace sRGBColorSpace]]),
                                Shown([OneWayGrey() colorUsingColorSpaceName:NSDeviceRGBColorSpace]), nil]);
}

SCENARIO("no colour can be converted into such a space", "nil, nil", "nil, nil") {
  NSColorSpace* space = OneWay(cmsSigRgbData);
  NSColor* custom = [NSColor colorWithSRGBRed:0.5 green:0.25 blue:0.125 alpha:1];
  NSColor* stock = [NSColor colorWithCalibratedRed:0.5 green:0.25 blue:0.125 alpha:1];
  return Joined([NSArray arrayWithObjects:Shown([custom colorUsingColorSpace:space]),
                                          Shown([stock colorUsingColorSpace:space]), nil]);
}

SCENARIO("generic CMYK takes no profile that leads one way", "none", "none") {
  size_t size = 0;
  void* bytes = MakeInputProfile(cmsSigCmykData, &size);
  [[NSData dataWithBytesNoCopy:bytes length:size
                  freeWhenDone:YES] writeToFile:InScratch(@"inks.icc") atomically:NO];
  setenv("QVX_CMYK_PROFILE", [InScratch(@"inks.icc") fileSystemRepresentation], 1);
  return [[NSColorSpace genericCMYKColorSpace] ICCProfileData] ? @"a profile" : @"none";
}

SCENARIO("a colour of such a space blends, and comes back from an archive", "no, no", "yes, yes") {
  NSColor* grey = OneWayGrey();
  NSColor* blend = [grey blendedColorWithFraction:0.5 ofColor:[NSColor whiteColor]];
  id back =
      grey ? [NSKeyedUnarchiver unarchiveObjectWithData:[NSKeyedArchiver archivedDataWithRootObject:grey]]
           : nil;
  return Joined([NSArray arrayWithObjects:YesNo([[blend colorSpaceName] isEqual:NSCalibratedRGBColorSpace]),
                                          YesNo(grey && [back isEqual:grey]), nil]);
}

SCENARIO("profiles of YCbCr, XYZ, Luv, HSV and CMY make no space", "-1/0, -1/0, -1/0, -1/0, -1/0",
         "nil, nil, nil, nil, nil") {
  return Joined([NSArray arrayWithObjects:Told(OneWay(cmsSigYCbCrData)), Told(OneWay(cmsSigXYZData)),
                                          Told(OneWay(cmsSigLuvData)), Told(OneWay(cmsSigHsvData)),
                                          Told(OneWay(cmsSigCmyData)), nil]);
}

SCENARIO("spaces from the same data are equal", "unequal, hashes unequal", "equal, hashes equal") {
  NSData* data = ProfileNamed(@"a98.icc");
  NSColorSpace* one = SpaceOf(data);
  NSColorSpace* other = SpaceOf(data);
  return [NSString stringWithFormat:@"%@, hashes %@", [one isEqual:other] ? @"equal" : @"unequal",
                                    [one hash] == [other hash] ? @"equal" : @"unequal"];
}

SCENARIO("spaces whose profiles differ in their date are equal", "no", "yes") {
  NSData* data = ProfileNamed(@"a98.icc");
  NSColorSpace* one = SpaceOf(data);
  NSColorSpace* other = SpaceOf(WithWord(data, 24, "\x07\xe0\x00\x05"));
  return YesNo([one isEqual:other] && [one hash] == [other hash]);
}

SCENARIO("spaces from different data are not equal", "no", "no") {
  return YesNo([SpaceOf(ProfileNamed(@"a98.icc")) isEqual:SpaceOf(ProfileNamed(@"srgb.icc"))]);
}

SCENARIO("a predefined space's own data gives that space", "raises NSInvalidArgumentException", "yes") {
  return YesNo(SpaceOf([[NSColorSpace sRGBColorSpace] ICCProfileData]) == [NSColorSpace sRGBColorSpace]);
}

static NSArray* SpacesWithMadeProfiles(void) {
  return [NSArray arrayWithObjects:[NSColorSpace sRGBColorSpace], [NSColorSpace adobeRGB1998ColorSpace],
                                   [NSColorSpace genericGamma22GrayColorSpace],
                                   [NSColorSpace genericRGBColorSpace], [NSColorSpace genericGrayColorSpace],
                                   nil];
}

static NSData* Redated(NSData* data) {
  return WithWord(data, 24, "\x07\xe0\x00\x05");
}

SCENARIO("a profile of a predefined space's colours, but other bytes, gives its own bytes back",
         "raises NSInvalidArgumentException", "5 equal, 5 with their own bytes, 5 with another object") {
  int equal = 0;
  int own = 0;
  int others = 0;
  for (NSColorSpace* predefined in SpacesWithMadeProfiles()) {
    NSData* data = Redated([predefined ICCProfileData]);
    NSColorSpace* space = SpaceOf(data);
    equal += [space isEqual:predefined] && [predefined isEqual:space] && [space hash] == [predefined hash];
    own += [[space ICCProfileData] isEqual:data];
    others += space != predefined;
  }
  return [NSString
      stringWithFormat:@"%d equal, %d with their own bytes, %d with another object", equal, own, others];
}

static void WriteAdobe(void) {
  [[[NSColorSpace adobeRGB1998ColorSpace] ICCProfileData] writeToFile:InScratch(@"adobe.icc") atomically:NO];
}

SCENARIO("such a profile leaves the predefined space its bytes, even where it comes first",
         "raises ChildFailed", "yes") {
  InChild(WriteAdobe);
  NSData* data = [NSData dataWithContentsOfFile:InScratch(@"adobe.icc")];
  NSColorSpace* first = SpaceOf(Redated(data));
  return YesNo(first && [[[NSColorSpace adobeRGB1998ColorSpace] ICCProfileData] isEqual:data]);
}

SCENARIO("a colour of such a space becomes a colour of the predefined one by name", "raises NSRangeException",
         "0.250 0.500 0.750 1.000 Custom Generic RGB Profile, 0.250 0.500 0.750 1.000 CalibratedRGB, 0.250 "
         "0.500 0.750 1.000 CalibratedRGB, itself in the equal space: yes") {
  const CGFloat components[] = {0.25, 0.5, 0.75, 1};
  NSColorSpace* space = SpaceOf(Redated([[NSColorSpace genericRGBColorSpace] ICCProfileData]));
  NSColor* color = [NSColor colorWithColorSpace:space components:components count:4];
  NSColor* srgb = [NSColor colorWithSRGBRed:1 green:0 blue:0 alpha:1];
  NSColorSpace* equal = SpaceOf(Redated([[NSColorSpace sRGBColorSpace] ICCProfileData]));
  return [NSString stringWithFormat:@"%@, %@, %@, itself in the equal space: %@", Shown(color),
                                    Shown([color colorUsingColorSpaceName:NSCalibratedRGBColorSpace]),
                                    Shown([color colorUsingColorSpace:[NSColorSpace genericRGBColorSpace]]),
                                    YesNo([srgb colorUsingColorSpace:equal] == srgb)];
}

SCENARIO("a profile handle makes an equal space", "NULL, unequal", "a handle, equal") {
  NSColorSpace* space = SpaceOf(ProfileNamed(@"a98.icc"));
  NSColorSpace* back = [[[NSColorSpace alloc] initWithColorSyncProfile:[space colorSyncProfile]] autorelease];
  return [NSString stringWithFormat:@"%@, %@", [space colorSyncProfile] ? @"a handle" : @"NULL",
                                    [back isEqual:space] ? @"equal" : @"unequal"];
}

SCENARIO("a predefined space's profile handle gives that space", "no", "yes") {
  NSColorSpace* space = [NSColorSpace genericRGBColorSpace];
  NSColorSpace* back = [[[NSColorSpace alloc] initWithColorSyncProfile:[space colorSyncProfile]] autorelease];
  return YesNo([space colorSyncProfile] && back == space);
}

SCENARIO("a space made from a handle outlives the space that gave it", "-1/0", "1/3") {
  NSColorSpace* space = [[NSColorSpace alloc] initWithICCProfileData:ProfileNamed(@"a98.icc")];
  NSColorSpace* back = [[NSColorSpace alloc] initWithColorSyncProfile:[space colorSyncProfile]];
  [space release];
  return Told(back);
}

SCENARIO("a null profile handle makes no space", "-1/0", "nil") {
  return Told([[[NSColorSpace alloc] initWithColorSyncProfile:NULL] autorelease]);
}

SCENARIO("a profile handle that never was one makes no space", "-1/0", "nil") {
  return Told([[[NSColorSpace alloc] initWithColorSyncProfile:(void*)0x12345] autorelease]);
}

SCENARIO("a Core Graphics handle makes an equal space", "raises NSInvalidArgumentException", "yes") {
  NSColorSpace* space = SpaceOf(ProfileNamed(@"lab.icc"));
  NSColorSpace* device = [NSColorSpace deviceGrayColorSpace];
  NSColorSpace* back = [[[NSColorSpace alloc] initWithCGColorSpace:[space CGColorSpace]] autorelease];
  NSColorSpace* deviceBack = [[[NSColorSpace alloc] initWithCGColorSpace:[device CGColorSpace]] autorelease];
  return YesNo([back isEqual:space] && [deviceBack isEqual:device]);
}

SCENARIO("a Core Graphics handle that never was one makes no space", "raises NSInvalidArgumentException",
         "nil, nil, nil") {
  NSString* text = @"no space";
  return Joined([NSArray
      arrayWithObjects:Told([[[NSColorSpace alloc] initWithCGColorSpace:NULL] autorelease]),
                       Told([[[NSColorSpace alloc] initWithCGColorSpace:(CGColorSpaceRef)0x12345]
                           autorelease]),
                       Told([[[NSColorSpace alloc] initWithCGColorSpace:(CGColorSpaceRef)text] autorelease]),
                       nil]);
}
