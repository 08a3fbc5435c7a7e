// libcocoa/lists/NSColorList+Files.m - colour lists from files and to files.
#include <string.h>
#include <unistd.h>

#import "libcocoa/colours/exact_colours.h"
#include "libcocoa/files/regular_file.h"
#import "libcocoa/lists/NSColorList+Available.h"
#import "libcocoa/lists/colour_list_reader.h"

static NSString* const kExtension = @"clr";

static BOOL IsFolder(NSString* path) {
  return QVXIsFolder([path fileSystemRepresentation]);
}

// The path from the root, so that it stays the file's wherever the program goes. nil if no file can have it:
// GNUstep cuts a path off at a zero, and raises for text that the file system's encoding lacks.
static NSString* FullPath(NSString* path) {
  if ([path length] == 0) return nil;
  NSFileManager* files = [NSFileManager defaultManager];
  if ([path characterAtIndex:0] != '/')
    path = [NSString stringWithFormat:@"%@/%@", [files currentDirectoryPath], path];
  @try {
    const char* bytes = [path fileSystemRepresentation];
    NSString* back = [files stringWithFileSystemRepresentation:bytes length:strlen(bytes)];
    return [back isEqual:path] ? path : nil;
  } @catch (NSException* exception) {
    return nil;
  }
}

// name.clr in the folder; nil if the name can't be a file's. GNUstep's own methods for this take a backslash
// for a separator, "C:" for a drive and "~" for a home.
static NSString* PathInFolder(NSString* folder, NSString* name) {
  if ([name length] == 0 || [name rangeOfString:@"/" options:NSLiteralSearch].length > 0) return nil;
  return FullPath([NSString stringWithFormat:@"%@/%@.%@", folder, name, kExtension]);
}

// The file that a path stands for: a folder for the file in it that has the list's name, any other path for
// itself. nil if no file can have the path.
static NSString* FileAt(NSString* path, NSString* name) {
  NSString* full = FullPath(path);
  return full && IsFolder(full) ? PathInFolder(full, name) : full;
}

static BOOL IsReallyInFolder(NSString* path, NSString* folder) {
  return folder && QVXIsReallyInFolder([path fileSystemRepresentation], [folder fileSystemRepresentation]);
}

static BOOL LeavesColorFolder(NSString* path) {
  for (NSString* folder in QVXColorFolders())
    if (QVXLeavesFolderByLink([path fileSystemRepresentation], [folder fileSystemRepresentation])) return YES;
  return NO;
}

@implementation NSColorList (QVXFiles)

// The list as other programs are to read it: a pattern could crash them.
- (NSColorList*)qvx_readableTwin {
  NSColorList* twin = [[[NSColorList alloc] initWithName:_name] autorelease];
  for (NSString* key in _orderedColorKeys) {
    [twin->_orderedColorKeys addObject:key];
    [twin->_colorDictionary setObject:QVXReadableTwin([_colorDictionary objectForKey:key]) forKey:key];
  }
  return twin;
}

// Without a path the list is empty; a folder stands for the file in it that has the list's name. nil if there
// is no such file, or it is no colour list.
- (id)initWithName:(NSString*)name fromFile:(NSString*)path {
  self = [self initWithName:name];
  if (!path) return self;
  NSAutoreleasePool* pool = [NSAutoreleasePool new];
  NSString* file = [FileAt(path, name) retain];
  QVXColorListContents* contents = file ? [QVXReadColorList(file) retain] : nil;
  [pool release];
  if (!contents) {
    [file release];
    if (QVXIsLoadingLists()) {
      QVXHideList(self);
      return self;
    }
    [self release];
    return nil;
  }
  [_colorDictionary setDictionary:contents.colors];
  [_orderedColorKeys setArray:contents.keys];
  if (!_name) _name = [contents.name copy];
  [contents release];
  _fullFileName = file;
  _is_editable = [[NSFileManager defaultManager] isWritableFileAtPath:file];
  return self;
}

// nil is the user's own folder, which is made if it is missing; a folder stands for a file in it with the
// list's name; any other path is taken as it is. A link gives way to the file, and what it led to stays as it
// is. NO where a device, a pipe or a socket stands, where a link leads out of a colour folder, and for a list
// too large to be read again. The list belongs to the new file only after it has been written.
- (BOOL)writeToFile:(NSString*)path {
  if (!path) {
    path = QVXUserColorFolder();
    if (![[NSFileManager defaultManager] createDirectoryAtPath:path
                                   withIntermediateDirectories:YES
                                                    attributes:nil
                                                         error:NULL])
      return NO;
  }
  NSString* target = FileAt(path, _name);
  if (!target) return NO;
  @try {
    if (!QVXIsPlaceForFile([target fileSystemRepresentation]) || LeavesColorFolder(target)) return NO;
    NSData* archive = [NSArchiver archivedDataWithRootObject:[self qvx_readableTwin]];
    archive = QVXArchiveWithExactColors(archive, _colorDictionary);
    if ([archive length] > QVXLargestColorList) return NO;
    if (![archive writeToFile:target atomically:YES]) return NO;
  } @catch (NSException* exception) {
    return NO;  // a colour that no archive can hold
  }
  NSString* own = [target copy];
  [_fullFileName release];
  _fullFileName = own;
  for (NSString* folder in QVXColorFolders())
    if (IsReallyInFolder(own, folder)) QVXMakeListAvailable(self);
  return YES;
}

// Only a file that is really in the user's own folder is removed, or a link there, never what it leads to;
// the list is then no longer available, and belongs to no file.
- (void)removeFile {
  if (!_fullFileName || ![self isEditable] || !IsReallyInFolder(_fullFileName, QVXUserColorFolder())) return;
  if (unlink([_fullFileName fileSystemRepresentation]) != 0) return;
  QVXHideList(self);
  [_fullFileName release];
  _fullFileName = nil;
}

@end
