// libcocoa/colours/exact_colours.m - colours in spaces with a profile, written so that nothing is lost.
#import "libcocoa/colours/exact_colours.h"

#include <stdlib.h>
#include <string.h>

#import "libcocoa/colours/colour_archive.h"
#import "libcocoa/colours/colour_conversion.h"
#import "libcocoa/colours/gnustep_colours.h"
#include "libcocoa/foundation/CFString.h"
#include "libcocoa/foundation/text_encoding.h"
#include "libcocoa/profiles/hash.h"

static const char kMagic[8] = {'Q', 'V', 'X', 'e', 'x', 'a', 'c', 't'};
static NSString* const kCoderKey = @"QVXExactColour";
static NSString* const kSoleKey = @"";
enum { kFirstProfile = 256, kMostProfiles = 256, kWord = 4 };

// --- writing

static void AppendWord(NSMutableData* data, uint32_t word) {
  const unsigned char bytes[kWord] = {(unsigned char)word, (unsigned char)(word >> 8),
                                      (unsigned char)(word >> 16), (unsigned char)(word >> 24)};
  [data appendBytes:bytes length:sizeof bytes];
}

static uint32_t Checksum(const unsigned char* bytes, size_t size) {
  uint32_t sum = QVXHashOfNothing;
  for (size_t i = 0; i < size; ++i) sum = QVXHashWith(sum, bytes[i]);
  return sum;
}

static void AppendBlock(NSMutableData* data, NSData* block) {
  AppendWord(data, (uint32_t)[block length]);
  [data appendData:block];
}

// NO, and nothing is appended, if there are as many profiles as there may be.
static BOOL AppendColor(NSMutableData* data, NSData* name, QVXProfileColor* color, NSMutableArray* profiles) {
  NSColorSpace* space = [color colorSpace];
  uint32_t number = QVXKindOfSpace(space);
  if (number == QVXOtherSpace) {
    NSData* profile = [space ICCProfileData];
    NSUInteger index = [profiles indexOfObject:profile];
    if (index == NSNotFound && [profiles count] == kMostProfiles) return NO;
    if (index == NSNotFound) {
      index = [profiles count];
      [profiles addObject:profile];
    }
    number = kFirstProfile + (uint32_t)index;
  }
  CGFloat components[QVXMostComponents];
  [color getComponents:components];
  AppendBlock(data, name);
  AppendWord(data, number);
  AppendWord(data, (uint32_t)[color numberOfComponents]);
  for (NSInteger i = 0; i < [color numberOfComponents]; ++i) {
    uint32_t bits;
    memcpy(&bits, &components[i], sizeof bits);
    AppendWord(data, bits);
  }
  return YES;
}

static BOOL IsPattern(NSColor* color) {
  return [color isKindOfClass:[GSPatternColor class]];
}

NSColor* QVXReadableTwin(NSColor* color) {
  return IsPattern(color) ? QVXUnreadablePattern() : color;
}

// The number of colours, then the colours themselves.
static void AppendAll(NSMutableData* data, uint32_t count, NSData* appended) {
  AppendWord(data, count);
  [data appendData:appended];
}

NSData* QVXArchiveWithExactColors(NSData* archive, NSDictionary* colors) {
  NSMutableArray* profiles = [NSMutableArray array];
  NSMutableData* exact = [NSMutableData data];
  NSMutableData* patterns = [NSMutableData data];
  uint32_t exactCount = 0;
  uint32_t patternCount = 0;
  for (NSString* key in colors) {
    id color = [colors objectForKey:key];
    NSData* name = [key dataUsingEncoding:NSUTF8StringEncoding];
    if (!name) continue;
    if ([color isKindOfClass:[QVXProfileColor class]]) {
      if (AppendColor(exact, name, color, profiles)) ++exactCount;
    } else if (IsPattern(color)) {
      AppendBlock(patterns, name);
      AppendBlock(patterns, [NSArchiver archivedDataWithRootObject:color]);
      ++patternCount;
    }
  }
  if (exactCount == 0 && patternCount == 0) return archive;
  NSMutableData* whole = [NSMutableData dataWithData:archive];
  AppendWord(whole, (uint32_t)[profiles count]);
  for (NSUInteger i = 0; i < [profiles count]; ++i) AppendBlock(whole, [profiles objectAtIndex:i]);
  AppendAll(whole, exactCount, exact);
  AppendAll(whole, patternCount, patterns);
  AppendWord(whole, Checksum([whole bytes], [whole length]));
  AppendWord(whole, (uint32_t)([whole length] - [archive length]));
  [whole appendBytes:kMagic length:sizeof kMagic];
  return whole;
}

// --- reading: damaged data ends in `failed`, never beyond the end

typedef struct {
  const unsigned char* at;
  size_t left;
  BOOL failed;
} Cursor;

static const unsigned char* Take(Cursor* cursor, size_t size) {
  if (cursor->failed || size > cursor->left) {
    cursor->failed = YES;
    return NULL;
  }
  const unsigned char* bytes = cursor->at;
  cursor->at += size;
  cursor->left -= size;
  return bytes;
}

