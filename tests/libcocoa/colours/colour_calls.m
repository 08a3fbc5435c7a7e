// tests/libcocoa/colours/colour_calls.m - the colour classes, for tests written in C++.
#import "tests/libcocoa/colours/colour_calls.h"

#include <objc/runtime.h>
#include <time.h>

#import "libcocoa/colours/NSColor+CoreGraphics.h"
#import "libcocoa/colours/NSColorSpace+Predefined.h"
#import "libcocoa/colours/NSColorSpace+Profiles.h"

// GNUstep's leak counters; its header hides them from builds without assertions.
extern BOOL GSDebugAllocationActive(BOOL active);
extern int GSDebugAllocationCount(Class class);

// A pasteboard that keeps one piece of data.
@interface OneDatum : NSObject {
 @public
  NSData* datum;
}
@end

@implementation OneDatum
- (BOOL)setData:(NSData*)data forType:(NSString*)type {
  (void)type;
  [datum release];
  datum = [data retain];
  return YES;
}
- (NSData*)dataForType:(NSString*)type {
  (void)type;
  return datum;
}
- (void)dealloc {
  [datum release];
  [super dealloc];
}
@end

Space predefinedSpace(const char* selector) {
  return [NSColorSpace performSelector:NSSelectorFromString([NSString stringWithUTF8String:selector])];
}

Space spaceFromProfile(const void* bytes, size_t size) {
  NSAutoreleasePool* pool = [NSAutoreleasePool new];
  NSData* data = [NSData dataWithBytes:bytes length:size];
  NSColorSpace* space = [[NSColorSpace alloc] initWithICCProfileData:data];
  [pool release];
  return space;
}

void releaseSpace(Space space) {
  [(id)space release];
}

size_t profileOfSpace(Space space, void* buffer, size_t capacity) {
  NSData* data = [(NSColorSpace*)space ICCProfileData];
  if ([data length] <= capacity) [data getBytes:buffer length:[data length]];
  return [data length];
}

int componentsOfSpace(Space space) {
  return [(NSColorSpace*)space numberOfColorComponents];
}

int convertColour(Space from, const float* components, Space to, float* converted) {
  NSAutoreleasePool* pool = [NSAutoreleasePool new];
  NSColor* color = [NSColor colorWithColorSpace:(NSColorSpace*)from
                                     components:components
                                          count:[(NSColorSpace*)from numberOfColorComponents] + 1];
  color = [color colorUsingColorSpace:(NSColorSpace*)to];
  int count = color ? (int)[color numberOfComponents] : 0;
  if (color) [color getComponents:converted];
  [pool release];
  return count;
}

static double ProcessorTime(void) {
  struct timespec now;
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return (double)now.tv_sec * 1e6 + (double)now.tv_nsec / 1e3;
}

double microsecondsToConvert(Space from, Space to, int rounds) {
  enum { kAtOnce = 1000 };
  NSAutoreleasePool* outer = [NSAutoreleasePool new];
  const CGFloat components[kMostComponents] = {0.25, 0.5, 0.75, 0.5, 1};
  NSColor* color = [NSColor colorWithColorSpace:(NSColorSpace*)from
                                     components:components
                                          count:[(NSColorSpace*)from numberOfColorComponents] + 1];
  [color colorUsingColorSpace:(NSColorSpace*)to];
  double start = ProcessorTime();
  for (int done = 0; done < rounds; done += kAtOnce) {
    NSAutoreleasePool* pool = [NSAutoreleasePool new];
    for (int i = 0; i < kAtOnce; i++) [color colorUsingColorSpace:(NSColorSpace*)to];
    [pool release];
  }
  double took = ProcessorTime() - start;
  [outer release];
  return took / rounds;
}

