// libcocoa/colours/colour_conversion.m - colours from one space to another: the rules, in one place.
#import "libcocoa/colours/colour_conversion.h"

#include <string.h>

#import "libcocoa/colours/NSColor+Named.h"
#import "libcocoa/colours/QVXProfileColor.h"
#include "libcocoa/runtime/kept_class.h"

// The name by which GNUstep's formulas know the space; nil if the space is converted through profiles.
static NSString* FormulaName(NSColorSpace* space) {
  NSString* name = QVXStockNameOfSpace(space);
  if (name) return name;
  return QVXKindOfSpace(space) == QVXGenericCMYKSpace && !QVXProfileOfSpace(space) ? NSDeviceCMYKColorSpace
                                                                                   : nil;
}

NSColor* QVXColorWithComponents(NSColorSpace* space, const CGFloat* c) {
  static Class kept;
  Class colors = QVXKeptClass(&kept, "NSColor");
  switch (QVXKindOfSpace(space)) {
    case QVXDeviceRGBSpace:
      return [colors colorWithDeviceRed:c[0] green:c[1] blue:c[2] alpha:c[3]];
    case QVXGenericRGBSpace:
      return [colors colorWithCalibratedRed:c[0] green:c[1] blue:c[2] alpha:c[3]];
    case QVXDeviceGraySpace:
      return [colors colorWithDeviceWhite:c[0] alpha:c[1]];
    case QVXGenericGraySpace:
      return [colors colorWithCalibratedWhite:c[0] alpha:c[1]];
    case QVXDeviceCMYKSpace:
      return [colors colorWithDeviceCyan:c[0] magenta:c[1] yellow:c[2] black:c[3] alpha:c[4]];
    default:
      return QVXMakeProfileColor(space, c);
  }
}

// By GNUstep's formulas. Generic CMYK without a profile takes part as device CMYK.
static NSColor* ConvertByFormula(NSColor* color, NSColorSpace* from, NSColorSpace* to) {
  CGFloat components[QVXMostComponents];
  if (!QVXStockNameOfSpace(from)) {
    [color getComponents:components];
    color = QVXColorWithComponents(QVXSpaceOfKind(QVXDeviceCMYKSpace), components);
  }
  color = [color colorUsingColorSpaceName:FormulaName(to) device:nil];
  if (QVXStockNameOfSpace(to) || !color) return color;
  [color getComponents:components];
  return QVXColorWithComponents(to, components);
}

// Through Little CMS. A CMYK space without a profile is converted by formula to device RGB first, which is
// sRGB.
static NSColor* ConvertByProfile(NSColor* color, NSColorSpace* from, NSColorSpace* to) {
  CGFloat components[QVXMostComponents];
  double source[QVXMostChannels];
  double result[QVXMostChannels];
  [color getComponents:components];
  NSInteger last = [color numberOfComponents] - 1;
  CGFloat alpha = components[last];
  for (NSInteger i = 0; i < last; ++i) source[i] = components[i];
  const QVXProfile* srgb = QVXProfileBuiltIn(QVXBuiltInSRGB);
  const QVXProfile* fromProfile = QVXWorkingProfileOfSpace(from);
  if (!fromProfile) {
    for (int i = 0; i < 3; ++i) source[i] = QVXClip(1 - source[3] - source[i]);
    fromProfile = srgb;
  }
  const QVXProfile* toProfile = QVXWorkingProfileOfSpace(to);
  if (!fromProfile || !srgb) return nil;
  if (fromProfile == (toProfile ? toProfile : srgb))
    memcpy(result, source, sizeof result);
  else if (!QVXConvert(fromProfile, source, toProfile ? toProfile : srgb, result))
    return nil;
  if (!toProfile) {
    for (int i = 0; i < 3; ++i) result[i] = 1 - result[i];
    result[3] = 0;
  }
  int channels = QVXChannelsOfSpace(to);
  for (int i = 0; i < channels; ++i) components[i] = (CGFloat)result[i];
  components[channels] = alpha;
  return QVXColorWithComponents(to, components);
}

// Whether colours of the one space are colours of the other as they are. A space that equals one of GNUstep's
// has the same numbers, but no colours of GNUstep's kinds.
static BOOL IsSame(NSColorSpace* from, NSColorSpace* to) {
  return from == to || (QVXSpacesAreEqual(from, to) && !QVXStockNameOfSpace(to));
}

NSColor* QVXColorInSpace(NSColor* color, NSColorSpace* to) {
  if (!to || !color) return nil;
  NSColorSpace* from = [color colorSpace];
  if (!from) {
    color = QVXConcreteColor(color);
    from = [color colorSpace];
  }
  if (!from) return nil;
  if (IsSame(from, to)) return color;
  if (QVXChannelsOfSpace(to) < 1) return nil;
  return FormulaName(from) && FormulaName(to) ? ConvertByFormula(color, from, to)
                                              : ConvertByProfile(color, from, to);
}
