// tests/libcocoa/colours/list_file_scenarios.m - colour lists to files and from files.
#import "tests/libcocoa/colours/scenario.h"

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

static NSString* RoundTrip(void) {
  NSString* path = InScratch(@"palette.clr");
  return YesNo([Palette() writeToFile:path]) == nil ? nil
                                                    : [NSString stringWithFormat:@"%@", Told(From(path))];
}

static NSString* IntoFolder(void) {
  NSString* folder = InScratch(@"folder");
  [[NSFileManager defaultManager] createDirectoryAtPath:folder attributes:nil];
  BOOL written = [Palette() writeToFile:folder];
  return [NSString stringWithFormat:@"%@, %@", YesNo(written),
                                    YesNo(Exists([folder stringByAppendingPathComponent:@"Palette.clr"]))];
}

static NSString* FromFolder(void) {
  NSString* folder = InScratch(@"folder");
  [[NSFileManager defaultManager] createDirectoryAtPath:folder attributes:nil];
  [Palette() writeToFile:folder];
  return [NSString stringWithFormat:@"%u", (unsigned)[[From(folder) allKeys] count]];
}

static NSString* OtherExtension(void) {
  NSString* path = InScratch(@"palette.txt");
  BOOL written = [Palette() writeToFile:path];
  return [NSString stringWithFormat:@"%@, %@", YesNo(written),
                                    Exists(path)                        ? @"as asked"
                                    : Exists(InScratch(@"palette.clr")) ? @"as .clr"
                                                                        : @"nowhere"];
}

static NSString* FailedWrite(void) {
  NSColorList* list = Palette();
  [list setColor:[NSColor redColor] forKey:@"third"];
  BOOL good = [list writeToFile:nil];
  BOOL bad = [list writeToFile:InScratch(@"no/such/folder/palette.clr")];
  [list removeFile];
  return [NSString
      stringWithFormat:@"%@ then %@, still bound to the first file: %@", YesNo(good), YesNo(bad),
                       YesNo(!Exists([UserColours() stringByAppendingPathComponent:@"Palette.clr"]))];
}

static NSString* NamelessIntoFolder(void) {
  NSColorList* list = [[[NSColorList alloc] initWithName:@""] autorelease];
  BOOL nowhere = [list writeToFile:InScratch(@"")];
  NSColorList* sly = [[[NSColorList alloc] initWithName:@"../sly"] autorelease];
  BOOL above = [sly writeToFile:InScratch(@"")];
  return [NSString stringWithFormat:@"%@, %@", YesNo(nowhere), YesNo(above)];
}

static NSString* CustomExact(void) {
  NSColorSpace* space = [[[NSColorSpace alloc] initWithICCProfileData:ProfileNamed(@"a98.icc")] autorelease];
  const CGFloat numbers[] = {0.1, 0.2, 0.3, 0.4};
  NSColor* color = [NSColor colorWithColorSpace:space components:numbers count:4];
  NSColorList* list = Palette();
  [list setColor:color forKey:@"custom"];
  NSString* path = InScratch(@"palette.clr");
  [list writeToFile:path];
  return YesNo([[From(path) colorWithKey:@"custom"] isEqual:color] && [[From(path) allKeys] count] == 3);
}

static NSString* CustomTwin(void) {
  NSColorList* list = Palette();
  [list setColor:[NSColor colorWithSRGBRed:0.25 green:0.5 blue:0.75 alpha:1] forKey:@"custom"];
  NSString* path = InScratch(@"palette.clr");
  [list writeToFile:path];
  NSColorList* read = [NSUnarchiver unarchiveObjectWithData:[NSData dataWithContentsOfFile:path]];
  return Shown([read colorWithKey:@"custom"]);
}

static NSString* PatternMember(void) {
  NSColorList* list = Palette();
  [list setColor:Pattern() forKey:@"pattern"];
  NSString* path = InScratch(@"palette.clr");
  [list writeToFile:path];
  NSColorList* back = From(path);
  return [NSString stringWithFormat:@"%u keys, %@", (unsigned)[[back allKeys] count],
                                    [[back colorWithKey:@"pattern"] colorSpaceName]];
}

static NSString* Text(void) {
  return Told(From(PutText(@"palette.clr", @"2\n0 0.25 0.5 0.75 1 first\n0 1 0 0 0.5 the second\n")));
}
static NSString* HalfText(void) {
  return Told(From(PutText(@"palette.clr", @"2\n0 0.25 0.5 0.75 1 first\n")));
}
static NSString* TextOfNoMethod(void) {
  return Told(From(PutText(@"palette.clr", @"1\n7 0.25 0.5 0.75 1 first\n")));
}
static NSString* Prose(void) {
  return Told(From(PutText(@"palette.clr", @"Dear reader,\nthis is no palette.\n")));
}
static NSString* EmptyFile(void) {
  return Told(From(PutText(@"palette.clr", @"")));
}
static NSString* MissingFile(void) {
  return Told(From(InScratch(@"missing.clr")));
}
static NSString* NoPath(void) {
  return Told(From(nil));
}

