// libcocoa/lists/colour_list_reader.m - reading what a colour-list file holds, without trusting it.
#import "libcocoa/lists/colour_list_reader.h"

#include <math.h>

#import "libcocoa/colours/colour_archive.h"
#import "libcocoa/colours/exact_colours.h"
#import "libcocoa/lists/NSColorList+Available.h"

enum { kLargestFile = 64 * 1024 * 1024 };

// A list with a pattern that another program wrote: only GNUstep can read its image. Damaged data can crash
// its reader, so it is not used while the lists in the colour folders are loaded, which every program does.
static QVXColorListContents* ContentsByGNUstep(NSData* data) {
  if (QVXIsLoadingLists()) return nil;
  NSColorList* list = [NSUnarchiver unarchiveObjectWithData:data];
  if (![list isKindOfClass:[NSColorList class]]) return nil;
  QVXColorListContents* contents = [[QVXColorListContents new] autorelease];
  contents.name = [list name];
  for (NSString* key in [list allKeys]) {
    id color = [list colorWithKey:key];
    if (![color isKindOfClass:[NSColor class]]) return nil;
    [contents setColor:color forKey:key];
  }
  return contents;
}

static QVXColorListContents* ContentsOfArchive(NSData* data) {
  BOOL hasPattern = NO;
  QVXColorListContents* contents = QVXReadColorArchive(data, &hasPattern);
  if (hasPattern) contents = ContentsByGNUstep(data);
  if (![contents isKindOfClass:[QVXColorListContents class]]) return nil;
  NSDictionary* exact = QVXExactColorsBehind(data);
  for (NSString* key in exact)
    if ([contents.colors objectForKey:key]) [contents setColor:[exact objectForKey:key] forKey:key];
  return contents;
}

static NSString* TextOf(NSData* data) {
  NSString* text = [[NSString alloc] initWithData:data encoding:NSUTF8StringEncoding];
  if (!text) text = [[NSString alloc] initWithData:data encoding:NSISOLatin1StringEncoding];
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
  [scanner scanCharactersFromSet:[NSCharacterSet whitespaceCharacterSet] intoString:NULL];
  NSString* key = [[line substringFromIndex:[scanner scanLocation]]
      stringByTrimmingCharactersInSet:[NSCharacterSet whitespaceAndNewlineCharacterSet]];
  if ([key length] == 0) return NO;
  [contents setColor:[NSColor colorWithCalibratedRed:c[0] green:c[1] blue:c[2] alpha:c[3]] forKey:key];
  return YES;
}

// The number of colours on the first line, then that many lines, and nothing else.
static QVXColorListContents* ContentsOfText(NSData* data) {
  NSArray* lines = [TextOf(data) componentsSeparatedByString:@"\n"];
  NSScanner* first = [NSScanner scannerWithString:[lines count] ? [lines objectAtIndex:0] : @""];
  int count;
  if (![first scanInt:&count] || ![first isAtEnd] || count < 0 || (NSUInteger)count >= [lines count])
    return nil;
  QVXColorListContents* contents = [[QVXColorListContents new] autorelease];
  NSCharacterSet* blank = [NSCharacterSet whitespaceAndNewlineCharacterSet];
  for (NSUInteger i = 1; i < [lines count]; ++i) {
    NSString* line = [lines objectAtIndex:i];
    if (i <= (NSUInteger)count ? !ReadLine(line, contents)
                               : [[line stringByTrimmingCharactersInSet:blank] length] > 0)
      return nil;
  }
  return contents;
}

QVXColorListContents* QVXReadColorList(NSData* data) {
  if ([data length] == 0 || [data length] > kLargestFile) return nil;
  @try {
    return QVXIsColorArchive(data) ? ContentsOfArchive(data) : ContentsOfText(data);
  } @catch (NSException* exception) {
    return nil;  // damaged: it is no colour list
  }
}
