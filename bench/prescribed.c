// bench/prescribed.c - the prescribed paths of what reads an object.
#include "bench/prescribed.h"

#include <stdlib.h>
#include <string.h>

#include "bench/prescribed_frame.h"

enum { kLongestOnStack = 99, kBytesPerUnit = 6, kMostComponents = 32, kDoubles = 2 };

PRESCRIBED double PrescribedDouble(const PrescribedCalls* call, void* native, void* selector) {
  Frame frame;
  call->enterFrame(&frame);
  if (_setjmp(frame.buffer) != 0) {
    call->match(call->exceptionClass, call->extract(&frame));
    return 0.0;
  }
  double result = call->sendForFloat(native, selector);
  call->exitFrame(&frame);
  return result;
}

PRESCRIBED int32_t PrescribedInteger(const PrescribedCalls* call, void* native, void* selector) {
  Frame frame;
  call->enterFrame(&frame);
  if (_setjmp(frame.buffer) != 0) {
    Raise(call, &frame);
    return 0;
  }
  int32_t result = (int32_t)(intptr_t)call->send(native, selector);
  call->exitFrame(&frame);
  return result;
}

PRESCRIBED uint32_t PrescribedColour(const PrescribedCalls* call, void* native, void* getRed) {
  Frame frame;
  call->enterFrame(&frame);
  if (_setjmp(frame.buffer) != 0) {
    Raise(call, &frame);
    return 0;
  }
  float rgba[4] = {0};
  Frame inner;
  call->enterFrame(&inner);
  if (_setjmp(inner.buffer) == 0) {
    call->send(native, getRed, &rgba[0], &rgba[1], &rgba[2], &rgba[3]);
    call->exitFrame(&inner);
  }
  uint32_t result = (uint32_t)(int32_t)(rgba[0] * 255.0F) << 16 | (uint32_t)(int32_t)(rgba[1] * 255.0F) << 8 |
                    (uint32_t)(int32_t)(rgba[2] * 255.0F);
  call->exitFrame(&frame);
  return result;
}

PRESCRIBED void PrescribedThree(const PrescribedCalls* call, void* native, void* getRed, double* red,
                                double* green, double* blue) {
  *red = *green = *blue = 0.0;
  Frame frame;
  call->enterFrame(&frame);
  if (_setjmp(frame.buffer) != 0) {
    Raise(call, &frame);
    return;
  }
  float rgb[3] = {0};
  call->send(native, getRed, &rgb[0], &rgb[1], &rgb[2], NULL);
  *red = rgb[0];
  *green = rgb[1];
  *blue = rgb[2];
  call->exitFrame(&frame);
}

PRESCRIBED void* PrescribedComponents(const PrescribedCalls* call, void* native, void* count,
                                      void* getComponents) {
  void* array = call->newArray(kDoubles, -1);
  Frame frame;
  call->enterFrame(&frame);
  if (_setjmp(frame.buffer) != 0) {
    Raise(call, &frame);
    return array;
  }
  float components[kMostComponents];
  int32_t components_count = (int32_t)(intptr_t)call->send(native, count);
  call->send(native, getComponents, components);
  for (int32_t i = 0; i < components_count && i < kMostComponents; ++i) {
    void (*insert)(void*, int32_t, double) = call->insertProcedure(array);
    if (insert) insert(array, i, components[i]);
  }
  call->exitFrame(&frame);
  return array;
}

PRESCRIBED void PrescribedWhite(const PrescribedCalls* call, void* native, void* getWhite, double* white) {
  *white = 0.0;
  Frame frame;
  call->enterFrame(&frame);
  if (_setjmp(frame.buffer) != 0) {
    Raise(call, &frame);
    return;
  }
  float value = 0;
  call->send(native, getWhite, &value, NULL);
  *white = value;
  call->exitFrame(&frame);
}

static void* Build(const PrescribedCalls* call, const char* text) {
  void* built = call->buildString(text, (int32_t)strlen(text));
  if (built) call->setStringEncoding(built, kUTF8);
  return built;
}

PRESCRIBED void* PrescribedString(const PrescribedCalls* call, void* native, void* selector) {
  Frame frame;
  call->enterFrame(&frame);
  if (_setjmp(frame.buffer) != 0) {
    Raise(call, &frame);
    return NULL;
  }
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

PRESCRIBED void* PrescribedBlock(const PrescribedCalls* call, void* native, void* selector) {
  Frame frame;
  call->enterFrame(&frame);
  if (_setjmp(frame.buffer) != 0) {
    Raise(call, &frame);
    return NULL;
  }
  void* block = NULL;
  void* data = call->send(native, selector);
  const void* source = call->send(data, call->bytes);
  int32_t size = (int32_t)(intptr_t)call->send(data, call->length);
  if (source && size > 0) {
    block = call->newBlock(size);
    void* target = block ? call->blockPointer(block) : NULL;
    if (target) memcpy(target, source, (size_t)size);
  }
  call->exitFrame(&frame);
  return block;
}
