// libcocoa/runtime/unwind_info.h - what the unwind tables say about a function on the stack.
#pragma once

#include <stdbool.h>
#include <stdint.h>
#include <unwind.h>

typedef _Unwind_Reason_Code (*QVXPersonality)(int version, _Unwind_Action, _Unwind_Exception_Class,
                                              struct _Unwind_Exception*, struct _Unwind_Context*);

// Call frame instructions.
typedef struct {
  const uint8_t* begin;
  const uint8_t* end;
} QVXFrameProgram;

// A function's call frame information. It lies in the file that the function is from.
typedef struct {
  const void* entry;       // which one it is
  uintptr_t start;         // the function's first instruction
  QVXFrameProgram common;  // the state on entry
  QVXFrameProgram own;     // how it changes
  uint32_t codeUnit;       // what distances in code are multiplied with
  int32_t dataUnit;        // what offsets are multiplied with
  uintptr_t personality;   // 0 for none
  bool hasActions;         // handlers or clean-ups of any language
  bool isSignalFrame;
} QVXFrameInformation;

// False if no table covers the address, or one of a form that compilers for this machine don't write.
bool QVXFindFrameInformation(uintptr_t address, QVXFrameInformation* out);

// Whether the function has handlers or clean-ups of Objective-C.
bool QVXHasObjectiveCActions(const QVXFrameInformation* information);

// The personality routine of an Objective-C function that has handlers or clean-ups; NULL for any other.
QVXPersonality QVXObjectiveCPersonality(struct _Unwind_Context* function);

// Whether the function has handlers or clean-ups of any language.
bool QVXHasUnwindActions(struct _Unwind_Context* function);

// Whether the information is a piece's that the compiler has moved away from its function.
bool QVXStartsInTheMiddle(const QVXFrameInformation* information);

// Whether two program counters may belong to one function. Compilers move a function's unlikely blocks away
// from it, with call frame information of their own; such a block may be any function's.
bool QVXMayShareFunction(uintptr_t pc, uintptr_t otherPC);
