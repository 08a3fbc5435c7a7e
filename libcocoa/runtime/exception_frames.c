// libcocoa/runtime/exception_frames.c - entering and leaving exception frames.
//
// The list is an array of addresses beside the frames and not a chain through them: a frame whose function
// has gone without leaving must not take the others with it. It is initial-exec thread storage, because an
// empty guard should cost next to nothing.
#include "libcocoa/runtime/exception_frames.h"

#include <objc/runtime.h>
#include <objc/thr.h>
#include <pthread.h>
#include <stddef.h>
#include <stdio.h>
#include <stdlib.h>

#include "libcocoa/runtime/exported.h"

_Static_assert(sizeof(QVXExceptionFrame) == QVXSmallestJumpBuffer + 4 * sizeof(void*),
               "as the desktop's guards lay it out");
_Static_assert(sizeof(jmp_buf) >= QVXSmallestJumpBuffer, "as this system's guards lay it out");
_Static_assert(offsetof(struct __jmp_buf_tag, __saved_mask) == sizeof(QVXJumpTarget), "as _setjmp writes it");

static const uintptr_t kMark = 0x0bc5e7f1;
static const size_t kFirstCapacity = 32;

// Where the C library keeps the two registers in an i386 jmp_buf.
enum { kSavedStackPointer = 4, kSavedProgramCounter = 5 };

typedef struct {
  QVXExceptionFrame** entries;  // in the order of entering
  size_t count;
  size_t capacity;
} LiveFrames;

static _Thread_local LiveFrames live __attribute__((tls_model("initial-exec")));

static pthread_once_t keyOnce = PTHREAD_ONCE_INIT;
static pthread_key_t key;

static void FreeList(void* entries) {
  free(entries);
  live = (LiveFrames){0};
}

static void MakeKey(void) {
  pthread_key_create(&key, FreeList);
}

static void Grow(void) {
  size_t capacity = live.capacity != 0 ? live.capacity * 2 : kFirstCapacity;
  QVXExceptionFrame** entries = realloc(live.entries, capacity * sizeof *entries);
  if (!entries) {
    fprintf(stderr, "libcocoa: wanted room for %zu exception frames, found no memory; ending the process\n",
            capacity);
    abort();
  }
  live.entries = entries;
  live.capacity = capacity;
  pthread_once(&keyOnce, MakeKey);
  pthread_setspecific(key, entries);
}

static uintptr_t MarkOf(const QVXExceptionFrame* frame) {
  return (uintptr_t)frame ^ kMark;
}

// A frame on the list may be stale, and its memory another function's by now: what stands there is tested
// before it is believed. AddressSanitizer would stop at the other function's padding.
#define QVX_READS_STALE_FRAMES __attribute__((no_sanitize("address")))

// Undoes the C library's pointer mangling: rotate left by 9 after an exclusive or with the thread's guard
// word.
QVX_READS_STALE_FRAMES static uintptr_t SavedRegister(const QVXExceptionFrame* frame, int index) {
  uintptr_t word = (uintptr_t)frame->target.registers[index];
  uintptr_t guard;
  __asm__("movl %%gs:0x18, %0" : "=r"(guard));
  return ((word >> 9) | (word << 23)) ^ guard;
}

QVXExceptionFrame* QVXInnermostFrame(void) {
  return live.count != 0 ? live.entries[live.count - 1] : NULL;
}

void QVXDropFramesBelow(uintptr_t stackPointer) {
  while (live.count != 0 && (uintptr_t)live.entries[live.count - 1] < stackPointer) --live.count;
}

void QVXLeaveFrame(const QVXExceptionFrame* frame) {
  for (size_t i = live.count; i-- != 0;) {
    if (live.entries[i] == frame) {
      live.count = i;
      return;
    }
  }
}

QVX_READS_STALE_FRAMES bool QVXFrameIsArmed(const QVXExceptionFrame* frame, uintptr_t stackPointer) {
  if ((uintptr_t)frame < stackPointer) return false;  // gone: its memory may not even be read as a frame
  if (frame->mark != MarkOf(frame) || frame->target.registers[kSavedProgramCounter] == 0) return false;
  uintptr_t saved = SavedRegister(frame, kSavedStackPointer);
  return stackPointer < saved && saved <= (uintptr_t)frame;
}

QVX_READS_STALE_FRAMES uintptr_t QVXFrameProgramCounter(const QVXExceptionFrame* frame) {
  return SavedRegister(frame, kSavedProgramCounter);
}

extern objc_mutex_t __objc_runtime_mutex;

static int RuntimeLocks(void) {
  const struct objc_mutex* lock = __objc_runtime_mutex;
  return lock->owner && lock->owner == objc_thread_id() ? lock->depth : 0;
}

void QVXRestoreRuntimeLock(const QVXExceptionFrame* frame) {
  for (int locks = RuntimeLocks(); locks > frame->runtimeLocks; --locks)
    objc_mutex_unlock(__objc_runtime_mutex);
}

// Frames below the stack pointer belong to functions that are gone. Those above it may be live whatever their
// order: one function may hold several.
QVX_EXPORT void objc_exception_try_enter(void* address) {
  QVXExceptionFrame* frame = address;
  QVXDropFramesBelow((uintptr_t)__builtin_frame_address(0));
  if (live.count != 0 && live.entries[live.count - 1] == frame) --live.count;
  if (live.count == live.capacity) Grow();
  live.entries[live.count++] = frame;
  frame->mark = MarkOf(frame);
  frame->runtimeLocks = RuntimeLocks();
  frame->target.registers[kSavedProgramCounter] = 0;
}

// Leaves the frames entered after it too. A frame that is no longer on the list has been left already.
QVX_EXPORT void objc_exception_try_exit(void* address) {
  QVXExceptionFrame* frame = address;
  QVXLeaveFrame(frame);
  frame->mark = 0;
}

QVX_EXPORT id objc_exception_extract(void* frame) {
  return ((QVXExceptionFrame*)frame)->exception;
}

// Asks the class hierarchy and sends nothing: an exception may be of any class, with or without NSObject's
// methods.
QVX_EXPORT int objc_exception_match(Class wanted, id exception) {
  if (!exception) return 0;
  Class class = object_getClass(exception);
  while (class && class != wanted) class = class_getSuperclass(class);
  return class != Nil;
}
