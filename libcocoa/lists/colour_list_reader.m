// libcocoa/lists/colour_list_reader.m - reading what a colour-list file holds, without trusting it.
#include <math.h>
#include <string.h>

#import "libcocoa/colours/colour_archive.h"
#import "libcocoa/colours/exact_colours.h"

// A file above this size is no colour list.
enum { kLargestFile = 64 * 1024 * 1024 };

static const char kArchiveMagic[] = "GNUstep archive";

@implementation QVXColourListContents

- (id)init {
  self = [super init];
  colors = [NSMutableDictionary new];
  keys = [NSMutableArray new];
  return self;
}

- (void)dealloc {
  [name release];
  [colors release];
  [keys release];
  [super dealloc];
}

// A list with a pattern that another program wrote: only GNUstep can read its image. Its reader is not proof
// against damage, so that is not done while the lists in the colour folders are loaded, which happens in
// every program.
static QVXColourListContents* ContentsByGNUstep(NSData* data) {
  if (QVXIsLoadingLists()) return nil;
  NSColorList* list = [NSUnarchiver unarchiveObjectWithData:data];
  if (![list isKindOfClass:[NSColorList class]]) return nil;
  QVXColourListContents* contents = [[QVXColourListContents new] autorelease];
  contents->name = [[list name] copy];
  for (NSString* key in [list allKeys]) {
    id color = [list colorWithKey:key];
    if (![color isKindOfClass:[NSColor class]]) return nil;
    [contents->colors setObject:color forKey:key];
    [contents->keys addObject:key];
  }
  return contents;
}

+ (QVXColourListContents*)qvx_contentsOfArchive:(NSData*)data {
  BOOL hasPattern = NO;
  QVXColourListContents* contents = QVXReadColourArchive(data, &hasPattern);
  if (hasPattern) contents = ContentsByGNUstep(data);
  if (![contents isKindOfClass:[QVXColourListContents class]]) return nil;
  NSDictionary* exact = QVXExactColoursBehind(data);
  for (NSString* key in exact)
    if ([contents->colors objectForKey:key]) [contents->colors setObject:[exact objectForKey:key] forKey:key];
  return contents;
}

static NSString* TextOf(NSData* data) {
  NSString* text = [[NSString alloc] initWithData:data encoding:NSUTF8StringEncoding];
  if (!text) text = [[NSString alloc] initWithData:data encoding:NSISOLatin1StringEncoding];
  return [text autorelease];
}

// "0 red green blue alpha name": method 0 is calibrated RGB, and there is no other.
static BOOL ReadLine(NSString* line, QVXColourListContents* contents) {
  NSScanner* scanner = [NSScanner scannerWithString:line];
  int method;
  float c[4];
  if (![scanner scanInt:&method] || method != 0) return NO;
  for (int i = 0; i < 4; i++)
    if (![scanner scanFloat:&c[i]] || !isfinite(c[i])) return NO;
  [scanner scanCharactersFromSet:[NSCharacterSet whitespaceCharacterSet] intoString:NULL];
  NSString* key = [[line substringFromIndex:[scanner scanLocation]]
      stringByTrimmingCharactersInSet:[NSCharacterSet whitespaceAndNewlineCharacterSet]];
  if ([key length] == 0) return NO;
  if (![contents->colors objectForKey:key]) [contents->keys addObject:key];
  [contents->colors setObject:[NSColor colorWithCalibratedRed:c[0] green:c[1] blue:c[2] alpha:c[3]]
                       forKey:key];
  return YES;
}

// The number of colours on the first line, then that many lines, and nothing else.
+ (QVXColourListContents*)qvx_contentsOfText:(NSData*)data {
  NSArray* lines = [TextOf(data) componentsSeparatedByString:@"\n"];
  NSScanner* first = [NSScanner scannerWithString:[lines count] ? [lines objectAtIndex:0] : @""];
  int count;
  if (![first scanInt:&count] || ![first isAtEnd] || count < 0 || (NSUInteger)count >= [lines count])
    return nil;
  QVXColourListContents* contents = [[QVXColourListContents new] autorelease];
  NSCharacterSet* blank = [NSCharacterSet whitespaceAndNewlineCharacterSet];
  for (NSUInteger i = 1; i < [lines count]; i++) {
    NSString* line = [lines objectAtIndex:i];
    if (i <= (NSUInteger)count ? !ReadLine(line, contents)
                               : [[line stringByTrimmingCharactersInSet:blank] length] > 0)
      return nil;
  }
  return contents;
}

+ (QVXColourListContents*)contentsOfData:(NSData*)data {
  size_t size = [data length];
  const char* bytes = [data bytes];
  if (size == 0 || size > kLargestFile) return nil;
  QVXColourListContents* contents = nil;
  @try {
    if (size >= strlen(kArchiveMagic) && memcmp(bytes, kArchiveMagic, strlen(kArchiveMagic)) == 0)
      contents = [self qvx_contentsOfArchive:data];
    else
      contents = [self qvx_contentsOfText:data];
  } @catch (NSException* exception) {
    return nil;  // damaged: it is no colour list
  }
  return contents;
}

@end
