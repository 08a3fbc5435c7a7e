// libcocoa/runtime/exception_frames.c - entering and leaving exception frames.
//
// The list is an array of addresses beside the frames and not a chain through them: a frame whose function
// has gone without leaving must not take the others with it. It is initial-exec thread storage, because an
// empty guard should cost next to nothing.
#include "libcocoa/runtime/exception_frames.h"

#include <objc/runtime.h>
#include <objc/thr.h>
#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>

#include "libcocoa/runtime/exported.h"

_Static_assert(sizeof(struct exception_frame) == sizeof(jmp_buf) + 4 * sizeof(void*), "as guards lay it out");

static const uintptr_t kMark = 0x0bc5e7f1;
static const size_t kFirstCapacity = 32;

// Where the C library keeps the two registers in an i386 jmp_buf.
enum { kSavedStackPointer = 4, kSavedProgramCounter = 5 };

struct live_frames {
  struct exception_frame** entries;  // in the order of entering
  size_t count;
  size_t capacity;
};

static _Thread_local struct live_frames live __attribute__((tls_model("initial-exec")));

static pthread_once_t key_once = PTHREAD_ONCE_INIT;
static pthread_key_t key;

static void free_list(void* entries) {
  free(entries);
  live = (struct live_frames){0};
}

static void make_key(void) {
  pthread_key_create(&key, free_list);
}

static void grow(void) {
  size_t capacity = live.capacity != 0 ? live.capacity * 2 : kFirstCapacity;
  struct exception_frame** entries = realloc(live.entries, capacity * sizeof *entries);
  if (entries == NULL) {
    fprintf(stderr, "libcocoa: wanted room for %zu exception frames, found no memory; ending the process\n",
            capacity);
    abort();
  }
  live.entries = entries;
  live.capacity = capacity;
  pthread_once(&key_once, make_key);
  pthread_setspecific(key, entries);
}

static uintptr_t mark_of(const struct exception_frame* frame) {
  return (uintptr_t)frame ^ kMark;
}

// Undoes the C library's pointer mangling: rotate left by 9 after an exclusive or with the thread's guard
// word.
static uintptr_t saved_register(const struct exception_frame* frame, int index) {
  uintptr_t word = (uintptr_t)frame->buffer[0].__jmpbuf[index];
  uintptr_t guard;
  __asm__("movl %%gs:0x18, %0" : "=r"(guard));
  return ((word >> 9) | (word << 23)) ^ guard;
}

struct exception_frame* innermost_exception_frame(void) {
  return live.count != 0 ? live.entries[live.count - 1] : NULL;
}

void exception_frames_drop_below(uintptr_t stack_pointer) {
  while (live.count != 0 && (uintptr_t)live.entries[live.count - 1] < stack_pointer) --live.count;
}

void exception_frames_leave(const struct exception_frame* frame) {
  for (size_t i = live.count; i-- != 0;) {
    if (live.entries[i] == frame) {
      live.count = i;
      return;
    }
  }
}

bool exception_frame_is_armed(const struct exception_frame* frame, uintptr_t stack_pointer) {
  if ((uintptr_t)frame < stack_pointer) return false;  // gone: its memory may not even be read as a frame
  if (frame->mark != mark_of(frame) || frame->buffer[0].__jmpbuf[kSavedProgramCounter] == 0) return false;
  uintptr_t saved = saved_register(frame, kSavedStackPointer);
  return stack_pointer < saved && saved <= (uintptr_t)frame;
}

uintptr_t exception_frame_pc(const struct exception_frame* frame) {
  return saved_register(frame, kSavedProgramCounter);
}

extern objc_mutex_t __objc_runtime_mutex;

static int runtime_locks(void) {
  const struct objc_mutex* lock = __objc_runtime_mutex;
  return lock->owner != NULL && lock->owner == objc_thread_id() ? lock->depth : 0;
}

void exception_frame_restore_locks(const struct exception_frame* frame) {
  for (int locks = runtime_locks(); locks > frame->runtime_locks; --locks)
    objc_mutex_unlock(__objc_runtime_mutex);
}

// Frames below the stack pointer belong to functions that are gone. Those above it may be live whatever their
// order: one function may hold several.
COCOA_EXPORT void objc_exception_try_enter(void* address) {
  struct exception_frame* frame = address;
  exception_frames_drop_below((uintptr_t)__builtin_frame_address(0));
  if (live.count != 0 && live.entries[live.count - 1] == frame) --live.count;
  if (live.count == live.capacity) grow();
  live.entries[live.count++] = frame;
  frame->mark = mark_of(frame);
  frame->runtime_locks = runtime_locks();
  frame->buffer[0].__jmpbuf[kSavedProgramCounter] = 0;
}

// Leaves the frames entered after it too; one that is on the list no more is left already.
COCOA_EXPORT void objc_exception_try_exit(void* address) {
  struct exception_frame* frame = address;
  exception_frames_leave(frame);
  frame->mark = 0;
}

COCOA_EXPORT id objc_exception_extract(void* frame) {
  return ((struct exception_frame*)frame)->exception;
}

// Asks the class hierarchy and sends nothing: an exception may be of any class, with or without NSObject's
// methods.
COCOA_EXPORT int objc_exception_match(Class wanted, id exception) {
  if (exception == nil) return 0;
  Class class = object_getClass(exception);
  while (class != Nil && class != wanted) class = class_getSuperclass(class);
  return class != Nil;
}
