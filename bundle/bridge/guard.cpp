// bundle/bridge/guard.cpp - the native-exception guard, where it needs no body's type.
#include "bundle/bridge/guard.h"

namespace qvx {

namespace {

bool IsNSException(id exception) {
  const id exceptionClass = PlatformClass<"NSException">();
  return exceptionClass != nullptr &&
         objc_exception_match(reinterpret_cast<Class>(exceptionClass), exception) != 0;
}

// Gives back in a frame of its own. A platform exception on the way is dropped: the first one goes on. A C++
// exception takes its place, and gives back the rest.
struct GivingBack {
  Holdings& holdings;

  using State = Nothing;

  void Begin(Nothing&) {}
  void Run(Nothing&) { holdings.GiveBackAll(); }
  void Left(Nothing&) { holdings.GiveBackWhileUnwinding(); }
  void Ended(id /*exception*/, Nothing&) {}
};

void GiveBackAll(Holdings* holdings) {
  while (holdings != nullptr && holdings->Count() > 0) [[unlikely]] InFrame(GivingBack{*holdings});
}

// Raises in a frame of its own and answers what is to be passed on instead, nil for nothing. A C++ exception
// on the way, after which the caller gets nothing either, gives back what was kept.
struct Raising {
  id exception;
  Holdings& kept;

  using State = Nothing;

  void Begin(Nothing&) {}
  id Run(Nothing&) {
    RaiseNSExceptionQVX(exception);
    kept.ForgetAll();
    return nullptr;
  }
  void Left(Nothing&) { kept.GiveBackWhileUnwinding(); }
  id Ended(id thrown, Nothing&) { return thrown; }
};

[[noreturn, gnu::noinline, gnu::cold]] void PassOn(id exception, Holdings* kept) {
  GiveBackAll(kept);
  objc_exception_throw(exception);
}

}  // namespace

void EndDropped(id exception) {
  if (exception != nullptr && !IsNSException(exception)) [[unlikely]]
    PassOn(exception, nullptr);
}

void EndRaised(id exception) {
  if (exception == nullptr) return;
  if (!IsNSException(exception)) [[unlikely]]
    PassOn(exception, nullptr);
  RaiseNSExceptionQVX(exception);
}

void EndDelivered(id exception, OnNSException then, Holdings* held, Holdings* kept) {
  GiveBackAll(held);
  if (exception == nullptr) return;
  if (!IsNSException(exception)) [[unlikely]]
    PassOn(exception, kept);
  if (then == OnNSException::kDrop) return;
  if (kept == nullptr) {  // whatever comes of it passes on by itself
    RaiseNSExceptionQVX(exception);
    return;
  }
  if (const id thrown = InFrame(Raising{exception, *kept})) PassOn(thrown, kept);
}

}  // namespace qvx
