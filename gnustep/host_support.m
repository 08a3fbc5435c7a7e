// gnustep/host_support.m - autorelease pools, the run loop and object counts for hosts.
#import <Foundation/Foundation.h>
#import <Foundation/NSDebug.h>
#include <objc/runtime.h>

#include "core_foundation.h"

COCOA_EXPORT void *objc_autoreleasePoolPush(void) { return [[NSAutoreleasePool alloc] init]; }

COCOA_EXPORT void objc_autoreleasePoolPop(void *pool) { [(NSAutoreleasePool *)pool drain]; }

COCOA_EXPORT const CFStringRef kCFRunLoopDefaultMode = (CFStringRef)@"NSDefaultRunLoopMode";

COCOA_EXPORT int32_t CFRunLoopRunInMode(CFStringRef mode, CFTimeInterval seconds, Boolean returnAfterSourceHandled) {
  if (mode == NULL) return kCFRunLoopRunFinished;
  NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
  NSRunLoop *loop = [NSRunLoop currentRunLoop];
  NSDate *end = [NSDate dateWithTimeIntervalSinceNow:seconds > 0 ? seconds : 0];
  int32_t result;
  do {
    // Due timers run while the limit date is worked out; without a timer or an input there is no limit date.
    BOOL waiting = [loop limitDateForMode:(NSString *)mode] != nil;
    [loop acceptInputForMode:(NSString *)mode beforeDate:seconds > 0 ? end : [NSDate distantPast]];
    result = waiting ? kCFRunLoopRunTimedOut : kCFRunLoopRunFinished;
  } while (result == kCFRunLoopRunTimedOut && !returnAfterSourceHandled && [end timeIntervalSinceNow] > 0);
  [pool drain];
  return result;
}

COCOA_EXPORT void QVXCountInstances(Boolean on) { GSDebugAllocationActive(on != 0); }

COCOA_EXPORT CFIndex QVXLiveInstances(const char *className) {
  Class wanted = className != NULL ? objc_getClass(className) : Nil;
  Class *counted = wanted != Nil ? GSDebugAllocationClassList() : NULL;
  if (counted == NULL) return 0;
  CFIndex live = 0;
  for (Class *each = counted; *each != Nil; ++each) {
    Class class = *each;
    while (class != Nil && class != wanted) class = class_getSuperclass(class);
    if (class != Nil) live += GSDebugAllocationCount(*each);
  }
  NSZoneFree(NSDefaultMallocZone(), counted);
  return live;
}
