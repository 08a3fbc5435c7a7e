// libcocoa/colours/QVXProfileColor.m - a colour in a space that GNUstep has no colour class for.
#import "libcocoa/colours/QVXProfileColor.h"

#include <math.h>
#include <string.h>

#import "libcocoa/colours/NSColor+Components.h"
#import "libcocoa/colours/hue_saturation_brightness.h"
#include "libcocoa/runtime/kept_class.h"

@implementation QVXProfileColor

// What is no number stays, as in GNUstep's own colours.
static CGFloat Clipped(CGFloat component) {
  return component < 0 ? 0 : component > 1 ? 1 : component;
}
static CGFloat Held(CGFloat component, BOOL isLab) {
  if (!isLab) return Clipped(component);
  return isnan(component) ? component : (CGFloat)QVXHeldComponent(component, YES);
}

QVXProfileColor* QVXMakeProfileColor(NSColorSpace* space, const CGFloat* components) {
  int channels = QVXChannelsOfSpace(space);
  if (channels < 1 || channels > QVXMostChannels) return nil;
  static Class own;
  QVXProfileColor* color = [NSAllocateObject(QVXKeptClass(&own, "QVXProfileColor"), 0, NULL) autorelease];
  color->_space = [space retain];
  color->_channels = (unsigned)channels;
  BOOL isLab = QVXModelOfSpace(space) == NSLABColorSpaceModel;
  for (int i = 0; i < channels; ++i) color->_components[i] = Held(components[i], isLab);
  color->_components[channels] = Clipped(components[channels]);
  return color;
}

- (void)dealloc {
  [_space release];
  [super dealloc];
}

- (id)copyWithZone:(NSZone*)zone {
  return [self retain];
}

- (NSString*)colorSpaceName {
  return NSCustomColorSpace;
}

- (NSColorSpace*)colorSpace {
  return _space;
}

- (NSInteger)numberOfComponents {
  return (NSInteger)_channels + 1;
}

- (void)getComponents:(CGFloat*)components {
  if (components) memcpy(components, _components, (_channels + 1) * sizeof *components);
}

- (CGFloat)alphaComponent {
  return _components[_channels];
}

- (BOOL)isEqual:(id)other {
  if (other == self) return YES;
  if (![other isKindOfClass:[QVXProfileColor class]]) return NO;
  const QVXProfileColor* twin = other;
  if (twin->_channels != _channels || ![twin->_space isEqual:_space]) return NO;
  for (unsigned i = 0; i <= _channels; ++i)
    if (twin->_components[i] != _components[i]) return NO;
  return YES;
}

- (NSUInteger)hash {
  return QVXHashOfComponents(_components, _channels + 1) ^ [_space hash];
}

- (NSString*)description {
  return QVXWithComponents([NSString stringWithFormat:@"%@ %@", NSCustomColorSpace, [_space description]],
                           self);
}

// --- components of the space's own model; of any other, the inherited methods refuse

- (CGFloat)qvx_component:(unsigned)index ofModel:(NSColorSpaceModel)model refusal:(SEL)selector {
  if ([_space colorSpaceModel] == model) return _components[index];
  QVXRefuseComponent(self, selector);
}

// clang-format off
- (CGFloat)redComponent { return [self qvx_component:0 ofModel:NSRGBColorSpaceModel refusal:_cmd]; }
- (CGFloat)greenComponent { return [self qvx_component:1 ofModel:NSRGBColorSpaceModel refusal:_cmd]; }
- (CGFloat)blueComponent { return [self qvx_component:2 ofModel:NSRGBColorSpaceModel refusal:_cmd]; }
- (CGFloat)whiteComponent { return [self qvx_component:0 ofModel:NSGrayColorSpaceModel refusal:_cmd]; }
- (CGFloat)cyanComponent { return [self qvx_component:0 ofModel:NSCMYKColorSpaceModel refusal:_cmd]; }
- (CGFloat)magentaComponent { return [self qvx_component:1 ofModel:NSCMYKColorSpaceModel refusal:_cmd]; }
- (CGFloat)yellowComponent { return [self qvx_component:2 ofModel:NSCMYKColorSpaceModel refusal:_cmd]; }
- (CGFloat)blackComponent { return [self qvx_component:3 ofModel:NSCMYKColorSpaceModel refusal:_cmd]; }
// clang-format on

- (QVXHSB)qvx_hsbForRefusal:(SEL)selector {
  if ([_space colorSpaceModel] != NSRGBColorSpaceModel) QVXRefuseComponent(self, selector);
  return QVXHSBFromRGB(_components[0], _components[1], _components[2]);
}

// clang-format off
- (CGFloat)hueComponent { return [self qvx_hsbForRefusal:_cmd].hue; }
- (CGFloat)saturationComponent { return [self qvx_hsbForRefusal:_cmd].saturation; }
- (CGFloat)brightnessComponent { return [self qvx_hsbForRefusal:_cmd].brightness; }
// clang-format on

static void Put(CGFloat* place, CGFloat value) {
  if (place) *place = value;
}

- (void)getRed:(CGFloat*)red green:(CGFloat*)green blue:(CGFloat*)blue alpha:(CGFloat*)alpha {
  if ([_space colorSpaceModel] != NSRGBColorSpaceModel) QVXRefuseComponent(self, _cmd);
  Put(red, _components[0]);
  Put(green, _components[1]);
  Put(blue, _components[2]);
  Put(alpha, _components[3]);
}

- (void)getHue:(CGFloat*)hue
    saturation:(CGFloat*)saturation
    brightness:(CGFloat*)brightness
         alpha:(CGFloat*)alpha {
  QVXHSB hsb = [self qvx_hsbForRefusal:_cmd];
  Put(hue, hsb.hue);
  Put(saturation, hsb.saturation);
  Put(brightness, hsb.brightness);
  Put(alpha, _components[3]);
}

- (void)getWhite:(CGFloat*)white alpha:(CGFloat*)alpha {
  if ([_space colorSpaceModel] != NSGrayColorSpaceModel) QVXRefuseComponent(self, _cmd);
  Put(white, _components[0]);
  Put(alpha, _components[1]);
}

- (void)getCyan:(CGFloat*)cyan
        magenta:(CGFloat*)magenta
         yellow:(CGFloat*)yellow
          black:(CGFloat*)black
          alpha:(CGFloat*)alpha {
  if ([_space colorSpaceModel] != NSCMYKColorSpaceModel) QVXRefuseComponent(self, _cmd);
  Put(cyan, _components[0]);
  Put(magenta, _components[1]);
  Put(yellow, _components[2]);
  Put(black, _components[3]);
  Put(alpha, _components[4]);
}

- (NSColor*)colorWithAlphaComponent:(CGFloat)alpha {
  CGFloat components[QVXMostChannels + 1];
  [self getComponents:components];
  if (components[_channels] == alpha) return self;
  components[_channels] = alpha;
  return QVXMakeProfileColor(_space, components);
}

@end
