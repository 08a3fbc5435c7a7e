// bundle/bridge/guard.h - the native-exception guard: no platform exception of class NSException crosses into
// the host.
//
// Guard with `Guarded`, which answers what its body answers; use `GuardedFill` instead where a result that is
// set before an exception must reach the host all the same.
//
// A platform exception arrives by a jump into the frame of InFrame. Everything that must survive the jump
// lives in its callers' frames, in memory: what the body captures by reference, its Holdings, the result that
// it fills. What the guard deliberately does not catch: platform objects thrown that are no NSException, and
// C++ exceptions; both go on unchanged.
#pragma once

#include <type_traits>

#include "bundle/bridge/exceptions.h"
#include "bundle/bridge/holdings.h"

namespace qvx {

// What becomes of an NSException after its delivery: it is raised as a host exception, or dropped.
enum class OnNSException { kRaise, kDrop };

// Leaves an exception frame at the end of its scope, normally or while a C++ exception unwinds, and then lets
// the body give back what it still holds. A delivered exception jumps over it, as it must: the platform has
// left that frame already.
template <typename Body>
class FrameExit {
 public:
  FrameExit(ObjCExceptionFrame& frame, Body& body) : frame_(frame), body_(body) {}
  FrameExit(const FrameExit&) = delete;
  FrameExit& operator=(const FrameExit&) = delete;
  ~FrameExit() {
    objc_exception_try_exit(&frame_);
    body_.Left();
  }

 private:
  ObjCExceptionFrame& frame_;
  Body& body_;
};

// InFrame, below, for a body by value or by reference. Never inlined: the function that _setjmp belongs to
// holds nothing that changes before the delivery. The host may enter the bundle on any 4-byte aligned stack;
// from here on it is aligned to 16 bytes. The callers' is not: they leave nothing to do while a C++ exception
// unwinds.
template <typename Body>
[[gnu::noinline, gnu::force_align_arg_pointer]] auto EnterFrame(Body body) {
  ObjCExceptionFrame frame;
  objc_exception_try_enter(&frame);
  if (_setjmp(frame.buffer) == 0) {
    const FrameExit exit(frame, body);
    return body.Run();
  }
  return body.Ended(objc_exception_extract(&frame));
}

// Runs `body.Run()` inside an exception frame and answers what it answers or, after a delivered exception,
// what `body.Ended(exception)` answers. More than two words stay where they stand: a copy of several words at
// once waits until each of them is written, and everything behind it waits too.
template <typename Body>
auto InFrame(Body body) {
  if constexpr (sizeof(Body) <= 2 * sizeof(void*)) {
    return EnterFrame<Body>(body);
  } else {
    return EnterFrame<Body&>(body);
  }
}

// The end of a body that a delivered exception has left: gives back what it held, then raises or drops an
// NSException. Anything else, and what is thrown while the host exception is raised, is passed on; what was
// `kept` for the caller, who gets nothing then, is given back first. Both lists may be null.
void EndDelivered(id exception, OnNSException then, Holdings* held, Holdings* kept);

// What InFrame runs for Guarded: a body alone, or with its holdings.
template <OnNSException then, typename Body>
struct GuardedBody {
  Body body;

  auto Run() { return body(); }
  void Left() {}
  auto Ended(id exception) {
    EndDelivered(exception, then, nullptr, nullptr);
    return std::invoke_result_t<Body&>();
  }
};
template <OnNSException then, typename Body>
struct GuardedHoldingBody {
  Body body;
  Holdings& holdings;

  auto Run() { return body(holdings); }
  void Left() {
    if (holdings.Count() > 0) [[unlikely]]
      holdings.GiveBackWhileUnwinding();
  }
  auto Ended(id exception) {
    EndDelivered(exception, then, &holdings, nullptr);
    return std::invoke_result_t<Body&, Holdings&>();
  }
};

// Guards a body, which takes nothing or its Holdings, and answers what it answers; the neutral value
// (nothing, 0, null) after an NSException.
template <OnNSException then = OnNSException::kRaise, typename Body>
auto Guarded(Body body) {
  if constexpr (std::is_invocable_v<Body&, Holdings&>) {
    Holdings holdings;
    return InFrame(GuardedHoldingBody<then, Body>{body, holdings});
  } else {
    return InFrame(GuardedBody<then, Body>{body});
  }
}

// A handle that a guarded body fills, held where it stands until it is the caller's.
template <typename Handle>
struct FilledHandle {
  Handle* variable;
};
template <typename Handle>
void GiveBack(FilledHandle<Handle> filled) {
  if (*filled.variable != nullptr) GiveBack(*filled.variable);
}

// What InFrame runs for GuardedFill.
template <OnNSException then, typename Result, typename Body>
struct FillingBody {
  Body body;
  Result& result;
  Holdings& holdings;
  Holdings& kept;

  void Run() {
    body(result, holdings);
    kept.ForgetAll();
  }
  void Left() {
    if (holdings.Count() + kept.Count() > 0) [[unlikely]] {
      holdings.GiveBackWhileUnwinding();
      kept.GiveBackWhileUnwinding();
    }
  }
  void Ended(id exception) { EndDelivered(exception, then, &holdings, &kept); }
};

// Guards a body, which takes the result, `result` until it sets another, and its Holdings; answers the result
// as it stands at the end, after an NSException too. A handle is an owned reference.
template <OnNSException then = OnNSException::kRaise, typename Result, typename Body>
Result GuardedFill(Result result, Body body) {
  Holdings holdings;
  Holdings kept;
  if constexpr (std::is_pointer_v<Result>) kept.Hold(FilledHandle<Result>{&result});
  InFrame(FillingBody<then, Result, Body>{body, result, holdings, kept});
  return result;
}

}  // namespace qvx
