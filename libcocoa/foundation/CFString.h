// libcocoa/foundation/CFString.h - the Core Foundation functions that bundles import.
//
// Every object here is the Objective-C object itself: a CFString is an NSString, a CFURL an NSURL. A function
// with Create or Copy in its name returns one reference for the caller, or NULL.
#ifndef GNUSTEP_CORE_FOUNDATION_H
#define GNUSTEP_CORE_FOUNDATION_H

#include "libcocoa/runtime/exported.h"
#include "libcocoa/runtime/host_support.h"

typedef uint16_t UniChar;
typedef uint32_t CFStringEncoding;
typedef struct __CFString* CFMutableStringRef;
typedef const struct __CFURL* CFURLRef;

struct FSRef {
  uint8_t hidden[80];
};

void CFRelease(CFTypeRef);

CFStringRef CFStringCreateWithCharacters(CFAllocatorRef, const UniChar* characters, CFIndex count);
CFStringRef CFStringCreateWithCString(CFAllocatorRef, const char* bytes, CFStringEncoding);
Boolean CFStringGetCString(CFStringRef, char* buffer, CFIndex bufferSize, CFStringEncoding);
CFIndex CFStringGetLength(CFStringRef);
CFMutableStringRef CFStringCreateMutableCopy(CFAllocatorRef, CFIndex maxLength, CFStringRef);
void CFStringNormalize(CFMutableStringRef, CFIndex form);

CFURLRef CFURLCreateFromFSRef(CFAllocatorRef, const FSRef*);
CFURLRef CFURLCreateCopyAppendingPathComponent(CFAllocatorRef, CFURLRef, CFStringRef component,
                                               Boolean isDirectory);
CFStringRef CFURLCopyFileSystemPath(CFURLRef, CFIndex style);

const void* CFDictionaryGetValue(CFDictionaryRef, const void* key);
void CFDictionarySetValue(CFMutableDictionaryRef, const void* key, const void* value);
void CFDictionaryRemoveValue(CFMutableDictionaryRef, const void* key);

#endif
