// libcocoa/colours/NSColor+Named.m - named colours: what they stand for now, and names that are missing.
#import "libcocoa/colours/NSColor+Named.h"

#import "libcocoa/colours/NSColor+System.h"
#import "libcocoa/colours/NSColorSpace+Predefined.h"
#import "libcocoa/colours/gnustep_colours.h"
#import "libcocoa/runtime/stock_methods.h"

// What the lists hold for the name now; nil if nothing. A list "System" of the user's may lack a system
// colour.
static NSColor* ListedColor(NSString* catalogue, NSString* name) {
  NSColor* color = [[NSColorList colorListNamed:catalogue] colorWithKey:name];
  return color || ![catalogue isEqual:QVXSystemCatalogue] ? color : QVXLightColor(name);
}

NSColor* QVXConcreteColor(NSColor* color) {
  // A list may hold names in turn; a circle of names stands for nothing.
  for (int depth = 0; depth < 8; ++depth) {
    if (![color isKindOfClass:[GSNamedColor class]]) return color;
    color = ListedColor([color catalogNameComponent], [color colorNameComponent]);
  }
  return nil;
}

@implementation GSNamedColor (QVXNamed)

// GNUstep would raise here for a name that is missing, with its lock held, and block every later use of a
// named colour.
- (id)initWithCatalogName:(NSString*)catalogue colorName:(NSString*)name {
  static QVXMethod stock;
  if (catalogue && name)
    return ((id(*)(id, SEL, id, id))QVXStockMethod("GSNamedColor", _cmd, &stock))(self, _cmd, catalogue,
                                                                                  name);
  [self release];
  return nil;
}

// GNUstep keeps its first answer, even nil, and misses later changes of the list.
- (NSColor*)colorUsingColorSpaceName:(NSString*)space device:(NSDictionary*)device {
  if ([space isEqual:NSNamedColorSpace]) return self;
  return [QVXConcreteColor(self) colorUsingColorSpaceName:QVXAskedName(space, device) device:device];
}

// A colour with components, whatever the alpha; nil if the name stands for nothing.
- (NSColor*)colorWithAlphaComponent:(CGFloat)alpha {
  return [QVXConcreteColor(self) colorWithAlphaComponent:alpha];
}

// The handle of what the name stands for now, so that it has components; its own if it stands for nothing.
- (CGColorRef)CGColor {
  NSColor* color = [[QVXConcreteColor(self) retain] autorelease];
  return color ? [color CGColor] : [super CGColor];
}

@end
