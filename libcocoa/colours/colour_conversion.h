// libcocoa/colours/colour_conversion.h - colours from one space to another: the rules, in one place.
//
// Among GNUstep's own kinds of colour (calibrated and device gray and RGB, device CMYK) its formulas hold, so
// that its programs see the numbers that they are used to. As soon as a space with a profile is on either
// side, the numbers go through Little CMS. No conversion raises; one that is impossible gives nil.
#pragma once

#import "libcocoa/colours/NSColorSpace+Predefined.h"

// The colour in the space: itself if it is there already. nil for nil, patterns, and names that no list
// knows.
NSColor* QVXColorInSpace(NSColor* color, NSColorSpace* space);

// The colour of these components, which end with the alpha: one of GNUstep's own colours where it has a class
// for the space. nil if the space has no components.
NSColor* QVXColorWithComponents(NSColorSpace* space, const CGFloat* components);
