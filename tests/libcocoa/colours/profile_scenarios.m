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

static NSString* EveryModel(void) {
  return Joined([NSArray arrayWithObjects:Told(SpaceOf(ProfileNamed(@"sgray.icc"))),
                                          Told(SpaceOf(ProfileNamed(@"srgb.icc"))),
                                          Told(SpaceOf(ProfileNamed(@"default_cmyk.icc"))),
                                          Told(SpaceOf(ProfileNamed(@"lab.icc"))), nil]);
}

static NSString* NameFromProfile(void) {
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

static NSString* NameOfAnyCharacter(void) {
  return NameFrom((const wchar_t[]){'a', 0xFC, 0x4E2D, 0xD83D, 0xDE00, 'b', 0});
}

static NSString* NameWithHalfACharacter(void) {
  return NameFrom((const wchar_t[]){'a', 0xD83D, 'b', 0});
}

static NSString* NameAfterByteOrderMark(void) {
  return NameFrom((const wchar_t[]){0xFEFF, 'a', 0xFEFF, 0});
}

static NSString* DataKept(void) {
  NSData* data = ProfileNamed(@"a98.icc");
  return YesNo([[SpaceOf(data) ICCProfileData] isEqual:data]);
}

static NSString* DataCutToSize(void) {
  NSData* data = ProfileNamed(@"a98.icc");
  NSMutableData* longer = [NSMutableData dataWithData:data];
  [longer appendBytes:"behind the profile" length:18];
  return YesNo([[SpaceOf(longer) ICCProfileData] isEqual:data]);
}

static NSString* DataCopied(void) {
  NSMutableData* data = [NSMutableData dataWithData:ProfileNamed(@"a98.icc")];
  NSColorSpace* space = SpaceOf(data);
  memset([data mutableBytes], 0, [data length]);
  return YesNo([[space ICCProfileData] isEqual:ProfileNamed(@"a98.icc")]);
}

static NSString* NilData(void) {
  return Told(SpaceOf(nil));
}
static NSString* EmptyData(void) {
  return Told(SpaceOf([NSData data]));
}

static NSString* TextData(void) {
  return Told(SpaceOf(
      [@"This is no profile, but it is long enough to be one if nobody looked at what it says; "
        "a header alone has one hundred and twenty-eight bytes." dataUsingEncoding:NSASCIIStringEncoding]));
}

static NSString* Truncated(void) {
  NSData* data = ProfileNamed(@"default_cmyk.icc");
  return Joined(
      [NSArray arrayWithObjects:Told(SpaceOf([data subdataWithRange:NSMakeRange(0, [data length] - 1)])),
                                Told(SpaceOf([data subdataWithRange:NSMakeRange(0, [data length] / 2)])),
                                Told(SpaceOf([data subdataWithRange:NSMakeRange(0, 131)])), nil]);
}

static NSString* Oversized(void) {
  NSMutableData* data = [NSMutableData dataWithData:ProfileNamed(@"srgb.icc")];
  [data setLength:50 * 1024 * 1024];
  return Told(SpaceOf(data));
}

static NSData* WithWord(NSData* data, NSUInteger at, const char* word) {
  NSMutableData* changed = [NSMutableData dataWithData:data];
  [changed replaceBytesInRange:NSMakeRange(at, 4) withBytes:word];
  return changed;
}

static NSString* WrongClass(void) {
  NSData* data = ProfileNamed(@"srgb.icc");
  return Joined([NSArray arrayWithObjects:Told(SpaceOf(WithWord(data, 12, "link"))),
                                          Told(SpaceOf(WithWord(data, 12, "abst"))),
                                          Told(SpaceOf(WithWord(data, 12, "nmcl"))), nil]);
}

static NSString* Relabelled(void) {
  NSData* data = ProfileNamed(@"srgb.icc");
  return Joined([NSArray arrayWithObjects:Told(SpaceOf(WithWord(data, 16, "CMYK"))),
                                          Told(SpaceOf(WithWord(data, 16, "abcd"))), nil]);
}

static NSString* EqualData(void) {
  NSData* data = ProfileNamed(@"a98.icc");
  NSColorSpace* one = SpaceOf(data);
  NSColorSpace* other = SpaceOf(data);
  return [NSString stringWithFormat:@"%@, hashes %@", [one isEqual:other] ? @"equal" : @"unequal",
                                    [one hash] == [other hash] ? @"equal" : @"unequal"];
}

static NSString* EqualButForDate(void) {
  NSData* data = ProfileNamed(@"a98.icc");
  NSColorSpace* one = SpaceOf(data);
  NSColorSpace* other = SpaceOf(WithWord(data, 24, "\x07\xe0\x00\x05"));
  return YesNo([one isEqual:other] && [one hash] == [other hash]);
}

static NSString* UnequalData(void) {
  return YesNo([SpaceOf(ProfileNamed(@"a98.icc")) isEqual:SpaceOf(ProfileNamed(@"srgb.icc"))]);
}

static NSString* SingletonFromItsData(void) {
  return YesNo(SpaceOf([[NSColorSpace sRGBColorSpace] ICCProfileData]) == [NSColorSpace sRGBColorSpace]);
}

static NSString* ProfileHandleRoundTrip(void) {
  NSColorSpace* space = SpaceOf(ProfileNamed(@"a98.icc"));
  NSColorSpace* back = [[[NSColorSpace alloc] initWithColorSyncProfile:[space colorSyncProfile]] autorelease];
  return [NSString stringWithFormat:@"%@, %@", [space colorSyncProfile] ? @"a handle" : @"NULL",
                                    [back isEqual:space] ? @"equal" : @"unequal"];
}

static NSString* ProfileHandleOfSingleton(void) {
  NSColorSpace* space = [NSColorSpace genericRGBColorSpace];
  NSColorSpace* back = [[[NSColorSpace alloc] initWithColorSyncProfile:[space colorSyncProfile]] autorelease];
  return YesNo([space colorSyncProfile] && back == space);
}

static NSString* ProfileHandleOutlivesSpace(void) {
  NSColorSpace* space = [[NSColorSpace alloc] initWithICCProfileData:ProfileNamed(@"a98.icc")];
  NSColorSpace* back = [[NSColorSpace alloc] initWithColorSyncProfile:[space colorSyncProfile]];
  [space release];
  return Told(back);
}

static NSString* NoProfileHandle(void) {
  return Told([[[NSColorSpace alloc] initWithColorSyncProfile:NULL] autorelease]);
}

static NSString* WildProfileHandle(void) {
  return Told([[[NSColorSpace alloc] initWithColorSyncProfile:(void*)0x12345] autorelease]);
}

static NSString* CGHandleRoundTrip(void) {
  NSColorSpace* space = SpaceOf(ProfileNamed(@"lab.icc"));
  NSColorSpace* device = [NSColorSpace deviceGrayColorSpace];
  NSColorSpace* back = [[[NSColorSpace alloc] initWithCGColorSpace:[space CGColorSpace]] autorelease];
  NSColorSpace* deviceBack = [[[NSColorSpace alloc] initWithCGColorSpace:[device CGColorSpace]] autorelease];
  return YesNo([back isEqual:space] && [deviceBack isEqual:device]);
}

static NSString* WildCGHandle(void) {
  NSString* text = @"no space";
  return Joined([NSArray
      arrayWithObjects:Told([[[NSColorSpace alloc] initWithCGColorSpace:NULL] autorelease]),
                       Told([[[NSColorSpace alloc] initWithCGColorSpace:(CGColorSpaceRef)0x12345]
                           autorelease]),
                       Told([[[NSColorSpace alloc] initWithCGColorSpace:(CGColorSpaceRef)text] autorelease]),
                       nil]);
}

const Scenario profileScenarios[] = {
    {"profiles of every model make spaces of that model", "-1/0, -1/0, -1/0, -1/0", "0/1, 1/3, 2/4, 3/3",
     EveryModel},
    {"a space made from a profile has the profile's name", "unknown", "Artifex CMYK SWOP Profile",
     NameFromProfile},
    {"a profile's name may hold any character", "75 6e 6b 6e 6f 77 6e", "61 fc 4e2d d83d de00 62",
     NameOfAnyCharacter},
    {"a profile's name with half a character in it is none", "75 6e 6b 6e 6f 77 6e", "",
     NameWithHalfACharacter},
    {"a byte-order mark is no part of a profile's name", "75 6e 6b 6e 6f 77 6e", "61 feff",
     NameAfterByteOrderMark},
    {"a space gives back the data that it was made from", "yes", "yes", DataKept},
    {"bytes behind the profile are dropped", "no", "yes", DataCutToSize},
    {"a space keeps its own copy of the data", "no", "yes", DataCopied},
    {"no data makes no space", "-1/0", "nil", NilData},
    {"empty data makes no space", "-1/0", "nil", EmptyData},
    {"data that is no profile makes no space", "-1/0", "nil", TextData},
    {"a truncated profile makes no space", "-1/0, -1/0, -1/0", "nil, nil, nil", Truncated},
    {"a profile of 50 MiB makes no space", "-1/0", "nil", Oversized},
    {"links, abstract profiles and named colours make no space", "-1/0, -1/0, -1/0", "nil, nil, nil",
     WrongClass},
    {"a profile whose header belies its contents makes no space", "-1/0, -1/0", "nil, nil", Relabelled},
    {"spaces from the same data are equal", "unequal, hashes unequal", "equal, hashes equal", EqualData},
    {"spaces whose profiles differ in their date are equal", "no", "yes", EqualButForDate},
    {"spaces from different data are not equal", "no", "no", UnequalData},
    {"a predefined space's own data gives that space", "raises NSInvalidArgumentException", "yes",
     SingletonFromItsData},
    {"a profile handle makes an equal space", "NULL, unequal", "a handle, equal", ProfileHandleRoundTrip},
    {"a predefined space's profile handle gives that space", "no", "yes", ProfileHandleOfSingleton},
    {"a space made from a handle outlives the space that gave it", "-1/0", "1/3", ProfileHandleOutlivesSpace},
    {"a null profile handle makes no space", "-1/0", "nil", NoProfileHandle},
    {"a profile handle that never was one makes no space", "-1/0", "nil", WildProfileHandle},
    {"a Core Graphics handle makes an equal space", "raises NSInvalidArgumentException", "yes",
     CGHandleRoundTrip},
    {"a Core Graphics handle that never was one makes no space", "raises NSInvalidArgumentException",
     "nil, nil, nil", WildCGHandle},
    {NULL, NULL, NULL, NULL},
};