static uint32_t TakeWord(Cursor* cursor) {
  const unsigned char* b = Take(cursor, kWord);
  return b ? b[0] | (uint32_t)b[1] << 8 | (uint32_t)b[2] << 16 | (uint32_t)b[3] << 24 : 0;
}

static NSArray* TakeSpaces(Cursor* cursor) {
  NSMutableArray* spaces = [NSMutableArray array];
  uint32_t count = TakeWord(cursor);
  if (count > kMostProfiles) cursor->failed = YES;
  for (uint32_t i = 0; i < count && !cursor->failed; ++i) {
    uint32_t size = TakeWord(cursor);
    const unsigned char* bytes = Take(cursor, size);
    if (!bytes) break;
    NSColorSpace* space = [[NSColorSpace alloc] initWithICCProfileData:[NSData dataWithBytes:bytes
                                                                                      length:size]];
    if (space)
      [spaces addObject:space];
    else
      cursor->failed = YES;
    [space release];
  }
  return spaces;
}

// Not by NSString's own method, which drops a first U+FEFF.
static NSString* TakeKey(Cursor* cursor) {
  uint32_t size = TakeWord(cursor);
  const unsigned char* bytes = Take(cursor, size);
  UniChar* units = bytes ? malloc(size * sizeof *units) : NULL;
  size_t count = 0;
  CFStringRef key = NULL;
  if (units && QVXDecodeText(kCFStringEncodingUTF8, (const char*)bytes, size, units, &count))
    key = CFStringCreateWithCharacters(NULL, units, (CFIndex)count);
  free(units);
  return [(NSString*)key autorelease];
}

static void TakeColor(Cursor* cursor, NSArray* spaces, NSMutableDictionary* colors) {
  NSString* key = TakeKey(cursor);
  uint32_t number = TakeWord(cursor);
  uint32_t count = TakeWord(cursor);
  const unsigned char* bits = count <= QVXMostComponents ? Take(cursor, count * kWord) : NULL;
  NSColorSpace* space = nil;
  if (number < kFirstProfile)
    space = QVXStockNameOfSpace(QVXSpaceOfKind((int)number)) ? nil : QVXSpaceOfKind((int)number);
  else if (number - kFirstProfile < [spaces count])
    space = [spaces objectAtIndex:number - kFirstProfile];
  cursor->failed =
      cursor->failed || !bits || !key || !space || count != (uint32_t)[space numberOfColorComponents] + 1;
  if (cursor->failed) return;
  CGFloat components[QVXMostComponents];
  memcpy(components, bits, count * kWord);
  // By the factory: a profile may be that of a space that GNUstep has a kind of its own for.
  NSColor* color = QVXColorWithComponents(space, components);
  if (color) [colors setObject:color forKey:key];
}

static void TakePattern(Cursor* cursor, NSMutableDictionary* colors, size_t* room) {
  NSString* key = TakeKey(cursor);
  uint32_t size = TakeWord(cursor);
  const unsigned char* bytes = Take(cursor, size);
  cursor->failed = cursor->failed || !key;
  if (cursor->failed) return;
  id color = QVXReadColorArchive([NSData dataWithBytes:bytes length:size], room);
  if (IsPattern(color)) [colors setObject:color forKey:key];
}

NSDictionary* QVXExactColorsBehind(NSData* archive, size_t* room) {
  NSMutableDictionary* colors = [NSMutableDictionary dictionary];
  const unsigned char* bytes = [archive bytes];
  size_t size = [archive length];
  size_t footer = 2 * kWord + sizeof kMagic;
  if (size < footer || memcmp(bytes + size - sizeof kMagic, kMagic, sizeof kMagic) != 0) return colors;
  size_t summed = size - footer;
  Cursor end = {bytes + summed, 2 * kWord, NO};
  uint32_t sum = TakeWord(&end);
  size_t trailer = TakeWord(&end) - (size_t)kWord;  // without the checksum; too much if there is none
  if (trailer > summed || sum != Checksum(bytes, summed)) return colors;
  Cursor cursor = {bytes + summed - trailer, trailer, NO};
  NSArray* spaces = TakeSpaces(&cursor);
  uint32_t count = TakeWord(&cursor);
  for (uint32_t i = 0; i < count && !cursor.failed; ++i) TakeColor(&cursor, spaces, colors);
  count = TakeWord(&cursor);
  for (uint32_t i = 0; i < count && !cursor.failed; ++i) TakePattern(&cursor, colors, room);
  return colors;
}

void QVXEncodeExactColor(QVXProfileColor* color, NSCoder* coder) {
  NSData* data = QVXArchiveWithExactColors([NSData data], [NSDictionary dictionaryWithObject:color
                                                                                      forKey:kSoleKey]);
  [coder encodeObject:data forKey:kCoderKey];
}

NSColor* QVXDecodeExactColor(NSCoder* coder) {
  if (![coder containsValueForKey:kCoderKey]) return nil;
  NSData* data = [coder decodeObjectForKey:kCoderKey];
  if (![data isKindOfClass:[NSData class]]) return nil;
  size_t room = QVXRoomForImages(data);
  return [QVXExactColorsBehind(data, &room) objectForKey:kSoleKey];
}
