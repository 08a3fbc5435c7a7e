// libcocoa/lists/NSColorList+Editing.m - changing a colour list: everything is checked before anything
// changes.
#import <AppKit/AppKitExceptions.h>

#import "libcocoa/lists/NSColorList+Available.h"
#import "libcocoa/lists/QVXColorKeys.h"

@implementation NSColorList (QVXEditing)

- (id)initWithName:(NSString*)name {
  self = [super init];
  _name = [name copy];
  _is_editable = YES;
  _colorDictionary = [NSMutableDictionary new];
  _orderedColorKeys = [QVXColorKeys new];
  return self;
}

- (BOOL)isEditable {
  return QVXIsFillingSystemList() || (_is_editable && !QVXIsSystemList(self));
}

- (void)qvx_checkEditable:(SEL)selector {
  if (![self isEditable])
    [NSException raise:NSColorListNotEditableException
                format:@"*** -%@ wanted a colour list that may be edited, found %@; copy its colours into "
                       @"one of your own",
                       NSStringFromSelector(selector), _name];
}

- (void)qvx_check:(SEL)selector color:(NSColor*)color key:(NSString*)key {
  [self qvx_checkEditable:selector];
  if (![color isKindOfClass:[NSColor class]])
    [NSException raise:NSInvalidArgumentException
                format:@"*** -%@ wanted a colour for the list %@, found %@; pass an NSColor",
                       NSStringFromSelector(selector), _name, color];
  if (![key isKindOfClass:[NSString class]])
    [NSException raise:NSInvalidArgumentException
                format:@"*** -%@ wanted a key for the list %@, found %@; pass a string",
                       NSStringFromSelector(selector), _name, key];
}

// Posts at once, where GNUstep waits for the run loop and keeps the list alive till then.
- (void)qvx_postChange {
  [[NSNotificationCenter defaultCenter] postNotificationName:NSColorListDidChangeNotification object:self];
}

- (void)insertColor:(NSColor*)color key:(NSString*)key atIndex:(unsigned)index {
  [self qvx_check:_cmd color:color key:key];
  // A key that is there already leaves its old place first. The array is not searched for a new one: that
  // would take longer the longer the list.
  BOOL moves = [_colorDictionary objectForKey:key] != nil;
  NSUInteger last = [_orderedColorKeys count] - (moves ? 1 : 0);
  if (index > last)
    [NSException raise:NSRangeException
                format:@"*** -%@ wanted an index from 0 to %u for the list %@, found %u; nothing was changed",
                       NSStringFromSelector(_cmd), (unsigned)last, _name, index];
  NSString* own = [[key copy] autorelease];
  [_colorDictionary setObject:color forKey:own];
  if (moves) [_orderedColorKeys removeObject:own];
  [_orderedColorKeys insertObject:own atIndex:index];
  [self qvx_postChange];
}

- (void)setColor:(NSColor*)color forKey:(NSString*)key {
  [self qvx_check:_cmd color:color key:key];
  NSString* own = [[key copy] autorelease];
  if (![_colorDictionary objectForKey:own]) [_orderedColorKeys addObject:own];
  [_colorDictionary setObject:color forKey:own];
  [self qvx_postChange];
}

// Removing a key that is not there changes nothing, and nothing is posted.
- (void)removeColorWithKey:(NSString*)key {
  [self qvx_checkEditable:_cmd];
  if (![_colorDictionary objectForKey:key]) return;
  NSString* own = [[key copy] autorelease];
  [_colorDictionary removeObjectForKey:own];
  [_orderedColorKeys removeObject:own];
  [self qvx_postChange];
}

@end
