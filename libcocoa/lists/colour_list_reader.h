// libcocoa/lists/colour_list_reader.h - reading what a colour-list file holds, without trusting it.
#pragma once

#import "libcocoa/colours/QVXColorListContents.h"

enum { QVXLargestColorList = 64 * 1024 * 1024 };  // bytes of a file

// What the file holds: GNUstep's archive, or text. nil if there is no such file, it is no colour list, or is
// larger than that: a file is read whole or not at all. Never raises, and never waits for a pipe or a
// device.
QVXColorListContents* QVXReadColorList(NSString* path);
