// libcocoa/runtime/stock_methods.h - GNUstep's own methods behind the categories that correct them.
//
// Corrections are categories: their methods win over GNUstep's, and the runtime keeps the old ones behind
// them. method_setImplementation is not used on purpose: on a class that has not been sent a message yet it
// writes into the table that all such classes share, and the first message then finds a class that was never
// initialised.
#pragma once

#include <objc/runtime.h>

// A method's implementation, to be cast to the method's exact type before it is called.
typedef void (*QVXMethod)(void);

// GNUstep's method of the class itself, looked up once and kept in `*kept`. Stops the program, naming class
// and selector, if there is none: it is then not the GNUstep that this library completes.
QVXMethod QVXStockMethod(const char* className, SEL selector, QVXMethod* kept);

// The same for a class method.
QVXMethod QVXStockClassMethod(const char* className, SEL selector, QVXMethod* kept);
