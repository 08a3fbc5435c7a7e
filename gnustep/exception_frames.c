// gnustep/exception_frames.c - entering and leaving exception frames.
//
// The list is an array of addresses beside the frames and not a chain through them: a frame whose function has gone
// without leaving must not take the others with it. It is initial-exec thread storage, because an empty guard
// should cost next to nothing.
#include "exception_frames.h"

#include <objc/runtime.h>
#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>

#include "exported.h"

static const uintptr_t kMark = 0x0bc5e7f1;
static const size_t kFirstCapacity = 32;

// Where the C library keeps the two registers in an i386 jmp_buf.
enum { kSavedStackPointer = 4, kSavedProgramCounter = 5 };

struct live_frames {
  struct exception_frame **entries;  // outermost first, addresses strictly falling
  size_t count;
  size_t capacity;
};

static _Thread_local struct live_frames live __attribute__((tls_model("initial-exec")));

static pthread_once_t key_once = PTHREAD_ONCE_INIT;
static pthread_key_t key;

static void free_list(void *entries) {
  free(entries);
  live = (struct live_frames){0};
}

static void make_key(void) { pthread_key_create(&key, free_list); }

static void grow(void) {
  size_t capacity = live.capacity != 0 ? live.capacity * 2 : kFirstCapacity;
  struct exception_frame **entries = realloc(live.entries, capacity * sizeof *entries);
  if (entries == NULL) {
    fprintf(stderr, "libcocoa: wanted room for %zu exception frames, found no memory; ending the process\n", capacity);
    abort();
  }
  live.entries = entries;
  live.capacity = capacity;
  pthread_once(&key_once, make_key);
  pthread_setspecific(key, entries);
}

static uintptr_t mark_of(const struct exception_frame *frame) { return (uintptr_t)frame ^ kMark; }

// Undoes the C library's pointer mangling: rotate left by 9 after an exclusive or with the thread's guard word.
static uintptr_t saved_register(const struct exception_frame *frame, int index) {
  uintptr_t word = (uintptr_t)frame->buffer[0].__jmpbuf[index];
  uintptr_t guard;
  __asm__("movl %%gs:0x18, %0" : "=r"(guard));
  return ((word >> 9) | (word << 23)) ^ guard;
}

struct exception_frame *exception_frame_at(size_t index) {
  return index < live.count ? live.entries[live.count - 1 - index] : NULL;
}

void exception_frames_drop_to(const void *limit) {
  while (live.count != 0 && (const void *)live.entries[live.count - 1] <= limit) --live.count;
}

void exception_frame_drop(const struct exception_frame *frame) {
  size_t kept = 0;
  for (size_t i = 0; i < live.count; ++i) {
    if (live.entries[i] != frame) live.entries[kept++] = live.entries[i];
  }
  live.count = kept;
}

bool exception_frame_is_armed(const struct exception_frame *frame, uintptr_t stack_pointer) {
  if ((uintptr_t)frame < stack_pointer) return false;  // gone: its memory may not even be read as a frame
  if (frame->mark != mark_of(frame) || frame->buffer[0].__jmpbuf[kSavedProgramCounter] == 0) return false;
  uintptr_t saved = saved_register(frame, kSavedStackPointer);
  return stack_pointer < saved && saved <= (uintptr_t)frame;
}

uintptr_t exception_frame_pc(const struct exception_frame *frame) {
  return saved_register(frame, kSavedProgramCounter);
}

COCOA_EXPORT void objc_exception_try_enter(void *address) {
  struct exception_frame *frame = address;
  exception_frames_drop_to(frame);
  if (live.count == live.capacity) grow();
  live.entries[live.count++] = frame;
  frame->mark = mark_of(frame);
  frame->buffer[0].__jmpbuf[kSavedProgramCounter] = 0;
}

COCOA_EXPORT void objc_exception_try_exit(void *frame) { exception_frames_drop_to(frame); }

COCOA_EXPORT id objc_exception_extract(void *frame) { return ((struct exception_frame *)frame)->exception; }

// Asks the class hierarchy and sends nothing: an exception may be of any class, with or without NSObject's methods.
COCOA_EXPORT int objc_exception_match(Class wanted, id exception) {
  if (exception == nil) return 0;
  Class class = object_getClass(exception);
  while (class != Nil && class != wanted) class = class_getSuperclass(class);
  return class != Nil;
}
