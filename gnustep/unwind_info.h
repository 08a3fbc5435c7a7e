// gnustep/unwind_info.h - which language a stack frame's function was written in, as far as unwinding can tell.
#ifndef GNUSTEP_UNWIND_INFO_H
#define GNUSTEP_UNWIND_INFO_H

#include <stdbool.h>
#include <unwind.h>

typedef _Unwind_Reason_Code (*personality_routine)(int version, _Unwind_Action, _Unwind_Exception_Class,
                                                   struct _Unwind_Exception *, struct _Unwind_Context *);

// The personality routine of an Objective-C frame that has handlers or clean-ups, or NULL for any other frame.
personality_routine objective_c_personality(struct _Unwind_Context *frame);

// Whether the frame has handlers or clean-ups of any language.
bool has_unwind_actions(struct _Unwind_Context *frame);

#endif
