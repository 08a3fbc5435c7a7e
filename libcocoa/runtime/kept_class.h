// libcocoa/runtime/kept_class.h - a class that is looked up once, where a look-up for each call would show:
// it costs as much as a tenth of a colour.
#pragma once

#include <objc/runtime.h>

// The class of that name, which there is. `kept` starts as Nil, belongs to the caller and keeps it.
static inline Class QVXKeptClass(Class* kept, const char* name) {
  Class known = __atomic_load_n(kept, __ATOMIC_RELAXED);
  if (known) return known;
  known = (Class)objc_getClass(name);
  __atomic_store_n(kept, known, __ATOMIC_RELAXED);
  return known;
}
