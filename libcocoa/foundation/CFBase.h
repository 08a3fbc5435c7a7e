// libcocoa/foundation/CFBase.h - the types of Core Foundation, and references to its objects.
//
// The headers named after Core Foundation types are for hosts and bundles too: plain C, each stands alone.
// Every object is the Objective-C object itself: a CFString is an NSString, a CFURL an NSURL. A function with
// Create or Copy in its name returns one reference for the caller, or NULL. Nothing here raises.
#pragma once

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef unsigned char Boolean;
typedef long CFIndex;
typedef const void* CFTypeRef;
typedef const struct __CFAllocator* CFAllocatorRef;  // ignored wherever it is an argument

// Adds a reference and returns its argument; NULL gives NULL.
CFTypeRef CFRetain(CFTypeRef object);

// Gives a reference back; NULL is allowed.
void CFRelease(CFTypeRef object);

#ifdef __cplusplus
}
#endif
