// tests/libcocoa/colours/list_path_scenarios.m - the names and the paths that a list's file may have.
#import "tests/libcocoa/colours/scenario.h"

#include <dirent.h>
#include <stdlib.h>
#include <unistd.h>

@interface NSColorList (Private)
+ (void)_loadAvailableColorLists:(NSNotification*)notification;
@end

static NSColorList* Named(NSString* name) {
  NSColorList* list = [[[NSColorList alloc] initWithName:name] autorelease];
  [list setColor:[NSColor redColor] forKey:@"red"];
  return list;
}

static NSColorList* From(NSString* path, NSString* name) {
  return [[[NSColorList alloc] initWithName:name fromFile:path] autorelease];
}

static NSString* Colours(NSColorList* list) {
  return list ? [NSString stringWithFormat:@"%u", (unsigned)[[list allKeys] count]] : @"nil";
}

static NSString* Names(void) {
  NSMutableArray* names = [NSMutableArray array];
  for (NSColorList* list in [NSColorList availableColorLists]) [names addObject:[list name]];
  return Joined(names);
}

static BOOL Exists(NSString* path) {
  return [[NSFileManager defaultManager] fileExistsAtPath:path];
}

static NSString* Folder(NSString* name) {
  [[NSFileManager defaultManager] createDirectoryAtPath:InScratch(name) attributes:nil];
  return InScratch(name);
}

// GNUstep's own listing shows a backslash as a slash.
static NSString* FilesIn(NSString* folder) {
  NSMutableArray* names = [NSMutableArray array];
  DIR* open = opendir([folder fileSystemRepresentation]);
  for (struct dirent* each; (each = readdir(open));)
    if (each->d_name[0] != '.') [names addObject:[NSString stringWithUTF8String:each->d_name]];
  closedir(open);
  return Joined(names);
}

// Whether the list of that name is written into a folder and read back, and what lies there then.
static NSString* ThereAndBack(NSString* name) {
  NSString* folder = Folder(@"folder");
  BOOL written = [Named(name) writeToFile:folder];
  return
      [NSString stringWithFormat:@"%@ %@ [%@]", YesNo(written), Colours(From(folder, name)), FilesIn(folder)];
}

SCENARIO("a list named like a drive has a file of its own", "yes 1 [palette.clr]", "yes 1 [C:palette.clr]") {
  return ThereAndBack(@"C:palette");
}
SCENARIO("a backslash in a list's name is no separator", "", "yes 1 [a\\b.clr]") {
  return ThereAndBack(@"a\\b");
}
SCENARIO("a tilde in a list's name is no home", "", "yes 1 [~.clr]") {
  return ThereAndBack(@"~");
}
SCENARIO("a zero in a list's name does not end it", "", "no nil []") {
  const unichar name[] = {'a', 0, 'b'};
  return ThereAndBack([NSString stringWithCharacters:name length:3]);
}
// As plain text it is one letter with a mark, and no slash is found in it.
SCENARIO("a slash that bears a mark is a slash", "", "no nil []") {
  const unichar name[] = {'.', '.', '/', 0x308, 'x'};
  return ThereAndBack([NSString stringWithCharacters:name length:5]);
}

// "/tmp/x" and half a character, which GNUstep's own strings don't take.
@interface BrokenPath : NSString
@end
@implementation BrokenPath
- (NSUInteger)length {
  return 7;
}
- (unichar)characterAtIndex:(NSUInteger)index {
  return index < 6 ? (unichar) "/tmp/x"[index] : 0xD800;
}
@end

SCENARIO("a path that no file can have is answered with no, and nil", "", "no nil, no nil, no nil") {
  const unichar cut[] = {'/', 't', 'm', 'p', '/', 'x', 0, 'y'};
  NSMutableArray* answers = [NSMutableArray array];
  for (NSString *path in [NSArray arrayWithObjects:[NSString stringWithCharacters:cut length:8],
                                                   [[BrokenPath new] autorelease], @"", nil])
    [answers addObject:[NSString stringWithFormat:@"%@ %@", YesNo([Named(@"x") writeToFile:path]),
                                                  Colours(From(path, @"x"))]];
  return Joined(answers);
}