int exerciseSpace(Space handle) {
  NSColorSpace* space = (NSColorSpace*)handle;
  NSAutoreleasePool* pool = [NSAutoreleasePool new];
  int answer = 1;
  @try {
    [space localizedName];
    [space description];
    [space hash];
    [space isEqual:[NSColorSpace sRGBColorSpace]];
    const CGFloat components[kMostComponents] = {0.5, 0.25, 0.75, 0.125, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1};
    NSColor* color = [NSColor colorWithColorSpace:space
                                       components:components
                                            count:[space numberOfColorComponents] + 1];
    NSColor* there = [color colorUsingColorSpace:[NSColorSpace sRGBColorSpace]];
    [there colorUsingColorSpace:space];
    [color colorUsingColorSpaceName:NSDeviceCMYKColorSpace];
    [color description];
  } @catch (NSException* exception) {
    answer = kRaised;
  }
  [pool release];
  return answer;
}

// What a program may ask any colour; of a pattern, every pixel.
static void UseColor(NSColor* color) {
  [color colorUsingColorSpaceName:nil];
  [color colorUsingColorSpace:[NSColorSpace sRGBColorSpace]];
  [color hash];
  [color description];
  if (![[color colorSpaceName] isEqual:NSPatternColorSpace]) return;
  for (NSBitmapImageRep* bitmap in [[color patternImage] representations]) {
    unsigned char* planes[5] = {NULL};
    [bitmap getBitmapDataPlanes:planes];
    volatile unsigned char last = 0;
    for (int i = 0; i < 5 && planes[i]; ++i) last = planes[i][[bitmap bytesPerPlane] - 1];
    (void)last;
  }
}

int colorsInListFile(const char* path) {
  NSAutoreleasePool* pool = [NSAutoreleasePool new];
  int answer = -2;
  @try {
    NSColorList* list = [[[NSColorList alloc] initWithName:@"Fuzz"
                                                  fromFile:[NSString stringWithUTF8String:path]] autorelease];
    if (list) answer = (int)[[list allKeys] count];
    for (NSString* key in [list allKeys]) UseColor([list colorWithKey:key]);
  } @catch (NSException* exception) {
    answer = kRaised;
  }
  [pool release];
  return answer;
}

static NSColor* ColorFrom(const void* bytes, size_t size) {
  OneDatum* board = [[OneDatum new] autorelease];
  board->datum = [[NSData alloc] initWithBytes:bytes length:size];
  return [NSColor colorFromPasteboard:(NSPasteboard*)board];
}

int colorFromBytes(const void* bytes, size_t size) {
  NSAutoreleasePool* pool = [NSAutoreleasePool new];
  int answer = kRaised;
  @try {
    NSColor* color = ColorFrom(bytes, size);
    UseColor(color);
    answer = color ? 1 : 0;
  } @catch (NSException* exception) {
    answer = kRaised;
  }
  [pool release];
  return answer;
}

// Counts what is raised, whoever catches it.
static int raised;
static void (*ownRaise)(id, SEL);
static void CountAndRaise(id exception, SEL selector) {
  ++raised;
  ownRaise(exception, selector);
}
static void CountRaised(void) {
  Method method = class_getInstanceMethod([NSException class], @selector(raise));
  if (!ownRaise) ownRaise = (void (*)(id, SEL))(void (*)(void))method_getImplementation(method);
  method_setImplementation(method, (IMP)(void (*)(void))CountAndRaise);
  raised = 0;
}

// FNV-1a, from 2 on.
static unsigned With(unsigned told, const void* bytes, size_t size) {
  for (size_t i = 0; i < size; ++i) told = (told ^ ((const unsigned char*)bytes)[i]) * 16777619U;
  return told < 2 ? 2 : told;
}

static unsigned WithText(unsigned told, NSString* text) {
  const char* bytes = text ? [text UTF8String] : "none";
  return With(told, bytes, strlen(bytes) + 1);
}

