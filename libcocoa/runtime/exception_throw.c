// libcocoa/runtime/exception_throw.c - delivers exceptions into setjmp frames.
//
// GNUstep's own exceptions are table-driven: whoever raises calls objc_exception_throw. This library comes
// before the Objective-C runtime, so every raise arrives here first. The nearest taker wins:
//   - an Objective-C @catch that takes this exception, nearer than any live frame: the runtime's own throw;
//   - a live frame: the @finally blocks on the way run, then the exception is delivered into the frame;
//   - neither: the runtime's own throw, which ends in the uncaught exception handler.
// C++ functions on the way to a frame are passed over: they take no exception, and their destructors do not
// run. Where nothing but they and plain functions lie on the way, kept unwind rules find the frame; where an
// Objective-C function has a say, the compiler's unwinder asks it.
#define _GNU_SOURCE
#include <dlfcn.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "libcocoa/runtime/exception_frames.h"
#include "libcocoa/runtime/exported.h"
#include "libcocoa/runtime/unwind_info.h"
#include "libcocoa/runtime/unwind_rules.h"

// What the runtime's personality routine expects an exception to be: its class, and the layout that it reads.
// The class is the text GNUCOBJC, its first letter in the highest byte.
static const _Unwind_Exception_Class kObjectiveCExceptionClass = 0x474E55434F424A43;

typedef struct {
  struct _Unwind_Exception header;
  id value;
  uintptr_t landingPad;
  int handlerSwitchValue;
} NativeException;

// The registers that a function owns while it calls another, by their DWARF numbers, and where it stands.
typedef struct {
  uintptr_t ebx, ebp, esi, edi;
  uintptr_t stackPointer;  // after the call returns
  uintptr_t returnAddress;
} CallSite;
enum { kEbx = 3, kEbp = 5, kEsi = 6, kEdi = 7 };

// A throw on its way to a frame. It outlives the stack that it started on. Whoever disposes of its exception
// frees nothing: there is no function for that.
typedef struct Delivery {
  NativeException exception;
  QVXExceptionFrame* target;
  uintptr_t end;       // the stack address at which the target's function begins; 0 if it is not known
  uintptr_t position;  // the function that is being left
  CallSite next;
  struct Delivery* outer;
} Delivery;

// Continues in QVXForcedUnwindFromHere(argument) as though the function at `site` had called it; what lies
// deeper on the stack is given up. In unwind_switch.S.
_Noreturn void QVXSwitchToCallSite(const CallSite* site, void* argument);
__attribute__((regparm(1))) _Noreturn void QVXForcedUnwindFromHere(void* delivery);

// This thread's deliveries, newest first. One stays behind when a @finally block leaves by return or by
// another throw; it is freed when the stack has fallen well behind it. The margin is for a @finally block
// that throws and catches on its own: arguments popped on entering it leave its stack a little above the
// position.
enum { kMargin = 4096 };
static _Thread_local Delivery* deliveries __attribute__((tls_model("initial-exec")));

static void FreeDeliveriesBelow(uintptr_t address) {
  while (deliveries && deliveries->position < address) {
    Delivery* done = deliveries;
    deliveries = done->outer;
    free(done);
  }
}

// `exception` is all zeros.
static void PrepareException(NativeException* exception, id value) {
  exception->header.exception_class = kObjectiveCExceptionClass;
  exception->value = value;
}

// The way from the throw outwards, one function at a time. The unwinder shows a function's lower end only;
// its upper end is the next one's lower, so each is decided on one step late.
typedef struct {
  NativeException probe;
  uintptr_t here;             // the stack pointer of the throw
  QVXExceptionFrame* target;  // out: the frame that takes the exception; NULL: a handler or nobody does
  uintptr_t end;
  uintptr_t lastBottom;  // the function last seen
  uintptr_t lastStart;
  bool lastCatches;  // an Objective-C handler of its takes the exception
} Survey;

