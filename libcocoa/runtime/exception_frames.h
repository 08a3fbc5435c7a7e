// libcocoa/runtime/exception_frames.h - the setjmp frames of exception guards, and the calling thread's list
// of live ones.
#pragma once

#include <objc/objc.h>
#include <setjmp.h>
#include <stdbool.h>
#include <stdint.h>

// What _setjmp writes: the first bytes of a jmp_buf. The signal mask behind them is sigsetjmp's.
typedef struct {
  __jmp_buf registers;
  int maskWasSaved;
} QVXJumpTarget;

// The smallest jmp_buf that a guard may have been compiled with: the desktop's. This C library's is larger.
enum { QVXSmallestJumpBuffer = 72 };

// A frame lies on its guard's stack. The guard enters it, then calls _setjmp on its start in the same
// function. Its size is the guard's affair: one jmp_buf and four words. What this library keeps there lies
// where every guard has room.
typedef struct {
  QVXJumpTarget target;
  char unusedBuffer[QVXSmallestJumpBuffer - sizeof(QVXJumpTarget)];
  uintptr_t mark;    // set on entering, cleared on leaving and on delivery; depends on the frame's address
  id exception;      // set on delivery, not retained
  int runtimeLocks;  // how often this thread held the runtime's lock on entering
  void* unused;
} QVXExceptionFrame;

// The live frame that was entered last; NULL if there is none.
QVXExceptionFrame* QVXInnermostFrame(void);

// Drops the frames entered last that lie below the stack pointer: they belong to functions that are gone.
void QVXDropFramesBelow(uintptr_t stackPointer);

// Drops the frame and every frame entered after it; does nothing if it is not live.
void QVXLeaveFrame(const QVXExceptionFrame* frame);

// What can be told from a frame alone: it bears its mark, _setjmp was called on it, and the stack pointer
// saved there lies between `stackPointer` and the frame.
bool QVXFrameIsArmed(const QVXExceptionFrame* frame, uintptr_t stackPointer);

// The program counter that _setjmp saved in an armed frame.
uintptr_t QVXFrameProgramCounter(const QVXExceptionFrame* frame);

// Gives back the runtime's lock as often as this thread has taken it since it entered the frame. The runtime
// holds it while it runs +initialize, and knows nothing of exceptions that leave there.
void QVXRestoreRuntimeLock(const QVXExceptionFrame* frame);
