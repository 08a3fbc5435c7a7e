// tests/libcocoa/objective_c_paths.m - Objective-C functions for an exception to pass through; see paths.h.
#define _GNU_SOURCE
#import <Foundation/Foundation.h>
#include <objc/objc-sync.h>
#include <objc/runtime.h>
#include <pthread.h>
#include <setjmp.h>

typedef void (*Body)(void* context);

void ThroughFinally(Body body, void* context, int* ran) {
  @try {
    body(context);
  } @finally {
    ++*ran;
  }
}

void ThroughFinallyWithoutReturn(Body body, void* context, int* ran) {
  @try {
    body(context);
    __builtin_unreachable();  // the call is the last instruction before the clean-up
  } @finally {
    ++*ran;
  }
}

void ThroughTwoFinallys(Body body, void* context, int* ran) {
  @try {
    @try {
      body(context);
    } @finally {
      *ran = *ran * 10 + 1;
    }
  } @finally {
    *ran = *ran * 10 + 2;
  }
}

void ThroughSynchronized(Body body, void* context, id lock) {
  @synchronized(lock) {
    body(context);
  }
}

void ThroughUnrelatedCatch(Body body, void* context, int* ran) {
  @try {
    body(context);
  } @catch (NSString* text) {
    *ran += 100;
  } @finally {
    ++*ran;
  }
}

void ThroughFinallyThatThrows(Body body, void* context, id thrown) {
  @try {
    body(context);
  } @finally {
    @throw thrown;
  }
}

void ThroughFinallyThatThrowsAndCatches(Body body, void* context, int* ran) {
  @try {
    body(context);
  } @finally {
    @try {
      [NSException raise:@"Inner" format:@"caught at once"];
    } @catch (NSException* inner) {
      ++*ran;
    }
  }
}

void ThroughFinallyCalling(Body body, void* context, Body clean_up, void* clean_up_context) {
  @try {
    body(context);
  } @finally {
    clean_up(clean_up_context);
  }
}

int ThroughFinallyThatReturns(Body body, void* context) {
  @try {
    body(context);
  } @finally {
    return 7;
  }
}

id ThroughCatch(Body body, void* context) {
  @try {
    body(context);
  } @catch (NSException* exception) {
    return exception;
  }
  return nil;
}

void ThroughRethrow(Body body, void* context, int* ran) {
  @try {
    body(context);
  } @catch (NSException* exception) {
    ++*ran;
    @throw;
  }
}

struct frame {
  jmp_buf buffer;
  void* reserved[4];
};
void objc_exception_try_enter(void*);
void objc_exception_try_exit(void*);
id objc_exception_extract(void*);

id GuardedInC(Body body, void* context) {
  struct frame frame;
  objc_exception_try_enter(&frame);
  if (_setjmp(frame.buffer) != 0) return objc_exception_extract(&frame);
  body(context);
  objc_exception_try_exit(&frame);
  return nil;
}

id GuardedInFinally(Body body, void* context, int* ran, int* ran_at_delivery) {
  struct frame frame;
  @try {
    objc_exception_try_enter(&frame);
    if (_setjmp(frame.buffer) != 0) {
      *ran_at_delivery = *ran;
      return objc_exception_extract(&frame);
    }
    body(context);
    objc_exception_try_exit(&frame);
  } @finally {
    ++*ran;
  }
  return nil;
}

id NewException(const char* name, const char* reason) {
  return [NSException exceptionWithName:[NSString stringWithUTF8String:name]
                                 reason:[NSString stringWithUTF8String:reason]
                               userInfo:nil];
}

void Raise(id exception) {
  [(NSException*)exception raise];
}

static void* try_lock(void* lock) {
  objc_sync_enter((id)lock);
  objc_sync_exit((id)lock);
  return lock;
}

_Bool IsUnlocked(id lock) {
  pthread_t thread;
  struct timespec limit;
  clock_gettime(CLOCK_REALTIME, &limit);
  limit.tv_sec += 2;
  if (pthread_create(&thread, NULL, try_lock, lock) != 0) return 0;
  return pthread_timedjoin_np(thread, NULL, &limit) == 0;
}

// A root class of its own: no method of NSObject's, not even isKindOfClass:.
@interface BareRoot {
  Class isa;
}
@end

@implementation BareRoot
@end

id NewRootObject(void) {
  return class_createInstance(objc_getClass("BareRoot"), 0);
}

// Classes whose +initialize notes how the stack it runs on lies: a multiple of 16 below its frame's two saved
// words.
static uintptr_t misalignment;

@interface Fresh : NSObject
@end

@implementation Fresh

+ (void)initialize {
  misalignment = ((uintptr_t)__builtin_frame_address(0) + 8) % 16;
}

+ (uintptr_t)misalignmentOfInitialize {
  return misalignment;
}

@end

@interface FreshA : Fresh
@end
@implementation FreshA
@end
@interface FreshB : Fresh
@end
@implementation FreshB
@end
@interface FreshC : Fresh
@end
@implementation FreshC
@end
@interface FreshD : Fresh
@end
@implementation FreshD
@end

@interface RaisesInInitialize : NSObject
@end

@implementation RaisesInInitialize

+ (void)initialize {
  [NSException raise:@"InInitialize" format:@"for a test"];
}

@end

@interface RaisesInInitializeToo : RaisesInInitialize
@end

@implementation RaisesInInitializeToo
@end

// Implements nothing and hands every message on.
@interface Forwarder : NSObject {
  id _target;
}
@end

@implementation Forwarder

+ (id)forwarderTo:(id)target {
  Forwarder* forwarder = [[[Forwarder alloc] init] autorelease];
  forwarder->_target = target;
  return forwarder;
}

- (NSMethodSignature*)methodSignatureForSelector:(SEL)selector {
  return [_target methodSignatureForSelector:selector];
}

- (void)forwardInvocation:(NSInvocation*)invocation {
  [invocation invokeWithTarget:_target];
}

@end
