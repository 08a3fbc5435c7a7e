// bench/prescribed.c - the prescribed paths, in plain C.
#include "bench/prescribed.h"

#include <setjmp.h>
#include <stdlib.h>
#include <string.h>

enum { kUTF8 = 0x08000100, kLongestOnStack = 99, kBytesPerUnit = 6 };

// The guard's frame, as the platform lays it out.
typedef struct {
  jmp_buf buffer;
  void* words[4];
} Frame;

// Hosts call on a stack that is aligned to 4 bytes.
#define PRESCRIBED __attribute__((noinline, force_align_arg_pointer))

PRESCRIBED double PrescribedDouble(const PrescribedCalls* call, void* native, void* selector) {
  Frame frame;
  call->enterFrame(&frame);
  if (_setjmp(frame.buffer) != 0) return 0.0;
  double result = call->sendForFloat(native, selector);
  call->exitFrame(&frame);
  return result;
}

static void* Build(const PrescribedCalls* call, const char* text) {
  void* built = call->buildString(text, (int32_t)strlen(text));
  if (built) call->setStringEncoding(built, kUTF8);
  return built;
}

PRESCRIBED void* PrescribedString(const PrescribedCalls* call, void* native, void* selector) {
  Frame frame;
  call->enterFrame(&frame);
  if (_setjmp(frame.buffer) != 0) return NULL;
  void* built = NULL;
  void* text = call->send(native, selector);
  int32_t length = call->stringLength(text);
  if (length > kLongestOnStack) {
    int32_t size = length * kBytesPerUnit;
    char* buffer = calloc(1, (size_t)size);
    if (buffer && call->stringBytes(text, buffer, size, kUTF8)) built = Build(call, buffer);
    free(buffer);
  } else if (length > 0) {
    char buffer[601] = {0};
    if (call->stringBytes(text, buffer, sizeof buffer - 1, kUTF8)) built = Build(call, buffer);
  }
  call->exitFrame(&frame);
  return built;
}

PRESCRIBED void* PrescribedBlock(const PrescribedCalls* call, void* native, void* selector, void* bytes,
                                 void* length) {
  Frame frame;
  call->enterFrame(&frame);
  if (_setjmp(frame.buffer) != 0) return NULL;
  void* block = NULL;
  void* data = call->send(native, selector);
  const void* source = call->send(data, bytes);
  int32_t size = (int32_t)(intptr_t)call->send(data, length);
  if (source && size > 0) {
    block = call->newBlock(size);
    void* target = block ? call->blockPointer(block) : NULL;
    if (target) memcpy(target, source, (size_t)size);
  }
  call->exitFrame(&frame);
  return block;
}
