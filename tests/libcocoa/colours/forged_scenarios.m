// tests/libcocoa/colours/forged_scenarios.m - files that were made to do harm, and places that are no files.
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#import "tests/libcocoa/colours/scenario.h"
#include "tests/libcocoa/colours/trailer.h"

// --- trailers

static void AppendWord(NSMutableData* data, uint32_t word) {
  const unsigned char bytes[] = {(unsigned char)word, (unsigned char)(word >> 8), (unsigned char)(word >> 16),
                                 (unsigned char)(word >> 24)};
  [data appendBytes:bytes length:sizeof bytes];
}

static void AppendBlock(NSMutableData* data, NSData* block) {
  AppendWord(data, (uint32_t)[block length]);
  [data appendData:block];
}

// The list of one red, with a trailer that has these profiles, and for the red a colour of three fourths in
// the space of that number; so many words are missing at the end.
static NSString* CutFile(NSArray* profiles, uint32_t space, unsigned missing) {
  NSColorList* list = [[[NSColorList alloc] initWithName:@"Forged"] autorelease];
  [list setColor:[NSColor colorWithDeviceRed:1 green:0 blue:0 alpha:1] forKey:@"red"];
  NSMutableData* file = [NSMutableData dataWithData:[NSArchiver archivedDataWithRootObject:list]];
  NSUInteger archive = [file length];
  AppendWord(file, (uint32_t)[profiles count]);
  for (NSData* profile in profiles) AppendBlock(file, profile);
  AppendWord(file, 1);
  AppendBlock(file, [@"red" dataUsingEncoding:NSUTF8StringEncoding]);
  AppendWord(file, space);
  AppendWord(file, 4);
  for (int i = 0; i < 4; ++i) AppendWord(file, 0x3F400000);
  AppendWord(file, 0);
  [file setLength:[file length] - missing * sizeof(uint32_t)];
  unsigned char seal[kSealSize];
  MakeSeal([file bytes], [file length], [file length] - archive, seal);
  [file appendBytes:seal length:sizeof seal];
  NSString* path = InScratch(@"Forged.clr");
  [file writeToFile:path atomically:NO];
  return path;
}

static NSString* ForgedFile(NSArray* profiles, uint32_t space) {
  return CutFile(profiles, space, 0);
}

// The red of the forged list, and its conversion by name, where a stock kind in a profile colour never ended.
static NSString* RedOf(NSString* path) {
  NSColorList* list = [[[NSColorList alloc] initWithName:@"x" fromFile:path] autorelease];
  NSColor* red = [list colorWithKey:@"red"];
  return Joined([NSArray
      arrayWithObjects:Shown(red), Shown([red colorUsingColorSpaceName:NSDeviceCMYKColorSpace]), nil]);
}

SCENARIO("a trailer may name a space that GNUstep has no kind for", "",
         "0.750 0.750 0.750 0.750 Custom sRGB IEC61966-2.1, 0.250 0.250 0.250 0.000 0.750 DeviceCMYK") {
  return RedOf(ForgedFile(nil, 7));
}

SCENARIO("a trailer that names the space of a stock kind is passed over", "",
         "1.000 0.000 0.000 1.000 DeviceRGB, 0.000 1.000 1.000 0.000 1.000 DeviceCMYK; "
         "1.000 0.000 0.000 1.000 DeviceRGB, 0.000 1.000 1.000 0.000 1.000 DeviceCMYK") {
  NSString* device = RedOf(ForgedFile(nil, 1));
  return [NSString stringWithFormat:@"%@; %@", device, RedOf(ForgedFile(nil, 4))];
}

// What follows are the checksum and the length, which could pass for the missing components.
SCENARIO("a trailer may end after its colours, but not in one", "", "Custom, Device, Device, Device") {
  NSMutableArray* kinds = [NSMutableArray array];
  for (unsigned missing = 1; missing <= 4; ++missing) {
    NSString* path = CutFile(nil, 7, missing);
    NSColorList* list = [[[NSColorList alloc] initWithName:@"x" fromFile:path] autorelease];
    BOOL isCustom = [[[list colorWithKey:@"red"] colorSpaceName] isEqual:NSCustomColorSpace];
    [kinds addObject:isCustom ? @"Custom" : @"Device"];
  }
  return Joined(kinds);
}

SCENARIO("a trailer with a stock kind's own profile gives a stock colour", "",
         "0.750 0.750 0.750 0.750 CalibratedRGB, 0.250 0.250 0.250 0.000 0.750 DeviceCMYK") {
  NSData* generic = [[NSColorSpace genericRGBColorSpace] ICCProfileData];
  return RedOf(ForgedFile([NSArray arrayWithObject:generic], 256));
}

