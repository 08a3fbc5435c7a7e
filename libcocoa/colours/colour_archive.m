// libcocoa/colours/colour_archive.m - reading GNUstep's unkeyed archives of colours and colour lists, without
// trusting them.
//
// After the header come items, each led by a tag. Its low five bits are the type; for numbers the next two
// bits are the size, for objects and classes the size of a running number, and the top bit says that the
// number was seen before.
#import "libcocoa/colours/colour_archive.h"

#include <string.h>

#import "libcocoa/colours/QVXColorListContents.h"
#import "libcocoa/colours/colour_conversion.h"

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

@interface QVXColorArchiveReader : NSObject {
 @public
  const uint8_t* _at;
  const uint8_t* _end;
  BOOL _failed;
  BOOL _hasPattern;
  int _depth;
  NSMutableArray* _objects;   // by running number; NSNull while an object is being read
  NSMutableArray* _classes;   // names, by running number
  NSMutableArray* _versions;  // NSNumbers, by the same
}
- (id)readObject;
@end

@implementation QVXColorArchiveReader

- (id)init {
  self = [super init];
  _objects = [NSMutableArray new];
  _classes = [NSMutableArray new];
  _versions = [NSMutableArray new];
  return self;
}

- (void)dealloc {
  [_objects release];
  [_classes release];
  [_versions release];
  [super dealloc];
}

- (id)fail {
  _failed = YES;
  return nil;
}

// The next bytes of the archive; NULL, and failure, if fewer are left.
- (const uint8_t*)take:(size_t)size {
  if (_failed || size > (size_t)(_end - _at)) {
    _failed = YES;
    return NULL;
  }
  const uint8_t* bytes = _at;
  _at += size;
  return bytes;
}

