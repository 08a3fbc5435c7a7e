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
- (id)initWithDeviceWhite:(CGFloat)white alpha:(CGFloat)alpha;
@end

@interface GSCalibratedWhiteColor : GSWhiteColor
- (id)initWithCalibratedWhite:(CGFloat)white alpha:(CGFloat)alpha;
@end

@interface GSDeviceCMYKColor : NSColor {
  CGFloat _cyan_component;
  CGFloat _magenta_component;
  CGFloat _yellow_component;
  CGFloat _black_component;
  CGFloat _alpha_component;
}
- (id)initWithDeviceCyan:(CGFloat)cyan
                 magenta:(CGFloat)magenta
                  yellow:(CGFloat)yellow
                   black:(CGFloat)black
                   alpha:(CGFloat)alpha;
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
- (id)initWithDeviceRed:(CGFloat)red green:(CGFloat)green blue:(CGFloat)blue alpha:(CGFloat)alpha;
@end

@interface GSCalibratedRGBColor : GSRGBColor
- (id)initWithCalibratedRed:(CGFloat)red green:(CGFloat)green blue:(CGFloat)blue alpha:(CGFloat)alpha;
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