SCENARIO("a trailer with more profiles than there may be is passed over", "", "DeviceRGB then Custom") {
  NSMutableArray* profiles = [NSMutableArray array];
  for (int i = 0; i < 257; ++i) [profiles addObject:ProfileNamed(@"a98.icc")];
  NSColorList* refused = [[[NSColorList alloc] initWithName:@"x"
                                                   fromFile:ForgedFile(profiles, 256)] autorelease];
  [profiles removeLastObject];
  NSColorList* taken = [[[NSColorList alloc] initWithName:@"x"
                                                 fromFile:ForgedFile(profiles, 256)] autorelease];
  return [NSString stringWithFormat:@"%@ then %@",
                                    [[[[refused colorWithKey:@"red"] colorSpaceName] substringFromIndex:2]
                                        stringByReplacingOccurrencesOfString:@"ColorSpace"
                                                                  withString:@""],
                                    [[[[taken colorWithKey:@"red"] colorSpaceName] substringFromIndex:2]
                                        stringByReplacingOccurrencesOfString:@"ColorSpace"
                                                                  withString:@""]];
}

// --- sizes

static long MegabytesAtMost(void) {
  struct rusage usage;
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss / 1024;
}

SCENARIO("a file larger than 64 MiB is refused before it is read", "", "nil, memory left alone: yes") {
  NSString* path = InScratch(@"Large.clr");
  [[@"GNUstep archive" dataUsingEncoding:NSASCIIStringEncoding] writeToFile:path atomically:NO];
  [NSColor redColor];
  long before = MegabytesAtMost();
  if (truncate([path fileSystemRepresentation], 1 << 30) != 0) return @"no such file";
  NSColorList* list = [[[NSColorList alloc] initWithName:@"x" fromFile:path] autorelease];
  return [NSString stringWithFormat:@"%@, memory left alone: %@", list ? @"a list" : @"nil",
                                    YesNo(MegabytesAtMost() - before < 32)];
}

SCENARIO("a text file of blank lines takes no more memory than its size", "", "empty, yes") {
  NSMutableData* data = [NSMutableData dataWithLength:16 << 20];
  memset([data mutableBytes], '\n', [data length]);
  memcpy([data mutableBytes], "0", 1);
  NSString* path = InScratch(@"Blank.clr");
  [data writeToFile:path atomically:NO];
  [NSColor redColor];
  long before = MegabytesAtMost();
  NSColorList* list = [[[NSColorList alloc] initWithName:@"x" fromFile:path] autorelease];
  return Joined([NSArray arrayWithObjects:list && [[list allKeys] count] == 0 ? @"empty" : @"no",
                                          YesNo(MegabytesAtMost() - before < 48), nil]);
}

// Five points in each of eleven directions, not three, to four inks: 391 million bytes on the way into the
// space.
SCENARIO("a profile that declares a table it does not have takes no memory for it", "", "no, yes") {
  NSMutableData* profile = [NSMutableData dataWithData:ProfileNamed(@"ps_cmyk.icc")];
  unsigned char* bytes = [profile mutableBytes];
  for (NSUInteger i = 132; i + 48 < [profile length]; ++i)
    if (memcmp(bytes + i, "mft2", 4) == 0 && bytes[i + 8] == 3) bytes[i + 8] = 11;
  long before = MegabytesAtMost();
  NSColorSpace* space = [[[NSColorSpace alloc] initWithICCProfileData:profile] autorelease];
  return Joined([NSArray arrayWithObjects:YesNo([[NSColor redColor] colorUsingColorSpace:space] != nil),
                                          YesNo(MegabytesAtMost() - before < 64), nil]);
}

// --- what is no file

static NSColorList* One(NSString* name) {
  NSColorList* list = [[[NSColorList alloc] initWithName:name] autorelease];
  [list setColor:[NSColor redColor] forKey:@"red"];
  return list;
}

static const char* Path(NSString* path) {
  return [path fileSystemRepresentation];
}

static mode_t KindOf(NSString* path) {
  struct stat about;
  return lstat(Path(path), &about) == 0 ? about.st_mode & S_IFMT : 0;
}

SCENARIO("a pipe in a colour folder keeps no program waiting", "", "System") {
  mkfifo(Path([UserColours() stringByAppendingPathComponent:@"Pipe.clr"]), 0600);
  NSMutableArray* names = [NSMutableArray array];
  for (NSColorList* list in [NSColorList availableColorLists]) [names addObject:[list name]];
  return Joined(names);
}

SCENARIO("a pipe is no list", "", "nil") {
  NSString* pipe = InScratch(@"pipe.clr");
  mkfifo(Path(pipe), 0600);
  return [[[NSColorList alloc] initWithName:@"x" fromFile:pipe] autorelease] ? @"a list" : @"nil";
}

