// tests/libcocoa/colours/pattern_scenarios.m - patterns in lists that a program with GNUstep alone wrote.
//
// The library has no part in writing these archives: GNUstep's archiver and its images' own methods do.
#import "tests/libcocoa/colours/scenario.h"

typedef struct {
  int bits, samples;
  BOOL alpha, planar;
  NSString* space;
} Layout;

// Pixels with runs and without, more than the codes that LZW has.
static NSBitmapImageRep* Bitmap(Layout layout) {
  enum { kWide = 90, kHigh = 70 };
  NSBitmapImageRep* bitmap = [[[NSBitmapImageRep alloc] initWithBitmapDataPlanes:NULL
                                                                      pixelsWide:kWide
                                                                      pixelsHigh:kHigh
                                                                   bitsPerSample:layout.bits
                                                                 samplesPerPixel:layout.samples
                                                                        hasAlpha:layout.alpha
                                                                        isPlanar:layout.planar
                                                                  colorSpaceName:layout.space
                                                                     bytesPerRow:0
                                                                    bitsPerPixel:0] autorelease];
  unsigned char* planes[5] = {NULL};
  [bitmap getBitmapDataPlanes:planes];
  uint32_t random = 1;
  for (int plane = 0; plane < 5 && planes[plane]; ++plane)
    for (NSInteger i = 0; i < [bitmap bytesPerPlane]; ++i) {
      random = random * 1664525 + 1013904223;
      planes[plane][i] = i % 1000 < 400 ? 7 : (unsigned char)(random >> 24);
    }
  return bitmap;
}

static NSImage* ImageOf(NSImageRep* representation) {
  NSImage* image = [[[NSImage alloc] initWithSize:NSMakeSize(45, 35)] autorelease];
  if (representation) [image addRepresentation:representation];
  return image;
}

// The pattern of the image after it was in the file of a list.
static NSColor* Back(NSImage* image) {
  NSColorList* list = [[[NSColorList alloc] initWithName:@"Pattern"] autorelease];
  [list setColor:[NSColor colorWithPatternImage:image] forKey:@"pattern"];
  NSString* path = InScratch(@"Pattern.clr");
  [[NSArchiver archivedDataWithRootObject:list] writeToFile:path atomically:NO];
  NSColorList* read = [[[NSColorList alloc] initWithName:@"x" fromFile:path] autorelease];
  return [read colorWithKey:@"pattern"];
}

static NSString* SamePixels(NSBitmapImageRep* bitmap) {
  NSArray* found = [[Back(ImageOf(bitmap)) patternImage] representations];
  if ([found count] != 1) return @"no bitmap";
  NSBitmapImageRep* back = [found objectAtIndex:0];
  if ([back bytesPerPlane] != [bitmap bytesPerPlane] || [back numberOfPlanes] != [bitmap numberOfPlanes] ||
      [back bitsPerPixel] != [bitmap bitsPerPixel] ||
      ![[back colorSpaceName] isEqual:[bitmap colorSpaceName]] || [back hasAlpha] != [bitmap hasAlpha])
    return @"another kind";
  unsigned char* mine[5] = {NULL};
  unsigned char* theirs[5] = {NULL};
  [bitmap getBitmapDataPlanes:mine];
  [back getBitmapDataPlanes:theirs];
  for (NSInteger i = 0; i < [bitmap numberOfPlanes]; ++i)
    if (memcmp(mine[i], theirs[i], (size_t)[bitmap bytesPerPlane]) != 0) return @"other pixels";
  return @"same";
}

#define UNREADABLE "raises NSInvalidArgumentException"

SCENARIO("every layout of a bitmap comes back from another program's list", UNREADABLE,
         "same, same, same, same, same, same, same") {
  const Layout layouts[] = {
      {8, 3, NO, NO, NSDeviceRGBColorSpace},       {8, 4, YES, NO, NSCalibratedRGBColorSpace},
      {8, 3, NO, YES, NSDeviceRGBColorSpace},      {8, 2, YES, NO, NSDeviceWhiteColorSpace},
      {1, 1, NO, NO, NSCalibratedBlackColorSpace}, {16, 3, NO, NO, NSDeviceRGBColorSpace},
      {8, 1, NO, NO, NSCalibratedWhiteColorSpace},
  };
  NSMutableArray* answers = [NSMutableArray array];
  for (unsigned i = 0; i < sizeof layouts / sizeof *layouts; ++i)
    [answers addObject:SamePixels(Bitmap(layouts[i]))];
  return Joined(answers);
}

static NSString* SamePixelsPacked(NSTIFFCompression packing) {
  NSBitmapImageRep* bitmap = Bitmap((Layout){8, 3, NO, NO, NSDeviceRGBColorSpace});
  [bitmap setCompression:packing factor:1];
  return SamePixels(bitmap);
}

SCENARIO("a bitmap packed as LZW comes back from another program's list", UNREADABLE, "same") {
  return SamePixelsPacked(NSTIFFCompressionLZW);
}

SCENARIO("a bitmap packed as PackBits comes back from another program's list", UNREADABLE, "same") {
  return SamePixelsPacked(NSTIFFCompressionPackBits);
}

SCENARIO("a bitmap packed in another way reads as grey", UNREADABLE, "0.500 1.000 DeviceWhite") {
  NSBitmapImageRep* bitmap = Bitmap((Layout){8, 3, NO, NO, NSDeviceRGBColorSpace});
  [bitmap setCompression:NSTIFFCompressionJPEG factor:1];
  return Shown(Back(ImageOf(bitmap)));
}

SCENARIO("an image's size, background and flags come back from another program's list", UNREADABLE,
         "45 35, 1.000 0.000 0.000 1.000 CalibratedRGB, yes, yes, no, no") {
  NSImage* image = ImageOf(Bitmap((Layout){8, 3, NO, NO, NSDeviceRGBColorSpace}));
  [image setBackgroundColor:[NSColor redColor]];
  [image setFlipped:YES];
  [image setDataRetained:YES];
  [image setPrefersColorMatch:NO];
  [image setMatchesOnMultipleResolution:NO];
  NSImage* back = [Back(image) patternImage];
  return [NSString
      stringWithFormat:@"%g %g, %@, %@, %@, %@, %@", (double)[back size].width, (double)[back size].height,
                       Shown([back backgroundColor]), YesNo([back isFlipped]), YesNo([back isDataRetained]),
                       YesNo([back prefersColorMatch]), YesNo([back matchesOnMultipleResolution])];
}

SCENARIO("a list with a pattern that a program draws itself is no list", UNREADABLE, "nil") {
  NSImageRep* drawn = [[[NSCustomImageRep alloc] initWithDrawSelector:@selector(description)
                                                             delegate:nil] autorelease];
  return Shown(Back(ImageOf(drawn)));
}

// In this library's own file the pattern stands apart from the rest of the list.
SCENARIO("a pattern that a program draws itself reads as grey from this library's list", "",
         "0.500 1.000 DeviceWhite") {
  NSImageRep* drawn = [[[NSCustomImageRep alloc] initWithDrawSelector:@selector(description)
                                                             delegate:nil] autorelease];
  NSColorList* list = [[[NSColorList alloc] initWithName:@"Pattern"] autorelease];
  [list setColor:[NSColor colorWithPatternImage:ImageOf(drawn)] forKey:@"pattern"];
  NSString* path = InScratch(@"Pattern.clr");
  [list writeToFile:path];
  return Shown([[[[NSColorList alloc] initWithName:@"x" fromFile:path] autorelease] colorWithKey:@"pattern"]);
}
