// libcocoa/colours/NSColor+CoreGraphics.h - colours as Core Graphics handles.
#pragma once

#import <AppKit/AppKit.h>

@interface NSColor (QVXCoreGraphics)
// The colour that handed out the handle; nil for NULL and for anything that no live colour has handed out.
+ (NSColor*)colorWithCGColor:(CGColorRef)color;
@end
