// tests/libcocoa/plain_c_paths.c - a C function without unwind tables; see paths.h.
typedef void (*Body)(void* context);

void ThroughPlainC(Body body, void* context);

void ThroughPlainC(Body body, void* context) {
  body(context);
  __asm__ volatile("");  // no jump instead of the call
}
