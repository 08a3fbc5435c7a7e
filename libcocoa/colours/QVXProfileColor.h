// libcocoa/colours/QVXProfileColor.h - a colour in a space that GNUstep has no colour class for.
#pragma once

#import "libcocoa/colours/NSColorSpace+Predefined.h"
#include "libcocoa/profiles/components.h"

// Immutable. Components are 0 to 1 (Lab: its own units) or not a number, the alpha comes last.
@interface QVXProfileColor : NSColor {
  NSColorSpace* _space;
  unsigned _channels;
  CGFloat _components[QVXMostComponents];
}
@end

// The components are those of the space, then the alpha. All but Lab is clipped to 0 to 1, and what is
// infinite in Lab becomes 0; what is not a number stays. nil if the space has no components. Autoreleased.
QVXProfileColor* QVXMakeProfileColor(NSColorSpace* space, const CGFloat* components);
