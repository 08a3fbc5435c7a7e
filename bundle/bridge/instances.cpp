// bundle/bridge/instances.cpp - wrapper instances and the instance cache.
#include "bundle/bridge/instances.h"

#include "bundle/bridge/guard.h"
#include "bundle/host/services.h"
#include "bundle/platform/messages.h"

namespace qvx {

constinit CFMutableDictionaryRef instances = nullptr;
constinit bool ExceptionsInitialized = false;

namespace {

template <FixedString Name, typename Signature>
bool RespondsTo(id receiver, const Message<Name, Signature>& message) {
  const SEL selector = message.Get();
  return selector != nullptr && msg::respondsToSelector(receiver, selector) != 0;
}

}  // namespace

void FetchFromSiblings() {
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

void EnterInCache(id native, REALobject instance) {
  if (instances != nullptr) CFDictionarySetValue(instances, native, instance);
}

void RemoveFromCache(id native) {
  if (instances != nullptr) CFDictionaryRemoveValue(instances, native);
}

void DestroyInstance(REALobject instance, std::size_t offset) {
  CocoaInit();
  Guarded([instance, offset] {
    if (instance == nullptr) return;
    id& native = ClassData(instance, offset);
    if (native == nullptr) return;
    RemoveFromCache(native);
    msg::release(native);
    native = nullptr;
  });
}

REALobject NewEnteredInstance(id native, const char* className, Holdings& holdings) {
  const REALobject wrapper = REALnewInstance(className);
  if (wrapper == nullptr) return nullptr;
  Holdings::Item* const held = holdings.HoldObject(wrapper);
  const id retained = msg::retain(native);
  ClassData(wrapper) = retained;
  // Without a lock: the cache knows the wrapper as long as it lives, its destructor removes the entry. An
  // instance that could retain nothing removes none, so it enters none.
  if (retained != nullptr) [[likely]]
    EnterInCache(native, wrapper);
  holdings.Forget(held);
  return wrapper;
}

}  // namespace qvx
