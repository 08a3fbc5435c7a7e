// libcocoa/colours/exact_colours.h - colours in spaces with a profile, written so that nothing is lost.
//
// Other GNUstep programs read such a colour as its device RGB twin. The exact colours stand behind the
// archive, in a trailer that other programs do not look at: words of 32 bits, little-endian,
//
//   number of profiles, then each: length, bytes
//   number of colours, then each: length of the key, key in UTF-8, space, number of components, components
//   number of patterns, then each: length of the key, key in UTF-8, length, archive of the colour
//   checksum of the archive and everything so far, length of the trailer so far, "QVXexact"
//
// A space below 256 is a QVXSpaceKind, from 256 on a profile of the first list; the components end with the
// alpha. It is never the space of one of GNUstep's own kinds, and there are at most 256 profiles: what is
// over that, or has a key that is no UTF-8, is written as its twin alone. A trailer that is not so, or whose
// checksum is wrong, counts as damaged. The checksum finds accidents, not forgeries: every byte is read as if
// anybody might have written it.
#pragma once

#import "libcocoa/colours/QVXProfileColor.h"

// The archive, followed by the exact colours and the patterns among the values; the archive itself if there
// are none.
NSData* QVXArchiveWithExactColors(NSData* archive, NSDictionary* colors);

// What other programs are to read in place of the colour: a grey for a pattern, which would crash many of
// them; any other colour itself.
NSColor* QVXReadableTwin(NSColor* color);

// The exact colours behind an archive, by key; empty if there are none, and without those that are damaged or
// can't be read. `room` is as for QVXReadColorArchive.
NSDictionary* QVXExactColorsBehind(NSData* archive, size_t* room);

// The same for one colour in a keyed archive. Decoding gives nil if the archive holds none, or a damaged one.
void QVXEncodeExactColor(QVXProfileColor* color, NSCoder* coder);
NSColor* QVXDecodeExactColor(NSCoder* coder);
