// libcocoa/foundation/CFRunLoop.h - the calling thread's run loop.
#pragma once

#include "libcocoa/foundation/CFString.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef double CFTimeInterval;  // seconds

extern const CFStringRef kCFRunLoopDefaultMode;

enum {
  kCFRunLoopRunFinished = 1,  // nothing to wait for, or no mode
  kCFRunLoopRunStopped = 2,
  kCFRunLoopRunTimedOut = 3,
  kCFRunLoopRunHandledSource = 4
};

// Turns the run loop: due timers, delayed performs, notifications queued for idle time. With 0 seconds, or
// fewer, or what is no number, it does what is due and comes back.
int32_t CFRunLoopRunInMode(CFStringRef mode, CFTimeInterval seconds, Boolean returnAfterSourceHandled);

#ifdef __cplusplus
}
#endif
