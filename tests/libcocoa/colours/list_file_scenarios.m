// tests/libcocoa/colours/list_file_scenarios.m - colour lists to files and from files.
#define _GNU_SOURCE
#import "tests/libcocoa/colours/scenario.h"

#include <string.h>

static NSColorList* Palette(void) {
  NSColorList* list = [[[NSColorList alloc] initWithName:@"Palette"] autorelease];
  [list setColor:[NSColor colorWithCalibratedRed:0.25 green:0.5 blue:0.75 alpha:1] forKey:@"first"];
  [list setColor:[NSColor colorWithDeviceCyan:0.1 magenta:0.2 yellow:0.3 black:0.4 alpha:1] forKey:@"second"];
  return list;
}

static NSColorList* From(NSString* path) {
  return [[[NSColorList alloc] initWithName:@"Palette" fromFile:path] autorelease];
}

static NSString* Told(NSColorList* list) {
  if (!list) return @"nil";
  NSMutableArray* parts = [NSMutableArray array];
  for (NSString* key in [list allKeys])
    [parts addObject:[NSString stringWithFormat:@"%@ %@", key, Shown([list colorWithKey:key])]];
  return [parts count] ? [parts componentsJoinedByString:@"; "] : @"empty";
}

static NSString* Put(NSString* name, NSData* data) {
  NSString* path = InScratch(name);
  [data writeToFile:path atomically:NO];
  return path;
}

static NSString* PutText(NSString* name, NSString* text) {
  return Put(name, [text dataUsingEncoding:NSUTF8StringEncoding]);
}
static BOOL Exists(NSString* path) {
  return [[NSFileManager defaultManager] fileExistsAtPath:path];
}

SCENARIO("a list comes back from its file",
         "first 0.250 0.500 0.750 1.000 CalibratedRGB; second 0.100 0.200 0.300 0.400 1.000 DeviceCMYK",
         "first 0.250 0.500 0.750 1.000 CalibratedRGB; second 0.100 0.200 0.300 0.400 1.000 DeviceCMYK") {
  NSString* path = InScratch(@"palette.clr");
  return YesNo([Palette() writeToFile:path]) == nil ? nil
                                                    : [NSString stringWithFormat:@"%@", Told(From(path))];
}

SCENARIO(
    "custom colours and patterns of one list come back together", "",
    "0.250 0.500 0.750 1.000 Custom sRGB IEC61966-2.1, 0.500 0.250 0.125 1.000 Custom sRGB IEC61966-2.1, "
    "NSPatternColorSpace, NSPatternColorSpace, first 0.250 0.500 0.750 1.000 CalibratedRGB") {
  NSColorList* list = Palette();
  [list setColor:[NSColor colorWithSRGBRed:0.25 green:0.5 blue:0.75 alpha:1] forKey:@"one"];
  [list setColor:[NSColor colorWithSRGBRed:0.5 green:0.25 blue:0.125 alpha:1] forKey:@"two"];
  [list setColor:Pattern() forKey:@"three"];
  [list setColor:Pattern() forKey:@"four"];
  [list writeToFile:InScratch(@"palette.clr")];
  NSColorList* back = From(InScratch(@"palette.clr"));
  return Joined([NSArray
      arrayWithObjects:Shown([back colorWithKey:@"one"]), Shown([back colorWithKey:@"two"]),
                       [[back colorWithKey:@"three"] colorSpaceName],
                       [[back colorWithKey:@"four"] colorSpaceName],
                       [@"first " stringByAppendingString:Shown([back colorWithKey:@"first"])], nil]);
}

// Hue, saturation, brightness and alpha, and the space.
static NSString* HSBOf(NSColor* color) {
  return [NSString stringWithFormat:@"%.2f %.2f %.2f %.2f %@", (double)[color hueComponent],
                                    (double)[color saturationComponent], (double)[color brightnessComponent],
                                    (double)[color alphaComponent], [color colorSpaceName]];
}

SCENARIO("greys that were made from a hue keep it in a list", "",
         "0.25 0.00 0.50 0.75 NSDeviceRGBColorSpace, 0.25 0.50 0.00 0.75 NSCalibratedRGBColorSpace") {
  NSColorList* list = Palette();
  [list setColor:[NSColor colorWithDeviceHue:0.25 saturation:0 brightness:0.5 alpha:0.75] forKey:@"grey"];
  [list setColor:[NSColor colorWithCalibratedHue:0.25 saturation:0.5 brightness:0 alpha:0.75]
          forKey:@"black"];
  [list writeToFile:InScratch(@"palette.clr")];
  NSColorList* back = From(InScratch(@"palette.clr"));
  return Joined([NSArray
      arrayWithObjects:HSBOf([back colorWithKey:@"grey"]), HSBOf([back colorWithKey:@"black"]), nil]);
}

