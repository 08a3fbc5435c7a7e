// libcocoa/colours/colour_archive.h - reading GNUstep's unkeyed archives of colours and colour lists, without
// trusting them.
//
// NSUnarchiver follows lengths and references as it finds them: one changed byte can end the program. This
// reader knows only what an archive of colours holds, checks every length, and gives all or nothing. Of
// images it knows bitmaps, not packed or packed as LZW or PackBits.
#pragma once

#import <AppKit/AppKit.h>

// Whether the data starts as such an archive does.
BOOL QVXIsColorArchive(NSData* data);

// How many bytes of memory the images in a file or a pasteboard item may take together: in proportion to its
// size, so that a small one can't claim it all.
size_t QVXRoomForImages(NSData* data);

// The archive's root: a colour (NSColor), a list (QVXColorListContents), or another object that those are
// made of, such as a string; nil if the archive is damaged or holds anything else. What the images take is
// subtracted from `*room`. A pattern whose image is packed in another way, is archived by name only, or does
// not fit into the room, reads as QVXUnreadablePattern().
id QVXReadColorArchive(NSData* data, size_t* room);

// The grey that stands for a pattern that a reader can't make: this reader, or another program's.
NSColor* QVXUnreadablePattern(void);