static unsigned WithBitmap(unsigned told, NSBitmapImageRep* bitmap) {
  told = WithText(told,
                  [NSString stringWithFormat:@"%@ %d %d %d %d %d %d %@", NSStringFromSize([bitmap size]),
                                             (int)[bitmap pixelsWide], (int)[bitmap pixelsHigh],
                                             (int)[bitmap bitsPerSample], (int)[bitmap samplesPerPixel],
                                             [bitmap hasAlpha], [bitmap isOpaque], [bitmap colorSpaceName]]);
  unsigned char* planes[5] = {NULL};
  [bitmap getBitmapDataPlanes:planes];
  for (int i = 0; i < 5 && planes[i]; ++i) told = With(told, planes[i], (size_t)[bitmap bytesPerPlane]);
  return told;
}

static unsigned WithColor(unsigned told, NSColor* color);

static unsigned WithImage(unsigned told, NSImage* image) {
  told = WithText(told,
                  [NSString stringWithFormat:@"%@ %d %d %d %d %d %d %d", NSStringFromSize([image size]),
                                             [image isDataRetained], [image isFlipped],
                                             [image usesEPSOnResolutionMismatch], [image prefersColorMatch],
                                             [image matchesOnMultipleResolution], [image isCachedSeparately],
                                             [image cacheDepthMatchesImageDepth]]);
  told = WithColor(told, [image backgroundColor]);
  for (NSBitmapImageRep* each in [image representations]) told = WithBitmap(told, each);
  return told;
}

static unsigned WithColor(unsigned told, NSColor* color) {
  NSString* kind = [color colorSpaceName];
  told = WithText(told, kind);
  if (!color) return told;
  if ([kind isEqual:NSPatternColorSpace]) return WithImage(told, [color patternImage]);
  if ([kind isEqual:NSNamedColorSpace])
    return WithText(WithText(told, [color catalogNameComponent]), [color colorNameComponent]);
  CGFloat components[kMostComponents];
  [color getComponents:components];
  told = WithText(told, [[color colorSpace] localizedName]);
  told = With(told, components, (size_t)[color numberOfComponents] * sizeof *components);
  if (![kind isEqual:NSDeviceRGBColorSpace] && ![kind isEqual:NSCalibratedRGBColorSpace]) return told;
  const CGFloat hue[] = {[color hueComponent], [color saturationComponent], [color brightnessComponent]};
  return With(told, hue, sizeof hue);
}

unsigned colorTold(const void* bytes, size_t size) {
  NSAutoreleasePool* pool = [NSAutoreleasePool new];
  unsigned told = 0;
  [NSColor setIgnoresAlpha:NO];
  CountRaised();
  @try {
    NSColor* color = ColorFrom(bytes, size);
    if (color) told = WithColor(2, color);
  } @catch (NSException* exception) {
  }
  if (raised > 0) told = 1;
  [NSColor setIgnoresAlpha:YES];
  [pool release];
  return told;
}

unsigned listTold(const char* path) {
  NSAutoreleasePool* pool = [NSAutoreleasePool new];
  unsigned told = 0;
  CountRaised();
  @try {
    NSColorList* list = [[[NSColorList alloc] initWithName:nil
                                                  fromFile:[NSString stringWithUTF8String:path]] autorelease];
    if (list) told = WithText(2, [list name]);
    for (NSString* key in [list allKeys]) told = WithColor(WithText(told, key), [list colorWithKey:key]);
  } @catch (NSException* exception) {
  }
  if (raised > 0) told = 1;
  [pool release];
  return told;
}

static void ArchiveUnkeyed(id object) {
  [NSUnarchiver unarchiveObjectWithData:[NSArchiver archivedDataWithRootObject:object]];
}
static void ArchiveKeyed(id object) {
  [NSKeyedUnarchiver unarchiveObjectWithData:[NSKeyedArchiver archivedDataWithRootObject:object]];
}

