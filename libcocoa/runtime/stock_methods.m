// libcocoa/runtime/stock_methods.m - GNUstep's own methods behind the categories that correct them.
#import "libcocoa/runtime/stock_methods.h"

#include <stdio.h>
#include <stdlib.h>

static QVXMethod Find(Class class, const char* className, char kind, SEL selector, QVXMethod* kept) {
  unsigned count = 0;
  unsigned found = 0;
  Method oldest = NULL;
  Method* methods = class ? class_copyMethodList(class, &count) : NULL;
  for (unsigned i = 0; i < count; ++i) {
    if (!sel_isEqual(method_getName(methods[i]), selector)) continue;
    oldest = methods[i];  // the list has the newest first
    ++found;
  }
  free(methods);
  if (found < 2) {
    fprintf(
        stderr,
        "libcocoa: wanted the method %c[%s %s] of GNUstep gui 0.29, found none; install the GNUstep version "
        "that this library was built with\n",
        kind, className, sel_getName(selector));
    abort();
  }
  QVXMethod known = (QVXMethod)method_getImplementation(oldest);
  __atomic_store_n(kept, known, __ATOMIC_RELEASE);
  return known;
}

QVXMethod QVXStockMethod(const char* className, SEL selector, QVXMethod* kept) {
  QVXMethod known = __atomic_load_n(kept, __ATOMIC_ACQUIRE);
  return known ? known : Find(objc_getClass(className), className, '-', selector, kept);
}

QVXMethod QVXStockClassMethod(const char* className, SEL selector, QVXMethod* kept) {
  QVXMethod known = __atomic_load_n(kept, __ATOMIC_ACQUIRE);
  if (known) return known;
  Class class = objc_getClass(className);
  return Find(class ? object_getClass((id) class) : Nil, className, '+', selector, kept);
}
