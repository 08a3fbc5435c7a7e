// libcocoa/colours/NSColor+Components.h - the refusal of a component that a colour does not have.
#pragma once

#import <AppKit/AppKit.h>

// Raises NSInternalInconsistencyException with a reason that names the method and the colour.
void QVXRefuseComponent(NSColor* color, SEL selector) __attribute__((noreturn));
