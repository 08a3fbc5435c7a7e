// libcocoa/colours/colour_archive.m - reading GNUstep's unkeyed archives of colours and colour lists, without
// trusting them.
//
// After the header come items, each led by a tag. Its low five bits are the type; for numbers the next two
// bits are the size, for objects and classes the size of a running number, and the top bit says that the
// number was seen before.
#import "libcocoa/colours/colour_archive.h"

#include <string.h>

static const char kMagic[] = "GNUstep archive";
enum { kHeaderSize = 15 + 4 * 9 };  // the magic, then four numbers of eight digits and a colon

enum {
  kTypeMask = 0x1F,
  kSizeMask = 0x60,
  kSeenBefore = 0x80,
  kTypeNone = 0x00,
  kTypeChar = 0x01,
  kTypeUnsignedChar = 0x02,
  kTypeUnsignedShort = 0x04,
  kTypeInt = 0x05,
  kTypeUnsignedInt = 0x06,
  kTypeFloat = 0x0B,
  kTypeDouble = 0x0C,
  kTypeObject = 0x10,
  kTypeClass = 0x11,
  kTypeArray = 0x15,
};
enum { kListVersion = 2, kColorVersion = 3, kDeepest = 16 };

@interface QVXColourArchiveReader : NSObject {
 @public
  const uint8_t* at;
  const uint8_t* end;
  BOOL failed;
  BOOL hasPattern;
  int depth;
  NSMutableArray* objects;   // by running number; NSNull while an object is being read
  NSMutableArray* classes;   // names, by running number
  NSMutableArray* versions;  // NSNumbers, by the same
}
- (id)readObject;
@end

@implementation QVXColourArchiveReader

- (id)init {
  self = [super init];
  objects = [NSMutableArray new];
  classes = [NSMutableArray new];
  versions = [NSMutableArray new];
  return self;
}

- (void)dealloc {
  [objects release];
  [classes release];
  [versions release];
  [super dealloc];
}

- (id)fail {
  failed = YES;
  return nil;
}

// Bytes of the archive, NULL and failure if there are not so many left.
- (const uint8_t*)take:(size_t)size {
  if (failed || size > (size_t)(end - at)) {
    failed = YES;
    return NULL;
  }
  const uint8_t* bytes = at;
  at += size;
  return bytes;
}

- (uint64_t)takeNumber:(size_t)size {
  const uint8_t* bytes = [self take:size];
  uint64_t number = 0;
  for (size_t i = 0; bytes && i < size; i++) number = number << 8 | bytes[i];
  return number;
}

- (uint8_t)takeTag {
  return (uint8_t)[self takeNumber:1];
}

// The running number behind a tag of an object or a class.
- (uint32_t)takeReference:(uint8_t)tag {
  static const size_t sizes[] = {0, 1, 2, 4};
  return (uint32_t)[self takeNumber:sizes[(tag & kSizeMask) >> 5]];
}

// A count, which is never more than what could follow it.
- (uint32_t)takeCount {
  uint8_t tag = [self takeTag];
  if ((tag & kTypeMask) != kTypeUnsignedInt) failed = YES;
  uint64_t count = [self takeNumber:(size_t)2 << ((tag & kSizeMask) >> 5)];
  if (count > (uint64_t)(end - at)) failed = YES;
  return failed ? 0 : (uint32_t)count;
}

- (CGFloat)takeFloat {
  uint8_t tag = [self takeTag];
  if (tag == kTypeFloat) {
    uint32_t bits = (uint32_t)[self takeNumber:sizeof bits];
    float value;
    memcpy(&value, &bits, sizeof value);
    return value;
  }
  if (tag != kTypeDouble) failed = YES;
  uint64_t bits = [self takeNumber:sizeof bits];
  double value;
  memcpy(&value, &bits, sizeof value);
  return (CGFloat)value;
}

// The head of an array of the given length; YES if it is there.
- (BOOL)takeArrayOf:(uint32_t)count {
  if ([self takeTag] != kTypeArray || [self takeNumber:sizeof count] != count) failed = YES;
  return !failed;
}

// --- classes: a name and a version, then its superclasses as far as they are new, then an empty tag

