// gnustep/MethodReplacement.m - replacing a method where the old one must still be callable.
#import "MethodReplacement.h"

#include <stdio.h>
#include <stdlib.h>

static QVXMethod Replace(Class class, const char* className, char kind, SEL selector, QVXMethod with) {
  Method method = class ? class_getInstanceMethod(class, selector) : NULL;
  if (!method) {
    fprintf(stderr,
            "libcocoa: wanted GNUstep gui 0.29 with the method %c[%s %s], found none; install the GNUstep "
            "version that this library was built with\n",
            kind, className, sel_getName(selector));
    abort();
  }
  // An inherited method is not changed for the other heirs: the class gets one of its own.
  QVXMethod old = (QVXMethod)method_getImplementation(method);
  if (class_addMethod(class, selector, (IMP)with, method_getTypeEncoding(method))) return old;
  return (QVXMethod)method_setImplementation(method, (IMP)with);
}

QVXMethod QVXReplaceMethod(const char* className, SEL selector, QVXMethod with) {
  return Replace(objc_getClass(className), className, '-', selector, with);
}

QVXMethod QVXReplaceClassMethod(const char* className, SEL selector, QVXMethod with) {
  Class class = objc_getClass(className);
  return Replace(class ? object_getClass((id)class) : Nil, className, '+', selector, with);
}
