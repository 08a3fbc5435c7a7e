// libcocoa/runtime/host_support.m - autorelease pools, the run loop and object counts for hosts.
#import <Foundation/Foundation.h>
#import <Foundation/NSDebug.h>
#include <objc/runtime.h>

#include "libcocoa/foundation/CFString.h"

COCOA_EXPORT void* objc_autoreleasePoolPush(void) {
  return [[NSAutoreleasePool alloc] init];
}

COCOA_EXPORT void objc_autoreleasePoolPop(void* pool) {
  [(NSAutoreleasePool*)pool drain];
}

COCOA_EXPORT const CFStringRef kCFRunLoopDefaultMode = (CFStringRef) @"NSDefaultRunLoopMode";

// GNUstep turns a delay of 0 into a tenth of a millisecond. What is that near counts as due.
static const NSTimeInterval kDue = 0.0002;

// Runs what is due; answers when the next timer or input is expected, nil for never.
static NSDate* run_due(NSRunLoop* loop, NSString* mode) {
  NSDate* next = [loop limitDateForMode:mode];
  NSTimeInterval wait = next != nil ? [next timeIntervalSinceNow] : kDue;
  if (wait >= kDue) return next;
  if (wait > 0) [NSThread sleepForTimeInterval:wait];
  return [loop limitDateForMode:mode];
}

COCOA_EXPORT int32_t CFRunLoopRunInMode(CFStringRef mode, CFTimeInterval seconds,
                                        Boolean returnAfterSourceHandled) {
  if (mode == NULL) return kCFRunLoopRunFinished;
  NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
  NSRunLoop* loop = [NSRunLoop currentRunLoop];
  NSDate* end = [NSDate dateWithTimeIntervalSinceNow:seconds];
  int32_t result;
  do {
    NSDate* next = run_due(loop, (NSString*)mode);
    [loop acceptInputForMode:(NSString*)mode
                  beforeDate:seconds > 0 && next != nil ? [next earlierDate:end] : [NSDate distantPast]];
    result = next != nil ? kCFRunLoopRunTimedOut : kCFRunLoopRunFinished;
  } while (result == kCFRunLoopRunTimedOut && !returnAfterSourceHandled && [end timeIntervalSinceNow] > 0);
  [pool drain];
  return result;
}

COCOA_EXPORT void QVXCountInstances(Boolean on) {
  GSDebugAllocationActive(on != 0);
}

COCOA_EXPORT CFIndex QVXLiveInstances(const char* className) {
  Class wanted = className != NULL ? objc_getClass(className) : Nil;
  Class* counted = wanted != Nil ? GSDebugAllocationClassList() : NULL;
  if (counted == NULL) return 0;
  CFIndex live = 0;
  for (Class* each = counted; *each != Nil; ++each) {
    Class class = *each;
    while (class != Nil && class != wanted) class = class_getSuperclass(class);
    if (class != Nil) live += GSDebugAllocationCount(*each);
  }
  NSZoneFree(NSDefaultMallocZone(), counted);
  return live;
}