- (uint64_t)takeNumber:(size_t)size {
  const uint8_t* bytes = [self take:size];
  uint64_t number = 0;
  for (size_t i = 0; bytes && i < size; ++i) number = number << 8 | bytes[i];
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

// A count, checked against the bytes that are left: each element takes one at least.
- (uint32_t)takeCount {
  uint8_t tag = [self takeTag];
  if ((tag & kTypeMask) != kTypeUnsignedInt) _failed = YES;
  uint64_t count = [self takeNumber:(size_t)2 << ((tag & kSizeMask) >> 5)];
  if (count > (uint64_t)(_end - _at)) _failed = YES;
  return _failed ? 0 : (uint32_t)count;
}

- (CGFloat)takeFloat {
  uint8_t tag = [self takeTag];
  if (tag == kTypeFloat) {
    uint32_t bits = (uint32_t)[self takeNumber:sizeof bits];
    float value;
    memcpy(&value, &bits, sizeof value);
    return value;
  }
  if (tag != kTypeDouble) _failed = YES;
  uint64_t bits = [self takeNumber:sizeof bits];
  double value;
  memcpy(&value, &bits, sizeof value);
  return (CGFloat)value;
}

// Takes the head of an array; NO unless the array has the given length.
- (BOOL)takeArrayOf:(uint32_t)count {
  if ([self takeTag] != kTypeArray || [self takeNumber:sizeof count] != count) _failed = YES;
  return !_failed;
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
  if (!name || number != [_classes count] + 1) _failed = YES;
  if (_failed) return;
  [_classes addObject:name];
  [_versions addObject:[NSNumber numberWithUnsignedInt:version]];
}

// The number of the class in the tables, from 1; 0 on failure.
- (uint32_t)takeClass {
  uint8_t tag = [self takeTag];
  if ((tag & kTypeMask) != kTypeClass) _failed = YES;
  if (_failed) return 0;
  if (tag & kSeenBefore) {
    uint32_t number = [self takeReference:tag];
    if (number == 0 || number > [_classes count]) _failed = YES;
    return _failed ? 0 : number;
  }
  uint32_t number = (uint32_t)[_classes count] + 1;
  [self takeNewClass:tag];
  for (tag = [self takeTag]; !_failed && tag != kTypeNone; tag = [self takeTag]) {
    if ((tag & (kTypeMask | kSeenBefore)) != kTypeClass) _failed = YES;
    if (!_failed) [self takeNewClass:tag];
  }
  return _failed ? 0 : number;
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
  for (uint32_t i = 0; i < count && !_failed; ++i) {
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
  for (uint32_t i = 0; i < count && !_failed; ++i) {
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

// White and CMYK: the components. RGB: red, green, blue, then hue, saturation and brightness, which follow
// from them but for greys (a grey made from a hue keeps it), then alpha.
- (NSColor*)readColor {
  NSString* kind = [self readObject];
  if ([kind isEqual:NSNamedColorSpace]) return [self readNamedColor];
  if ([kind isEqual:NSPatternColorSpace]) _hasPattern = !_failed;
  NSColorSpace* space = [NSColorSpace colorSpaceForColorSpaceName:kind];
  if (!space || ![QVXStockNameOfSpace(space) isEqual:kind]) return [self fail];
  BOOL isRGB = [space colorSpaceModel] == NSRGBColorSpaceModel;
  CGFloat c[7];
  int count = isRGB ? 7 : [space numberOfColorComponents] + 1;
  for (int i = 0; i < count; ++i) c[i] = [self takeFloat];
  if (_failed) return nil;
  if (isRGB && c[0] == c[1] && c[1] == c[2])
    return QVXKindOfSpace(space) == QVXDeviceRGBSpace
               ? [NSColor colorWithDeviceHue:c[3] saturation:c[4] brightness:c[5] alpha:c[6]]
               : [NSColor colorWithCalibratedHue:c[3] saturation:c[4] brightness:c[5] alpha:c[6]];
  if (isRGB) c[3] = c[6];
  return QVXColorWithComponents(space, c);
}

// Fails unless every key is a string that occurs once, and every value a colour.
- (QVXColorListContents*)readList {
  NSString* name = [self readObject];
  NSDictionary* colors = [self readObject];
  NSArray* keys = [self readObject];
  if (_failed || (name && ![name isKindOfClass:[NSString class]]) ||
      ![colors isKindOfClass:[NSDictionary class]] || ![keys isKindOfClass:[NSArray class]] ||
      [colors count] != [keys count])
    return [self fail];
  QVXColorListContents* contents = [[QVXColorListContents new] autorelease];
  contents.name = name;
  for (id key in keys) {
    id color = [key isKindOfClass:[NSString class]] ? [colors objectForKey:key] : nil;
    if (![color isKindOfClass:[NSColor class]] || [contents.colors objectForKey:key]) return [self fail];
    [contents setColor:color forKey:key];
  }
  return contents;
}

- (id)readBodyOfClass:(uint32_t)number {
  NSString* name = [_classes objectAtIndex:number - 1];
  unsigned version = [[_versions objectAtIndex:number - 1] unsignedIntValue];
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
  if (_failed || (tag & kTypeMask) != kTypeObject) return [self fail];
  uint32_t number = [self takeReference:tag];
  if (_failed) return nil;
  if (tag & kSeenBefore) {
    if (number == 0) return nil;
    if (number > [_objects count]) return [self fail];
    id known = [_objects objectAtIndex:number - 1];
    return known == [NSNull null] ? [self fail] : known;
  }
  if (number != [_objects count] + 1 || _depth >= kDeepest) return [self fail];
  [_objects addObject:[NSNull null]];
  uint32_t class = [self takeClass];
  if (_failed) return nil;
  ++_depth;
  id object = [self readBodyOfClass:class];
  --_depth;
  if (!object || _failed) return [self fail];
  [_objects replaceObjectAtIndex:number - 1 withObject:object];
  return object;
}

@end

BOOL QVXIsColorArchive(NSData* data) {
  size_t length = strlen(kMagic);
  return [data length] >= length && memcmp([data bytes], kMagic, length) == 0;
}

id QVXReadColorArchive(NSData* data, BOOL* hasPattern) {
  *hasPattern = NO;
  if ([data length] < kHeaderSize || !QVXIsColorArchive(data)) return nil;
  QVXColorArchiveReader* reader = [[QVXColorArchiveReader new] autorelease];
  reader->_at = (const uint8_t*)[data bytes] + kHeaderSize;
  reader->_end = (const uint8_t*)[data bytes] + [data length];
  id root = [reader readObject];
  *hasPattern = reader->_hasPattern;
  BOOL known = [root isKindOfClass:[NSColor class]] || [root isKindOfClass:[QVXColorListContents class]];
  return reader->_failed || !known ? nil : [[root retain] autorelease];
}
