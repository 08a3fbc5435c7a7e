// libcocoa/runtime/host_support.m - autorelease pools and object counts for hosts.
#include "libcocoa/runtime/host_support.h"

#import <Foundation/Foundation.h>
#import <Foundation/NSDebug.h>
#include <objc/runtime.h>

#include "libcocoa/runtime/exported.h"

QVX_EXPORT void* objc_autoreleasePoolPush(void) {
  return [[NSAutoreleasePool alloc] init];
}

QVX_EXPORT void objc_autoreleasePoolPop(void* pool) {
  [(NSAutoreleasePool*)pool drain];
}

QVX_EXPORT void QVXEmptyPool(void* pool) {
  NSAutoreleasePool* full = pool;
  if ([full autoreleaseCount] > 0) [full emptyPool];
}

QVX_EXPORT void QVXCountInstances(unsigned char on) {
  GSDebugAllocationActive(on != 0);
}

QVX_EXPORT long QVXLiveInstances(const char* className) {
  Class wanted = className ? objc_getClass(className) : Nil;
  Class* counted = wanted ? GSDebugAllocationClassList() : NULL;
  if (!counted) return 0;
  long live = 0;
  for (Class* each = counted; *each; ++each) {
    Class class = *each;
    while (class && class != wanted) class = class_getSuperclass(class);
    if (class) live += GSDebugAllocationCount(*each);
  }
  NSZoneFree(NSDefaultMallocZone(), counted);
  return live;
}
