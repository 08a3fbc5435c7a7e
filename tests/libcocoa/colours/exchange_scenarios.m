// tests/libcocoa/colours/exchange_scenarios.m - files between this program and one with GNUstep alone.
//
// The other program is started for it: the same sources, linked without libcocoa.
#import "tests/libcocoa/colours/scenario.h"

#include <stdio.h>
#include <stdlib.h>

NSString* ListAsText(NSString* path) {
  NSColorList* list = [[[NSColorList alloc] initWithName:@"Exchanged" fromFile:path] autorelease];
  NSMutableArray* shown = [NSMutableArray array];
  for (NSString* key in [list allKeys])
    [shown addObject:[NSString stringWithFormat:@"%@ %@", key, Shown([list colorWithKey:key])]];
  return list ? Joined(shown) : @"no list";
}

static NSColorList* Stock(void) {
  NSColorList* list = [[[NSColorList alloc] initWithName:@"Exchanged"] autorelease];
  [list setColor:[NSColor redColor] forKey:@"red"];
  [list setColor:[NSColor colorWithDeviceCyan:0.1 magenta:0.2 yellow:0.3 black:0.4 alpha:0.5] forKey:@"ink"];
  [list setColor:[NSColor colorWithDeviceWhite:0.25 alpha:1] forKey:@"gray"];
  return list;
}

BOOL WriteStockList(NSString* path) {
  return [Stock() writeToFile:path];
}

// What the program with GNUstep alone answers.
static NSString* Elsewhere(const char* verb, NSString* path) {
  NSString* command = [NSString stringWithFormat:@"'%s' %s '%@'", getenv("QVX_SCENARIOS_PLAIN"), verb, path];
  FILE* other = popen([command fileSystemRepresentation], "r");
  char answer[1024] = "";
  if (!other || !fgets(answer, sizeof answer, other)) strcpy(answer, "no answer");
  if (other && pclose(other) != 0) strcpy(answer, "a failure");
  answer[strcspn(answer, "\n")] = 0;
  return [NSString stringWithUTF8String:answer];
}

static NSString* StockRead(void) {
  NSString* path = InScratch(@"stock.clr");
  WriteStockList(path);
  return Elsewhere("read", path);
}

static NSString* CustomRead(void) {
  NSColorList* list = Stock();
  [list setColor:[NSColor colorWithSRGBRed:0.25 green:0.5 blue:0.75 alpha:0.5] forKey:@"sRGB"];
  NSString* path = InScratch(@"custom.clr");
  [list writeToFile:path];
  return Elsewhere("read", path);
}

static NSString* PatternRead(void) {
  NSColorList* list = [[[NSColorList alloc] initWithName:@"Exchanged"] autorelease];
  [list setColor:Pattern() forKey:@"pattern"];
  [list setColor:[NSColor redColor] forKey:@"red"];
  NSString* path = InScratch(@"pattern.clr");
  [list writeToFile:path];
  return Elsewhere("read", path);
}

static NSString* Written(void) {
  NSString* path = InScratch(@"other.clr");
  NSString* answer = Elsewhere("write", path);
  return [NSString stringWithFormat:@"%@: %@", answer, ListAsText(path)];
}

static NSString* WrittenBetween(void) {
  NSString* path = InScratch(@"shared.clr");
  [Stock() writeToFile:path];
  Elsewhere("write", path);
  return ListAsText(path);
}

#define STOCK_LIST                                                                                 \
  "red 1.000 0.000 0.000 1.000 CalibratedRGB, ink 0.100 0.200 0.300 0.400 0.500 DeviceCMYK, gray " \
  "0.250 1.000 DeviceWhite"

const Scenario exchangeScenarios[] = {
    {"a program with GNUstep alone reads a list of stock colours", STOCK_LIST, STOCK_LIST, StockRead},
    {"a program with GNUstep alone reads a custom colour as its device twin",
     STOCK_LIST ", sRGB 0.250 0.500 0.750 0.500 CalibratedRGB",
     STOCK_LIST ", sRGB 0.250 0.500 0.750 0.500 DeviceRGB", CustomRead},
    {"a program with GNUstep alone reads a list with a pattern", "raises NSInvalidArgumentException",
     "pattern 0.500 1.000 DeviceWhite, red 1.000 0.000 0.000 1.000 CalibratedRGB", PatternRead},
    {"a list that a program with GNUstep alone wrote is read", "yes: " STOCK_LIST, "yes: " STOCK_LIST,
     Written},
    {"a list that another program has rewritten is read", STOCK_LIST, STOCK_LIST, WrittenBetween},
    {NULL, NULL, NULL, NULL},
};
