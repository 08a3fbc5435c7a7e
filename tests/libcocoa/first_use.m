// tests/libcocoa/first_use.m - what several threads of a program ask the colour classes first.
#import "tests/libcocoa/first_use.h"

#import <AppKit/AppKit.h>

static id Answer(int question) {
  switch (question) {
    case 0:
      return [NSColorList availableColorLists];
    case 1:
      return [NSColor redColor];
    case 2:
      return [[NSColor controlColor] colorUsingColorSpaceName:NSCalibratedRGBColorSpace];
    default:
      return [[NSColor colorWithDeviceWhite:0.5F
                                      alpha:1] colorUsingColorSpace:[NSColorSpace genericRGBColorSpace]];
  }
}

int AskFirst(int question) {
  NSAutoreleasePool* pool = [NSAutoreleasePool new];
  int answered = Answer(question) != nil;
  [pool release];
  return answered;
}