SCENARIO("colours with two equal components come back from a list exactly", "", "120 of 120") {
  NSColorList* list = [[[NSColorList alloc] initWithName:@"Palette"] autorelease];
  for (int i = 1; i <= 40; ++i) {
    const CGFloat a = (CGFloat)i / 41;
    const CGFloat b = (CGFloat)(41 - i) / 43;
    [list setColor:[NSColor colorWithDeviceRed:a green:a blue:b alpha:1]
            forKey:[NSString stringWithFormat:@"%d red green", i]];
    [list setColor:[NSColor colorWithDeviceRed:b green:a blue:a alpha:1]
            forKey:[NSString stringWithFormat:@"%d green blue", i]];
    [list setColor:[NSColor colorWithDeviceRed:a green:b blue:a alpha:1]
            forKey:[NSString stringWithFormat:@"%d red blue", i]];
  }
  [list writeToFile:InScratch(@"palette.clr")];
  NSColorList* back = From(InScratch(@"palette.clr"));
  unsigned same = 0;
  for (NSString* key in [list allKeys]) {
    CGFloat before[4], after[4];
    [[list colorWithKey:key] getComponents:before];
    [[back colorWithKey:key] getComponents:after];
    same += memcmp(before, after, sizeof before) == 0;
  }
  return [NSString stringWithFormat:@"%u of %u", same, (unsigned)[[list allKeys] count]];
}

SCENARIO("a list written to a folder gets a file of its name", "yes, yes", "yes, yes") {
  NSString* folder = InScratch(@"folder");
  [[NSFileManager defaultManager] createDirectoryAtPath:folder attributes:nil];
  BOOL written = [Palette() writeToFile:folder];
  return [NSString stringWithFormat:@"%@, %@", YesNo(written),
                                    YesNo(Exists([folder stringByAppendingPathComponent:@"Palette.clr"]))];
}

SCENARIO("a list is read from a folder that has its file", "2", "2") {
  NSString* folder = InScratch(@"folder");
  [[NSFileManager defaultManager] createDirectoryAtPath:folder attributes:nil];
  [Palette() writeToFile:folder];
  return [NSString stringWithFormat:@"%u", (unsigned)[[From(folder) allKeys] count]];
}

SCENARIO("a list is written under the very name given", "yes, as .clr", "yes, as asked") {
  NSString* path = InScratch(@"palette.txt");
  BOOL written = [Palette() writeToFile:path];
  return [NSString stringWithFormat:@"%@, %@", YesNo(written),
                                    Exists(path)                        ? @"as asked"
                                    : Exists(InScratch(@"palette.clr")) ? @"as .clr"
                                                                        : @"nowhere"];
}

SCENARIO("a failed write leaves the list where it was", "yes then no, still bound to the first file: no",
         "yes then no, still bound to the first file: yes") {
  NSColorList* list = Palette();
  [list setColor:[NSColor redColor] forKey:@"third"];
  BOOL good = [list writeToFile:nil];
  BOOL bad = [list writeToFile:InScratch(@"no/such/folder/palette.clr")];
  [list removeFile];
  return [NSString
      stringWithFormat:@"%@ then %@, still bound to the first file: %@", YesNo(good), YesNo(bad),
                       YesNo(!Exists([UserColours() stringByAppendingPathComponent:@"Palette.clr"]))];
}

SCENARIO("a name that is no file name is not written into a folder", "yes, yes", "no, no") {
  NSColorList* list = [[[NSColorList alloc] initWithName:@""] autorelease];
  BOOL nowhere = [list writeToFile:InScratch(@"")];
  NSColorList* sly = [[[NSColorList alloc] initWithName:@"../sly"] autorelease];
  BOOL above = [sly writeToFile:InScratch(@"")];
  return [NSString stringWithFormat:@"%@, %@", YesNo(nowhere), YesNo(above)];
}

SCENARIO("custom colours come back from a file exactly", "raises NSInvalidArgumentException", "yes") {
  NSColorSpace* space = [[[NSColorSpace alloc] initWithICCProfileData:ProfileNamed(@"a98.icc")] autorelease];
  const CGFloat numbers[] = {0.1, 0.2, 0.3, 0.4};
  NSColor* color = [NSColor colorWithColorSpace:space components:numbers count:4];
  NSColorList* list = Palette();
  [list setColor:color forKey:@"custom"];
  NSString* path = InScratch(@"palette.clr");
  [list writeToFile:path];
  return YesNo([[From(path) colorWithKey:@"custom"] isEqual:color] && [[From(path) allKeys] count] == 3);
}

