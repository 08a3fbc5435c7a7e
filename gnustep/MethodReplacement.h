// gnustep/MethodReplacement.h - replacing a method where the old one must still be callable.
//
// Where it need not be, a category is enough: it wins over GNUstep's method. Replacement belongs into +load: it
// neither initialises the class nor costs a program that uses no colour anything.
#pragma once

#include <objc/runtime.h>

// A method's implementation, to be cast to the method's exact type before it is called.
typedef void (*QVXMethod)(void);

// Puts `with` in the place of the class's own or inherited instance method; gives back the old implementation.
// Stops the program, naming class and selector, if GNUstep has no such method: it is then not the GNUstep that this
// library completes.
QVXMethod QVXReplaceMethod(const char* className, SEL selector, QVXMethod with);

// The same for a class method.
QVXMethod QVXReplaceClassMethod(const char* className, SEL selector, QVXMethod with);
