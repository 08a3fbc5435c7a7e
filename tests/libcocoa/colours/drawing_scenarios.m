// tests/libcocoa/colours/drawing_scenarios.m - drawing with a colour where there is a graphics context.
#import "tests/libcocoa/colours/scenario.h"

// Tells what it is asked to do.
@interface TellingContext : NSGraphicsContext {
 @public
  NSMutableString* told;
}
@end

@implementation TellingContext
- (void)DPSsetgray:(CGFloat)gray {
  [told appendFormat:@"gray %g; ", (double)gray];
}
- (void)DPSsetrgbcolor:(CGFloat)red:(CGFloat)green:(CGFloat)blue {
  [told appendFormat:@"rgb %g %g %g; ", (double)red, (double)green, (double)blue];
}
- (void)DPSsetcmykcolor:(CGFloat)cyan:(CGFloat)magenta:(CGFloat)yellow:(CGFloat)black {
  [told appendFormat:@"cmyk %g %g %g %g; ", (double)cyan, (double)magenta, (double)yellow, (double)black];
}
- (void)DPSsetalpha:(CGFloat)alpha {
  [told appendFormat:@"alpha %g; ", (double)alpha];
}
- (void)DPSrectfill:(CGFloat)x:(CGFloat)y:(CGFloat)width:(CGFloat)height {
  [told appendFormat:@"fill %g %g %g %g; ", (double)x, (double)y, (double)width, (double)height];
}
- (void)DPSgsave {
}
- (void)DPSgrestore {
}
- (void)dealloc {
  [told release];
  [super dealloc];
}
@end

static TellingContext* Context(void) {
  TellingContext* context = [[[TellingContext alloc] initWithContextInfo:nil] autorelease];
  context->told = [NSMutableString new];
  [NSGraphicsContext setCurrentContext:context];
  return context;
}

static NSString* Set(NSColor* color) {
  TellingContext* context = Context();
  [color set];
  return context->told;
}

SCENARIO("a gray is set in a graphics context", "gray 0.25; alpha 0.5; ", "gray 0.25; alpha 0.5; ") {
  return Set([NSColor colorWithDeviceWhite:0.25 alpha:0.5]);
}
SCENARIO("an RGB colour is set in a graphics context", "rgb 0.25 0.5 0.75; alpha 0.5; ",
         "rgb 0.25 0.5 0.75; alpha 0.5; ") {
  return Set([NSColor colorWithDeviceRed:0.25 green:0.5 blue:0.75 alpha:0.5]);
}
SCENARIO("a CMYK colour is set in a graphics context", "cmyk 0.25 0.5 0.75 0.125; alpha 0.5; ",
         "cmyk 0.25 0.5 0.75 0.125; alpha 0.5; ") {
  return Set([NSColor colorWithDeviceCyan:0.25 magenta:0.5 yellow:0.75 black:0.125 alpha:0.5]);
}

SCENARIO("a swatch is drawn in a graphics context", "gray 0.25; alpha 1; fill 1 2 3 4; ",
         "gray 0.25; alpha 1; fill 1 2 3 4; ") {
  TellingContext* context = Context();
  [[NSColor colorWithDeviceWhite:0.25 alpha:1] drawSwatchInRect:NSMakeRect(1, 2, 3, 4)];
  return context->told;
}