static NSString* FolderWithoutList(void) {
  NSString* folder = InScratch(@"empty-folder");
  [[NSFileManager defaultManager] createDirectoryAtPath:folder attributes:nil];
  return Told(From(folder));
}

static NSString* ArchiveOfOther(void) {
  return Told(From(
      Put(@"palette.clr", [NSArchiver archivedDataWithRootObject:[NSArray arrayWithObject:@"a string"]])));
}

static NSString* HalfArchive(void) {
  NSString* path = InScratch(@"palette.clr");
  [Palette() writeToFile:path];
  NSData* data = [NSData dataWithContentsOfFile:path];
  return Told(From(Put(@"half.clr", [data subdataWithRange:NSMakeRange(0, [data length] / 2)])));
}

static NSString* KeyedArchive(void) {
  return Told(From(Put(@"palette.clr", [NSKeyedArchiver archivedDataWithRootObject:Palette()])));
}

static NSString* RemovesOwnFile(void) {
  NSColorList* list = Palette();
  [list writeToFile:nil];
  NSString* path = [UserColours() stringByAppendingPathComponent:@"Palette.clr"];
  BOOL before = Exists(path) && [NSColorList colorListNamed:@"Palette"] == list;
  [list removeFile];
  return [NSString stringWithFormat:@"%@ before, %@ after, %@ available", before ? @"there" : @"missing",
                                    Exists(path) ? @"there" : @"gone",
                                    [NSColorList colorListNamed:@"Palette"] ? @"still" : @"no longer"];
}

static NSString* LeavesOtherFile(void) {
  NSColorList* list = Palette();
  NSString* path = InScratch(@"palette.clr");
  [list writeToFile:path];
  [list removeFile];
  return Exists(path) ? @"left alone" : @"removed";
}

static NSString* NotAvailableElsewhere(void) {
  [Palette() writeToFile:InScratch(@"palette.clr")];
  return YesNo([NSColorList colorListNamed:@"Palette"] != nil);
}

static NSString* FromReadOnlyFolder(void) {
  return [NSString stringWithFormat:@"%@", YesNo([Palette() writeToFile:@"/proc/palette.clr"])];
}

const Scenario listFileScenarios[] = {
    {"a list comes back from its file",
     "first 0.250 0.500 0.750 1.000 CalibratedRGB; second 0.100 0.200 0.300 0.400 1.000 DeviceCMYK",
     "first 0.250 0.500 0.750 1.000 CalibratedRGB; second 0.100 0.200 0.300 0.400 1.000 DeviceCMYK",
     RoundTrip},
    {"a list written to a folder gets a file of its name", "yes, yes", "yes, yes", IntoFolder},
    {"a list is read from a folder that has its file", "2", "2", FromFolder},
    {"a list is written under the very name given", "yes, as .clr", "yes, as asked", OtherExtension},
    {"a failed write leaves the list where it was", "yes then no, still bound to the first file: no",
     "yes then no, still bound to the first file: yes", FailedWrite},
    {"a name that is no file name is not written into a folder", "yes, yes", "no, no", NamelessIntoFolder},
    {"a write where no file can be made is answered with no", "no", "no", FromReadOnlyFolder},
    {"custom colours come back from a file exactly", "raises NSInvalidArgumentException", "yes", CustomExact},
    {"other programs read custom colours as their device twins", "0.250 0.500 0.750 1.000 CalibratedRGB",
     "0.250 0.500 0.750 1.000 DeviceRGB", CustomTwin},
    {"a pattern comes back from a file", "raises NSInvalidArgumentException", "3 keys, NSPatternColorSpace",
     PatternMember},
    {"a text file is read",
     "first 0.250 0.500 0.750 1.000 CalibratedRGB; the second 1.000 0.000 0.000 0.500 CalibratedRGB",
     "first 0.250 0.500 0.750 1.000 CalibratedRGB; the second 1.000 0.000 0.000 0.500 CalibratedRGB", Text},
    {"half a text file makes no list", "empty", "nil", HalfText},
    {"a text file of an unknown method makes no list", "empty", "nil", TextOfNoMethod},
    {"prose makes no list", "empty", "nil", Prose},
    {"an empty file makes no list", "empty", "nil", EmptyFile},
    {"a missing file makes no list", "empty", "nil", MissingFile},
    {"no path makes an empty list", "empty", "empty", NoPath},
    {"a folder without the file makes no list", "empty", "nil", FolderWithoutList},
    {"an archive of something else makes no list", "empty", "nil", ArchiveOfOther},
    {"half an archive makes no list", "empty", "nil", HalfArchive},
    {"a keyed archive of a list is no list file", "empty", "nil", KeyedArchive},
    {"a list removes its file from the user's folder", "there before, gone after, no longer available",
     "there before, gone after, no longer available", RemovesOwnFile},
    {"a file elsewhere is not removed", "removed", "left alone", LeavesOtherFile},
    {"a list written elsewhere is not available", "no", "no", NotAvailableElsewhere},
    {NULL, NULL, NULL, NULL},
};
