// libcocoa/runtime/exception_throw.c - delivers exceptions into setjmp frames.
//
// GNUstep's own exceptions are table-driven: whoever raises calls objc_exception_throw. This library comes
// before the Objective-C runtime, so every raise arrives here first. The nearest taker wins:
//   - an Objective-C @catch that takes this exception, nearer than any live frame: the runtime's own throw;
//   - a live frame: the @finally blocks on the way run, then the exception is delivered into the frame;
//   - neither: the runtime's own throw, which ends in the uncaught exception handler.
// C++ functions on the way to a frame are passed over: they take no exception, and their destructors do not
// run.
#define _GNU_SOURCE
#include <dlfcn.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "libcocoa/runtime/exception_frames.h"
#include "libcocoa/runtime/exported.h"
#include "libcocoa/runtime/unwind_info.h"

// What the runtime's personality routine expects an exception to be: its class, and the layout that it reads.
// The class is the text GNUCOBJC, its first letter in the highest byte.
static const _Unwind_Exception_Class kObjectiveCExceptionClass = 0x474E55434F424A43;

struct native_exception {
  struct _Unwind_Exception header;
  id value;
  uintptr_t landing_pad;
  int handler_switch_value;
};

// The registers that a function owns while it calls another, by their DWARF numbers, and where it stands.
struct call_site {
  uintptr_t ebx, ebp, esi, edi;
  uintptr_t stack_pointer;  // after the call returns
  uintptr_t return_address;
};
enum { kEbx = 3, kEbp = 5, kEsi = 6, kEdi = 7 };

// A throw on its way to a frame. It outlives the stack that it started on.
struct delivery {
  struct native_exception exception;
  struct exception_frame* target;
  uintptr_t end;       // the stack address at which the target's function begins; 0 if it is not known
  uintptr_t position;  // the function that is being left
  struct call_site next;
  struct delivery* outer;
};

// Continues in forced_unwind_from_here(argument) as though the function at `site` had called it; what lies
// deeper on the stack is given up. In unwind_switch.S.
_Noreturn void switch_to_call_site(const struct call_site* site, void* argument);
__attribute__((regparm(1))) _Noreturn void forced_unwind_from_here(void* delivery);

// This thread's deliveries, newest first. One stays behind when a @finally block leaves by return or by
// another throw; it is freed when the stack has fallen well behind it. The margin is for a @finally block
// that throws and catches on its own: arguments popped on entering it leave its stack a little above the
// position.
enum { kMargin = 4096 };
static _Thread_local struct delivery* deliveries __attribute__((tls_model("initial-exec")));

static void free_deliveries_below(uintptr_t address) {
  while (deliveries != NULL && deliveries->position < address) {
    struct delivery* done = deliveries;
    deliveries = done->outer;
    free(done);
  }
}

static void prepare_exception(struct native_exception* exception, id value) {
  memset(exception, 0, sizeof *exception);
  exception->header.exception_class = kObjectiveCExceptionClass;
  exception->value = value;
}

// The way from the throw outwards, one function at a time. The unwinder shows a function's lower end only;
// its upper end is the next one's lower, so each is decided on one step late.
struct survey {
  struct native_exception probe;
  uintptr_t here;                  // the stack pointer of the throw
  struct exception_frame* target;  // out: the frame that takes the exception
  uintptr_t end;
  bool caught;            // out: an Objective-C handler takes it first
  uintptr_t last_bottom;  // the function last seen
  uintptr_t last_start;
  bool last_catches;
};

// Frames in the function that spans last_bottom to `top`. A frame that can't be its function's is stale: the
// function that entered it has returned without leaving it, and another one uses its memory.
static bool frame_in_last_function(struct survey* survey, uintptr_t top) {
  struct exception_frame* frame;
  while ((frame = innermost_exception_frame()) != NULL && (uintptr_t)frame < top) {
    if (exception_frame_is_armed(frame, survey->here) &&
        may_share_function(exception_frame_pc(frame), survey->last_start)) {
      survey->target = frame;
      survey->end = survey->last_bottom;
      return true;
    }
    exception_frames_leave(frame);
  }
  return false;
}

static bool decide_on_last_function(struct survey* survey, uintptr_t top) {
  if (frame_in_last_function(survey, top)) return true;
  survey->caught = survey->last_catches;
  return survey->caught;
}

static _Unwind_Reason_Code survey_step(struct _Unwind_Context* function, void* argument) {
  struct survey* survey = argument;
  uintptr_t bottom = _Unwind_GetCFA(function);
  if (survey->last_start != 0 && decide_on_last_function(survey, bottom)) return _URC_NORMAL_STOP;
  survey->last_bottom = bottom;
  survey->last_start = _Unwind_GetRegionStart(function);
  personality_routine personality = objective_c_personality(function);
  survey->last_catches =
      personality != NULL && personality(1, _UA_SEARCH_PHASE, survey->probe.header.exception_class,
                                         &survey->probe.header, function) == _URC_HANDLER_FOUND;
  return _URC_NO_REASON;
}

