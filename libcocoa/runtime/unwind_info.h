// libcocoa/runtime/unwind_info.h - which language a stack frame's function was written in, as far as
// unwinding can tell.
#ifndef GNUSTEP_UNWIND_INFO_H
#define GNUSTEP_UNWIND_INFO_H

#include <stdbool.h>
#include <stdint.h>
#include <unwind.h>

typedef _Unwind_Reason_Code (*personality_routine)(int version, _Unwind_Action, _Unwind_Exception_Class,
                                                   struct _Unwind_Exception*, struct _Unwind_Context*);

// The personality routine of an Objective-C frame that has handlers or clean-ups, or NULL for any other
// frame.
personality_routine objective_c_personality(struct _Unwind_Context* frame);

// Whether the frame has handlers or clean-ups of any language.
bool has_unwind_actions(struct _Unwind_Context* frame);

// Whether two program counters may belong to one function. Compilers move a function's unlikely blocks away
// from it, with call frame information of their own; such a block may be any function's.
bool may_share_function(uintptr_t pc, uintptr_t other_pc);

#endif
