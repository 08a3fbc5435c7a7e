// libcocoa/lists/NSColorList+Available.h - what the files about colour lists share.
#pragma once

#import <AppKit/AppKit.h>

// Colours under their keys, and the keys in order.
@interface QVXColourListContents : NSObject {
 @public
  NSString* name;  // nil where the format holds none
  NSMutableDictionary* colors;
  NSMutableArray* keys;
}
// What a file holds: GNUstep's archive, a keyed archive of a list, or text. nil if it is no colour list: then
// not one colour of it is given out. Never raises.
+ (QVXColourListContents*)contentsOfData:(NSData*)data;
@end

@interface NSColorList (QVXContents)
- (NSString*)qvx_path;
- (NSMutableDictionary*)qvx_colors;
- (NSMutableArray*)qvx_keys;
@end

// Whether this thread is filling the table of available lists: then a file that can't be read must still give
// a list, because GNUstep puts what it gets into an array.
BOOL QVXIsLoadingLists(void);

// Such a list is never shown as available.
void QVXHideList(NSColorList* list);

// A list has been written to, or its file been removed from, a folder where lists are looked for.
void QVXMakeListAvailable(NSColorList* list);

// The folder of the user's own lists, and all folders where lists are looked for.
NSString* QVXUserColourFolder(void);
NSArray* QVXColourFolders(void);

// Whether the list is the one of the system's colours, which no program may edit.
BOOL QVXIsSystemList(NSColorList* list);
