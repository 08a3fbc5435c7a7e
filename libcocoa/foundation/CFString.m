// libcocoa/foundation/CFString.m - Core Foundation strings: NSString objects.
#import <Foundation/Foundation.h>
#include <stdlib.h>
#include <string.h>

#include "libcocoa/foundation/CFString.h"
#include "libcocoa/foundation/text_encoding.h"

enum { kStackUnits = 256 };

// Text that NSString's own initialisers refuse or change: UTF-16 with a surrogate that has no partner, and
// text that starts with what they take for a byte-order mark. Here it is kept unit by unit.
@interface CFVerbatimString : NSString {
  unichar* _units;
  NSUInteger _length;
}
- (instancetype)initWithUnits:(const unichar*)units length:(NSUInteger)length;
@end

@implementation CFVerbatimString

- (instancetype)initWithUnits:(const unichar*)units length:(NSUInteger)length {
  self = [super init];
  if (self == nil) return nil;
  _units = malloc(length * sizeof *_units);
  if (_units == NULL) {
    [self release];
    return nil;
  }
  memcpy(_units, units, length * sizeof *_units);
  _length = length;
  return self;
}

- (void)dealloc {
  free(_units);
  [super dealloc];
}

- (NSUInteger)length {
  return _length;
}

- (unichar)characterAtIndex:(NSUInteger)index {
  if (index >= _length) {
    [NSException raise:NSRangeException format:@"index %u is beyond a string of %u units", index, _length];
  }
  return _units[index];
}

- (void)getCharacters:(unichar*)buffer range:(NSRange)range {
  if (range.location > _length || range.length > _length - range.location) {
    [NSException raise:NSRangeException
                format:@"range %@ is beyond a string of %u units", NSStringFromRange(range), _length];
  }
  memcpy(buffer, _units + range.location, range.length * sizeof *buffer);
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

static BOOL needs_verbatim_string(const UniChar* units, CFIndex count) {
  if (count != 0 && (units[0] == 0xFEFF || units[0] == 0xFFFE)) return YES;
  for (CFIndex i = 0; i < count; ++i) {
    if (units[i] < 0xD800 || units[i] > 0xDFFF) continue;
    if (units[i] > 0xDBFF || i + 1 == count || units[i + 1] < 0xDC00 || units[i + 1] > 0xDFFF) return YES;
    ++i;
  }
  return NO;
}

COCOA_EXPORT CFStringRef CFStringCreateWithCharacters(CFAllocatorRef allocator, const UniChar* characters,
                                                      CFIndex count) {
  if (count < 0 || (characters == NULL && count != 0)) return NULL;
  NSUInteger length = (NSUInteger)count;
  if (needs_verbatim_string(characters, count)) {
    return (CFStringRef)[[CFVerbatimString alloc] initWithUnits:characters length:length];
  }
  return (CFStringRef)[[NSString alloc] initWithCharacters:characters length:length];
}

COCOA_EXPORT CFStringRef CFStringCreateWithCString(CFAllocatorRef allocator, const char* bytes,
                                                   CFStringEncoding encoding) {
  if (bytes == NULL || text_encoding_width(encoding) == 0) return NULL;
  size_t length = text_encoding_length(encoding, bytes);
  UniChar on_stack[kStackUnits];
  UniChar* units = length <= kStackUnits
                       ? on_stack
                       : malloc(length * sizeof *units);  // no encoding has more units than bytes
  if (units == NULL) return NULL;
  size_t count;
  CFStringRef string = NULL;
  if (text_decode(encoding, bytes, length, units, &count)) {
    string = CFStringCreateWithCharacters(allocator, units, (CFIndex)count);
  }
  if (units != on_stack) free(units);
  return string;
}

COCOA_EXPORT Boolean CFStringGetCString(CFStringRef string, char* buffer, CFIndex bufferSize,
                                        CFStringEncoding encoding) {
  size_t width = text_encoding_width(encoding);
  if (string == NULL || buffer == NULL || width == 0 || bufferSize < (CFIndex)width) return 0;
  NSString* text = (NSString*)string;
  NSUInteger count = [text length];
  UniChar on_stack[kStackUnits];
  UniChar* units = count <= kStackUnits ? on_stack : malloc(count * sizeof *units);
  if (units == NULL) return 0;
  [text getCharacters:units range:NSMakeRange(0, count)];
  size_t length;
  bool whole = text_encode(encoding, units, count, buffer, (size_t)bufferSize - width, &length);
  if (units != on_stack) free(units);
  // A failure leaves an empty string: nobody should take a part for the whole.
  memset(whole ? buffer + length : buffer, 0, width);
  return whole;
}

COCOA_EXPORT CFIndex CFStringGetLength(CFStringRef string) {
  return (CFIndex)[(NSString*)string length];
}

// `maxLength` is a hint to the allocator elsewhere and has no use here.
COCOA_EXPORT CFMutableStringRef CFStringCreateMutableCopy(CFAllocatorRef allocator, CFIndex maxLength,
                                                          CFStringRef string) {
  return (CFMutableStringRef)[(NSString*)string mutableCopy];
}

// Forms D, KD, C and KC are 0 to 3. Anything else leaves the string as it is.
COCOA_EXPORT void CFStringNormalize(CFMutableStringRef string, CFIndex form) {
  NSMutableString* text = (NSMutableString*)string;
  NSString* normalised = nil;
  switch (form) {
    case 0:
      normalised = [text decomposedStringWithCanonicalMapping];
      break;
    case 1:
      normalised = [text decomposedStringWithCompatibilityMapping];
      break;
    case 2:
      normalised = [text precomposedStringWithCanonicalMapping];
      break;
    case 3:
      normalised = [text precomposedStringWithCompatibilityMapping];
      break;
    default:
      break;
  }
  if (normalised != nil) [text setString:normalised];
}