static NSColorList* Edited(void) {
  NSColorList* list = [[[NSColorList alloc] initWithName:@"Edited"] autorelease];
  for (int i = 0; i < 20; ++i)
    [list setColor:[NSColor redColor] forKey:[NSString stringWithFormat:@"key %d", i]];
  [list insertColor:[NSColor blueColor] key:@"key 7" atIndex:3];
  [list insertColor:[NSColor blueColor] key:@"new" atIndex:3];
  [list removeColorWithKey:@"key 9"];
  return list;
}

static NSString* WhyNoCyan(NSColor* color) {
  @try {
    [color cyanComponent];
  } @catch (NSException* exception) {
    return [exception reason];
  }
  return nil;
}

int useColors(int use) {
  NSAutoreleasePool* pool = [NSAutoreleasePool new];
  NSColor* ink = [NSColor colorWithDeviceCyan:0.1 magenta:0.2 yellow:0.3 black:0.4 alpha:1];
  NSColor* exact = [NSColor colorWithSRGBRed:0.1 green:0.2 blue:0.3 alpha:1];
  int known = 1;
  switch (use) {
    case 0:
      ArchiveUnkeyed(ink);
      ArchiveUnkeyed(exact);
      ArchiveUnkeyed([NSColor colorWithDeviceWhite:0.5 alpha:1]);
      break;
    case 1:
      ArchiveKeyed(ink);
      ArchiveKeyed(exact);
      ArchiveKeyed([NSColorSpace sRGBColorSpace]);
      break;
    case 2:
      ArchiveUnkeyed([NSColorSpace sRGBColorSpace]);
      break;
    case 3:
      Edited();
      break;
    case 4:
      WhyNoCyan(exact);
      WhyNoCyan([NSColor controlColor]);
      WhyNoCyan([NSColor whiteColor]);
      break;
    case 5:
      [[exact copy] release];
      [[exact colorWithAlphaComponent:0.5] description];
      [[exact colorUsingColorSpaceName:NSDeviceCMYKColorSpace]
          colorUsingColorSpace:[NSColorSpace adobeRGB1998ColorSpace]];
      [exact blendedColorWithFraction:0.5 ofColor:ink];
      break;
    case 6:
      [[[NSColorSpace alloc] initWithColorSyncProfile:[[NSColorSpace sRGBColorSpace] colorSyncProfile]]
          release];
      [[[NSColorSpace alloc] initWithCGColorSpace:[[NSColorSpace sRGBColorSpace] CGColorSpace]] release];
      [[[NSColorSpace alloc] initWithICCProfileData:[[NSColorSpace sRGBColorSpace] ICCProfileData]] release];
      [NSColor colorWithCGColor:[exact CGColor]];
      break;
    case 7:
      [NSColorSpace availableColorSpacesWithModel:-1];
      [NSColorList availableColorLists];
      [[NSColor controlColor] colorWithAlphaComponent:0.5];
      break;
    default:
      known = 0;
      break;
  }
  [pool release];
  return known;
}

int spacesAreEqual(Space one, Space other) {
  return [(NSColorSpace*)one isEqual:(NSColorSpace*)other];
}

static NSBitmapImageRep* Bitmap(void) {
  NSBitmapImageRep* bitmap = [[[NSBitmapImageRep alloc] initWithBitmapDataPlanes:NULL
                                                                      pixelsWide:12
                                                                      pixelsHigh:8
                                                                   bitsPerSample:8
                                                                 samplesPerPixel:3
                                                                        hasAlpha:NO
                                                                        isPlanar:NO
                                                                  colorSpaceName:NSDeviceRGBColorSpace
                                                                     bytesPerRow:0
                                                                    bitsPerPixel:0] autorelease];
  for (int i = 0; i < 12 * 8 * 3; ++i) [bitmap bitmapData][i] = (unsigned char)(i / 24 * 9);
  return bitmap;
}

