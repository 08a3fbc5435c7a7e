// libcocoa/lists/NSColorList+Files.m - colour lists from files and to files.
#import "libcocoa/colours/exact_colours.h"
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

static BOOL IsInFolder(NSString* path, NSString* folder) {
  return folder && [[path stringByStandardizingPath]
                       hasPrefix:[[folder stringByStandardizingPath] stringByAppendingString:@"/"]];
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
  NSData* data = file && IsFile(file) ? [NSData dataWithContentsOfFile:file] : nil;
  QVXColorListContents* contents = [QVXReadColorList(data) retain];
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
// list's name; any other path is taken as it is. The list belongs to the new file only after it has been
// written.
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
  if (!target || IsDirectory(target)) return NO;
  @try {
    NSData* archive = [NSArchiver archivedDataWithRootObject:[self qvx_readableTwin]];
    archive = QVXArchiveWithExactColors(archive, _colorDictionary);
    if (![archive writeToFile:target atomically:YES]) return NO;
  } @catch (NSException* exception) {
    return NO;  // a colour that no archive can hold
  }
  NSString* own = [target copy];
  [_fullFileName release];
  _fullFileName = own;
  for (NSString* folder in QVXColorFolders())
    if (IsInFolder(own, folder)) {
      QVXMakeListAvailable(self);
      break;
    }
  return YES;
}

// Only a file in the user's own folder is removed; the list is then no longer available, and belongs to no
// file.
- (void)removeFile {
  if (!_fullFileName || ![self isEditable] || !IsInFolder(_fullFileName, QVXUserColorFolder())) return;
  if (![[NSFileManager defaultManager] removeFileAtPath:_fullFileName handler:nil]) return;
  QVXHideList(self);
  [_fullFileName release];
  _fullFileName = nil;
}

@end