SCENARIO("other programs read custom colours as their device twins", "0.250 0.500 0.750 1.000 CalibratedRGB",
         "0.250 0.500 0.750 1.000 DeviceRGB") {
  NSColorList* list = Palette();
  [list setColor:[NSColor colorWithSRGBRed:0.25 green:0.5 blue:0.75 alpha:1] forKey:@"custom"];
  NSString* path = InScratch(@"palette.clr");
  [list writeToFile:path];
  NSColorList* read = [NSUnarchiver unarchiveObjectWithData:[NSData dataWithContentsOfFile:path]];
  return Shown([read colorWithKey:@"custom"]);
}

SCENARIO("a pattern comes back from a file", "raises NSInvalidArgumentException",
         "3 keys, NSPatternColorSpace") {
  NSColorList* list = Palette();
  [list setColor:Pattern() forKey:@"pattern"];
  NSString* path = InScratch(@"palette.clr");
  [list writeToFile:path];
  NSColorList* back = From(path);
  return [NSString stringWithFormat:@"%u keys, %@", (unsigned)[[back allKeys] count],
                                    [[back colorWithKey:@"pattern"] colorSpaceName]];
}

SCENARIO("a text file is read",
         "first 0.250 0.500 0.750 1.000 CalibratedRGB; the second 1.000 0.000 0.000 0.500 CalibratedRGB",
         "first 0.250 0.500 0.750 1.000 CalibratedRGB; the second 1.000 0.000 0.000 0.500 CalibratedRGB") {
  return Told(From(PutText(@"palette.clr", @"2\n0 0.25 0.5 0.75 1 first\n0 1 0 0 0.5 the second\n")));
}
SCENARIO("a text file may be of UTF-8 or Latin-1, line by line", "", "2 keys, yes, yes") {
  const char text[] = "2\n0 0 0 0 1 caf\xC3\xA9\n0 0 0 0 1 th\xE9\n";
  NSArray* keys = [From(Put(@"palette.clr", [NSData dataWithBytes:text length:strlen(text)])) allKeys];
  return Joined([NSArray
      arrayWithObjects:[NSString stringWithFormat:@"%u keys", (unsigned)[keys count]],
                       YesNo([keys containsObject:[NSString stringWithUTF8String:"caf\xC3\xA9"]]),
                       YesNo([keys containsObject:[NSString stringWithUTF8String:"th\xC3\xA9"]]), nil]);
}
SCENARIO("half a text file makes no list", "empty", "nil") {
  return Told(From(PutText(@"palette.clr", @"2\n0 0.25 0.5 0.75 1 first\n")));
}
SCENARIO("half a text file makes no list, whether its last line ends or not", "", "nil") {
  return Told(From(PutText(@"palette.clr", @"2\n0 0.25 0.5 0.75 1 first")));
}
SCENARIO("a text file may have a last line without an end, and empty ones behind it", "",
         "1 1.000 0.000 0.000 1.000 CalibratedRGB, 1 1.000 0.000 0.000 1.000 CalibratedRGB") {
  return Joined([NSArray arrayWithObjects:Told(From(PutText(@"palette.clr", @"1\n0 1 0 0 1 1"))),
                                          Told(From(PutText(@"palette.clr", @"1\n0 1 0 0 1 1\n\n \t\n"))),
                                          nil]);
}
SCENARIO("a text file may say that it has no colours, and not less", "", "empty, nil") {
  return Joined([NSArray arrayWithObjects:Told(From(PutText(@"palette.clr", @"0\n"))),
                                          Told(From(PutText(@"palette.clr", @"-1\n"))), nil]);
}

// What the file is with that line for its only one, or with that text behind a good one.
static NSString* WithLine(NSString* line) {
  return Told(From(PutText(@"palette.clr", [@"1\n" stringByAppendingString:line])));
}
SCENARIO("a line that has no four numbers and a name makes no list", "", "nil, nil, nil, nil") {
  return Joined([NSArray arrayWithObjects:WithLine(@"0 1 0 0 1\n"), WithLine(@"0 1 0 1 name\n"),
                                          WithLine(@"0 1e999 0 0 1 name\n"), WithLine(@"name\n"), nil]);
}
SCENARIO("more than is announced makes no list", "", "nil, nil") {
  return Joined([NSArray arrayWithObjects:WithLine(@"0 1 0 0 1 one\n0 1 0 0 1 two\n"),
                                          Told(From(PutText(@"palette.clr", @"1 x\n0 1 0 0 1 one\n"))), nil]);
}

