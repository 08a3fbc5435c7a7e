// libcocoa/foundation/CFString.m - Core Foundation strings: NSString objects.
#include "libcocoa/foundation/CFString.h"

#import <Foundation/Foundation.h>
#include <emmintrin.h>
#include <stdlib.h>
#include <string.h>

#include "libcocoa/foundation/text_encoding.h"
#include "libcocoa/runtime/exported.h"

enum { kStackUnits = 256 };

// Text that NSString's own initialisers refuse or change: UTF-16 with a surrogate that has no partner, and
// text that starts with what they take for a byte-order mark. Here it is kept unit by unit.
@interface QVXVerbatimString : NSString {
  NSUInteger _length;
}
@end

// Where the units are: behind the object itself.
static unichar* UnitsOf(QVXVerbatimString* string) {
  return object_getIndexedIvars(string);
}

@implementation QVXVerbatimString

+ (instancetype)newWithUnits:(const unichar*)units length:(NSUInteger)length {
  QVXVerbatimString* string = NSAllocateObject(self, length * sizeof *units, NULL);
  memcpy(UnitsOf(string), units, length * sizeof *units);
  string->_length = length;
  return string;
}

- (NSUInteger)length {
  return _length;
}

- (unichar)characterAtIndex:(NSUInteger)index {
  if (index >= _length)
    [NSException raise:NSRangeException format:@"index %u is beyond a string of %u units", index, _length];
  return UnitsOf(self)[index];
}

- (void)getCharacters:(unichar*)buffer range:(NSRange)range {
  if (range.location > _length || range.length > _length - range.location)
    [NSException raise:NSRangeException
                format:@"range %@ is beyond a string of %u units", NSStringFromRange(range), _length];
  memcpy(buffer, UnitsOf(self) + range.location, range.length * sizeof *buffer);
}

- (id)copyWithZone:(NSZone*)zone {
  return [self retain];
}

- (id)mutableCopyWithZone:(NSZone*)zone {
  NSMutableString* copy = [[NSMutableString allocWithZone:zone] initWithCapacity:_length];
  [copy appendString:self];
  return copy;
}

@end

// How many units from the first on are certainly no surrogates.
static CFIndex SkipPlainUnits(const UniChar* units, CFIndex count) {
  enum { kBlock = sizeof(__m128i) / sizeof *units };
  CFIndex i = 0;
  for (; count - i >= kBlock; i += kBlock) {
    __m128i block = _mm_loadu_si128((const __m128i*)(units + i));
    __m128i high = _mm_and_si128(block, _mm_set1_epi16((short)0xF800));
    if (_mm_movemask_epi8(_mm_cmpeq_epi16(high, _mm_set1_epi16((short)0xD800))) != 0) break;
  }
  return i;
}

// Whether the unit there and the next one are a character together.
static BOOL HasPartner(const UniChar* units, CFIndex at, CFIndex count) {
  return units[at] >= 0xD800 && units[at] <= 0xDBFF && at + 1 < count && units[at + 1] >= 0xDC00 &&
         units[at + 1] <= 0xDFFF;
}

static BOOL NeedsVerbatimString(const UniChar* units, CFIndex count) {
  if (count != 0 && (units[0] == 0xFEFF || units[0] == 0xFFFE)) return YES;
  for (CFIndex i = SkipPlainUnits(units, count); i < count; ++i) {
    if (units[i] < 0xD800 || units[i] > 0xDFFF) continue;
    if (!HasPartner(units, i, count)) return YES;
    ++i;
  }
  return NO;
}

QVX_EXPORT CFStringRef CFStringCreateWithCharacters(CFAllocatorRef allocator, const UniChar* characters,
                                                    CFIndex count) {
  if (count < 0 || (!characters && count != 0)) return NULL;
  NSUInteger length = (NSUInteger)count;
  @try {
    if (NeedsVerbatimString(characters, count))
      return (CFStringRef)[QVXVerbatimString newWithUnits:characters length:length];
    return (CFStringRef)[[NSString alloc] initWithCharacters:characters length:length];
  } @catch (NSException* exhausted) {
    return NULL;
  }
}

QVX_EXPORT CFStringRef CFStringCreateWithCString(CFAllocatorRef allocator, const char* bytes,
                                                 CFStringEncoding encoding) {
  if (!bytes || QVXTextEncodingWidth(encoding) == 0) return NULL;
  size_t length = QVXTextEncodingLength(encoding, bytes);
  UniChar onStack[kStackUnits];
  // No encoding has more units than bytes.
  UniChar* units = length <= kStackUnits ? onStack : reallocarray(NULL, length, sizeof *units);
  if (!units) return NULL;
  size_t count;
  CFStringRef string = NULL;
  if (QVXDecodeText(encoding, bytes, length, units, &count))
    string = CFStringCreateWithCharacters(allocator, units, (CFIndex)count);
  if (units != onStack) free(units);
  return string;
}

