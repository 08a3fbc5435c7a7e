// tests/libcocoa/colours/profile_scenarios.m - spaces from ICC data and from handles.
#import "tests/libcocoa/colours/scenario.h"

#include <lcms2.h>

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

SCENARIO("a profile of 50 MiB makes no space", "-1/0", "nil") {
  NSMutableData* data = [NSMutableData dataWithData:ProfileNamed(@"srgb.icc")];
  [data setLength:50 * 1024 * 1024];
  return Told(SpaceOf(data));
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
