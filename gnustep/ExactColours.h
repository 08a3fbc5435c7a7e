// gnustep/ExactColours.h - colours in spaces with a profile, written so that nothing is lost.
//
// Other GNUstep programs read such a colour as its device RGB twin. The exact colours stand behind the
// archive, in a trailer that other programs do not look at: words of 32 bits, little-endian,
//
//   number of profiles, then each: length, bytes
//   number of colours, then each: length of the key, key in UTF-8, space, number of components, components
//   length of everything so far, "QVXexact"
//
// A space below 256 is a QVXSpaceKind, from 256 on a profile of the first list; the components end with the
// alpha.
#pragma once

#import "QVXProfileColor.h"

// The archive, followed by the exact colours among the values of the dictionary; the archive itself if there
// are none.
NSData* QVXArchiveWithExactColours(NSData* archive, NSDictionary* colors);

// The exact colours behind an archive, by key; empty if there are none, or what stands there is damaged.
NSDictionary* QVXExactColoursBehind(NSData* archive);

// The same for one colour in a keyed archive. Decoding gives nil if the archive holds none.
void QVXEncodeExactColour(QVXProfileColor* color, NSCoder* coder);
NSColor* QVXDecodeExactColour(NSCoder* coder);