SCENARIO("a list is not written onto a pipe, a socket or a device", "",
         "pipe no, still there yes; socket no, still there yes; device no, still there yes") {
  NSString* pipe = InScratch(@"pipe");
  mkfifo(Path(pipe), 0600);
  struct sockaddr_un address = {.sun_family = AF_UNIX};
  strncpy(address.sun_path, "here", sizeof address.sun_path - 1);
  chdir(Path(InScratch(@"")));
  NSString* here = InScratch(@"here");
  int listener = socket(AF_UNIX, SOCK_STREAM, 0);
  if (bind(listener, (struct sockaddr*)&address, sizeof address) != 0) return @"no socket";
  // By a link: where the list does replace it, no device of the machine's is lost.
  NSString* device = InScratch(@"device");
  symlink("/dev/null", Path(device));
  BOOL wrotePipe = [One(@"x") writeToFile:pipe];
  BOOL wroteSocket = [One(@"x") writeToFile:here];
  BOOL wroteDevice = [One(@"x") writeToFile:device];
  return [NSString
      stringWithFormat:@"pipe %@, still there %@; socket %@, still there %@; device %@, still there %@",
                       YesNo(wrotePipe), YesNo(KindOf(pipe) == S_IFIFO), YesNo(wroteSocket),
                       YesNo(KindOf(here) == S_IFSOCK), YesNo(wroteDevice), YesNo(KindOf(device) == S_IFLNK)];
}

// --- links out of a colour folder

// A list's file outside, and what the user's colour folder calls it.
static NSString* LinkedFile(NSString* outside) {
  [One(@"Linked") writeToFile:outside];
  NSString* link = [UserColours() stringByAppendingPathComponent:@"Linked.clr"];
  symlink(Path(outside), Path(link));
  return link;
}

// The same for a folder with the list's file in it.
static NSString* LinkedFolder(NSString* outside) {
  mkdir(Path(outside), 0700);
  [One(@"Linked") writeToFile:[outside stringByAppendingPathComponent:@"Linked.clr"]];
  NSString* link = [UserColours() stringByAppendingPathComponent:@"folder"];
  symlink(Path(outside), Path(link));
  return [link stringByAppendingPathComponent:@"Linked.clr"];
}

SCENARIO("reading follows a link out of the colour folder", "", "yes, yes") {
  NSString* file = LinkedFile(InScratch(@"Outside.clr"));
  NSString* inFolder = LinkedFolder(InScratch(@"outside"));
  return Joined([NSArray
      arrayWithObjects:YesNo([[[NSColorList alloc] initWithName:@"x" fromFile:file] autorelease] != nil),
                       YesNo([[[NSColorList alloc] initWithName:@"x" fromFile:inFolder] autorelease] != nil),
                       nil]);
}

SCENARIO("writing puts a file in a link's place and leaves alone what it led to", "",
         "written yes, a file yes, the other is as it was yes") {
  NSString* outside = InScratch(@"Outside.clr");
  NSString* link = LinkedFile(outside);
  NSData* before = [NSData dataWithContentsOfFile:outside];
  NSColorList* list = One(@"Linked");
  [list setColor:[NSColor blueColor] forKey:@"blue"];
  BOOL written = [list writeToFile:nil];
  return [NSString stringWithFormat:@"written %@, a file %@, the other is as it was %@", YesNo(written),
                                    YesNo(KindOf(link) == S_IFREG),
                                    YesNo([[NSData dataWithContentsOfFile:outside] isEqual:before])];
}

SCENARIO("writing follows no linked folder out of the colour folder", "",
         "written no, the other is as it was yes") {
  NSString* outside = InScratch(@"outside");
  NSString* path = LinkedFolder(outside);
  NSString* file = [outside stringByAppendingPathComponent:@"Linked.clr"];
  NSData* before = [NSData dataWithContentsOfFile:file];
  NSColorList* list = One(@"Linked");
  [list setColor:[NSColor blueColor] forKey:@"blue"];
  BOOL written = [list writeToFile:path];
  return [NSString stringWithFormat:@"written %@, the other is as it was %@", YesNo(written),
                                    YesNo([[NSData dataWithContentsOfFile:file] isEqual:before])];
}

SCENARIO("removing a list takes the link away and leaves alone what it led to", "",
         "link gone yes, file there yes") {
  NSString* outside = InScratch(@"Outside.clr");
  NSString* link = LinkedFile(outside);
  [[[[NSColorList alloc] initWithName:@"Linked" fromFile:link] autorelease] removeFile];
  return [NSString stringWithFormat:@"link gone %@, file there %@", YesNo(KindOf(link) == 0),
                                    YesNo(KindOf(outside) == S_IFREG)];
}

SCENARIO("removing a list follows no linked folder out of the colour folder", "", "still there") {
  NSString* path = LinkedFolder(InScratch(@"outside"));
  [[[[NSColorList alloc] initWithName:@"Linked" fromFile:path] autorelease] removeFile];
  return KindOf(path) == S_IFREG ? @"still there" : @"gone";
}

// The file of a list may have become a folder since.
SCENARIO("removing a list never removes a folder", "", "still there") {
  NSColorList* list = One(@"Mine");
  [list writeToFile:nil];
  NSString* path = [UserColours() stringByAppendingPathComponent:@"Mine.clr"];
  unlink(Path(path));
  mkdir(Path(path), 0700);
  [list removeFile];
  return KindOf(path) == S_IFDIR ? @"still there" : @"gone";
}
