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

// Whether a path can be of that text: GNUstep raises for a surrogate without its partner, and takes a zero
// for the end.
static BOOL CanBeInPath(NSString* text) {
  const NSUInteger count = [text length];
  unichar last = 0;  // the first half of a character, or 0
  for (NSUInteger i = 0; i < count; ++i) {
    const unichar unit = [text characterAtIndex:i];
    const BOOL isSecond = unit >= 0xDC00 && unit <= 0xDFFF;
    if (unit == 0 || isSecond != (last != 0)) return NO;
    last = unit >= 0xD800 && unit <= 0xDBFF ? unit : 0;
  }
  return last == 0;
}

QVX_EXPORT CFURLRef CFURLCreateCopyAppendingPathComponent(CFAllocatorRef allocator, CFURLRef url,
                                                          CFStringRef component, Boolean isDirectory) {
  if (!url || !component || !CanBeInPath((NSString*)component)) return NULL;
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
  if (!url || style != kCFURLPOSIXPathStyle) return NULL;
  @try {
    return (CFStringRef)[[(NSURL*)url path] copy];
  } @catch (NSException* exhausted) {
    return NULL;
  }
}
