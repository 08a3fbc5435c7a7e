// libcocoa/colours/colour_archive.m - reading GNUstep's unkeyed archives of colours and colour lists, without
// trusting them.
//
// After the header come items, each led by a tag. Its low five bits are the type; for numbers the next two
// bits are the size, for objects and classes the size of a running number, and the top bit says that the
// number was seen before.
#import "libcocoa/colours/colour_archive.h"

#include <math.h>
#include <stdlib.h>
#include <string.h>

#import "libcocoa/colours/QVXColorListContents.h"
#import "libcocoa/colours/colour_conversion.h"
#import "libcocoa/colours/tiff_bitmap.h"
#include "libcocoa/foundation/CFString.h"
#include "libcocoa/profiles/components.h"

static const char kMagic[] = "GNUstep archive";
enum { kHeaderSize = 15 + 4 * 9 };  // the magic, then four numbers of eight digits and a colon

enum {
  kTypeMask = 0x1F,
  kSizeMask = 0x60,
  kSeenBefore = 0x80,
  kTypeNone = 0x00,
  kTypeUnsignedChar = 0x02,
  kTypeUnsignedShort = 0x04,
  kTypeInt = 0x05,
  kTypeUnsignedInt = 0x06,
  kTypeFloat = 0x0B,
  kTypeDouble = 0x0C,
  kTypeObject = 0x10,
  kTypeClass = 0x11,
  kTypeArray = 0x15,
  kTypeStruct = 0x16,
};
enum { kListVersion = 2, kColorVersion = 3, kImageVersion = 1, kDeepest = 16 };

static const size_t kRoomAtLeast = 4 * 1024 * 1024;
static const size_t kRoomPerByte = 16;
static const CGFloat kLargestSide = 65536;  // of an image, in points

// Stands for an image that this reader knows the extent of, and can't make.
static id const kUnreadable = @"unreadable";

