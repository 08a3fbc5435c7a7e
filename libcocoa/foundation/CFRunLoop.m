// libcocoa/foundation/CFRunLoop.m - the calling thread's run loop: NSRunLoop's.
#include "libcocoa/foundation/CFRunLoop.h"

#import <Foundation/Foundation.h>
#include <math.h>

#include "libcocoa/runtime/exported.h"

QVX_EXPORT const CFStringRef kCFRunLoopDefaultMode = (CFStringRef) @"NSDefaultRunLoopMode";

// Seconds. GNUstep turns a delay of 0 into a tenth of a millisecond, so what is to happen this soon counts as
// due.
static const NSTimeInterval kDue = 0.0002;

// Runs what is due; answers when the next timer or input is expected, nil for never.
static NSDate* RunDue(NSRunLoop* loop, NSString* mode) {
  NSDate* next = [loop limitDateForMode:mode];
  NSTimeInterval wait = next ? [next timeIntervalSinceNow] : kDue;
  if (wait >= kDue) return next;
  [NSThread sleepForTimeInterval:wait];  // not at all below 0
  return [loop limitDateForMode:mode];
}

QVX_EXPORT int32_t CFRunLoopRunInMode(CFStringRef mode, CFTimeInterval seconds,
                                      Boolean returnAfterSourceHandled) {
  if (!mode) return kCFRunLoopRunFinished;
  NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
  NSRunLoop* loop = [NSRunLoop currentRunLoop];
  NSDate* end = [NSDate dateWithTimeIntervalSinceNow:fmax(seconds, 0)];  // 0 for what is no number
  int32_t result;
  do {
    NSDate* next = RunDue(loop, (NSString*)mode);
    [loop acceptInputForMode:(NSString*)mode beforeDate:[next earlierDate:end]];  // nil: does not wait
    result = next ? kCFRunLoopRunTimedOut : kCFRunLoopRunFinished;
  } while (result == kCFRunLoopRunTimedOut && !returnAfterSourceHandled && [end timeIntervalSinceNow] > 0);
  [pool drain];
  return result;
}
