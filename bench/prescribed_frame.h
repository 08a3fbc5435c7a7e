// bench/prescribed_frame.h - what every prescribed path is made of.
#pragma once

#include <setjmp.h>

#include "bench/prescribed.h"

enum { kASCII = 0x0600, kUTF8 = 0x08000100 };

// The guard's frame, as the platform lays it out.
typedef struct {
  jmp_buf buffer;
  void* words[4];
} Frame;

// Hosts call on a stack that is aligned to 4 bytes.
#define PRESCRIBED __attribute__((noinline, force_align_arg_pointer))

// After a delivery: an NSException is logged, converted and handed to the host. Others do not come here.
static inline void Raise(const PrescribedCalls* call, Frame* frame) {
  void* exception = call->extract(frame);
  if (!call->match(call->exceptionClass, exception)) return;
  void* name = call->send(exception, call->name);
  void* reason = call->send(exception, call->reason);
  void* userInfo = call->send(exception, call->userInfo);
  void* format = call->createString(NULL, "A %@: %@, Info: %@\n", kASCII);
  call->log(format, name, reason, userInfo);
  call->releaseTemporary(format);
  void* wrapper = call->send(call->exceptionClass, call->newException, exception);
  if (wrapper == NULL) return;
  call->raise(wrapper);
  call->unlock(wrapper);
}
