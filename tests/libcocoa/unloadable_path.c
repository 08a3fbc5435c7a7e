// tests/libcocoa/unloadable_path.c - a function for an exception to pass through, in a library that can be
// unloaded. Built twice, with stacks of two sizes and everything else in the same places.
#include <stdint.h>

void ThroughUnloadable(void (*body)(void*), void* context, uintptr_t filling);

// Fills its part of the stack.
void ThroughUnloadable(void (*body)(void*), void* context, uintptr_t filling) {
  volatile uintptr_t room[ROOM / sizeof(uintptr_t)];
  for (unsigned i = 0; i < sizeof room / sizeof room[0]; ++i) room[i] = filling;
  body(context);
  __asm__ volatile("");  // no tail call
}
