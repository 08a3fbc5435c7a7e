// libcocoa/colours/colour_archive.h - reading GNUstep's unkeyed archives of colours and colour lists, without
// trusting them.
//
// NSUnarchiver follows lengths and references as it finds them: one changed byte can end the program. This
// reader knows only what an archive of colours holds, checks every length, and gives all or nothing.
#pragma once

#import <Foundation/Foundation.h>

// Whether the data starts as such an archive does.
BOOL QVXIsColorArchive(NSData* data);

// The colour (NSColor) or the list (QVXColorListContents) that is the archive's root; nil if it is damaged or
// holds anything else. A pattern holds an image, which only GNUstep can read: then nil, and *hasPattern
// becomes YES.
id QVXReadColorArchive(NSData* data, BOOL* hasPattern);
