// libcocoa/runtime/library_root.c - the folder below which GNUstep's libraries were unpacked.
#include "libcocoa/runtime/library_root.h"

#include <string.h>

size_t QVXRootOfLibrary(const char* library) {
  size_t length = 0;
  for (const char* found = library; (found = strstr(found, "/usr/lib/libgnustep-base.so")); ++found)
    length = (size_t)(found - library);
  return length;
}
