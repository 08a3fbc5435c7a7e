// libcocoa/foundation/CFBase.m - references to Core Foundation objects: an object's own.
#import <Foundation/Foundation.h>

#include "libcocoa/foundation/CFString.h"

COCOA_EXPORT CFTypeRef CFRetain(CFTypeRef object) {
  return [(id)object retain];
}

COCOA_EXPORT void CFRelease(CFTypeRef object) {
  [(id)object release];
}