// Frames in the function that spans lastBottom to `top`. A frame that can't be its function's is stale: the
// function that entered it has returned without leaving it, and another one uses its memory.
static bool FrameInLastFunction(Survey* survey, uintptr_t top) {
  QVXExceptionFrame* frame;
  while ((frame = QVXInnermostFrame()) && (uintptr_t)frame < top) {
    if (QVXFrameIsArmed(frame, survey->here) &&
        QVXMayShareFunction(QVXFrameProgramCounter(frame), survey->lastStart)) {
      survey->target = frame;
      survey->end = survey->lastBottom;
      return true;
    }
    QVXLeaveFrame(frame);
  }
  return false;
}

static bool DecideOnLastFunction(Survey* survey, uintptr_t top) {
  return FrameInLastFunction(survey, top) || survey->lastCatches;
}

static _Unwind_Reason_Code SurveyStep(struct _Unwind_Context* function, void* argument) {
  Survey* survey = argument;
  uintptr_t bottom = _Unwind_GetCFA(function);
  if (survey->lastStart != 0 && DecideOnLastFunction(survey, bottom)) return _URC_NORMAL_STOP;
  survey->lastBottom = bottom;
  survey->lastStart = _Unwind_GetRegionStart(function);
  QVXPersonality personality = QVXObjectiveCPersonality(function);
  survey->lastCatches = personality && personality(1, _UA_SEARCH_PHASE, survey->probe.header.exception_class,
                                                   &survey->probe.header, function) == _URC_HANDLER_FOUND;
  return _URC_NO_REASON;
}

static void SurveyStack(Survey* survey) {
  _Unwind_Backtrace(SurveyStep, survey);
  if (survey->lastCatches) return;
  // It has found a frame, which is the innermost one, or has come to the end of the stack or to a function
  // without unwind tables: nothing further out can be asked for a handler.
  QVXExceptionFrame* frame;
  while ((frame = QVXInnermostFrame())) {
    if (QVXFrameIsArmed(frame, survey->here)) {
      survey->target = frame;
      return;
    }
    QVXLeaveFrame(frame);
  }
}

