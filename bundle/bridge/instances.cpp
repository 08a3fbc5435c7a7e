// bundle/bridge/instances.cpp - wrapper instances and the instance cache.
#include "bundle/bridge/instances.h"

#include "bundle/bridge/guard.h"
#include "bundle/host/services.h"
#include "bundle/platform/messages.h"

namespace qvx {

namespace {

template <FixedString Name, typename Signature>
bool RespondsTo(id receiver, const Message<Name, Signature>& message) {
  const SEL selector = message.Get();
  return selector != nullptr && msg::respondsToSelector(receiver, selector) != 0;
}

}  // namespace

// Constructors and factories come here before any frame.
[[gnu::force_align_arg_pointer]] void FetchFromSiblings() {
  if (instances == nullptr) {
    const id exceptionClass = PlatformClass<"NSException">();
    if (RespondsTo(exceptionClass, msg::GetInstancesDictionaryQVX)) {
      instances = msg::GetInstancesDictionaryQVX(exceptionClass);
    }
  }
  if (!ExceptionsInitialized) {
    const id exceptionClass = PlatformClass<"NSException">();
    if (RespondsTo(exceptionClass, msg::PrepareNSExceptionQVX)) {
      msg::PrepareNSExceptionQVX(exceptionClass);
      ExceptionsInitialized = true;
    }
  }
}

REALobject NewEnteredInstance(id native, const char* className, Holdings& holdings) {
  const REALobject wrapper = REALnewInstance(className);
  if (wrapper == nullptr) return nullptr;
  const unsigned held = holdings.Hold(wrapper);
  const id retained = msg::retain(native);
  ClassData(wrapper) = retained;
  // Without a lock: the cache knows the wrapper as long as it lives, and the wrapper's destructor removes the
  // entry. A wrapper whose class data stayed nil would never remove it, so none is made for it.
  if (retained != nullptr) [[likely]]
    EnterInCache(native, wrapper);
  holdings.ForgetLast(held);
  return wrapper;
}

}  // namespace qvx
