// gnustep/exception_frames.h - the setjmp frames of exception guards, and the thread's list of live ones.
#ifndef GNUSTEP_EXCEPTION_FRAMES_H
#define GNUSTEP_EXCEPTION_FRAMES_H

#include <objc/objc.h>
#include <setjmp.h>
#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

// A frame lies on its guard's stack. The guard enters it, then calls _setjmp on `buffer` in the same function.
struct exception_frame {
  jmp_buf buffer;
  uintptr_t mark;  // set on entering, cleared on delivery; depends on the frame's address
  id exception;    // set on delivery
  void *unused[2];
};

// Live frames of the calling thread, innermost first: frame 0 has the lowest address. NULL beyond the last.
struct exception_frame *exception_frame_at(size_t index);

// Drops every frame at `limit` and below. The stack grows down: they belong to functions that are gone.
void exception_frames_drop_to(const void *limit);

// Drops one frame wherever it stands.
void exception_frame_drop(const struct exception_frame *frame);

// What can be told from a frame alone: it bears its mark, _setjmp was called on it, and the stack pointer saved there
// lies between `stack_pointer` and the frame.
bool exception_frame_is_armed(const struct exception_frame *frame, uintptr_t stack_pointer);

// The program counter that _setjmp saved.
uintptr_t exception_frame_pc(const struct exception_frame *frame);

#endif
