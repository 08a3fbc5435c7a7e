// libcocoa/foundation/CFString.h - strings.
#pragma once

#include "libcocoa/foundation/CFBase.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef uint16_t UniChar;
typedef uint32_t CFStringEncoding;  // the numbers of text_encoding.h; any other is refused
typedef const struct __CFString* CFStringRef;
typedef struct __CFString* CFMutableStringRef;

// A string of UTF-16 units, kept as they are. NULL for a negative count, or for NULL with a count above 0.
CFStringRef CFStringCreateWithCharacters(CFAllocatorRef, const UniChar* characters, CFIndex count);

// A string from text that ends with a zero unit of the encoding's width. NULL for NULL, an unknown encoding,
// or bytes that stand for no character.
CFStringRef CFStringCreateWithCString(CFAllocatorRef, const char* bytes, CFStringEncoding);

// Writes the string and a zero unit; `bufferSize` is in bytes. False, with an empty string in the buffer, if
// the room does not suffice or the encoding lacks a character.
Boolean CFStringGetCString(CFStringRef, char* buffer, CFIndex bufferSize, CFStringEncoding);

// The number of UTF-16 units; 0 for NULL.
CFIndex CFStringGetLength(CFStringRef);

// `maxLength` is a hint to the allocator elsewhere and has no use here.
CFMutableStringRef CFStringCreateMutableCopy(CFAllocatorRef, CFIndex maxLength, CFStringRef);

// Normalises in place. Forms D, KD, C and KC are 0 to 3; any other leaves the string as it is, and so does
// want of memory.
void CFStringNormalize(CFMutableStringRef, CFIndex form);

#ifdef __cplusplus
}
#endif
