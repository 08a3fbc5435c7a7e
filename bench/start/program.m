// bench/start/program.m - a GNUstep program that ends at once, or when it has a colour.
//
// With "colour" it makes its first colour; with "converted" it converts an sRGB colour into a calibrated one,
// which GNUstep alone takes for the same. Then it prints its own memory: resident, its share of it, and what
// is its own alone, in KiB.
#import <AppKit/AppKit.h>
#include <stdio.h>
#include <string.h>

static int Field(const char* text, const char* name) {
  const char* found = strstr(text, name);
  int value = 0;
  return found && sscanf(found + strlen(name), "%d", &value) == 1 ? value : 0;
}

static void PrintMemory(void) {
  static char text[4096];
  FILE* rollup = fopen("/proc/self/smaps_rollup", "r");
  if (!rollup) return;
  size_t size = fread(text, 1, sizeof text - 1, rollup);
  fclose(rollup);
  text[size] = 0;
  printf("%d %d %d\n", Field(text, "\nRss:"), Field(text, "\nPss:"),
         Field(text, "\nPrivate_Clean:") + Field(text, "\nPrivate_Dirty:"));
}

int main(int argc, char** argv) {
  NSAutoreleasePool* pool = [NSAutoreleasePool new];
  const char* until = argc > 1 ? argv[1] : "";
  if (strcmp(until, "colour") == 0 && ![NSColor colorWithDeviceRed:0.25 green:0.5 blue:0.75 alpha:1])
    return 1;
  if (strcmp(until, "converted") == 0) {
    NSColor* color = [NSColor colorWithSRGBRed:0.25 green:0.5 blue:0.75 alpha:1];
    if (![color colorUsingColorSpaceName:NSCalibratedRGBColorSpace]) return 1;
  }
  PrintMemory();
  [pool release];
  return 0;
}
