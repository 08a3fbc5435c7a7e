// libcocoa/foundation/CFBase.m - references to Core Foundation objects: an object's own.
#include "libcocoa/foundation/CFBase.h"

#import <Foundation/Foundation.h>

#include "libcocoa/runtime/exported.h"

QVX_EXPORT CFTypeRef CFRetain(CFTypeRef object) {
  return [(id)object retain];
}

QVX_EXPORT void CFRelease(CFTypeRef object) {
  [(id)object release];
}
