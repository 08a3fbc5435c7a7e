// tests/libcocoa/plain_c_paths.c - C functions without unwind tables; see paths.h.
#include <setjmp.h>

typedef void (*Body)(void* context);

void ThroughPlainC(Body body, void* context);

void ThroughPlainC(Body body, void* context) {
  body(context);
  __asm__ volatile("");  // no jump instead of the call
}

struct frame {
  jmp_buf buffer;
  void* reserved[4];
};
void objc_exception_try_enter(void*);
void objc_exception_try_exit(void*);

int InAReenteredPlainFrame(Body body, void* context);

int InAReenteredPlainFrame(Body body, void* context) {
  struct frame frame;
  objc_exception_try_enter(&frame);
  if (_setjmp(frame.buffer) != 0) return 1;
  objc_exception_try_exit(&frame);
  objc_exception_try_enter(&frame);
  body(context);
  objc_exception_try_exit(&frame);
  return 0;
}
