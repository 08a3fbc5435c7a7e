// libcocoa/lists/colour_list_reader.h - reading what a colour-list file holds, without trusting it.
#pragma once

#import "libcocoa/colours/QVXColorListContents.h"

// What a file holds: GNUstep's archive, or text. nil if it is no colour list, or larger than 64 MiB: a file
// is read whole or not at all. Never raises.
QVXColorListContents* QVXReadColorList(NSData* data);
