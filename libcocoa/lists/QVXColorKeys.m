// libcocoa/lists/QVXColorKeys.m - the keys of a colour list in their order.
#import "libcocoa/lists/QVXColorKeys.h"

@implementation QVXColorKeys

- (id)init {
  return [self initWithCapacity:0];
}

- (id)initWithCapacity:(NSUInteger)capacity {
  self = [super init];
  _keys = [[NSMutableArray alloc] initWithCapacity:capacity];
  _places = NSCreateMapTable(NSNonRetainedObjectMapKeyCallBacks, NSIntegerMapValueCallBacks, capacity);
  return self;
}

- (void)dealloc {
  NSFreeMapTable(_places);
  [_keys release];
  [super dealloc];
}

- (NSUInteger)count {
  return [_keys count];
}

- (id)objectAtIndex:(NSUInteger)index {
  return [_keys objectAtIndex:index];
}

- (NSUInteger)countByEnumeratingWithState:(NSFastEnumerationState*)state
                                  objects:(id[])objects
                                    count:(NSUInteger)count {
  return [_keys countByEnumeratingWithState:state objects:objects count:count];
}

// Looks at the place that is remembered, then in wider and wider surroundings: what has a place is there.
- (NSUInteger)indexOfObject:(id)key {
  void* found;
  void* remembered;
  if (!NSMapMember(_places, key, &found, &remembered)) return NSNotFound;
  NSUInteger count = [_keys count];
  NSUInteger place = (NSUInteger)remembered;
  if (place < count && [_keys objectAtIndex:place] == (id)found) return place;
  for (NSUInteger reach = 16;; reach *= 16) {
    NSUInteger begin = place > reach ? MIN(place - reach, count) : 0;
    NSUInteger end = MIN(place + reach, count);
    NSUInteger index = [_keys indexOfObjectIdenticalTo:(id)found inRange:NSMakeRange(begin, end - begin)];
    if (index != NSNotFound) return index;
  }
}

- (void)insertObject:(id)key atIndex:(NSUInteger)index {
  [_keys insertObject:key atIndex:index];
  NSMapInsert(_places, key, (void*)index);
}

- (void)addObject:(id)key {
  [self insertObject:key atIndex:[_keys count]];
}

- (void)replaceObjectAtIndex:(NSUInteger)index withObject:(id)key {
  NSMapRemove(_places, [_keys objectAtIndex:index]);
  [_keys replaceObjectAtIndex:index withObject:key];
  NSMapInsert(_places, key, (void*)index);
}

- (void)removeObjectAtIndex:(NSUInteger)index {
  NSMapRemove(_places, [_keys objectAtIndex:index]);
  [_keys removeObjectAtIndex:index];
}

- (void)removeLastObject {
  [self removeObjectAtIndex:[_keys count] - 1];
}

- (void)removeObject:(id)key {
  NSUInteger index = [self indexOfObject:key];
  if (index != NSNotFound) [self removeObjectAtIndex:index];
}

@end
