// libcocoa/foundation/CFDictionary.h - dictionaries from pointer to pointer.
//
// Neither keys nor values are retained, compared or looked into. NULL is a key like any other, the pointer
// with all bits set is none. What was not made here is taken for an empty dictionary that can't be changed.
#pragma once

#include "libcocoa/foundation/CFBase.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef const struct __CFDictionary* CFDictionaryRef;
typedef struct __CFDictionary* CFMutableDictionaryRef;

// `capacity` is a hint; NULL if it is negative. `keyCallBacks` and `valueCallBacks` must be NULL.
CFMutableDictionaryRef CFDictionaryCreateMutable(CFAllocatorRef, CFIndex capacity, const void* keyCallBacks,
                                                 const void* valueCallBacks);

CFIndex CFDictionaryGetCount(CFDictionaryRef);
const void* CFDictionaryGetValue(CFDictionaryRef, const void* key);  // NULL if the key is not there
// Nothing is set when memory is exhausted, until a value has been removed.
void CFDictionarySetValue(CFMutableDictionaryRef, const void* key, const void* value);
void CFDictionaryRemoveValue(CFMutableDictionaryRef, const void* key);

#ifdef __cplusplus
}
#endif
