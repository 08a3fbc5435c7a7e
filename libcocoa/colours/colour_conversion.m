// libcocoa/colours/colour_conversion.m - colours from one space to another: the rules, in one place.
#import "libcocoa/colours/colour_conversion.h"

#include <string.h>

#import "libcocoa/colours/NSColor+Named.h"
#import "libcocoa/colours/QVXProfileColor.h"
#import "libcocoa/colours/gnustep_colours.h"
#include "libcocoa/runtime/kept_class.h"

// A new colour of the class, to be initialised. GNUstep's own factories look their class up by its name,
// which is a third of what they cost.
static id NewColor(Class* kept, const char* className) {
  return [NSAllocateObject(QVXKeptClass(kept, className), 0, NULL) autorelease];
}

NSColor* QVXColorWithComponents(NSColorSpace* space, const CGFloat* c) {
  static Class kept[QVXSpaceKinds];
  QVXSpaceKind kind = QVXKindOfSpace(space);
  Class* class = &kept[kind];
  switch (kind) {
    case QVXDeviceRGBSpace:
      return [NewColor(class, "GSDeviceRGBColor") initWithDeviceRed:c[0] green:c[1] blue:c[2] alpha:c[3]];
    case QVXGenericRGBSpace:
      return [NewColor(class, "GSCalibratedRGBColor") initWithCalibratedRed:c[0]
                                                                      green:c[1]
                                                                       blue:c[2]
                                                                      alpha:c[3]];
    case QVXDeviceGraySpace:
      return [NewColor(class, "GSDeviceWhiteColor") initWithDeviceWhite:c[0] alpha:c[1]];
    case QVXGenericGraySpace:
      return [NewColor(class, "GSCalibratedWhiteColor") initWithCalibratedWhite:c[0] alpha:c[1]];
    case QVXDeviceCMYKSpace:
      return [NewColor(class, "GSDeviceCMYKColor") initWithDeviceCyan:c[0]
                                                              magenta:c[1]
                                                               yellow:c[2]
                                                                black:c[3]
                                                                alpha:c[4]];
    default:
      return QVXMakeProfileColor(space, c);
  }
}

// A space that a conversion leads from or to.
typedef struct {
  NSColorSpace* space;
  QVXSpaceFacts is;
} End;

static End EndOf(NSColorSpace* space) {
  return (End){space, QVXFactsOfSpace(space)};
}

// The name by which GNUstep's formulas know the space; nil if the space is converted through profiles.
static NSString* FormulaName(const End* end) {
  if (end->is.stockName) return end->is.stockName;
  return end->is.kind == QVXGenericCMYKSpace && !end->is.profile ? NSDeviceCMYKColorSpace : nil;
}

// Whether a space without a profile is converted by formula.
static BOOL IsCMYK(const End* end) {
  return QVXModelOfSpace(end->space) == NSCMYKColorSpaceModel;
}

static const QVXProfile* WorkingProfile(const End* end) {
  return end->is.profile ? end->is.profile : QVXWorkingProfileOfSpace(end->space);
}

// By GNUstep's formulas. Generic CMYK without a profile takes part as device CMYK.
static NSColor* ConvertByFormula(NSColor* color, const End* from, const End* to) {
  CGFloat components[QVXMostComponents];
  if (!from->is.stockName) {
    [color getComponents:components];
    color = QVXColorWithComponents(QVXSpaceOfKind(QVXDeviceCMYKSpace), components);
  }
  color = [color colorUsingColorSpaceName:FormulaName(to) device:nil];
  if (to->is.stockName || !color) return color;
  [color getComponents:components];
  return QVXColorWithComponents(to->space, components);
}

// Through Little CMS. A CMYK space without a profile is converted by formula to device RGB first, which is
// sRGB.
static NSColor* ConvertByProfile(NSColor* color, const End* from, const End* to) {
  CGFloat components[QVXMostComponents];
  double source[QVXMostComponents];
  double result[QVXMostChannels];
  [color getComponents:components];
  const int alpha = from->is.channels;  // the place of the source's
  for (int i = 0; i <= alpha; ++i) source[i] = components[i];
  const QVXProfile* fromProfile = WorkingProfile(from);
  const QVXProfile* toProfile = WorkingProfile(to);
  if ((!fromProfile && !IsCMYK(from)) || (!toProfile && !IsCMYK(to))) return nil;
  const QVXProfile* srgb = fromProfile && toProfile ? NULL : QVXProfileBuiltIn(QVXBuiltInSRGB);
  if (!fromProfile) {
    for (int i = 0; i < 3; ++i) source[i] = QVXClip(1 - source[3] - source[i]);
    fromProfile = srgb;
  }
  const QVXProfile* target = toProfile ? toProfile : srgb;
  if (!fromProfile || !target) return nil;
  if (fromProfile == target)
    memcpy(result, source, sizeof result);
  else if (!QVXConvert(fromProfile, source, target, result))
    return nil;
  if (!toProfile) {
    for (int i = 0; i < 3; ++i) result[i] = 1 - result[i];
    result[3] = 0;
  }
  for (int i = 0; i < to->is.channels; ++i) components[i] = (CGFloat)result[i];
  components[to->is.channels] = (CGFloat)source[alpha];
  return QVXColorWithComponents(to->space, components);
}

// Whether colours of the one space are colours of another as they are. A space that equals one of GNUstep's
// has the same numbers, but no colours of GNUstep's kinds.
static BOOL IsSame(const End* from, const End* to) {
  return from->is.profile && from->is.profile == to->is.profile && !to->is.stockName;
}

NSColor* QVXColorInSpace(NSColor* color, NSColorSpace* space) {
  if (!space || !color) return nil;
  NSColorSpace* own = [color colorSpace];
  if (!own) {
    color = QVXConcreteColor(color);
    own = [color colorSpace];
  }
  if (!own) return nil;
  if (own == space) return color;
  End from = EndOf(own);
  End to = EndOf(space);
  if (IsSame(&from, &to)) return color;
  if (to.is.channels < 1) return nil;
  return FormulaName(&from) && FormulaName(&to) ? ConvertByFormula(color, &from, &to)
                                                : ConvertByProfile(color, &from, &to);
}
