// libcocoa/colours/NSColor+Components.h - components as text, and the refusal of one that a
// colour does not have.
#pragma once

#import <AppKit/AppKit.h>

// The text, a blank and the colour's components with the alpha, blanks between them.
NSString* QVXWithComponents(NSString* text, NSColor* color);

// Raises NSInternalInconsistencyException with a reason that names the method and the colour.
void QVXRefuseComponent(NSColor* color, SEL selector) __attribute__((noreturn));
