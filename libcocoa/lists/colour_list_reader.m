// libcocoa/lists/colour_list_reader.m - reading what a colour-list file holds, without trusting it.
#import "libcocoa/lists/colour_list_reader.h"

#include <ctype.h>
#include <math.h>
#include <string.h>

#import "libcocoa/colours/colour_archive.h"
#import "libcocoa/colours/exact_colours.h"
#include "libcocoa/files/regular_file.h"

static QVXColorListContents* ContentsOfArchive(NSData* data) {
  size_t room = QVXRoomForImages(data);
  QVXColorListContents* contents = QVXReadColorArchive(data, &room);
  if (![contents isKindOfClass:[QVXColorListContents class]]) return nil;
  NSDictionary* exact = QVXExactColorsBehind(data, &room);
  for (NSString* key in exact)
    if ([contents.colors objectForKey:key]) [contents setColor:[exact objectForKey:key] forKey:key];
  return contents;
}

static NSString* TextOf(const char* bytes, size_t length) {
  NSString* text = [[NSString alloc] initWithBytes:bytes length:length encoding:NSUTF8StringEncoding];
  if (!text) text = [[NSString alloc] initWithBytes:bytes length:length encoding:NSISOLatin1StringEncoding];
  return [text autorelease];
}

// "0 red green blue alpha name": method 0 is calibrated RGB, and there is no other.
static BOOL ReadLine(NSString* line, QVXColorListContents* contents) {
  NSScanner* scanner = [NSScanner scannerWithString:line];
  int method;
  float c[4];
  if (![scanner scanInt:&method] || method != 0) return NO;
  for (int i = 0; i < 4; ++i)
    if (![scanner scanFloat:&c[i]] || !isfinite(c[i])) return NO;
  NSString* key = [[line substringFromIndex:[scanner scanLocation]]
      stringByTrimmingCharactersInSet:[NSCharacterSet whitespaceAndNewlineCharacterSet]];
  if ([key length] == 0) return NO;
  [contents setColor:[NSColor colorWithCalibratedRed:c[0] green:c[1] blue:c[2] alpha:c[3]] forKey:key];
  return YES;
}

// The line that begins there, without its end; `*at` moves behind that, and beyond `end` after the last.
static NSString* TakeLine(const char** at, const char* end) {
  const char* start = *at;
  const char* lineEnd = memchr(start, '\n', (size_t)(end - start));
  if (!lineEnd) lineEnd = end;
  *at = lineEnd + 1;
  return TextOf(start, (size_t)(lineEnd - start));
}

// The number of colours on the first line, then that many lines, and nothing else. Line by line: a large file
// of short lines would fill the memory with strings.
static QVXColorListContents* ContentsOfText(NSData* data) {
  const char* at = [data bytes];
  const char* end = at + [data length];
  NSScanner* first = [NSScanner scannerWithString:TakeLine(&at, end)];
  int count;
  if (![first scanInt:&count] || ![first isAtEnd] || count < 0) return nil;
  QVXColorListContents* contents = [[QVXColorListContents new] autorelease];
  for (int i = 0; i < count; ++i) {
    NSAutoreleasePool* pool = [NSAutoreleasePool new];
    BOOL good = at < end && ReadLine(TakeLine(&at, end), contents);
    [pool release];
    if (!good) return nil;
  }
  for (; at < end; ++at)
    if (!isspace((unsigned char)*at)) return nil;
  return contents;
}

QVXColorListContents* QVXReadColorList(NSString* path) {
  @try {
    size_t size;
    void* bytes = QVXReadRegularFile([path fileSystemRepresentation], QVXLargestColorList, &size);
    if (!bytes) return nil;
    NSData* data = [NSData dataWithBytesNoCopy:bytes length:size freeWhenDone:YES];
    return QVXIsColorArchive(data) ? ContentsOfArchive(data) : ContentsOfText(data);
  } @catch (NSException* exception) {
    return nil;  // a path that no file can have, or damaged data: it is no colour list
  }
}
