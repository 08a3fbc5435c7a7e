// libcocoa/foundation/CFDictionary.m - dictionaries from pointer to pointer.
#include "libcocoa/foundation/CFDictionary.h"

#import <Foundation/Foundation.h>
#include <objc/runtime.h>

#include "libcocoa/runtime/exported.h"

// An object, so that it is retained, released and autoreleased like any other. Not an NSDictionary: keys and
// values need not be objects, and a table keyed by address is what makes a look-up cheap.
@interface QVXPointerDictionary : NSObject {
 @public
  NSMapTable* _table;
  NSUInteger _most;  // entries at a time since the table was made
  BOOL _isFull;      // there was no memory for one more
}
@end

static NSMapTable* NewTable(NSUInteger capacity) {
  return NSCreateMapTable(NSNonOwnedPointerOrNullMapKeyCallBacks, NSNonOwnedPointerMapValueCallBacks,
                          capacity);
}

@implementation QVXPointerDictionary

- (instancetype)init {
  self = [super init];
  if (self) _table = NewTable(0);
  return self;
}

- (void)dealloc {
  if (_table) NSFreeMapTable(_table);
  [super dealloc];
}

@end

static Class dictionaryClass;

// nil for anything but a dictionary made here: in any other the keys would be taken for objects.
static QVXPointerDictionary* Checked(CFDictionaryRef dictionary) {
  QVXPointerDictionary* object = (QVXPointerDictionary*)dictionary;
  return object_getClass(object) == dictionaryClass ? object : nil;
}

// A map table never shrinks. One that holds far fewer entries than it once did is rebuilt, so that a program
// that held very many objects for a while gets the memory back.
static void GiveMemoryBack(QVXPointerDictionary* object) {
  const NSUInteger small = 1024;
  const NSUInteger count = NSCountMapTable(object->_table);
  if (object->_most <= small || count > object->_most / 4) return;
  NSMapTable* const table = NewTable(count);
  if (!table) return;
  NSMapEnumerator entries = NSEnumerateMapTable(object->_table);
  void* key = NULL;
  void* value = NULL;
  while (NSNextMapEnumeratorPair(&entries, &key, &value)) NSMapInsert(table, key, value);
  NSEndMapTableEnumeration(&entries);
  NSFreeMapTable(object->_table);
  object->_table = table;
  object->_most = count;
}

QVX_EXPORT CFMutableDictionaryRef CFDictionaryCreateMutable(CFAllocatorRef allocator, CFIndex capacity,
                                                            const void* keyCallBacks,
                                                            const void* valueCallBacks) {
  if (capacity < 0 || keyCallBacks || valueCallBacks) return NULL;
  dictionaryClass = [QVXPointerDictionary class];
  @try {
    return (CFMutableDictionaryRef)[[QVXPointerDictionary alloc] init];
  } @catch (NSException* exhausted) {
    return NULL;
  }
}

QVX_EXPORT CFIndex CFDictionaryGetCount(CFDictionaryRef dictionary) {
  QVXPointerDictionary* object = Checked(dictionary);
  return object ? (CFIndex)NSCountMapTable(object->_table) : 0;
}

QVX_EXPORT const void* CFDictionaryGetValue(CFDictionaryRef dictionary, const void* key) {
  QVXPointerDictionary* object = Checked(dictionary);
  return object ? NSMapGet(object->_table, key) : NULL;
}

QVX_EXPORT void CFDictionarySetValue(CFMutableDictionaryRef dictionary, const void* key, const void* value) {
  QVXPointerDictionary* object = Checked(dictionary);
  if (!object || key == NSNotAPointerMapKey || object->_isFull) return;
  @try {
    NSMapInsert(object->_table, key, value);
  } @catch (NSException* exhausted) {
    object->_isFull = YES;  // until an entry goes: each attempt raises, which takes memory itself
    return;
  }
  const NSUInteger count = NSCountMapTable(object->_table);
  if (count > object->_most) object->_most = count;
}

QVX_EXPORT void CFDictionaryRemoveValue(CFMutableDictionaryRef dictionary, const void* key) {
  QVXPointerDictionary* object = Checked(dictionary);
  if (!object) return;
  NSMapRemove(object->_table, key);
  object->_isFull = NO;
  @try {
    GiveMemoryBack(object);
  } @catch (NSException* exhausted) {
    // the table stays as large as it is
  }
}