@interface QVXColorArchiveReader : NSObject {
 @public
  const uint8_t* _at;
  const uint8_t* _end;
  BOOL _failed;
  size_t _room;  // for the images that are still to come
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
  return (uint32_t)count;
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

- (BOOL)takeFlag {
  if ([self takeTag] != kTypeUnsignedChar) _failed = YES;
  return [self takeNumber:1] != 0;
}

- (uint32_t)takeInt {
  uint8_t tag = [self takeTag];
  if ((tag & kTypeMask) != kTypeInt) _failed = YES;
  return (uint32_t)[self takeNumber:(size_t)2 << ((tag & kSizeMask) >> 5)];
}

// Fails unless both sides are those of an image.
- (NSSize)takeSize {
  if ([self takeTag] != kTypeStruct) _failed = YES;
  NSSize size;
  size.width = [self takeFloat];
  size.height = [self takeFloat];
  if (!(size.width >= 0 && size.width <= kLargestSide && size.height >= 0 && size.height <= kLargestSide))
    _failed = YES;
  return size;
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

// The number of the class in the tables, from 1; anything on failure.
- (uint32_t)takeClass {
  uint8_t tag = [self takeTag];
  if ((tag & kTypeMask) != kTypeClass) _failed = YES;
  if (tag & kSeenBefore) {
    uint32_t number = [self takeReference:tag];
    if (number == 0 || number > [_classes count]) _failed = YES;
    return number;
  }
  uint32_t number = (uint32_t)[_classes count] + 1;
  [self takeNewClass:tag];
  for (tag = [self takeTag]; !_failed && tag != kTypeNone; tag = [self takeTag]) {
    if ((tag & (kTypeMask | kSeenBefore)) != kTypeClass) _failed = YES;
    [self takeNewClass:tag];
  }
  return number;
}

// --- objects: a reader may go on after a failure, in which there is nothing more to take; what it answers
// then is dropped by readObject

// Unit by unit: a key may hold what is no text.
- (NSString*)takeUnits:(uint32_t)count {
  const uint8_t* bytes = [self take:(size_t)count * sizeof(UniChar)];
  UniChar* units = bytes ? malloc(count * sizeof *units) : NULL;
  if (!units) return [self fail];
  for (uint32_t i = 0; i < count; ++i) units[i] = (UniChar)(bytes[2 * i] << 8 | bytes[2 * i + 1]);
  NSString* text = (NSString*)CFStringCreateWithCharacters(NULL, units, (CFIndex)count);
  free(units);
  return text ? [text autorelease] : [self fail];
}

- (NSString*)readString {
  uint32_t length = [self takeCount];
  if (length == 0) return @"";
  uint32_t encoding = [self takeInt];
  if (![self takeArrayOf:length]) return nil;
  BOOL wide = encoding == NSUnicodeStringEncoding;
  uint8_t element = [self takeTag] & kTypeMask;
  if (element != (wide ? kTypeUnsignedShort : kTypeUnsignedChar)) return [self fail];
  if (!wide && encoding != NSASCIIStringEncoding && encoding != NSUTF8StringEncoding &&
      encoding != NSISOLatin1StringEncoding)
    return [self fail];
  if (wide) return [self takeUnits:length];
  const uint8_t* bytes = [self take:length];
  if (!bytes) return nil;
  NSString* text = [[[NSString alloc] initWithBytes:bytes length:length encoding:encoding] autorelease];
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

- (NSData*)readData {
  uint32_t length = [self takeCount];
  if (length == 0) return [NSData data];
  BOOL isPacked = [self takeFlag];
  if (isPacked || ![self takeArrayOf:length] || [self takeTag] != kTypeUnsignedChar) return [self fail];
  const uint8_t* bytes = [self take:length];
  return bytes ? [NSData dataWithBytes:bytes length:length] : nil;
}

// --- images

// How many samples of a pixel are colour in the space of that name; 0 for names that bitmaps do not have.
static unsigned ChannelsOf(NSString* spaceName) {
  return (unsigned)[[NSColorSpace colorSpaceForColorSpaceName:spaceName] numberOfColorComponents];
}

// The bitmap in the data, if it is what was said of it, and there is room for it; else nil.
- (NSBitmapImageRep*)bitmapOf:(NSData*)data spaceName:(NSString*)spaceName hasAlpha:(BOOL)hasAlpha {
  QVXBitmap bitmap;
  unsigned channels = ChannelsOf(spaceName);
  if (channels == 0 || !QVXOpenBitmap([data bytes], [data length], &bitmap) ||
      bitmap.samplesPerPixel != channels + (hasAlpha ? 1 : 0))
    return nil;
  uint64_t needed = (uint64_t)bitmap.bytesPerRow * bitmap.height * bitmap.planes;
  if (needed > _room) return nil;
  _room -= (size_t)needed;
  NSBitmapImageRep* made =
      [[[NSBitmapImageRep alloc] initWithBitmapDataPlanes:NULL
                                               pixelsWide:(NSInteger)bitmap.width
                                               pixelsHigh:(NSInteger)bitmap.height
                                            bitsPerSample:(NSInteger)bitmap.bitsPerSample
                                          samplesPerPixel:(NSInteger)bitmap.samplesPerPixel
                                                 hasAlpha:hasAlpha
                                                 isPlanar:bitmap.isPlanar
                                           colorSpaceName:spaceName
                                              bytesPerRow:(NSInteger)bitmap.bytesPerRow
                                             bitsPerPixel:0] autorelease];
  unsigned char* planes[QVXMostPlanes] = {NULL};
  [made getBitmapDataPlanes:planes];
  for (uint32_t i = 0; i < bitmap.planes; ++i)
    if (!planes[i] || !QVXReadPlane([data bytes], &bitmap, i, planes[i])) return nil;
  return made;
}

// The bitmap, or kUnreadable.
- (id)readBitmap {
  NSString* spaceName = [self readObject];
  NSSize size = [self takeSize];
  BOOL hasAlpha = [self takeFlag];
  BOOL isOpaque = [self takeFlag];
  for (int i = 0; i < 3; ++i) [self takeInt];  // bits per sample, pixels across and down: the data says them
  NSData* data = [self readObject];
  if (![spaceName isKindOfClass:[NSString class]] || ![data isKindOfClass:[NSData class]]) return [self fail];
  NSBitmapImageRep* bitmap = [self bitmapOf:data spaceName:spaceName hasAlpha:hasAlpha];
  [bitmap setSize:size];
  [bitmap setOpaque:isOpaque];
  return bitmap ? bitmap : kUnreadable;
}

// The image, or kUnreadable.
- (id)readImage {
  BOOL isByName = [self takeFlag];
  if (isByName) return [[self readObject] isKindOfClass:[NSString class]] ? kUnreadable : [self fail];
  NSSize size = [self takeSize];
  NSColor* background = [self readObject];
  enum { kAsked, kRetained, kFlipped, kSized, kEPS, kMatchesColor, kMatchesAll, kCached, kDepth, kFlags };
  BOOL flags[kFlags];
  for (int i = 0; i < kFlags; ++i) flags[i] = [self takeFlag];
  NSArray* bitmaps = [self readObject];
  if ((background && ![background isKindOfClass:[NSColor class]]) || ![bitmaps isKindOfClass:[NSArray class]])
    return [self fail];
  NSImage* image = flags[kSized] ? [[NSImage alloc] initWithSize:size] : [[NSImage alloc] init];
  [image autorelease];
  if (background) [image setBackgroundColor:background];
  [image setDataRetained:flags[kRetained]];
  [image setFlipped:flags[kFlipped]];
  [image setUsesEPSOnResolutionMismatch:flags[kEPS]];
  [image setPrefersColorMatch:flags[kMatchesColor]];
  [image setMatchesOnMultipleResolution:flags[kMatchesAll]];
  [image setCachedSeparately:flags[kCached]];
  [image setCacheDepthMatchesImageDepth:flags[kDepth]];
  for (id bitmap in bitmaps) {
    if (bitmap == kUnreadable) return kUnreadable;
    if (![bitmap isKindOfClass:[NSBitmapImageRep class]]) return [self fail];
    [image addRepresentation:bitmap];
  }
  return image;
}

// --- colours

- (NSColor*)readPattern {
  id image = [self readObject];
  if (image == kUnreadable) return QVXUnreadablePattern();
  return !image || [image isKindOfClass:[NSImage class]] ? [NSColor colorWithPatternImage:image]
                                                         : [self fail];
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
  if ([kind isEqual:NSPatternColorSpace]) return [self readPattern];
  NSColorSpace* space = [NSColorSpace colorSpaceForColorSpaceName:kind];
  if (![QVXStockNameOfSpace(space) isEqual:kind]) return [self fail];
  BOOL isRGB = [space colorSpaceModel] == NSRGBColorSpaceModel;
  CGFloat c[QVXMostComponents];
  int count = isRGB ? 7 : [space numberOfColorComponents] + 1;
  for (int i = 0; i < count; ++i) c[i] = [self takeFloat];
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
  if ((name && ![name isKindOfClass:[NSString class]]) || ![colors isKindOfClass:[NSDictionary class]] ||
      ![keys isKindOfClass:[NSArray class]] || [colors count] != [keys count])
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
  if ([name isEqual:@"NSData"] || [name isEqual:@"NSMutableData"]) return [self readData];
  if ([name isEqual:@"NSBitmapImageRep"]) return [self readBitmap];
  if ([name isEqual:@"NSImage"] && version == kImageVersion) return [self readImage];
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

size_t QVXRoomForImages(NSData* data) {
  return kRoomAtLeast + kRoomPerByte * [data length];
}

NSColor* QVXUnreadablePattern(void) {
  return [NSColor colorWithDeviceWhite:0.5F alpha:1];
}

id QVXReadColorArchive(NSData* data, size_t* room) {
  if ([data length] < kHeaderSize || !QVXIsColorArchive(data)) return nil;
  QVXColorArchiveReader* reader = [[QVXColorArchiveReader new] autorelease];
  reader->_at = (const uint8_t*)[data bytes] + kHeaderSize;
  reader->_end = (const uint8_t*)[data bytes] + [data length];
  reader->_room = *room;
  id root = [reader readObject];
  *room = reader->_room;
  return root;  // lives as long as the reader that holds it
}
