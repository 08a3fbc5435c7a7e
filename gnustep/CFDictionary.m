// gnustep/CFDictionary.m - dictionaries from pointer to pointer.
#import <Foundation/Foundation.h>
#include <objc/runtime.h>

#include "core_foundation.h"

// An object, so that it is retained, released and autoreleased like any other. Not an NSDictionary: keys and
// values need not be objects, and a table keyed by address is what makes a look-up cheap.
@interface CFPointerDictionary : NSObject {
 @public
  NSMapTable *_table;
}
@end

@implementation CFPointerDictionary

- (instancetype)initWithCapacity:(NSUInteger)capacity {
  self = [super init];
  if (self != nil) {
    _table = NSCreateMapTable(NSNonOwnedPointerOrNullMapKeyCallBacks, NSNonOwnedPointerMapValueCallBacks,
                              capacity);
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
static CFPointerDictionary *checked(CFDictionaryRef dictionary) {
  CFPointerDictionary *object = (CFPointerDictionary *)dictionary;
  return object != nil && object_getClass(object) == dictionary_class ? object : nil;
}

COCOA_EXPORT CFMutableDictionaryRef CFDictionaryCreateMutable(CFAllocatorRef allocator, CFIndex capacity,
                                                              const void *keyCallBacks,
                                                              const void *valueCallBacks) {
  if (capacity < 0 || keyCallBacks != NULL || valueCallBacks != NULL) return NULL;
  dictionary_class = [CFPointerDictionary class];
  return (CFMutableDictionaryRef)[[CFPointerDictionary alloc] initWithCapacity:(NSUInteger)capacity];
}

COCOA_EXPORT CFIndex CFDictionaryGetCount(CFDictionaryRef dictionary) {
  CFPointerDictionary *object = checked(dictionary);
  return object == nil ? 0 : (CFIndex)NSCountMapTable(object->_table);
}

COCOA_EXPORT const void *CFDictionaryGetValue(CFDictionaryRef dictionary, const void *key) {
  CFPointerDictionary *object = checked(dictionary);
  return object == nil ? NULL : NSMapGet(object->_table, key);
}

COCOA_EXPORT void CFDictionarySetValue(CFMutableDictionaryRef dictionary, const void *key,
                                       const void *value) {
  CFPointerDictionary *object = checked(dictionary);
  if (object != nil && key != NSNotAPointerMapKey) NSMapInsert(object->_table, key, value);
}

COCOA_EXPORT void CFDictionaryRemoveValue(CFMutableDictionaryRef dictionary, const void *key) {
  CFPointerDictionary *object = checked(dictionary);
  if (object != nil) NSMapRemove(object->_table, key);
}
