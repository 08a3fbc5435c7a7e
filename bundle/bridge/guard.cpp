// bundle/bridge/guard.cpp - the native-exception guard, where it needs no body's type.
#include "bundle/bridge/guard.h"

namespace qvx {

bool IsNSException(id exception) {
  const id exceptionClass = PlatformClass<"NSException">();
  return exceptionClass != nullptr &&
         objc_exception_match(reinterpret_cast<Class>(exceptionClass), exception) != 0;
}

namespace {

// Each in a frame of its own, so that a platform exception on the way is dropped and the first one goes on.
void GiveBackHeld(Holdings& holdings) {
  while (!holdings.IsEmpty()) [[unlikely]] {
      auto giveBack = [&holdings] { holdings.GiveBack(); };
      RunInFrame(giveBack);
    }
}

}  // namespace

id RunInFrameHolding(void (*body)(void* context, Holdings& holdings), void* context) {
  Holdings holdings;
  auto withHoldings = [body, context, &holdings] { body(context, holdings); };
  const id exception = RunInFrame(withHoldings);
  GiveBackHeld(holdings);
  return exception;
}

void EndDelivered(id exception, Holdings& holdings, OnNSException then) {
  GiveBackHeld(holdings);
  if (exception == nullptr) return;
  if (!IsNSException(exception)) objc_exception_throw(exception);
  if (then == OnNSException::kRaise) RaiseNSExceptionQVX(exception);
}

}  // namespace qvx