QVX_EXPORT Boolean CFStringGetCString(CFStringRef string, char* buffer, CFIndex bufferSize,
                                      CFStringEncoding encoding) {
  size_t width = QVXTextEncodingWidth(encoding);
  if (!string || !buffer || width == 0 || bufferSize < (CFIndex)width) return 0;
  NSString* text = (NSString*)string;
  NSUInteger count = [text length];
  UniChar onStack[kStackUnits];
  UniChar* units = count <= kStackUnits ? onStack : malloc(count * sizeof *units);
  if (!units) return 0;
  [text getCharacters:units range:NSMakeRange(0, count)];
  size_t length;
  bool whole = QVXEncodeText(encoding, units, count, buffer, (size_t)bufferSize - width, &length);
  if (units != onStack) free(units);
  // A failure leaves an empty string: nobody should take a part for the whole.
  memset(whole ? buffer + length : buffer, 0, width);
  return whole;
}

QVX_EXPORT CFIndex CFStringGetLength(CFStringRef string) {
  return (CFIndex)[(NSString*)string length];
}

QVX_EXPORT CFMutableStringRef CFStringCreateMutableCopy(CFAllocatorRef allocator, CFIndex maxLength,
                                                        CFStringRef string) {
  @try {
    return (CFMutableStringRef)[(NSString*)string mutableCopy];
  } @catch (NSException* exhausted) {
    return NULL;
  }
}

// nil for a form that is none, and when memory is exhausted.
static NSString* Normalised(NSString* text, CFIndex form) {
  switch (form) {
    // clang-format off
    case 0: return [text decomposedStringWithCanonicalMapping];
    case 1: return [text decomposedStringWithCompatibilityMapping];
    case 2: return [text precomposedStringWithCanonicalMapping];
    case 3: return [text precomposedStringWithCompatibilityMapping];
    // clang-format on
    default:
      return nil;
  }
}

// GNUstep takes 36 bytes for each unit that it decomposes, and follows a null pointer if it does not get
// them.
enum { kLongestPiece = 32 * 1024 };

// Whether no form moves or composes anything across the place before the unit: Latin letters and the unified
// ideographs begin anew.
static BOOL BeginsAnew(UniChar unit) {
  return unit < 0x300 || (unit >= 0x3400 && unit < 0xA000);
}

// The end of the piece that begins there: one unit that is no text, or text up to the next such unit, or as
// far as it should go at once.
static CFIndex EndOfPiece(const UniChar* units, CFIndex begin, CFIndex count) {
  CFIndex end = begin;
  while (end < count && (end - begin < kLongestPiece || !BeginsAnew(units[end]))) {
    const CFIndex size = HasPartner(units, end, count) ? 2 : 1;
    if (NeedsVerbatimString(units + end, size)) break;
    end += size;
  }
  return end > begin ? end : begin + 1;
}

// The text piece by piece. GNUstep gives up on what needs a verbatim string, or drops it: a unit of that kind
// has no other form, and nothing is moved or composed across it. nil when memory is exhausted.
static NSString* NormalisedInPieces(const UniChar* units, CFIndex count, CFIndex form) {
  NSMutableString* whole = [NSMutableString stringWithCapacity:(NSUInteger)count];
  for (CFIndex begin = 0, end = 0; begin < count; begin = end) {
    end = EndOfPiece(units, begin, count);
    NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
    NSString* piece = (NSString*)CFStringCreateWithCharacters(NULL, units + begin, end - begin);
    NSString* normalised = NeedsVerbatimString(units + begin, end - begin) ? piece : Normalised(piece, form);
    if (normalised) [whole appendString:normalised];
    [piece release];
    [pool drain];
    if (!normalised) return nil;
  }
  return whole;
}

QVX_EXPORT void CFStringNormalize(CFMutableStringRef string, CFIndex form) {
  NSMutableString* text = (NSMutableString*)string;
  if (form < 0 || form > 3) return;
  const NSUInteger count = [text length];
  UniChar onStack[kStackUnits];
  UniChar* units = count <= kStackUnits ? onStack : malloc(count * sizeof *units);
  if (!units) return;
  [text getCharacters:units range:NSMakeRange(0, count)];
  NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
  @try {
    const BOOL isPlain = count <= kLongestPiece && !NeedsVerbatimString(units, (CFIndex)count);
    NSString* normalised = isPlain ? Normalised(text, form) : NormalisedInPieces(units, (CFIndex)count, form);
    if (normalised) [text setString:normalised];
  } @catch (NSException* exhausted) {
    // it stays as it is
  }
  [pool drain];
  if (units != onStack) free(units);
}
