// libcocoa/foundation/CFURL.h - URLs of files.
#pragma once

#include "libcocoa/foundation/CFString.h"
#include "libcocoa/foundation/FSRef.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef const struct __CFURL* CFURLRef;

enum { kCFURLPOSIXPathStyle = 0 };

// The URL of a reference's path; NULL for what is no reference, and for a path that is not UTF-8.
CFURLRef CFURLCreateFromFSRef(CFAllocatorRef, const FSRef*);

// The component is appended as it is; NULL if either is NULL, and for a component that no path can hold: one
// with a zero, or with a surrogate that has no partner.
CFURLRef CFURLCreateCopyAppendingPathComponent(CFAllocatorRef, CFURLRef, CFStringRef component,
                                               Boolean isDirectory);

// The path; NULL for any style but POSIX.
CFStringRef CFURLCopyFileSystemPath(CFURLRef, CFIndex style);

#ifdef __cplusplus
}
#endif
