// libcocoa/colours/NSColor+Presets.m - the predefined colours: one object per name.
//
// The values are GNUstep's own: each of its methods is called once, and its answer is kept for ever.
#import <AppKit/AppKit.h>

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

// clang-format off
+ (NSColor*)blackColor { static Preset kept; return Shared(&kept, _cmd); }
+ (NSColor*)blueColor { static Preset kept; return Shared(&kept, _cmd); }
+ (NSColor*)brownColor { static Preset kept; return Shared(&kept, _cmd); }
+ (NSColor*)clearColor { static Preset kept; return Shared(&kept, _cmd); }
+ (NSColor*)cyanColor { static Preset kept; return Shared(&kept, _cmd); }
+ (NSColor*)darkGrayColor { static Preset kept; return Shared(&kept, _cmd); }
+ (NSColor*)grayColor { static Preset kept; return Shared(&kept, _cmd); }
+ (NSColor*)greenColor { static Preset kept; return Shared(&kept, _cmd); }
+ (NSColor*)lightGrayColor { static Preset kept; return Shared(&kept, _cmd); }
+ (NSColor*)magentaColor { static Preset kept; return Shared(&kept, _cmd); }
+ (NSColor*)orangeColor { static Preset kept; return Shared(&kept, _cmd); }
+ (NSColor*)purpleColor { static Preset kept; return Shared(&kept, _cmd); }
+ (NSColor*)redColor { static Preset kept; return Shared(&kept, _cmd); }
+ (NSColor*)whiteColor { static Preset kept; return Shared(&kept, _cmd); }
+ (NSColor*)yellowColor { static Preset kept; return Shared(&kept, _cmd); }
+ (NSColor*)systemBlueColor { static Preset kept; return Shared(&kept, _cmd); }
+ (NSColor*)systemBrownColor { static Preset kept; return Shared(&kept, _cmd); }
+ (NSColor*)systemGrayColor { static Preset kept; return Shared(&kept, _cmd); }
+ (NSColor*)systemGreenColor { static Preset kept; return Shared(&kept, _cmd); }
+ (NSColor*)systemOrangeColor { static Preset kept; return Shared(&kept, _cmd); }
+ (NSColor*)systemPinkColor { static Preset kept; return Shared(&kept, _cmd); }
+ (NSColor*)systemPurpleColor { static Preset kept; return Shared(&kept, _cmd); }
+ (NSColor*)systemRedColor { static Preset kept; return Shared(&kept, _cmd); }
+ (NSColor*)systemYellowColor { static Preset kept; return Shared(&kept, _cmd); }
// clang-format on

@end