static void survey_stack(struct survey* survey) {
  _Unwind_Backtrace(survey_step, survey);
  if (survey->target != NULL || survey->caught) return;
  // The end of the stack, or a function without unwind tables: nothing further out can be asked for a
  // handler.
  survey->caught = survey->last_catches;
  if (survey->caught) return;
  struct exception_frame* frame;
  while ((frame = innermost_exception_frame()) != NULL) {
    if (exception_frame_is_armed(frame, survey->here)) {
      survey->target = frame;
      return;
    }
    exception_frames_leave(frame);
  }
}

static _Noreturn void throw_natively(id exception) {
  static void (*native)(id);
  if (native == NULL) {
    void* found = dlsym(RTLD_NEXT, "objc_exception_throw");
    if (found == NULL) {
      fputs(
          "libcocoa: wanted objc_exception_throw of the Objective-C runtime behind this library, found "
          "none\n",
          stderr);
      abort();
    }
    memcpy(&native, &found, sizeof native);
  }
  native(exception);
  abort();
}

static _Noreturn void deliver(struct exception_frame* target, id exception) {
  exception_frames_leave(target);
  exception_frame_restore_locks(target);
  free_deliveries_below((uintptr_t)target);
  target->mark = 0;
  target->exception = exception;
  longjmp(target->buffer, 1);
}

// The next Objective-C function with clean-ups beyond delivery->position: its call site goes to
// delivery->next.
static _Unwind_Reason_Code look_for_clean_up(struct _Unwind_Context* function, void* argument) {
  struct delivery* delivery = argument;
  uintptr_t bottom = _Unwind_GetCFA(function);
  if (bottom <= delivery->position) return _URC_NO_REASON;
  if (delivery->end != 0 && bottom >= delivery->end) return _URC_END_OF_STACK;
  if (objective_c_personality(function) == NULL) return _URC_NO_REASON;
  int before_instruction = 0;
  uintptr_t pc = _Unwind_GetIPInfo(function, &before_instruction);
  delivery->next = (struct call_site){
      .ebx = _Unwind_GetGR(function, kEbx),
      .ebp = _Unwind_GetGR(function, kEbp),
      .esi = _Unwind_GetGR(function, kEsi),
      .edi = _Unwind_GetGR(function, kEdi),
      .stack_pointer = bottom,
      .return_address = pc + (before_instruction ? 1 : 0),
  };
  return _URC_NORMAL_STOP;
}

static bool find_clean_up(struct delivery* delivery) {
  delivery->next.return_address = 0;
  _Unwind_Backtrace(look_for_clean_up, delivery);
  return delivery->next.return_address != 0;
}

static _Noreturn void go_on(struct delivery* delivery) {
  if (find_clean_up(delivery)) switch_to_call_site(&delivery->next, delivery);
  deliver(delivery->target, delivery->exception.value);
}

// Called by the unwinder before it asks a function's personality routine to clean up.
static _Unwind_Reason_Code before_clean_up(int version, _Unwind_Action actions, _Unwind_Exception_Class class,
                                           struct _Unwind_Exception* exception,
                                           struct _Unwind_Context* function, void* argument) {
  (void)version, (void)class, (void)exception;
  struct delivery* delivery = argument;
  uintptr_t bottom = _Unwind_GetCFA(function);
  if ((actions & _UA_END_OF_STACK) != 0 || (delivery->end != 0 && bottom >= delivery->end)) {
    deliver(delivery->target, delivery->exception.value);
  }
  delivery->position = bottom;
  if (has_unwind_actions(function) && objective_c_personality(function) == NULL) go_on(delivery);
  return _URC_NO_REASON;
}

__attribute__((regparm(1))) _Noreturn void forced_unwind_from_here(void* argument) {
  struct delivery* delivery = argument;
  _Unwind_ForcedUnwind(&delivery->exception.header, before_clean_up, delivery);
  deliver(delivery->target, delivery->exception.value);
}

// Frees a delivery whose exception somebody else disposes of.
static void forget_delivery(_Unwind_Reason_Code reason, struct _Unwind_Exception* exception) {
  (void)reason, (void)exception;  // stays on the list until the stack has fallen behind it
}

COCOA_EXPORT void objc_exception_throw(id exception) {
  uintptr_t here = (uintptr_t)__builtin_frame_address(0);
  exception_frames_drop_below(here);
  free_deliveries_below(here - kMargin);
  if (innermost_exception_frame() == NULL) throw_natively(exception);

  struct survey survey = {.here = here};
  prepare_exception(&survey.probe, exception);
  survey_stack(&survey);
  if (survey.target == NULL) throw_natively(exception);

  struct delivery search = {.target = survey.target, .end = survey.end, .position = here};
  if (!find_clean_up(&search)) deliver(survey.target, exception);
  struct delivery* delivery = aligned_alloc(_Alignof(struct delivery), sizeof *delivery);
  if (delivery == NULL) deliver(survey.target, exception);
  *delivery = search;
  prepare_exception(&delivery->exception, exception);
  delivery->exception.header.exception_cleanup = forget_delivery;
  delivery->outer = deliveries;
  deliveries = delivery;
  switch_to_call_site(&delivery->next, delivery);
}