SCENARIO("a list that is given no name has the one that stands in its file", "", "Palette, Other") {
  NSString* path = InScratch(@"palette.clr");
  [Palette() writeToFile:path];
  NSAutoreleasePool* pool = [NSAutoreleasePool new];
  NSColorList* unnamed = [[NSColorList alloc] initWithName:nil fromFile:path];
  NSColorList* named = [[NSColorList alloc] initWithName:@"Other" fromFile:path];
  [pool release];
  return Joined([NSArray arrayWithObjects:[[unnamed autorelease] name], [[named autorelease] name], nil]);
}
SCENARIO("a text file of an unknown method makes no list", "empty", "nil") {
  return Told(From(PutText(@"palette.clr", @"1\n7 0.25 0.5 0.75 1 first\n")));
}
SCENARIO("prose makes no list", "empty", "nil") {
  return Told(From(PutText(@"palette.clr", @"Dear reader,\nthis is no palette.\n")));
}
SCENARIO("an empty file makes no list", "empty", "nil") {
  return Told(From(PutText(@"palette.clr", @"")));
}
SCENARIO("a file that holds less than its size says makes no list", "empty", "nil") {
  return Told(From(@"/sys/kernel/uevent_seqnum"));  // says 4096
}
SCENARIO("a missing file makes no list", "empty", "nil") {
  return Told(From(InScratch(@"missing.clr")));
}
SCENARIO("no path makes an empty list", "empty", "empty") {
  return Told(From(nil));
}

SCENARIO("a folder without the file makes no list", "empty", "nil") {
  NSString* folder = InScratch(@"empty-folder");
  [[NSFileManager defaultManager] createDirectoryAtPath:folder attributes:nil];
  return Told(From(folder));
}

SCENARIO("an archive of something else makes no list", "empty", "nil") {
  return Told(From(
      Put(@"palette.clr", [NSArchiver archivedDataWithRootObject:[NSArray arrayWithObject:@"a string"]])));
}

SCENARIO("an archive of a colour makes no list", "empty", "nil") {
  return Told(From(Put(@"palette.clr", [NSArchiver archivedDataWithRootObject:[NSColor redColor]])));
}

// The palette's file with one key written otherwise: as ASCII, in elements of the given type.
static NSString* PaletteWithASCII(char element) {
  static const char wide[] = "\x25\0\0\0\x0A\x15\0\0\0\x05\x04\0f\0i\0r\0s\0t";
  char narrow[] = "\x25\0\0\0\x01\x15\0\0\0\x05\x02"
                  "first";
  narrow[10] = element;
  NSString* path = InScratch(@"palette.clr");
  [Palette() writeToFile:path];
  NSMutableData* data = [NSMutableData dataWithContentsOfFile:path];
  const char* found = memmem([data bytes], [data length], wide, sizeof wide - 1);
  if (!found) return @"the archive has changed";
  [data replaceBytesInRange:NSMakeRange((NSUInteger)(found - (const char*)[data bytes]), sizeof wide - 1)
                  withBytes:narrow
                     length:sizeof narrow - 1];
  return Told(From(Put(@"narrow.clr", data)));
}

SCENARIO("keys of bytes are read", "",
         "first 0.250 0.500 0.750 1.000 CalibratedRGB; second 0.100 0.200 0.300 0.400 1.000 DeviceCMYK") {
  return PaletteWithASCII(2);
}

SCENARIO("keys of signed bytes make no list", "empty", "nil") {
  return PaletteWithASCII(1);
}

SCENARIO("keys of bytes that are declared wide make no list", "empty", "nil") {
  return PaletteWithASCII(4);
}

SCENARIO("half an archive makes no list", "empty", "nil") {
  NSString* path = InScratch(@"palette.clr");
  [Palette() writeToFile:path];
  NSData* data = [NSData dataWithContentsOfFile:path];
  return Told(From(Put(@"half.clr", [data subdataWithRange:NSMakeRange(0, [data length] / 2)])));
}

SCENARIO("a keyed archive of a list is no list file", "empty", "nil") {
  return Told(From(Put(@"palette.clr", [NSKeyedArchiver archivedDataWithRootObject:Palette()])));
}

