// libcocoa/pasteboard/QVXPasteboardServer.m - a pasteboard server inside the process.
#import "libcocoa/pasteboard/QVXPasteboardServer.h"

#include <unistd.h>

// One pasteboard. Each declaration of types starts a new generation, numbered by the change count; whoever
// holds an older count can no longer change anything.
@interface QVXPasteboard : NSObject <GSPasteboardObj> {
  QVXPasteboardServer* _server;  // not owned, outlives every pasteboard
  NSString* _name;
  NSArray* _types;
  NSMutableDictionary* _data;
  id _owner;                 // not owned: by convention an owner takes its promises back before it goes
  NSPasteboard* _ownerSide;  // the owner's own pasteboard object, handed back to it
  int _changeCount;
}
- (instancetype)initWithName:(NSString*)name server:(QVXPasteboardServer*)server;
@end

@interface QVXPasteboardServer (Pasteboards)
- (void)forget:(NSString*)name;
@end

@implementation QVXPasteboard

- (instancetype)initWithName:(NSString*)name server:(QVXPasteboardServer*)server {
  self = [super init];
  _server = server;
  _name = [name copy];
  _types = [[NSArray alloc] init];
  _data = [[NSMutableDictionary alloc] init];
  return self;
}

- (void)dealloc {
  [_name release];
  [_types release];
  [_data release];
  [_ownerSide release];
  [super dealloc];
}

- (NSString*)name {
  return _name;
}

- (int)changeCount {
  return _changeCount;
}

- (void)replaceTypes:(NSArray*)types {
  NSArray* old = _types;
  _types = [types copy];
  [old release];
}

- (void)setOwner:(id)owner side:(NSPasteboard*)side {
  [side retain];
  [_ownerSide release];
  _ownerSide = side;
  _owner = owner;
}

- (int)declareTypes:(NSArray*)types owner:(id)owner pasteboard:(NSPasteboard*)side {
  id previous = _owner;
  NSPasteboard* previousSide = [[_ownerSide retain] autorelease];
  ++_changeCount;
  [_data removeAllObjects];
  [self replaceTypes:types ? types : [NSArray array]];
  [self setOwner:owner side:side];
  int count = _changeCount;
  if (previous != owner && [previous respondsToSelector:@selector(pasteboardChangedOwner:)])
    [previous pasteboardChangedOwner:previousSide];
  return count;
}

// Returns 0 if the caller's generation is over.
- (int)addTypes:(NSArray*)types owner:(id)owner pasteboard:(NSPasteboard*)side oldCount:(int)count {
  if (count != _changeCount) return 0;
  NSMutableArray* all = [NSMutableArray arrayWithArray:_types];
  for (NSString* type in types)
    if (![all containsObject:type]) [all addObject:type];
  [self replaceTypes:all];
  if (owner) [self setOwner:owner side:side];
  return _changeCount;
}

- (BOOL)setData:(NSData*)data forType:(NSString*)type isFile:(BOOL)isFile oldCount:(int)count {
  if (!data || count != _changeCount || ![_types containsObject:type]) return NO;
  [_data setObject:[NSData dataWithData:data] forKey:type];
  return YES;
}

// Promised data is requested from the owner now.
- (NSData*)dataForType:(NSString*)type oldCount:(int)count mustBeCurrent:(BOOL)mustBeCurrent {
  if ((mustBeCurrent && count != _changeCount) || ![_types containsObject:type]) return nil;
  if (![_data objectForKey:type] && [_owner respondsToSelector:@selector(pasteboard:provideDataForType:)])
    [_owner pasteboard:_ownerSide provideDataForType:type];
  return [[[_data objectForKey:type] retain] autorelease];
}

- (NSArray*)typesAndChangeCount:(int*)count {
  if (count) *count = _changeCount;
  return [[_types retain] autorelease];
}

- (NSString*)availableTypeFromArray:(NSArray*)types changeCount:(int*)count {
  if (count) *count = _changeCount;
  for (NSString* type in types)
    if ([_types containsObject:type]) return type;
  return nil;
}

- (void)releaseGlobally {
  [self setOwner:nil side:nil];
  [_server forget:_name];
}

// Earlier generations are not kept here.
- (void)setHistory:(unsigned)length {
}

@end

@implementation QVXPasteboardServer

- (instancetype)init {
  self = [super init];
  _pasteboards = [[NSMutableDictionary alloc] init];
  return self;
}

- (void)dealloc {
  [_pasteboards release];
  [super dealloc];
}

// nil and the empty name make a new pasteboard with a name of its own.
- (id<GSPasteboardObj>)pasteboardWithName:(NSString*)name {
  while ([name length] == 0) {
    name = [NSString stringWithFormat:@"Pasteboard-%d-%u", getpid(), ++_uniqueCount];
    if ([_pasteboards objectForKey:name]) name = nil;
  }
  QVXPasteboard* pasteboard = [_pasteboards objectForKey:name];
  if (!pasteboard) {
    pasteboard = [[[QVXPasteboard alloc] initWithName:name server:self] autorelease];
    [_pasteboards setObject:pasteboard forKey:name];
  }
  return pasteboard;
}

- (void)forget:(NSString*)name {
  [[[_pasteboards objectForKey:name] retain] autorelease];
  [_pasteboards removeObjectForKey:name];
}

@end
