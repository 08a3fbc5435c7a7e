// libcocoa/runtime/host_support.h - what a host process needs of libcocoa.so around its calls into a bundle.
//
// Plain C linkage, so that a host may link the library or look the functions up after
// dlopen("libcocoa.so", RTLD_NOW | RTLD_GLOBAL). Names that other systems' frameworks have for the same thing
// are kept. Nothing here raises.
#ifndef GNUSTEP_COCOA_HOST_H
#define GNUSTEP_COCOA_HOST_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef unsigned char Boolean;
typedef long CFIndex;
typedef int32_t OSStatus;
typedef double CFTimeInterval;
typedef const void* CFTypeRef;
typedef const struct __CFAllocator* CFAllocatorRef;
typedef const struct __CFString* CFStringRef;
typedef const struct __CFDictionary* CFDictionaryRef;
typedef struct __CFDictionary* CFMutableDictionaryRef;
typedef struct FSRef FSRef;  // 80 opaque bytes

// Adds a reference and returns its argument; null gives null.
CFTypeRef CFRetain(CFTypeRef);

// File references. A reference stands for an absolute path; it stays valid for the life of the process.
enum {
  noErr = 0,
  fnfErr = -43,            // no such file or folder
  paramErr = -50,          // a null argument, or bytes that are no reference
  pathTooLongErr = -2110,  // the buffer is too small
};
// The reference of an existing file or folder. A relative path counts from the current folder; a symbolic
// link gives a reference to the link. `isDirectory` may be null.
OSStatus FSPathMakeRef(const uint8_t* path, FSRef* ref, Boolean* isDirectory);
// Writes the path with its terminator.
OSStatus FSRefMakePath(const FSRef* ref, uint8_t* path, uint32_t pathSize);

// A dictionary from pointer to pointer. Neither keys nor values are retained, compared or looked into; null
// is a key like any other, the pointer with all bits set is none. `keyCallBacks` and `valueCallBacks` must be
// null. The caller owns one reference and gives it up with CFRelease.
CFMutableDictionaryRef CFDictionaryCreateMutable(CFAllocatorRef, CFIndex capacity, const void* keyCallBacks,
                                                 const void* valueCallBacks);
CFIndex CFDictionaryGetCount(CFDictionaryRef);

// An autorelease pool for this thread. Pools are popped in the opposite order, on the thread that pushed
// them.
void* objc_autoreleasePoolPush(void);
void objc_autoreleasePoolPop(void* pool);

// Turns this thread's run loop: due timers, delayed performs, notifications queued for idle time. With 0
// seconds it does what is due and comes back. Results as elsewhere: finished (no sources), stopped, timed
// out, handled a source.
extern const CFStringRef kCFRunLoopDefaultMode;
enum {
  kCFRunLoopRunFinished = 1,
  kCFRunLoopRunStopped = 2,
  kCFRunLoopRunTimedOut = 3,
  kCFRunLoopRunHandledSource = 4
};
int32_t CFRunLoopRunInMode(CFStringRef mode, CFTimeInterval seconds, Boolean returnAfterSourceHandled);

// Live Objective-C objects. Counting starts when it is switched on: objects made before that are unknown, and
// freeing one of them afterwards is not counted either.
void QVXCountInstances(Boolean on);
// Instances of the class and of every class below it; 0 for a name that is no class.
CFIndex QVXLiveInstances(const char* className);

#ifdef __cplusplus
}
#endif

#endif