static _Noreturn void ThrowNatively(id exception) {
  static void (*native)(id);
  if (!native) {
    void* found = dlsym(RTLD_NEXT, "objc_exception_throw");
    if (!found) {
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

static _Noreturn void Deliver(QVXExceptionFrame* target, id exception) {
  QVXLeaveFrame(target);
  QVXRestoreRuntimeLock(target);
  FreeDeliveriesBelow((uintptr_t)target);
  target->mark = 0;
  target->exception = exception;
  jmp_buf buffer = {0};  // as large as this C library's, which the frame's may not be
  memcpy(buffer, &target->target, sizeof target->target);
  longjmp(buffer, 1);
}

// The next Objective-C function with clean-ups beyond delivery->position: its call site goes to
// delivery->next.
static _Unwind_Reason_Code LookForCleanUp(struct _Unwind_Context* function, void* argument) {
  Delivery* delivery = argument;
  uintptr_t bottom = _Unwind_GetCFA(function);
  if (bottom <= delivery->position) return _URC_NO_REASON;
  if (delivery->end != 0 && bottom >= delivery->end) return _URC_END_OF_STACK;
  if (!QVXObjectiveCPersonality(function)) return _URC_NO_REASON;
  int beforeInstruction = 0;
  uintptr_t pc = _Unwind_GetIPInfo(function, &beforeInstruction);
  delivery->next = (CallSite){
      .ebx = _Unwind_GetGR(function, kEbx),
      .ebp = _Unwind_GetGR(function, kEbp),
      .esi = _Unwind_GetGR(function, kEsi),
      .edi = _Unwind_GetGR(function, kEdi),
      .stackPointer = bottom,
      .returnAddress = pc + (beforeInstruction ? 1 : 0),
  };
  return _URC_NORMAL_STOP;
}

static bool FindCleanUp(Delivery* delivery) {
  delivery->next.returnAddress = 0;
  _Unwind_Backtrace(LookForCleanUp, delivery);
  return delivery->next.returnAddress != 0;
}

static _Noreturn void GoOn(Delivery* delivery) {
  if (FindCleanUp(delivery)) QVXSwitchToCallSite(&delivery->next, delivery);
  Deliver(delivery->target, delivery->exception.value);
}

// Called by the unwinder before it asks a function's personality routine to clean up.
static _Unwind_Reason_Code BeforeCleanUp(int version, _Unwind_Action actions, _Unwind_Exception_Class class,
                                         struct _Unwind_Exception* exception,
                                         struct _Unwind_Context* function, void* argument) {
  Delivery* delivery = argument;
  uintptr_t bottom = _Unwind_GetCFA(function);
  if ((actions & _UA_END_OF_STACK) != 0 || (delivery->end != 0 && bottom >= delivery->end))
    Deliver(delivery->target, delivery->exception.value);
  delivery->position = bottom;
  if (QVXHasUnwindActions(function) && !QVXObjectiveCPersonality(function)) GoOn(delivery);
  return _URC_NO_REASON;
}

__attribute__((regparm(1))) _Noreturn void QVXForcedUnwindFromHere(void* argument) {
  Delivery* delivery = argument;
  _Unwind_ForcedUnwind(&delivery->exception.header, BeforeCleanUp, delivery);
  Deliver(delivery->target, delivery->exception.value);
}

// Whether a frame below the function's upper end is its own: as FrameInLastFunction decides.
typedef enum { kOwn, kStale, kUnknown } Holding;

static Holding Holds(const QVXUnwindRule* function, const QVXExceptionFrame* frame, uintptr_t here) {
  if (!QVXFrameIsArmed(frame, here)) return kStale;
  QVXUnwindRule armed;
  if (!QVXUnwindRuleAt(QVXFrameProgramCounter(frame), &armed)) return kUnknown;
  bool mayShare = armed.entry == function->entry || armed.startsInTheMiddle || function->startsInTheMiddle;
  return mayShare ? kOwn : kStale;
}

// The frame that takes an exception thrown by the function at `place` if no Objective-C function has a say
// before; NULL if one has, or if the rules don't suffice. Stale frames on the way are dropped.
static QVXExceptionFrame* WalkToFrame(QVXPlace place, uintptr_t here) {
  QVXUnwindRule rule;
  while (QVXUnwindRuleOf(&place, &rule)) {
    uintptr_t top = QVXUpperEnd(&rule, &place);
    QVXExceptionFrame* frame;
    while ((frame = QVXInnermostFrame()) && (uintptr_t)frame < top) {
      Holding holding = Holds(&rule, frame, here);
      if (holding == kUnknown) return NULL;
      if (holding == kOwn) return frame;
      QVXLeaveFrame(frame);
    }
    if (!frame || rule.isObjectiveC || !QVXStepOutwards(&rule, &place)) return NULL;
  }
  return NULL;
}

static QVXExceptionFrame* NearestFrameByRules(const QVXPlace* thrower, uintptr_t here) {
  if (!QVXTakeUnwindRules()) return NULL;
  QVXExceptionFrame* frame = WalkToFrame(*thrower, here);
  QVXGiveUnwindRules();
  return frame;
}

QVX_EXPORT void objc_exception_throw(id exception) {
  uintptr_t here = (uintptr_t)__builtin_frame_address(0);
  QVXDropFramesBelow(here);
  FreeDeliveriesBelow(here - kMargin);
  if (!QVXInnermostFrame()) ThrowNatively(exception);
  QVXPlace thrower = QVXCallerOf(__builtin_frame_address(0));
  QVXExceptionFrame* nearest = NearestFrameByRules(&thrower, here);
  if (nearest) Deliver(nearest, exception);

  Survey survey = {.here = here};
  PrepareException(&survey.probe, exception);
  SurveyStack(&survey);
  if (!survey.target) ThrowNatively(exception);

  Delivery search = {.target = survey.target, .end = survey.end, .position = here};
  if (!FindCleanUp(&search)) Deliver(survey.target, exception);
  Delivery* delivery = aligned_alloc(_Alignof(Delivery), sizeof *delivery);
  if (!delivery) Deliver(survey.target, exception);
  *delivery = search;
  PrepareException(&delivery->exception, exception);
  delivery->outer = deliveries;
  deliveries = delivery;
  QVXSwitchToCallSite(&delivery->next, delivery);
}
