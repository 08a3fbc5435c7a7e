// libcocoa/runtime/start.m - what the library does when it is loaded.
#define _GNU_SOURCE
#import <Foundation/Foundation.h>
#include <dlfcn.h>
#include <stdio.h>
#include <stdlib.h>

#include "libcocoa/runtime/library_root.h"

// The folder below which GNUstep's libraries were unpacked, to be freed; NULL if that is the file system's
// root.
static char* RootOfLibraries(void) {
  Dl_info base;
  if (dladdr((const void*)GNUstepConfig, &base) == 0) return NULL;
  char* path = realpath(base.dli_fname, NULL);
  size_t length = path ? QVXRootOfLibrary(path) : 0;
  if (length == 0) {
    free(path);
    return NULL;
  }
  path[length] = '\0';
  return path;
}

// GNUstep's own folders, when its libraries were unpacked below a folder other than the file system's root.
// Without this it would look for its resources below /usr, where there are none or another version's. The
// machine's own system folder stays on the search path, in place of the network's, which is the same folder
// as the local one.
static void FindResources(const char* path) {
  NSString* root = [NSString stringWithUTF8String:path];
  NSMutableDictionary* configuration = GNUstepConfig(nil);
  NSString* machine = [configuration objectForKey:@"GNUSTEP_SYSTEM_LIBRARY"];
  if (!machine) machine = @"/usr/lib/GNUstep";  // GNUstep's own default, without a configuration file
  if (!root || [machine hasPrefix:root]) return;
  [configuration setObject:machine forKey:@"GNUSTEP_NETWORK_LIBRARY"];
  [configuration setObject:[root stringByAppendingString:@"/usr/lib/GNUstep"]
                    forKey:@"GNUSTEP_SYSTEM_LIBRARY"];
  [configuration setObject:[root stringByAppendingString:@"/usr/lib"] forKey:@"GNUSTEP_SYSTEM_LIBRARIES"];
  GNUstepConfig(configuration);
}

// Exceptions reach setjmp frames only if every library's raise binds to this library.
static void CheckLoadOrder(void) {
  static const char kHere = 0;
  Dl_info here, thrower;
  void* found = dlsym(RTLD_DEFAULT, "objc_exception_throw");
  if (!found || dladdr(found, &thrower) == 0 || dladdr(&kHere, &here) == 0) return;
  if (thrower.dli_fbase == here.dli_fbase) return;
  fprintf(
      stderr,
      "libcocoa: wanted to be loaded before the Objective-C runtime, found %s loaded first; exceptions will "
      "not reach their frames; load or link libcocoa.so ahead of it\n",
      thrower.dli_fname);
}

// A plain constructor would come too early: this file's selectors are not known to the runtime before +load.
@interface QVXStart : NSObject
@end

@implementation QVXStart

+ (void)load {
  CheckLoadOrder();
  // The bottom pool of the thread that loads the library. Without it GNUstep would warn a host that has no
  // pools of its own about each autoreleased object.
  [[NSAutoreleasePool alloc] init];
  char* root = RootOfLibraries();
  if (!root) return;
  NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
  FindResources(root);
  [pool drain];
  free(root);
}

@end
