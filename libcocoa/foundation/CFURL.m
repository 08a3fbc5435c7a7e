// libcocoa/foundation/CFURL.m - Core Foundation URLs of files: NSURL objects.
#include "libcocoa/foundation/CFURL.h"

#import <Foundation/Foundation.h>
#include <string.h>

#include "libcocoa/runtime/exported.h"

QVX_EXPORT CFURLRef CFURLCreateFromFSRef(CFAllocatorRef allocator, const FSRef* ref) {
  const char* path = QVXPathOfFSRef(ref);
  if (!path) return NULL;
  @try {
    NSString* text = [[NSFileManager defaultManager] stringWithFileSystemRepresentation:path
                                                                                 length:strlen(path)];
    if (!text) return NULL;
    return (CFURLRef)[[NSURL alloc] initFileURLWithPath:text isDirectory:QVXFSRefIsFolder(ref)];
  } @catch (NSException* exhausted) {
    return NULL;
  }
}

// Whether GNUstep would take a character of the text for its end.
static BOOL HoldsZero(NSString* text) {
  const NSUInteger count = [text length];
  NSUInteger i = 0;
  while (i < count && [text characterAtIndex:i] != 0) ++i;
  return i < count;
}

QVX_EXPORT CFURLRef CFURLCreateCopyAppendingPathComponent(CFAllocatorRef allocator, CFURLRef url,
                                                          CFStringRef component, Boolean isDirectory) {
  if (!component || HoldsZero((NSString*)component)) return NULL;
  @try {
    NSString* folder = [(NSURL*)url path];
    if (!folder) return NULL;
    // Not stringByAppendingPathComponent:, which takes a backslash for a separator.
    NSString* separator = [folder hasSuffix:@"/"] ? @"" : @"/";
    NSString* path = [NSString stringWithFormat:@"%@%@%@", folder, separator, (NSString*)component];
    return (CFURLRef)[[NSURL alloc] initFileURLWithPath:path isDirectory:isDirectory != 0];
  } @catch (NSException* exhausted) {
    return NULL;
  }
}

QVX_EXPORT CFStringRef CFURLCopyFileSystemPath(CFURLRef url, CFIndex style) {
  if (style != kCFURLPOSIXPathStyle) return NULL;
  @try {
    return (CFStringRef)[[(NSURL*)url path] copy];
  } @catch (NSException* exhausted) {
    return NULL;
  }
}
