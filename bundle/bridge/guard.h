// bundle/bridge/guard.h - the native-exception guard: no platform exception of class NSException crosses into
// the host.
//
// A platform exception arrives by a jump into the frame of RunInFrame. Everything that must survive the jump
// lives in its callers' frames, in memory: results and outputs that the body captures by reference, and its
// Holdings. What the guard deliberately does not catch: platform objects thrown that are no NSException, and
// C++ exceptions; both go on unchanged.
#pragma once

#include <type_traits>

#include "bundle/bridge/exceptions.h"
#include "bundle/bridge/holdings.h"
#include "bundle/bridge/references.h"
#include "bundle/platform/message.h"

namespace qvx {

// Leaves an exception frame at the end of its scope: normally, or while a C++ exception unwinds. A delivered
// exception jumps over it, as it must: the platform has left that frame already.
class FrameExit {
 public:
  explicit FrameExit(ObjCExceptionFrame& frame) : frame_(frame) {}
  FrameExit(const FrameExit&) = delete;
  FrameExit& operator=(const FrameExit&) = delete;
  ~FrameExit() { objc_exception_try_exit(&frame_); }

 private:
  ObjCExceptionFrame& frame_;
};

// Runs the body inside an exception frame and answers the exception that was delivered, nil for none. Never
// inlined: the function that _setjmp belongs to holds nothing that changes before the delivery.
template <typename Body>
[[gnu::noinline]] id RunInFrame(Body& body) {
  ObjCExceptionFrame frame;
  objc_exception_try_enter(&frame);
  if (_setjmp(frame.buffer) == 0) {
    const FrameExit exit(frame);
    body();
    return nullptr;
  }
  return objc_exception_extract(&frame);
}

// RunInFrame for every body that holds things, without its type. What it still held is given back.
id RunInFrameHolding(void (*body)(void* context, Holdings& holdings), void* context);

// Runs the body, which takes nothing or its Holdings, and answers whatever exception was delivered.
template <typename Body>
id DeliveredBy(Body& body) {
  if constexpr (std::is_invocable_v<Body&, Holdings&>) {
    return RunInFrameHolding(
        [](void* context, Holdings& holdings) { (*static_cast<Body*>(context))(holdings); }, &body);
  } else {
    return RunInFrame(body);
  }
}

bool IsNSException(id exception);

// Runs the body and answers the NSException that ended it, nil after normal completion. Any other exception
// is passed on, and this does not return.
template <typename Body>
id CatchNSException(Body&& body) {
  const id exception = DeliveredBy(body);
  if (exception != nullptr && !IsNSException(exception)) [[unlikely]] {
    objc_exception_throw(exception);
  }
  return exception;
}

// What `read` answers, or the neutral value after an NSException, which is dropped. The shortest guard: no
// result has to survive a delivery, so the frame's own function answers it.
template <auto read, typename... Arguments>
[[gnu::noinline]] auto ResultUnlessNSException(Arguments... arguments) {
  using Result = decltype(read(arguments...));
  ObjCExceptionFrame frame;
  objc_exception_try_enter(&frame);
  if (_setjmp(frame.buffer) == 0) {
    const FrameExit exit(frame);
    return read(arguments...);
  }
  const id exception = objc_exception_extract(&frame);
  if (exception != nullptr && !IsNSException(exception)) objc_exception_throw(exception);
  return Result();
}

// The guard of methods, getters, destructors and factories: an NSException that ends the body is raised as a
// host exception, and the caller goes on.
template <typename Body>
void Guarded(Body&& body) {
  const id exception = CatchNSException(body);
  if (exception != nullptr) [[unlikely]] {
    RaiseNSExceptionQVX(exception);
  }
}

// What follows a delivered exception: an NSException is raised as a host exception. Anything else, and what
// is thrown while it is raised, is passed on; the result, which nobody gets then, is given back.
template <typename Holder>
[[gnu::noinline, gnu::cold]] void RaiseOrPassOn(id exception, Holder& result) {
  id passedOn = exception;
  if (IsNSException(exception)) {
    auto raise = [exception] { RaiseNSExceptionQVX(exception); };
    passedOn = RunInFrame(raise);
  }
  if (passedOn != nullptr) {
    result.Release();
    objc_exception_throw(passedOn);
  }
}

// The same with a result, `initial` until the body sets it; a handle is an owned reference. After an
// NSException the result is what it was by then.
template <typename Result, typename Body>
Result GuardedResult(Result initial, Body&& body) {
  ResultHolder<Result> result(initial);
  id exception;
  if constexpr (std::is_invocable_v<Body&, Result&, Holdings&>) {
    auto withResult = [&body, &result](Holdings& holdings) { body(result.Slot(), holdings); };
    exception = DeliveredBy(withResult);
  } else {
    auto withResult = [&body, &result] { body(result.Slot()); };
    exception = DeliveredBy(withResult);
  }
  if (exception != nullptr) [[unlikely]] {
    RaiseOrPassOn(exception, result);
  }
  return result.Detach();
}

// GuardedResult from the neutral value.
template <typename Result, typename Body>
Result GuardedResult(Body&& body) {
  return GuardedResult(Result{}, body);
}

// What becomes of an NSException after its delivery.
enum class OnNSException { kRaise, kDrop };

// The end of a body that held things and was left by a delivered exception: gives them back, then raises,
// drops or passes on.
[[gnu::cold]] void EndDelivered(id exception, Holdings& holdings, OnNSException then);

// The frame of GuardedAnswer. A delivery finds nothing here that has changed since the frame was entered.
template <typename Make>
[[gnu::noinline]] auto AnswerInFrame(Make& make, Holdings& holdings, OnNSException then) {
  ObjCExceptionFrame frame;
  objc_exception_try_enter(&frame);
  if (_setjmp(frame.buffer) == 0) {
    const FrameExit exit(frame);
    return make(holdings);
  }
  EndDelivered(objc_exception_extract(&frame), holdings, then);
  return std::invoke_result_t<Make&, Holdings&>();
}

// GuardedResult for what `make` answers from its Holdings, in a frame function of its own: less for each
// call, more code for each body. For what programs call most. A delivery gives the neutral value.
template <typename Make>
auto GuardedAnswer(OnNSException then, Make make) {
  Holdings holdings;
  return AnswerInFrame(make, holdings, then);
}

}  // namespace qvx
