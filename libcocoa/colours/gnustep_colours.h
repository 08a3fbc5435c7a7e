// libcocoa/colours/gnustep_colours.h - GNUstep's own kinds of colour. No public header declares them, but the
// classes are exported.
#pragma once

#import <AppKit/AppKit.h>

@interface GSWhiteColor : NSColor {
  CGFloat _white_component;
  CGFloat _alpha_component;
}
@end

@interface GSDeviceWhiteColor : GSWhiteColor
@end

@interface GSCalibratedWhiteColor : GSWhiteColor
@end

@interface GSDeviceCMYKColor : NSColor {
  CGFloat _cyan_component;
  CGFloat _magenta_component;
  CGFloat _yellow_component;
  CGFloat _black_component;
  CGFloat _alpha_component;
}
@end

@interface GSRGBColor : NSColor {
  CGFloat _red_component;
  CGFloat _green_component;
  CGFloat _blue_component;
  CGFloat _hue_component;
  CGFloat _saturation_component;
  CGFloat _brightness_component;
  CGFloat _alpha_component;
}
@end

@interface GSDeviceRGBColor : GSRGBColor
@end

@interface GSCalibratedRGBColor : GSRGBColor
@end

@interface GSNamedColor : NSColor {
  NSString* _catalog_name;
  NSString* _color_name;
  NSString* _cached_name_space;
  NSColor* _cached_color;
}
- (void)recache;
@end

@interface GSPatternColor : NSColor {
  NSImage* _pattern;
}
@end
