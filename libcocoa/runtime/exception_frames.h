// libcocoa/runtime/exception_frames.h - the setjmp frames of exception guards, and the thread's list of live
// ones.
#ifndef GNUSTEP_EXCEPTION_FRAMES_H
#define GNUSTEP_EXCEPTION_FRAMES_H

#include <objc/objc.h>
#include <setjmp.h>
#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

// A frame lies on its guard's stack. The guard enters it, then calls _setjmp on `buffer` in the same
// function.
struct exception_frame {
  jmp_buf buffer;
  uintptr_t mark;     // set on entering, cleared on leaving and on delivery; depends on the frame's address
  id exception;       // set on delivery
  int runtime_locks;  // how often this thread held the runtime's lock on entering
  void* unused;
};

// The calling thread's live frame that was entered last, or NULL.
struct exception_frame* innermost_exception_frame(void);

// Drops the frames entered last that lie below the stack pointer: they belong to functions that are gone.
void exception_frames_drop_below(uintptr_t stack_pointer);

// Drops the frame and every frame entered after it; nothing if it is not live.
void exception_frames_leave(const struct exception_frame* frame);

// What can be told from a frame alone: it bears its mark, _setjmp was called on it, and the stack pointer
// saved there lies between `stack_pointer` and the frame.
bool exception_frame_is_armed(const struct exception_frame* frame, uintptr_t stack_pointer);

// The program counter that _setjmp saved.
uintptr_t exception_frame_pc(const struct exception_frame* frame);

// Gives back the runtime's lock as often as this thread has taken it since it entered the frame. The runtime
// holds it while it runs +initialize, and knows nothing of exceptions that leave there.
void exception_frame_restore_locks(const struct exception_frame* frame);

#endif
