// libcocoa/lists/NSColorList+Available.h - the lists that a program finds by name, and the one that it may
// not edit.
#pragma once

#import <AppKit/AppKit.h>

// Whether this thread is filling the table of available lists: then a file that can't be read must still give
// a list, because GNUstep puts what it gets into an array.
BOOL QVXIsLoadingLists(void);

// From now on the list is not shown as available: its file could not be read, or has been removed.
void QVXHideList(NSColorList* list);

// The list has been written to a folder where lists are looked for: from now on it is shown, and retained.
void QVXMakeListAvailable(NSColorList* list);

// The folder of the user's own lists, which need not exist; nil if the user has no library folder.
NSString* QVXUserColorFolder(void);

// All folders where lists are looked for.
NSArray* QVXColorFolders(void);

// Whether GNUstep is at work on the system's colours on this thread: it fills their list, in memory, even
// where the program may not.
BOOL QVXIsFillingSystemList(void);

// Whether the list is the one of the system's colours, which no program may edit.
BOOL QVXIsSystemList(NSColorList* list);
