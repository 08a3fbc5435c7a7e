// bridge/guard.h - the native-exception guard: no platform exception of class NSException crosses into the
// host.
//
// A platform exception arrives by a jump into the frame of RunInFrame. Everything that must survive the jump
// lives in its callers' frames, in memory: results and outputs that the body captures by reference, and its
// Holdings. What the guard deliberately does not catch: platform objects thrown that are no NSException, and
// C++ exceptions; both go on unchanged.
#pragma once

#include <type_traits>

#include "bridge/exceptions.h"
#include "bridge/holdings.h"
#include "platform/message.h"

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
// inlined: the frame that _setjmp belongs to holds nothing that changes before the delivery.
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

// Whether `exception` is an NSException.
inline bool IsNSException(id exception) {
  const id exceptionClass = PlatformClass<"NSException">();
  return exceptionClass != nullptr &&
         objc_exception_match(reinterpret_cast<Class>(exceptionClass), exception) != 0;
}

// Runs the body, which takes nothing or its Holdings. Answers the NSException that ended it, autoreleased, or
// nil after normal completion. Any other exception is passed on, after what the body held is given back.
template <typename Body>
id CatchNSException(Body&& body) {
  id exception;
  if constexpr (std::is_invocable_v<Body&, Holdings&>) {
    Holdings holdings;
    auto withHoldings = [&body, &holdings] { body(holdings); };
    exception = RunInFrame(withHoldings);
    holdings.GiveBack();
  } else {
    exception = RunInFrame(body);
  }
  if (exception == nullptr || IsNSException(exception)) [[likely]] {
    return exception;
  }
  objc_exception_throw(exception);
}

// The guard of methods, getters, destructors and factories: an NSException that ends the body is raised as a
// host exception, and the caller goes on with its result as it stands.
template <typename Body>
void Guarded(Body&& body) {
  const id exception = CatchNSException(body);
  if (exception != nullptr) [[unlikely]]
    RaiseNSExceptionQVX(exception);
}

// The same with a result, which starts as the neutral value and is set by the body:
// Guarded<double>([&](double& result) { ... }) or with a second parameter, Holdings&.
template <typename Result, typename Body>
Result GuardedResult(Body&& body) {
  Result result{};
  if constexpr (std::is_invocable_v<Body&, Result&, Holdings&>) {
    Guarded([&body, &result](Holdings& holdings) { body(result, holdings); });
  } else {
    Guarded([&body, &result] { body(result); });
  }
  return result;
}

}  // namespace qvx
