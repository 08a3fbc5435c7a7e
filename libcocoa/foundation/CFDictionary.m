// libcocoa/foundation/CFDictionary.m - dictionaries from pointer to pointer.
#import <Foundation/Foundation.h>
#include <objc/runtime.h>

#include "libcocoa/foundation/CFString.h"

// An object, so that it is retained, released and autoreleased like any other. Not an NSDictionary: keys and
// values need not be objects, and a table keyed by address is what makes a look-up cheap.
@interface CFPointerDictionary : NSObject {
 @public
  NSMapTable* _table;
  NSUInteger _most;  // entries at a time since the table was made
}
@end

static NSMapTable* new_table(NSUInteger capacity) {
  return NSCreateMapTable(NSNonOwnedPointerOrNullMapKeyCallBacks, NSNonOwnedPointerMapValueCallBacks,
                          capacity);
}

@implementation CFPointerDictionary

- (instancetype)initWithCapacity:(NSUInteger)capacity {
  self = [super init];
  if (self != nil) {
    _table = new_table(capacity);
  }
  return self;
}

- (void)dealloc {
  if (_table != nil) NSFreeMapTable(_table);
  [super dealloc];
}

@end

static Class dictionary_class;

// NULL for anything but a dictionary made here: another object's keys would be taken for objects.
static CFPointerDictionary* checked(CFDictionaryRef dictionary) {
  CFPointerDictionary* object = (CFPointerDictionary*)dictionary;
  return object != nil && object_getClass(object) == dictionary_class ? object : nil;
}

// A map table keeps the memory of every entry that it ever had. One that has become much smaller than it was
// is made anew, so that a program that held very many objects for a while gets the memory back.
static void give_memory_back(CFPointerDictionary* object) {
  const NSUInteger small = 1024;
  const NSUInteger count = NSCountMapTable(object->_table);
  if (object->_most <= small || count > object->_most / 4) return;
  NSMapTable* const table = new_table(count);
  if (table == nil) return;
  NSMapEnumerator entries = NSEnumerateMapTable(object->_table);
  void* key = NULL;
  void* value = NULL;
  while (NSNextMapEnumeratorPair(&entries, &key, &value)) NSMapInsert(table, key, value);
  NSEndMapTableEnumeration(&entries);
  NSFreeMapTable(object->_table);
  object->_table = table;
  object->_most = count;
}

COCOA_EXPORT CFMutableDictionaryRef CFDictionaryCreateMutable(CFAllocatorRef allocator, CFIndex capacity,
                                                              const void* keyCallBacks,
                                                              const void* valueCallBacks) {
  if (capacity < 0 || keyCallBacks != NULL || valueCallBacks != NULL) return NULL;
  dictionary_class = [CFPointerDictionary class];
  return (CFMutableDictionaryRef)[[CFPointerDictionary alloc] initWithCapacity:(NSUInteger)capacity];
}

COCOA_EXPORT CFIndex CFDictionaryGetCount(CFDictionaryRef dictionary) {
  CFPointerDictionary* object = checked(dictionary);
  return object == nil ? 0 : (CFIndex)NSCountMapTable(object->_table);
}

COCOA_EXPORT const void* CFDictionaryGetValue(CFDictionaryRef dictionary, const void* key) {
  CFPointerDictionary* object = checked(dictionary);
  return object == nil ? NULL : NSMapGet(object->_table, key);
}

COCOA_EXPORT void CFDictionarySetValue(CFMutableDictionaryRef dictionary, const void* key,
                                       const void* value) {
  CFPointerDictionary* object = checked(dictionary);
  if (object == nil || key == NSNotAPointerMapKey) return;
  NSMapInsert(object->_table, key, value);
  const NSUInteger count = NSCountMapTable(object->_table);
  if (count > object->_most) object->_most = count;
}

COCOA_EXPORT void CFDictionaryRemoveValue(CFMutableDictionaryRef dictionary, const void* key) {
  CFPointerDictionary* object = checked(dictionary);
  if (object == nil) return;
  NSMapRemove(object->_table, key);
  give_memory_back(object);
}
