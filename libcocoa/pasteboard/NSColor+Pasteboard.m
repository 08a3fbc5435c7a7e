// libcocoa/pasteboard/NSColor+Pasteboard.m - colours on a pasteboard, and whether their alpha counts there.
#import "libcocoa/colours/colour_archive.h"
#import "libcocoa/colours/exact_colours.h"

static NSString* const kKey = @"";

// NSIgnoreAlpha in the user defaults, until the program says otherwise. -1: not asked yet.
static int ignoresAlpha = -1;

@implementation NSColor (QVXPasteboard)

+ (BOOL)ignoresAlpha {
  int known = __atomic_load_n(&ignoresAlpha, __ATOMIC_ACQUIRE);
  if (known >= 0) return (BOOL)known;
  NSUserDefaults* defaults = [NSUserDefaults standardUserDefaults];
  int asked = [defaults objectForKey:@"NSIgnoreAlpha"] ? [defaults boolForKey:@"NSIgnoreAlpha"] : YES;
  // What the program has set in the meantime wins.
  BOOL isFirst =
      __atomic_compare_exchange_n(&ignoresAlpha, &known, asked, NO, __ATOMIC_ACQ_REL, __ATOMIC_ACQUIRE);
  return (BOOL)(isFirst ? asked : known);
}

+ (void)setIgnoresAlpha:(BOOL)flag {
  __atomic_store_n(&ignoresAlpha, flag != NO, __ATOMIC_RELEASE);
}

// Does nothing unless the pasteboard's owner has declared the type.
- (void)writeToPasteboard:(NSPasteboard*)pasteboard {
  NSData* archive = nil;
  @try {
    archive = [NSArchiver archivedDataWithRootObject:QVXReadableTwin(self)];
    archive = QVXArchiveWithExactColors(archive, [NSDictionary dictionaryWithObject:self forKey:kKey]);
  } @catch (NSException* exception) {
    return;  // a colour that no archive can hold
  }
  [pasteboard setData:archive forType:NSColorPboardType];
}

// nil if there is no colour, or what is there can't be read as one. Opaque where alpha is ignored.
+ (NSColor*)colorFromPasteboard:(NSPasteboard*)pasteboard {
  NSData* data = [pasteboard dataForType:NSColorPboardType];
  id color = nil;
  size_t room = QVXRoomForImages(data);
  @try {
    color = [QVXExactColorsBehind(data, &room) objectForKey:kKey];
    if (!color) color = QVXReadColorArchive(data, &room);
  } @catch (NSException* exception) {
    return nil;
  }
  if (![color isKindOfClass:[NSColor class]]) return nil;
  return [self ignoresAlpha] ? [color colorWithAlphaComponent:1] : color;
}

@end
