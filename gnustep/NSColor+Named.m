// gnustep/NSColor+Named.m - named colours: what they stand for now, and names that are missing.
#import "ColourConversion.h"
#import "GNUstepColours.h"
#import "MethodReplacement.h"

static NSString* const kSystemCatalogue = @"System";
static NSString* const kUnderPage = @"underPageBackgroundColor";

static QVXMethod stockFactory;
static QVXMethod stockInit;

// What the lists hold for the name now; nil if nothing. GNUstep's list "System" lacks one of the platform's colours.
static NSColor* ListedColour(NSString* catalogue, NSString* name) {
  NSColor* color = [[NSColorList colorListNamed:catalogue] colorWithKey:name];
  if (!color && [catalogue isEqual:kSystemCatalogue] && [name isEqual:kUnderPage])
    color = [NSColor colorWithCalibratedWhite:0.5F alpha:1];
  return color;
}

NSColor* QVXConcreteColour(NSColor* color) {
  // A list may hold names in turn; a circle of names stands for nothing.
  for (int depth = 0; depth < 8; depth++) {
    if (![color isKindOfClass:[GSNamedColor class]]) return color;
    color = ListedColour([color catalogNameComponent], [color colorNameComponent]);
  }
  return nil;
}

static id NamedColour(id self, SEL selector, NSString* catalogue, NSString* name) {
  // GNUstep would raise with its lock held, and no named colour could ever be converted again.
  if (!catalogue || !name) return nil;
  return ((id(*)(id, SEL, NSString*, NSString*))stockFactory)(self, selector, catalogue, name);
}

static id InitNamed(GSNamedColor* self, SEL selector, NSString* catalogue, NSString* name) {
  if (catalogue && name)
    return ((id(*)(id, SEL, NSString*, NSString*))stockInit)(self, selector, catalogue, name);
  [self release];
  return nil;
}

// GNUstep remembers the last answer, nil included, whatever happens to the list.
static id ConvertNamed(GSNamedColor* self, SEL selector, NSString* space, NSDictionary* device) {
  (void)selector;
  if ([space isEqual:NSNamedColorSpace]) return self;
  if (!space) space = [device objectForKey:NSDeviceColorSpaceName];
  return [QVXConcreteColour(self) colorUsingColorSpaceName:space ? space : NSCalibratedRGBColorSpace
                                                    device:device];
}

@implementation NSColor (QVXNamed)
+ (NSColor*)underPageBackgroundColor {
  return [NSColor colorWithCatalogName:kSystemCatalogue colorName:kUnderPage];
}
@end

@interface QVXNamedCorrections : NSObject
@end

@implementation QVXNamedCorrections
+ (void)load {
  stockFactory =
      QVXReplaceClassMethod("NSColor", @selector(colorWithCatalogName:colorName:), (QVXMethod)NamedColour);
  stockInit = QVXReplaceMethod("GSNamedColor", @selector(initWithCatalogName:colorName:), (QVXMethod)InitNamed);
  QVXReplaceMethod("GSNamedColor", @selector(colorUsingColorSpaceName:device:),
                                     (QVXMethod)ConvertNamed);
}
@end
