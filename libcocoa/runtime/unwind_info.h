// libcocoa/runtime/unwind_info.h - what the unwind tables say about a function on the stack.
#pragma once

#include <stdbool.h>
#include <stdint.h>
#include <unwind.h>

typedef _Unwind_Reason_Code (*QVXPersonality)(int version, _Unwind_Action, _Unwind_Exception_Class,
                                              struct _Unwind_Exception*, struct _Unwind_Context*);

// The personality routine of an Objective-C function that has handlers or clean-ups; NULL for any other.
QVXPersonality QVXObjectiveCPersonality(struct _Unwind_Context* function);

// Whether the function has handlers or clean-ups of any language.
bool QVXHasUnwindActions(struct _Unwind_Context* function);

// Whether two program counters may belong to one function. Compilers move a function's unlikely blocks away
// from it, with call frame information of their own; such a block may be any function's.
bool QVXMayShareFunction(uintptr_t pc, uintptr_t otherPC);