- (void)takeNewClass:(uint8_t)tag {
  uint32_t number = [self takeReference:tag];
  size_t length = (size_t)[self takeNumber:2];
  const uint8_t* bytes = [self take:length];
  uint32_t version = (uint32_t)[self takeNumber:sizeof version];
  NSString* name = bytes ? [[[NSString alloc] initWithBytes:bytes
                                                     length:length
                                                   encoding:NSASCIIStringEncoding] autorelease]
                         : nil;
  if (!name || number != [classes count] + 1) failed = YES;
  if (failed) return;
  [classes addObject:name];
  [versions addObject:[NSNumber numberWithUnsignedInt:version]];
}

// The number of the class in the tables, from 1; 0 on failure.
- (uint32_t)takeClass {
  uint8_t tag = [self takeTag];
  if ((tag & kTypeMask) != kTypeClass) failed = YES;
  if (failed) return 0;
  if (tag & kSeenBefore) {
    uint32_t number = [self takeReference:tag];
    if (number == 0 || number > [classes count]) failed = YES;
    return failed ? 0 : number;
  }
  uint32_t number = (uint32_t)[classes count] + 1;
  [self takeNewClass:tag];
  for (tag = [self takeTag]; !failed && tag != kTypeNone; tag = [self takeTag]) {
    if ((tag & (kTypeMask | kSeenBefore)) != kTypeClass) failed = YES;
    if (!failed) [self takeNewClass:tag];
  }
  return failed ? 0 : number;
}

// --- objects

- (NSString*)readString {
  uint32_t length = [self takeCount];
  if (length == 0) return @"";
  uint8_t tag = [self takeTag];
  if ((tag & kTypeMask) != kTypeInt) return [self fail];
  uint32_t encoding = (uint32_t)[self takeNumber:(size_t)2 << ((tag & kSizeMask) >> 5)];
  if (![self takeArrayOf:length]) return nil;
  BOOL wide = encoding == NSUnicodeStringEncoding;
  uint8_t element = [self takeTag] & kTypeMask;
  if (wide ? element != kTypeUnsignedShort : element != kTypeUnsignedChar && element != kTypeChar)
    return [self fail];
  if (!wide && encoding != NSASCIIStringEncoding && encoding != NSUTF8StringEncoding &&
      encoding != NSISOLatin1StringEncoding)
    return [self fail];
  size_t size = wide ? (size_t)length * 2 : length;
  const uint8_t* bytes = [self take:size];
  if (!bytes) return nil;
  NSStringEncoding used = wide ? NSUTF16BigEndianStringEncoding : encoding;
  NSString* text = [[[NSString alloc] initWithBytes:bytes length:size encoding:used] autorelease];
  return text ? text : [self fail];
}

- (NSDictionary*)readDictionary {
  uint32_t count = [self takeCount];
  NSMutableDictionary* dictionary = [NSMutableDictionary dictionary];
  for (uint32_t i = 0; i < count && !failed; i++) {
    id key = [self readObject];
    id value = [self readObject];
    if (![key isKindOfClass:[NSString class]] || !value) return [self fail];
    [dictionary setObject:value forKey:key];
  }
  return dictionary;
}

- (NSArray*)readArray {
  uint32_t count = [self takeCount];
  NSMutableArray* array = [NSMutableArray array];
  if (count > 0) [self takeArrayOf:count];
  for (uint32_t i = 0; i < count && !failed; i++) {
    id member = [self readObject];
    if (!member) return [self fail];
    [array addObject:member];
  }
  return array;
}

- (NSColor*)readNamedColor {
  NSString* catalogue = [self readObject];
  NSString* name = [self readObject];
  if (![catalogue isKindOfClass:[NSString class]] || ![name isKindOfClass:[NSString class]])
    return [self fail];
  return [NSColor colorWithCatalogName:catalogue colorName:name];
}

