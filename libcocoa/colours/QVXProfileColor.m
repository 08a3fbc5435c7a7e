// libcocoa/colours/QVXProfileColor.m - a colour in a space that GNUstep has no colour class for.
#import "libcocoa/colours/QVXProfileColor.h"

#include <math.h>
#include <string.h>

#import "libcocoa/colours/colour_conversion.h"
#import "libcocoa/colours/exact_colours.h"
#import "libcocoa/colours/hue_saturation_brightness.h"

static CGFloat Clip(CGFloat value) {
  return value > 0 ? (value < 1 ? value : 1) : 0;
}

@implementation QVXProfileColor

+ (QVXProfileColor*)colorInSpace:(NSColorSpace*)space components:(const CGFloat*)components {
  int channels = [space numberOfColorComponents];
  if (channels < 1 || channels > QVXMostChannels) return nil;
  QVXProfileColor* color = [[self alloc] autorelease];
  color->_space = [space retain];
  color->_channels = (unsigned)channels;
  BOOL isLab = [space colorSpaceModel] == NSLABColorSpaceModel;
  for (int i = 0; i < channels; i++)
    color->_components[i] = !isLab ? Clip(components[i]) : isfinite(components[i]) ? components[i] : 0;
  color->_components[channels] = Clip(components[channels]);
  return color;
}

- (void)dealloc {
  [_space release];
  [super dealloc];
}

- (id)copyWithZone:(NSZone*)zone {
  (void)zone;
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
  for (unsigned i = 0; i <= _channels; i++)
    if (twin->_components[i] != _components[i]) return NO;
  return YES;
}

- (NSUInteger)hash {
  return QVXHashOfComponents(_components, _channels + 1) ^ [_space hash];
}

- (NSString*)description {
  NSMutableString* text =
      [NSMutableString stringWithFormat:@"%@ %@", NSCustomColorSpace, [_space description]];
  for (unsigned i = 0; i <= _channels; i++) [text appendFormat:@" %g", (double)_components[i]];
  return text;
}

// --- components of the space's own model; of any other, the inherited methods refuse

- (CGFloat)qvx_component:(unsigned)index ofModel:(NSColorSpaceModel)model refusal:(SEL)selector {
  if ([_space colorSpaceModel] == model) return _components[index];
  QVXRefuseComponent(self, selector);
}

- (CGFloat)redComponent {
  return [self qvx_component:0 ofModel:NSRGBColorSpaceModel refusal:_cmd];
}

- (CGFloat)greenComponent {
  return [self qvx_component:1 ofModel:NSRGBColorSpaceModel refusal:_cmd];
}

- (CGFloat)blueComponent {
  return [self qvx_component:2 ofModel:NSRGBColorSpaceModel refusal:_cmd];
}

- (CGFloat)whiteComponent {
  return [self qvx_component:0 ofModel:NSGrayColorSpaceModel refusal:_cmd];
}

- (CGFloat)cyanComponent {
  return [self qvx_component:0 ofModel:NSCMYKColorSpaceModel refusal:_cmd];
}

- (CGFloat)magentaComponent {
  return [self qvx_component:1 ofModel:NSCMYKColorSpaceModel refusal:_cmd];
}

- (CGFloat)yellowComponent {
  return [self qvx_component:2 ofModel:NSCMYKColorSpaceModel refusal:_cmd];
}

- (CGFloat)blackComponent {
  return [self qvx_component:3 ofModel:NSCMYKColorSpaceModel refusal:_cmd];
}

- (QVXHSB)qvx_hsbForRefusal:(SEL)selector {
  if ([_space colorSpaceModel] != NSRGBColorSpaceModel) QVXRefuseComponent(self, selector);
  return QVXHSBFromRGB(_components[0], _components[1], _components[2]);
}

- (CGFloat)hueComponent {
  return [self qvx_hsbForRefusal:_cmd].hue;
}

- (CGFloat)saturationComponent {
  return [self qvx_hsbForRefusal:_cmd].saturation;
}

- (CGFloat)brightnessComponent {
  return [self qvx_hsbForRefusal:_cmd].brightness;
}

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

// --- derived colours

- (NSColor*)colorWithAlphaComponent:(CGFloat)alpha {
  CGFloat components[QVXMostChannels + 1];
  [self getComponents:components];
  if (components[_channels] == alpha) return self;
  components[_channels] = alpha;
  return [QVXProfileColor colorInSpace:_space components:components];
}

- (NSColor*)colorUsingColorSpaceName:(NSString*)name device:(NSDictionary*)device {
  if (!name) name = [device objectForKey:NSDeviceColorSpaceName];
  if (!name) name = NSCalibratedRGBColorSpace;
  if ([name isEqual:NSCustomColorSpace]) return self;
  return QVXColourInSpace(self, [NSColorSpace colorSpaceForColorSpaceName:name]);
}

- (void)set {
  [[self colorUsingColorSpaceName:NSDeviceRGBColorSpace] set];
}

- (void)setFill {
  [[self colorUsingColorSpaceName:NSDeviceRGBColorSpace] setFill];
}

- (void)setStroke {
  [[self colorUsingColorSpaceName:NSDeviceRGBColorSpace] setStroke];
}

// --- archives

// Every GNUstep program can read the archive: it holds the device RGB twin, with sRGB's numbers. A keyed
// archive also holds the colour itself, under a key that others do not look at.
- (void)encodeWithCoder:(NSCoder*)coder {
  NSColor* twin = [self colorUsingColorSpaceName:NSDeviceRGBColorSpace];
  if (!twin)
    [NSException raise:NSInvalidArchiveOperationException
                format:@"wanted a colour that can be converted to device RGB, found %@; convert it before it "
                       @"is archived",
                       self];
  [twin encodeWithCoder:coder];
  if ([coder allowsKeyedCoding]) QVXEncodeExactColour(self, coder);
}

@end