static NSColor* PatternPacked(Packing packing) {
  const NSTIFFCompression packings[] = {NSTIFFCompressionNone, NSTIFFCompressionLZW,
                                        NSTIFFCompressionPackBits};
  NSBitmapImageRep* bitmap = Bitmap();
  [bitmap setCompression:packings[packing] factor:1];
  NSImage* image = [[[NSImage alloc] initWithSize:NSMakeSize(12, 8)] autorelease];
  [image addRepresentation:bitmap];
  return [NSColor colorWithPatternImage:image];
}

int writeListFile(const char* path, ListContents contents) {
  NSAutoreleasePool* pool = [NSAutoreleasePool new];
  NSColorList* list = [[[NSColorList alloc] initWithName:@"Fuzz"] autorelease];
  [list setColor:[NSColor redColor] forKey:@"red"];
  [list setColor:[NSColor colorWithDeviceWhite:0.5 alpha:1] forKey:@"grey"];
  [list setColor:[NSColor colorWithDeviceCyan:0.1 magenta:0.2 yellow:0.3 black:0.4 alpha:1] forKey:@"ink"];
  [list setColor:[NSColor controlColor] forKey:@"named"];
  if (contents != kStockColours) {
    NSMutableData* other = [NSMutableData dataWithData:[[NSColorSpace sRGBColorSpace] ICCProfileData]];
    ((unsigned char*)[other mutableBytes])[48] ^= 1;  // another manufacturer: another space
    NSColorSpace* space = [[[NSColorSpace alloc] initWithICCProfileData:other] autorelease];
    const CGFloat components[] = {0.1, 0.2, 0.3, 0.4};
    [list setColor:[NSColor colorWithColorSpace:space components:components count:4] forKey:@"exact"];
    [list setColor:[NSColor colorWithSRGBRed:0.1 green:0.2 blue:0.3 alpha:1] forKey:@"sRGB"];
  }
  if (contents == kPatterns) {
    [list setColor:PatternPacked(kUnpacked) forKey:@"unpacked"];
    [list setColor:PatternPacked(kLZW) forKey:@"lzw"];
    [list setColor:PatternPacked(kPackBits) forKey:@"packbits"];
  }
  int written = [list writeToFile:[NSString stringWithUTF8String:path]];
  [pool release];
  return written;
}

size_t pasteboardBytes(void* buffer, size_t capacity) {
  NSAutoreleasePool* pool = [NSAutoreleasePool new];
  OneDatum* board = [[OneDatum new] autorelease];
  [[NSColor colorWithSRGBRed:0.1 green:0.2 blue:0.3 alpha:1] writeToPasteboard:(NSPasteboard*)board];
  size_t size = [board->datum length];
  if (size <= capacity) [board->datum getBytes:buffer length:size];
  [pool release];
  return size;
}

static size_t ArchiveOf(id object, void* buffer, size_t capacity) {
  NSData* data = [NSArchiver archivedDataWithRootObject:object];
  if ([data length] <= capacity) [data getBytes:buffer length:[data length]];
  return [data length];
}

size_t archiveWithPattern(Packing packing, int inList, void* buffer, size_t capacity) {
  NSAutoreleasePool* pool = [NSAutoreleasePool new];
  NSColor* pattern = PatternPacked(packing);
  NSColorList* list = [[[NSColorList alloc] initWithName:@"Fuzz"] autorelease];
  [list setColor:[NSColor redColor] forKey:@"red"];
  [list setColor:pattern forKey:@"pattern"];
  size_t size = ArchiveOf(inList ? (id)list : pattern, buffer, capacity);
  [pool release];
  return size;
}

size_t archiveOfNamedColor(void* buffer, size_t capacity) {
  NSAutoreleasePool* pool = [NSAutoreleasePool new];
  size_t size = ArchiveOf([NSColor controlColor], buffer, capacity);
  [pool release];
  return size;
}

void countObjects(void) {
  GSDebugAllocationActive(YES);
}
int liveObjects(const char* className) {
  return GSDebugAllocationCount(NSClassFromString([NSString stringWithUTF8String:className]));
}
