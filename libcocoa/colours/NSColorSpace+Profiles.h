// libcocoa/colours/NSColorSpace+Profiles.h - spaces as Core Graphics handles.
#pragma once

#import <AppKit/AppKit.h>

// A handle is the space behind it, borrowed: valid while that space lives, and only then accepted back.
typedef struct CGColorSpace* CGColorSpaceRef;

@interface NSColorSpace (QVXProfiles)
// The same space; nil for NULL and for anything that no live space has handed out.
- (id)initWithCGColorSpace:(CGColorSpaceRef)space;
- (CGColorSpaceRef)CGColorSpace;
@end
