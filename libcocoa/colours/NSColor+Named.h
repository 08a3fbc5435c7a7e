// libcocoa/colours/NSColor+Named.h - named colours, and what they stand for.
#pragma once

#import <AppKit/AppKit.h>

// What a named colour stands for now; nil if nothing, or a circle of names. Every other colour stands for
// itself.
NSColor* QVXConcreteColor(NSColor* color);
