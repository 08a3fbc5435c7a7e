// libcocoa/colours/QVXProfileColor.h - a colour in a space that GNUstep has no colour class for.
#pragma once

#import "libcocoa/colours/NSColorSpace+Predefined.h"
#include "libcocoa/profiles/components.h"

// Immutable. Components are 0 to 1 (Lab: its own units), the alpha comes last.
@interface QVXProfileColor : NSColor {
  NSColorSpace* _space;
  unsigned _channels;
  CGFloat _components[QVXMostComponents];
}

// The components are those of the space, then the alpha. What is not a number becomes 0, and all but Lab is
// clipped to 0 to 1. nil if the space has no components.
+ (QVXProfileColor*)colorInSpace:(NSColorSpace*)space components:(const CGFloat*)components;
@end
