// libcocoa/foundation/CFURL.m - Core Foundation URLs of files: NSURL objects.
#include "libcocoa/foundation/CFURL.h"

#import <Foundation/Foundation.h>
#include <string.h>
#include <sys/stat.h>

#include "libcocoa/runtime/exported.h"

QVX_EXPORT CFURLRef CFURLCreateFromFSRef(CFAllocatorRef allocator, const FSRef* ref) {
  const char* path = QVXPathOfFSRef(ref);
  if (!path) return NULL;
  NSString* text = [[NSFileManager defaultManager] stringWithFileSystemRepresentation:path
                                                                               length:strlen(path)];
  if (!text) return NULL;
  struct stat status;
  BOOL folder = stat(path, &status) == 0 && S_ISDIR(status.st_mode);
  return (CFURLRef)[[NSURL alloc] initFileURLWithPath:text isDirectory:folder];
}

QVX_EXPORT CFURLRef CFURLCreateCopyAppendingPathComponent(CFAllocatorRef allocator, CFURLRef url,
                                                          CFStringRef component, Boolean isDirectory) {
  if (!url || !component) return NULL;
  NSString* folder = [(NSURL*)url path];
  if (!folder) return NULL;
  // Not stringByAppendingPathComponent:, which takes a backslash for a separator.
  NSString* separator = [folder hasSuffix:@"/"] ? @"" : @"/";
  NSString* path = [NSString stringWithFormat:@"%@%@%@", folder, separator, (NSString*)component];
  return (CFURLRef)[[NSURL alloc] initFileURLWithPath:path isDirectory:isDirectory != 0];
}

QVX_EXPORT CFStringRef CFURLCopyFileSystemPath(CFURLRef url, CFIndex style) {
  if (!url || style != kCFURLPOSIXPathStyle) return NULL;
  return (CFStringRef)[[(NSURL*)url path] copy];
}
