// libcocoa/colours/NSColor+Named.m - named colours: what they stand for now, and names that are missing.
#import "libcocoa/colours/NSColor+Named.h"

#import "libcocoa/colours/gnustep_colours.h"
#import "libcocoa/runtime/stock_methods.h"

static NSString* const kSystemCatalogue = @"System";
static NSString* const kUnderPage = @"underPageBackgroundColor";

// What the lists hold for the name now; nil if nothing. GNUstep's list "System" lacks one of the platform's
// colours.
static NSColor* ListedColor(NSString* catalogue, NSString* name) {
  NSColor* color = [[NSColorList colorListNamed:catalogue] colorWithKey:name];
  if (!color && [catalogue isEqual:kSystemCatalogue] && [name isEqual:kUnderPage])
    color = [NSColor colorWithCalibratedWhite:0.5F alpha:1];
  return color;
}

NSColor* QVXConcreteColor(NSColor* color) {
  // A list may hold names in turn; a circle of names stands for nothing.
  for (int depth = 0; depth < 8; ++depth) {
    if (![color isKindOfClass:[GSNamedColor class]]) return color;
    color = ListedColor([color catalogNameComponent], [color colorNameComponent]);
  }
  return nil;
}

@implementation NSColor (QVXNamed)

+ (NSColor*)colorWithCatalogName:(NSString*)catalogue colorName:(NSString*)name {
  static QVXMethod stock;
  // GNUstep would raise here with its lock held, and block every later use of a named colour.
  if (!catalogue || !name) return nil;
  return ((id(*)(id, SEL, id, id))QVXStockClassMethod("NSColor", _cmd, &stock))(self, _cmd, catalogue, name);
}

+ (NSColor*)underPageBackgroundColor {
  return [NSColor colorWithCatalogName:kSystemCatalogue colorName:kUnderPage];
}

@end

@implementation GSNamedColor (QVXNamed)

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
  if (!space) space = [device objectForKey:NSDeviceColorSpaceName];
  return [QVXConcreteColor(self) colorUsingColorSpaceName:space ? space : NSCalibratedRGBColorSpace
                                                   device:device];
}

@end
