// libcocoa/colours/QVXColorListContents.m - what an archive or a file of a colour list holds.
#import "libcocoa/colours/QVXColorListContents.h"

@implementation QVXColorListContents

@synthesize name = _name, colors = _colors, keys = _keys;

- (id)init {
  self = [super init];
  _colors = [NSMutableDictionary new];
  _keys = [NSMutableArray new];
  return self;
}

- (void)dealloc {
  [_name release];
  [_colors release];
  [_keys release];
  [super dealloc];
}

- (void)setColor:(NSColor*)color forKey:(NSString*)key {
  if (![_colors objectForKey:key]) [_keys addObject:key];
  [_colors setObject:color forKey:key];
}

@end
