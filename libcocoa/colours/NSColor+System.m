// libcocoa/colours/NSColor+System.m - the colours of the catalogue "System", in the light appearance.
//
// GNUstep has a handful of greys for them. The values below stand in its list "System" before it fills the
// list, so that themes, user defaults and a list of that name in a colour folder still come first.
#import "libcocoa/colours/NSColor+System.h"

#include <math.h>

#include "libcocoa/profiles/components.h"
#import "libcocoa/runtime/stock_methods.h"

NSString* const QVXSystemCatalogue = @"System";

// In calibrated RGB. Each component is a little above the byte that is meant, for those who cut the rest off.
typedef struct {
  NSString* name;
  CGFloat red, green, blue;
} LightColor;

// clang-format off
static const LightColor lightColors[] = {
    // windows and pages
    {@"windowBackgroundColor",             0.927F, 0.927F, 0.927F},  // ECECEC
    {@"windowFrameColor",                  0.668F, 0.668F, 0.668F},  // AAAAAA
    {@"windowFrameTextColor",              0,      0,      0},
    {@"underPageBackgroundColor",          0.59F,  0.59F,  0.59F},   // 969696
    // controls: the face, what is written on it, and its edges from light to dark
    {@"controlColor",                      0.93F,  0.93F,  0.93F},   // EDEDED
    {@"controlBackgroundColor",            1,      1,      1},
    {@"controlTextColor",                  0,      0,      0},
    {@"disabledControlTextColor",          0.5F,   0.5F,   0.5F},    // 7F7F7F
    {@"controlLightHighlightColor",        0.947F, 0.947F, 0.947F},  // F1F1F1
    {@"controlHighlightColor",             0.888F, 0.888F, 0.888F},  // E2E2E2
    {@"controlShadowColor",                0.558F, 0.558F, 0.558F},  // 8E8E8E
    {@"controlDarkShadowColor",            0.335F, 0.335F, 0.335F},  // 555555
    {@"highlightColor",                    1,      1,      1},
    {@"shadowColor",                       0,      0,      0},
    {@"keyboardFocusIndicatorColor",       0.233F, 0.602F, 0.99F},   // 3B99FC
    {@"scrollBarColor",                    0.982F, 0.982F, 0.982F},  // FAFAFA
    {@"knobColor",                         0.758F, 0.758F, 0.758F},  // C1C1C1
    {@"selectedKnobColor",                 0.492F, 0.492F, 0.492F},  // 7D7D7D
    // what is selected: pale behind black text, strong behind white text, grey where the focus is elsewhere
    {@"selectedControlColor",              0.703F, 0.845F, 1},       // B3D7FF
    {@"selectedControlTextColor",          0,      0,      0},
    {@"alternateSelectedControlColor",     0.068F, 0.425F, 0.841F},  // 116CD6
    {@"alternateSelectedControlTextColor", 1,      1,      1},
    {@"secondarySelectedControlColor",     0.864F, 0.864F, 0.864F},  // DCDCDC
    {@"selectedMenuItemColor",             0.245F, 0.511F, 0.97F},   // 3E82F7
    {@"selectedMenuItemTextColor",         1,      1,      1},
    // text
    {@"textColor",                         0,      0,      0},
    {@"textBackgroundColor",               1,      1,      1},
    {@"selectedTextColor",                 0,      0,      0},
    {@"selectedTextBackgroundColor",       0.703F, 0.845F, 1},       // B3D7FF
    // tables
    {@"gridColor",                         0.802F, 0.802F, 0.802F},  // CCCCCC
    {@"headerColor",                       0.968F, 0.968F, 0.968F},  // F6F6F6
    {@"headerTextColor",                   0,      0,      0},
    {@"rowBackgroundColor",                1,      1,      1},
    {@"alternateRowBackgroundColor",       0.955F, 0.966F, 0.982F},  // F3F6FA
};
static const LightColor blueTint = {nil, 0.217F, 0.461F, 0.845F};      // 3775D7
static const LightColor graphiteTint = {nil, 0.526F, 0.554F, 0.589F};  // 868D96
// clang-format on

enum { kLightColors = sizeof lightColors / sizeof *lightColors };

static NSColor* Made(const LightColor* light) {
  return [NSColor colorWithCalibratedRed:light->red green:light->green blue:light->blue alpha:1];
}

NSColor* QVXLightColor(NSString* name) {
  for (int i = 0; i < kLightColors; ++i)
    if ([lightColors[i].name isEqual:name]) return Made(&lightColors[i]);
  return nil;
}

// NO for a named colour and a pattern too.
static BOOL HasMissingNumber(NSColor* color) {
  if (![color colorSpace]) return NO;
  CGFloat components[QVXMostComponents];
  [color getComponents:components];
  for (NSInteger i = 0; i < [color numberOfComponents]; ++i)
    if (isnan(components[i])) return YES;
  return NO;
}

@implementation NSColor (QVXSystem)

// The colour in a user default or a theme. nil for a text that is none: GNUstep raises for one that breaks
// off, and NSColor would start with half its colours; of a missing number it makes one that is none.
+ (NSColor*)colorFromString:(NSString*)text {
  static QVXMethod stock;
  QVXMethod read = QVXStockClassMethod("NSColor", _cmd, &stock);
  @try {
    NSColor* color = ((id(*)(id, SEL, id))read)(self, _cmd, text);
    return HasMissingNumber(color) ? nil : color;
  } @catch (NSException* exception) {
    return nil;
  }
}

+ (NSColor*)underPageBackgroundColor {
  return [NSColor colorWithCatalogName:QVXSystemCatalogue colorName:@"underPageBackgroundColor"];
}

// Clear stands for a control that is not tinted. Every other tint, known or not, is the current one: blue.
+ (NSColor*)colorForControlTint:(NSControlTint)tint {
  if (tint == NSGraphiteControlTint) return Made(&graphiteTint);
  if (tint == NSClearControlTint)
    return [[NSColor controlColor] colorUsingColorSpaceName:NSCalibratedRGBColorSpace];
  return Made(&blueTint);
}

@end

@implementation NSColorList (QVXSystem)

// GNUstep hands its own list in while it is still empty, and then fills it, or the one that a colour folder
// has, with what is missing there.
+ (void)_setDefaultSystemColorList:(NSColorList*)list {
  static QVXMethod stock;
  NSColorList* filled = [NSColorList colorListNamed:QVXSystemCatalogue];
  if (!filled) filled = list;
  for (int i = 0; i < kLightColors; ++i)
    if (![filled colorWithKey:lightColors[i].name])
      [filled setColor:Made(&lightColors[i]) forKey:lightColors[i].name];
  ((void (*)(id, SEL, id))QVXStockClassMethod("NSColorList", _cmd, &stock))(self, _cmd, list);
}

@end