SCENARIO("a list written by a relative path is available once", "", "System, Mine, Other") {
  [Named(@"Mine") writeToFile:nil];
  chdir([UserColours() fileSystemRepresentation]);
  [Named(@"Other") writeToFile:@"Other.clr"];
  [NSColorList _loadAvailableColorLists:[NSNotification notificationWithName:@"again" object:nil]];
  return Names();
}

SCENARIO("a list read by a relative path stays that file's where the program goes elsewhere", "", "yes") {
  NSString* own = [UserColours() stringByAppendingPathComponent:@"Palette.clr"];
  [Named(@"Palette") writeToFile:own];
  chdir([Folder(@"folder") fileSystemRepresentation]);
  [Named(@"Palette") writeToFile:@"Palette.clr"];
  NSColorList* list = From(@"Palette.clr", @"Palette");
  chdir([UserColours() fileSystemRepresentation]);
  [list removeFile];
  return YesNo(Exists(own));
}

SCENARIO("a link leads no write out of a colour folder, however the path is spelled", "", "no, no, no, no") {
  symlink([Folder(@"outside") fileSystemRepresentation],
          [[UserColours() stringByAppendingPathComponent:@"out"] fileSystemRepresentation]);
  chdir([UserColours() fileSystemRepresentation]);
  NSString* above = [UserColours() stringByDeletingLastPathComponent];
  NSMutableArray* answers = [NSMutableArray array];
  for (NSString *path in [NSArray
           arrayWithObjects:@"out/x.clr", @"out", [above stringByAppendingString:@"//Colors/./out/x.clr"],
                            [above stringByAppendingString:@"/Colors/out/../x.clr"], nil])
    [answers addObject:YesNo([Named(@"x") writeToFile:path])];
  return Joined(answers);
}

SCENARIO("a list in a file of the far future is read, and written again", "", "yes 1 yes") {
  NSString* path = InScratch(@"palette.clr");
  BOOL first = [Named(@"x") writeToFile:path];
  if (system([[NSString stringWithFormat:@"touch -d 2100-01-01 '%@'", path] UTF8String]) != 0)
    return @"no touch";
  return [NSString stringWithFormat:@"%@ %@ %@", YesNo(first), Colours(From(path, @"x")),
                                    YesNo([Named(@"x") writeToFile:path])];
}

// A profile of 30 MiB; the last bytes, which belong to no tag, make it another one each time.
static NSColorSpace* Large(unsigned char number) {
  enum { kSize = 30 * 1024 * 1024 };
  NSMutableData* data = [NSMutableData dataWithData:ProfileNamed(@"a98.icc")];
  [data setLength:kSize];
  unsigned char* bytes = [data mutableBytes];
  bytes[0] = kSize >> 24;
  bytes[1] = (kSize >> 16) & 0xFF;
  bytes[2] = (kSize >> 8) & 0xFF;
  bytes[3] = kSize & 0xFF;
  bytes[kSize - 1] = number;
  return [[[NSColorSpace alloc] initWithICCProfileData:data] autorelease];
}

SCENARIO("a list is not written that could not be read again", "", "yes 2, no 2") {
  NSColorList* list = [[[NSColorList alloc] initWithName:@"x"] autorelease];
  NSString* path = InScratch(@"palette.clr");
  NSMutableArray* answers = [NSMutableArray array];
  for (unsigned char i = 0; i < 3; ++i) {
    [list setColor:[NSColor colorWithColorSpace:Large(i) components:(const CGFloat[]){0, 0.5, 1, 1} count:4]
            forKey:[NSString stringWithFormat:@"%u", i]];
    if (i == 0) continue;
    BOOL written = [list writeToFile:path];
    [answers addObject:[NSString stringWithFormat:@"%@ %@", YesNo(written), Colours(From(path, @"x"))]];
  }
  return Joined(answers);
}
