// libcocoa/foundation/CFURL.m - Core Foundation URLs of files: NSURL objects.
#import <Foundation/Foundation.h>
#include <string.h>
#include <sys/stat.h>

#include "libcocoa/foundation/FSRef.h"

enum { kPOSIXPathStyle = 0 };

COCOA_EXPORT CFURLRef CFURLCreateFromFSRef(CFAllocatorRef allocator, const FSRef* ref) {
  const char* path = file_reference_path(ref);
  if (path == NULL) return NULL;
  NSString* text = [[NSFileManager defaultManager] stringWithFileSystemRepresentation:path
                                                                               length:strlen(path)];
  if (text == nil) return NULL;
  struct stat status;
  BOOL folder = stat(path, &status) == 0 && S_ISDIR(status.st_mode);
  return (CFURLRef)[[NSURL alloc] initFileURLWithPath:text isDirectory:folder];
}

COCOA_EXPORT CFURLRef CFURLCreateCopyAppendingPathComponent(CFAllocatorRef allocator, CFURLRef url,
                                                            CFStringRef component, Boolean isDirectory) {
  if (url == NULL || component == NULL) return NULL;
  NSString* folder = [(NSURL*)url path];
  if (folder == nil) return NULL;
  // Not stringByAppendingPathComponent:, which takes a backslash for a separator.
  NSString* separator = [folder hasSuffix:@"/"] ? @"" : @"/";
  NSString* path = [NSString stringWithFormat:@"%@%@%@", folder, separator, (NSString*)component];
  return (CFURLRef)[[NSURL alloc] initFileURLWithPath:path isDirectory:isDirectory != 0];
}

COCOA_EXPORT CFStringRef CFURLCopyFileSystemPath(CFURLRef url, CFIndex style) {
  if (url == NULL || style != kPOSIXPathStyle) return NULL;
  return (CFStringRef)[[(NSURL*)url path] copy];
}