- (NSColor*)readColor {
  NSString* kind = [self readObject];
  CGFloat c[7] = {0};
  unsigned count = 0;
  if ([kind isEqual:NSNamedColorSpace]) return [self readNamedColor];
  if ([kind isEqual:NSPatternColorSpace]) hasPattern = !failed;
  if ([kind isEqual:NSDeviceWhiteColorSpace] || [kind isEqual:NSCalibratedWhiteColorSpace]) count = 2;
  if ([kind isEqual:NSDeviceCMYKColorSpace]) count = 5;
  if ([kind isEqual:NSDeviceRGBColorSpace] || [kind isEqual:NSCalibratedRGBColorSpace]) count = 7;
  for (unsigned i = 0; i < count; i++) c[i] = [self takeFloat];
  if (failed || count == 0) return [self fail];
  if ([kind isEqual:NSDeviceWhiteColorSpace]) return [NSColor colorWithDeviceWhite:c[0] alpha:c[1]];
  if ([kind isEqual:NSCalibratedWhiteColorSpace]) return [NSColor colorWithCalibratedWhite:c[0] alpha:c[1]];
  if ([kind isEqual:NSDeviceCMYKColorSpace])
    return [NSColor colorWithDeviceCyan:c[0] magenta:c[1] yellow:c[2] black:c[3] alpha:c[4]];
  // Between blue and alpha stand hue, saturation and brightness; they follow from the rest, but for greys: a
  // grey made from a hue keeps it.
  BOOL grey = c[0] == c[1] && c[1] == c[2];
  if ([kind isEqual:NSDeviceRGBColorSpace])
    return grey ? [NSColor colorWithDeviceHue:c[3] saturation:c[4] brightness:c[5] alpha:c[6]]
                : [NSColor colorWithDeviceRed:c[0] green:c[1] blue:c[2] alpha:c[6]];
  return grey ? [NSColor colorWithCalibratedHue:c[3] saturation:c[4] brightness:c[5] alpha:c[6]]
              : [NSColor colorWithCalibratedRed:c[0] green:c[1] blue:c[2] alpha:c[6]];
}

// Every key a string, each once, every value a colour: else there is no list.
- (QVXColourListContents*)readList {
  NSString* name = [self readObject];
  NSDictionary* colors = [self readObject];
  NSArray* keys = [self readObject];
  if (failed || (name && ![name isKindOfClass:[NSString class]]) ||
      ![colors isKindOfClass:[NSDictionary class]] || ![keys isKindOfClass:[NSArray class]] ||
      [colors count] != [keys count])
    return [self fail];
  QVXColourListContents* contents = [[QVXColourListContents new] autorelease];
  contents->name = [name copy];
  for (id key in keys) {
    id color = [key isKindOfClass:[NSString class]] ? [colors objectForKey:key] : nil;
    if (![color isKindOfClass:[NSColor class]] || [contents->colors objectForKey:key]) return [self fail];
    [contents->colors setObject:color forKey:key];
    [contents->keys addObject:key];
  }
  return contents;
}

- (id)readBodyOfClass:(uint32_t)number {
  NSString* name = [classes objectAtIndex:number - 1];
  unsigned version = [[versions objectAtIndex:number - 1] unsignedIntValue];
  if ([name isEqual:@"NSString"] || [name isEqual:@"NSMutableString"]) return [self readString];
  if ([name isEqual:@"NSDictionary"] || [name isEqual:@"NSMutableDictionary"]) return [self readDictionary];
  if ([name isEqual:@"NSArray"] || [name isEqual:@"NSMutableArray"]) return [self readArray];
  if ([name isEqual:@"NSColor"] && version == kColorVersion) return [self readColor];
  if ([name isEqual:@"NSColorList"] && version == kListVersion) return [self readList];
  return [self fail];
}

// The next object; nil for one that is nil in the archive, and on failure.
- (id)readObject {
  uint8_t tag = [self takeTag];
  if (failed || (tag & kTypeMask) != kTypeObject) return [self fail];
  uint32_t number = [self takeReference:tag];
  if (failed) return nil;
  if (tag & kSeenBefore) {
    if (number == 0) return nil;
    if (number > [objects count]) return [self fail];
    id known = [objects objectAtIndex:number - 1];
    return known == [NSNull null] ? [self fail] : known;
  }
  if (number != [objects count] + 1 || depth >= kDeepest) return [self fail];
  [objects addObject:[NSNull null]];
  uint32_t class = [self takeClass];
  if (failed) return nil;
  depth++;
  id object = [self readBodyOfClass:class];
  depth--;
  if (!object || failed) return [self fail];
  [objects replaceObjectAtIndex:number - 1 withObject:object];
  return object;
}

@end

id QVXReadColourArchive(NSData* data, BOOL* hasPattern) {
  *hasPattern = NO;
  if ([data length] < kHeaderSize || memcmp([data bytes], kMagic, strlen(kMagic)) != 0) return nil;
  QVXColourArchiveReader* reader = [[QVXColourArchiveReader new] autorelease];
  reader->at = (const uint8_t*)[data bytes] + kHeaderSize;
  reader->end = (const uint8_t*)[data bytes] + [data length];
  id root = [reader readObject];
  *hasPattern = reader->hasPattern;
  BOOL known = [root isKindOfClass:[NSColor class]] || [root isKindOfClass:[QVXColourListContents class]];
  return reader->failed || !known ? nil : [[root retain] autorelease];
}