SCENARIO("a list removes its file from the user's folder", "there before, gone after, no longer available",
         "there before, gone after, no longer available") {
  NSColorList* list = Palette();
  [list writeToFile:nil];
  NSString* path = [UserColours() stringByAppendingPathComponent:@"Palette.clr"];
  BOOL before = Exists(path) && [NSColorList colorListNamed:@"Palette"] == list;
  [list removeFile];
  return [NSString stringWithFormat:@"%@ before, %@ after, %@ available", before ? @"there" : @"missing",
                                    Exists(path) ? @"there" : @"gone",
                                    [NSColorList colorListNamed:@"Palette"] ? @"still" : @"no longer"];
}

SCENARIO("a file elsewhere is not removed", "removed", "left alone") {
  NSColorList* list = Palette();
  NSString* path = InScratch(@"palette.clr");
  [list writeToFile:path];
  [list removeFile];
  return Exists(path) ? @"left alone" : @"removed";
}

SCENARIO("a list without a file has none to remove", "", "nothing") {
  return RAISED([Palette() removeFile]);
}

static void WriteSystem(void) {
  NSAutoreleasePool* pool = [NSAutoreleasePool new];
  [[[[NSColorList alloc] initWithName:@"System"] autorelease] writeToFile:nil];
  [pool release];
}
SCENARIO("a list that can't be edited does not remove its file", "", "no, left alone") {
  InChild(WriteSystem);
  NSColorList* system = [NSColorList colorListNamed:@"System"];
  [system removeFile];
  return Joined([NSArray arrayWithObjects:YesNo([system isEditable]),
                                          Exists([UserColours() stringByAppendingPathComponent:@"System.clr"])
                                              ? @"left alone"
                                              : @"removed",
                                          nil]);
}

SCENARIO("a list written elsewhere is not available", "no", "no") {
  [Palette() writeToFile:InScratch(@"palette.clr")];
  return YesNo([NSColorList colorListNamed:@"Palette"] != nil);
}

SCENARIO("a write where no file can be made is answered with no", "no", "no") {
  return [NSString stringWithFormat:@"%@", YesNo([Palette() writeToFile:@"/proc/palette.clr"])];
}

// "a", then any unit, then "b": one that is no text, GNUstep's own strings don't take.
@interface KeyWithUnit : NSString {
 @public
  unichar _unit;
}
@end
@implementation KeyWithUnit
- (NSUInteger)length {
  return 3;
}
- (unichar)characterAtIndex:(NSUInteger)index {
  return index == 0 ? 'a' : index == 1 ? _unit : 'b';
}
@end

// For each key of a list that came back: its units, and which kind of colour it has.
static NSString* Units(NSColorList* list) {
  NSMutableArray* keys = [NSMutableArray array];
  for (NSString* key in [list allKeys]) {
    NSMutableString* units = [NSMutableString string];
    for (NSUInteger i = 0; i < [key length]; ++i) [units appendFormat:@"%x ", [key characterAtIndex:i]];
    [keys addObject:[units stringByAppendingString:[[list colorWithKey:key] colorSpaceName]]];
  }
  return list ? Joined(keys) : @"nil";
}

SCENARIO("a key that is no text keeps no list from being read", "",
         "61 d800 62 NSCalibratedRGBColorSpace, 61 dc00 62 NSDeviceRGBColorSpace, NSCustomColorSpace") {
  NSColorList* list = [[[NSColorList alloc] initWithName:@"Palette"] autorelease];
  for (unichar unit = 0xD800; unit <= 0xDC00; unit += 0x400) {
    KeyWithUnit* key = [[KeyWithUnit new] autorelease];
    key->_unit = unit;
    [list setColor:unit == 0xD800 ? [NSColor redColor] : [NSColor colorWithSRGBRed:0 green:0 blue:1 alpha:1]
            forKey:key];
  }
  [list setColor:[NSColor colorWithSRGBRed:0 green:1 blue:0 alpha:1] forKey:@""];
  [list writeToFile:InScratch(@"palette.clr")];
  return Units(From(InScratch(@"palette.clr")));
}

SCENARIO("a custom colour comes back under a key that starts like a mark of byte order", "",
         "feff 61 NSCustomColorSpace, 61 0 62 NSCustomColorSpace") {
  NSColorList* list = [[[NSColorList alloc] initWithName:@"Palette"] autorelease];
  NSColor* color = [NSColor colorWithSRGBRed:0 green:0 blue:1 alpha:1];
  const unichar mark[] = {'x', 0xFEFF, 'a'};
  const unichar zero[] = {'a', 0, 'b'};
  [list setColor:color forKey:[[NSString stringWithCharacters:mark length:3] substringFromIndex:1]];
  [list setColor:color forKey:[NSString stringWithCharacters:zero length:3]];
  [list writeToFile:InScratch(@"palette.clr")];
  return Units(From(InScratch(@"palette.clr")));
}
