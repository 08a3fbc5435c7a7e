// bundle/bridge/guard.cpp - the native-exception guard, where it needs no body's type.
#include "bundle/bridge/guard.h"

namespace qvx {

namespace {

bool IsNSException(id exception) {
  const id exceptionClass = PlatformClass<"NSException">();
  return exceptionClass != nullptr &&
         objc_exception_match(reinterpret_cast<Class>(exceptionClass), exception) != 0;
}

// Each in a frame of its own, so that a platform exception on the way is dropped and the first one goes on.
void GiveBackAll(Holdings* holdings) {
  while (holdings != nullptr && holdings->Count() > 0) {
    InFrame([holdings] { holdings->GiveBackDownTo(0); }, [](id /*dropped*/) {});
  }
}

}  // namespace

void EndDelivered(id exception, OnNSException then, Holdings* held, Holdings* kept) {
  GiveBackAll(held);
  id passedOn = exception;
  if (exception != nullptr && IsNSException(exception)) {
    if (then == OnNSException::kDrop) return;
    passedOn = InFrame(
        [exception]() -> id {
          RaiseNSExceptionQVX(exception);
          return nullptr;
        },
        [](id thrown) { return thrown; });
  }
  if (passedOn == nullptr) return;
  GiveBackAll(kept);
  objc_exception_throw(passedOn);
}

}  // namespace qvx
