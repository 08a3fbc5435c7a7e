// libcocoa/lists/NSColorList+Files.m - colour lists from files and to files.
#include <unistd.h>

#import "libcocoa/colours/exact_colours.h"
#include "libcocoa/files/regular_file.h"
#import "libcocoa/lists/NSColorList+Available.h"
#import "libcocoa/lists/colour_list_reader.h"

static NSString* const kExtension = @"clr";

static BOOL IsDirectory(NSString* path) {
  BOOL directory = NO;
  return [[NSFileManager defaultManager] fileExistsAtPath:path isDirectory:&directory] && directory;
}

static BOOL IsFile(NSString* path) {
  BOOL directory = NO;
  return [[NSFileManager defaultManager] fileExistsAtPath:path isDirectory:&directory] && !directory;
}

// name.clr in the folder; nil if the name can't be a file's.
static NSString* PathInFolder(NSString* folder, NSString* name) {
  if ([name length] == 0 || [name rangeOfString:@"/"].length > 0) return nil;
  return [folder stringByAppendingPathComponent:[name stringByAppendingPathExtension:kExtension]];
}

static BOOL IsReallyInFolder(NSString* path, NSString* folder) {
  return folder && QVXIsReallyInFolder([path fileSystemRepresentation], [folder fileSystemRepresentation]);
}

// Whether the path, as it is spelled, leads into a colour folder and from there by a link to somewhere else.
static BOOL LeavesColorFolder(NSString* path) {
  if ([[path pathComponents] containsObject:@".."]) return NO;
  for (NSString* folder in QVXColorFolders())
    if ([path hasPrefix:[folder stringByAppendingString:@"/"]] && !IsReallyInFolder(path, folder)) return YES;
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
  NSString* file = IsFile(path) ? path : PathInFolder(path, name);
  NSAutoreleasePool* pool = [NSAutoreleasePool new];
  QVXColorListContents* contents = file ? [QVXReadColorList(file) retain] : nil;
  [pool release];
  if (!contents) {
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
  _fullFileName = [file copy];
  _is_editable = [[NSFileManager defaultManager] isWritableFileAtPath:file];
  return self;
}

// nil is the user's own folder, which is made if it is missing; a folder stands for a file in it with the
// list's name; any other path is taken as it is. A link gives way to the file, and what it led to stays as it
// is. NO where a device, a pipe or a socket stands, and where a link leads out of a colour folder. The list
// belongs to the new file only after it has been written.
- (BOOL)writeToFile:(NSString*)path {
  NSString* target = path;
  if (!path) {
    NSString* folder = QVXUserColorFolder();
    if (![[NSFileManager defaultManager] createDirectoryAtPath:folder
                                   withIntermediateDirectories:YES
                                                    attributes:nil
                                                         error:NULL])
      return NO;
    target = PathInFolder(folder, _name);
  } else if (IsDirectory(path)) {
    target = PathInFolder(path, _name);
  }
  if (!target) return NO;
  @try {
    if (!QVXIsPlaceForFile([target fileSystemRepresentation]) || LeavesColorFolder(target)) return NO;
    NSData* archive = [NSArchiver archivedDataWithRootObject:[self qvx_readableTwin]];
    archive = QVXArchiveWithExactColors(archive, _colorDictionary);
    if (![archive writeToFile:target atomically:YES]) return NO;
  } @catch (NSException* exception) {
    return NO;  // a colour that no archive can hold, or a path that no file can have
  }
  NSString* own = [target copy];
  [_fullFileName release];
  _fullFileName = own;
  for (NSString* folder in QVXColorFolders())
    if (IsReallyInFolder(own, folder)) {
      QVXMakeListAvailable(self);
      break;
    }
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
