// libcocoa/colours/NSColor+Presets.m - the predefined colours: one object per name.
//
// The values are GNUstep's own: each method is asked once, and what it answers is kept for ever.
#import "libcocoa/colours/colour_classes.h"
#import "libcocoa/runtime/stock_methods.h"

typedef struct {
  QVXMethod make;  // GNUstep's method
  NSColor* color;  // filled once
} Preset;

static NSColor* Shared(Preset* preset, SEL selector) {
  NSColor* color = __atomic_load_n(&preset->color, __ATOMIC_ACQUIRE);
  if (color) return color;
  QVXMethod make = QVXStockClassMethod("NSColor", selector, &preset->make);
  NSColor* made = [((id(*)(id, SEL))make)([NSColor class], selector) retain];
  if (__atomic_compare_exchange_n(&preset->color, &color, made, NO, __ATOMIC_ACQ_REL, __ATOMIC_ACQUIRE))
    return made;
  [made release];  // another thread was first
  return color;
}

@implementation NSColor (QVXPresets)

+ (NSColor*)blackColor {
  static Preset black;
  return Shared(&black, _cmd);
}

+ (NSColor*)blueColor {
  static Preset blue;
  return Shared(&blue, _cmd);
}

+ (NSColor*)brownColor {
  static Preset brown;
  return Shared(&brown, _cmd);
}

+ (NSColor*)clearColor {
  static Preset clear;
  return Shared(&clear, _cmd);
}

+ (NSColor*)cyanColor {
  static Preset cyan;
  return Shared(&cyan, _cmd);
}

+ (NSColor*)darkGrayColor {
  static Preset darkGray;
  return Shared(&darkGray, _cmd);
}

+ (NSColor*)grayColor {
  static Preset gray;
  return Shared(&gray, _cmd);
}

+ (NSColor*)greenColor {
  static Preset green;
  return Shared(&green, _cmd);
}

+ (NSColor*)lightGrayColor {
  static Preset lightGray;
  return Shared(&lightGray, _cmd);
}

+ (NSColor*)magentaColor {
  static Preset magenta;
  return Shared(&magenta, _cmd);
}

+ (NSColor*)orangeColor {
  static Preset orange;
  return Shared(&orange, _cmd);
}

+ (NSColor*)purpleColor {
  static Preset purple;
  return Shared(&purple, _cmd);
}

+ (NSColor*)redColor {
  static Preset red;
  return Shared(&red, _cmd);
}

+ (NSColor*)whiteColor {
  static Preset white;
  return Shared(&white, _cmd);
}

+ (NSColor*)yellowColor {
  static Preset yellow;
  return Shared(&yellow, _cmd);
}

+ (NSColor*)systemBlueColor {
  static Preset systemBlue;
  return Shared(&systemBlue, _cmd);
}

+ (NSColor*)systemBrownColor {
  static Preset systemBrown;
  return Shared(&systemBrown, _cmd);
}

+ (NSColor*)systemGrayColor {
  static Preset systemGray;
  return Shared(&systemGray, _cmd);
}

+ (NSColor*)systemGreenColor {
  static Preset systemGreen;
  return Shared(&systemGreen, _cmd);
}

+ (NSColor*)systemOrangeColor {
  static Preset systemOrange;
  return Shared(&systemOrange, _cmd);
}

+ (NSColor*)systemPinkColor {
  static Preset systemPink;
  return Shared(&systemPink, _cmd);
}

+ (NSColor*)systemPurpleColor {
  static Preset systemPurple;
  return Shared(&systemPurple, _cmd);
}

+ (NSColor*)systemRedColor {
  static Preset systemRed;
  return Shared(&systemRed, _cmd);
}

+ (NSColor*)systemYellowColor {
  static Preset systemYellow;
  return Shared(&systemYellow, _cmd);
}

@end
