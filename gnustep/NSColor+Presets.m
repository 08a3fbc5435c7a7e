// gnustep/NSColor+Presets.m - the predefined colours: one object per name.
//
// The values are GNUstep's own: each method is asked once, and what it answers is kept for ever.
#import "ColourClasses.h"
#import "MethodReplacement.h"

typedef struct {
  const char* name;
  QVXMethod make;  // GNUstep's method
  NSColor* color;  // filled once
} Preset;

static Preset presets[] = {
    {"blackColor", NULL, nil},        {"blueColor", NULL, nil},         {"brownColor", NULL, nil},
    {"clearColor", NULL, nil},        {"cyanColor", NULL, nil},         {"darkGrayColor", NULL, nil},
    {"grayColor", NULL, nil},         {"greenColor", NULL, nil},        {"lightGrayColor", NULL, nil},
    {"magentaColor", NULL, nil},      {"orangeColor", NULL, nil},       {"purpleColor", NULL, nil},
    {"redColor", NULL, nil},          {"whiteColor", NULL, nil},        {"yellowColor", NULL, nil},
    {"systemBlueColor", NULL, nil},   {"systemBrownColor", NULL, nil},  {"systemGrayColor", NULL, nil},
    {"systemGreenColor", NULL, nil},  {"systemOrangeColor", NULL, nil}, {"systemPinkColor", NULL, nil},
    {"systemPurpleColor", NULL, nil}, {"systemRedColor", NULL, nil},    {"systemYellowColor", NULL, nil},
};
enum { kPresets = sizeof presets / sizeof *presets };

static SEL selectors[kPresets];

static id SharedPreset(id self, SEL selector) {
  (void)self;
  unsigned i = 0;
  while (!sel_isEqual(selectors[i], selector)) i++;
  Preset* preset = &presets[i];
  NSColor* color = __atomic_load_n(&preset->color, __ATOMIC_ACQUIRE);
  if (color) return color;
  NSColor* made = [((id(*)(id, SEL))preset->make)([NSColor class], selector) retain];
  if (__atomic_compare_exchange_n(&preset->color, &color, made, NO, __ATOMIC_ACQ_REL, __ATOMIC_ACQUIRE))
    return made;
  [made release];  // another thread was first
  return color;
}

@interface QVXPresetCorrections : NSObject
@end

@implementation QVXPresetCorrections
+ (void)load {
  for (unsigned i = 0; i < kPresets; i++) {
    selectors[i] = sel_registerName(presets[i].name);
    presets[i].make = QVXReplaceClassMethod("NSColor", selectors[i], (QVXMethod)SharedPreset);
  }
}
@end
