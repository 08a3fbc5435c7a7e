// bridge/guard.cpp - the native-exception guard, where it needs no body's type.
#include "bridge/guard.h"

namespace qvx {

id NSExceptionOrPassOn(id exception) {
  const id exceptionClass = PlatformClass<"NSException">();
  if (exceptionClass != nullptr &&
      objc_exception_match(reinterpret_cast<Class>(exceptionClass), exception) != 0) {
    return exception;
  }
  objc_exception_throw(exception);
}

id CatchNSExceptionHolding(void (*body)(void* context, Holdings& holdings), void* context) {
  Holdings holdings;
  auto withHoldings = [body, context, &holdings] { body(context, holdings); };
  const id exception = RunInFrame(withHoldings);
  holdings.GiveBack();
  if (exception == nullptr) [[likely]]
    return nullptr;
  return NSExceptionOrPassOn(exception);
}

}  // namespace qvx
