// libcocoa/colours/GSRGBColor+Luminance.m - red, green and blue as gray: how light the colour is.
//
// GNUstep takes the mean of the three, which makes pure green as dark as pure blue. How light a colour is
// depends on its own space; the gray that is asked for only takes the number over. Grays keep their value.
#include <math.h>

#import "libcocoa/colours/colour_conversion.h"
#import "libcocoa/colours/gnustep_colours.h"
#include "libcocoa/profiles/components.h"
#import "libcocoa/runtime/stock_methods.h"

// sRGB, by IEC 61966-2-1: a component as light, and light as a component.
static double LightOf(CGFloat component) {
  double value = QVXClip(component);
  return value <= 0.04045 ? value / 12.92 : pow((value + 0.055) / 1.055, 2.4);
}

static double ComponentOf(double light) {
  return light <= 0.0031308 ? light * 12.92 : 1.055 * pow(light, 1 / 2.4) - 0.055;
}

// Of device RGB, which is sRGB: on sRGB's own curve.
static double DeviceWhite(const CGFloat* rgb) {
  return ComponentOf(0.2126 * LightOf(rgb[0]) + 0.7152 * LightOf(rgb[1]) + 0.0722 * LightOf(rgb[2]));
}

// Of calibrated RGB, through the generic profiles. False only when memory is exhausted.
static BOOL CalibratedWhite(const CGFloat* rgb, double* white) {
  const QVXProfile* from = QVXProfileBuiltIn(QVXBuiltInGenericRGB);
  const QVXProfile* to = QVXProfileBuiltIn(QVXBuiltInGenericGray);
  return from && to && QVXConvert(from, (const double[]){rgb[0], rgb[1], rgb[2]}, to, white);
}

@implementation GSRGBColor (QVXLuminance)

- (NSColor*)colorUsingColorSpaceName:(NSString*)name device:(NSDictionary*)device {
  static QVXMethod stock;
  NSColorSpace* space = [NSColorSpace colorSpaceForColorSpaceName:QVXAskedName(name, device)];
  if (!space || [space colorSpaceModel] != NSGrayColorSpaceModel)
    return ((id(*)(id, SEL, id, id))QVXStockMethod("GSRGBColor", _cmd, &stock))(self, _cmd, name, device);
  const CGFloat rgb[] = {_red_component, _green_component, _blue_component};
  double white;
  if ([self isKindOfClass:[GSDeviceRGBColor class]])
    white = DeviceWhite(rgb);
  else if (!CalibratedWhite(rgb, &white))
    return nil;
  return QVXColorWithComponents(space, (const CGFloat[]){(CGFloat)white, _alpha_component});
}

@end
