// hostrun/sibling/sibling.cpp - the instance cache, and the class methods that bundles find on NSException.
#include "hostrun/sibling/sibling.h"

#include "hostrun/host/call.h"
#include "hostrun/host/platform_library.h"

namespace hostrun {
namespace {

void* cache = nullptr;

const void* (*dictionaryGet)(const void*, const void*) = nullptr;
void (*dictionarySet)(void*, const void*, const void*) = nullptr;
void (*dictionaryRemove)(void*, const void*) = nullptr;

// The methods themselves, with the run-time's calling form.
void* GetInstancesDictionary(PlatformId, Selector) {
  return cache;
}
void PrepareException(PlatformId, Selector) {}
Object* NewWrapper(PlatformId, Selector, PlatformId exception) {
  return NewExceptionWrapper(exception);
}

// A bundle may forget a pair when it replaces an instance's native object. The next native object at that
// address would then be taken for this instance, or for what was freed with it.
void ForgetReplaced(Object* self, void* before) {
  if (CachedInstance(before) == self) dictionaryRemove(cache, before);
}

template <class F>
Problem AddMethod(PlatformId metaclass, const char* name, F function, const char* types) {
  const ObjectRuntime& runtime = TheObjectRuntime();
  if (runtime.addMethod(metaclass, runtime.selector(name), reinterpret_cast<void*>(function), types))
    return {};
  return std::string("the sibling part: wanted to add +[NSException ") + name + "], found it there already";
}

}  // namespace

Problem InstallSibling() {
  const std::string missing = FindObjectRuntime();
  if (!missing.empty()) return "the sibling part: wanted the run-time function " + missing + ", found none";
  dictionaryGet = reinterpret_cast<decltype(dictionaryGet)>(GlobalSymbol("CFDictionaryGetValue"));
  dictionarySet = reinterpret_cast<decltype(dictionarySet)>(GlobalSymbol("CFDictionarySetValue"));
  dictionaryRemove = reinterpret_cast<decltype(dictionaryRemove)>(GlobalSymbol("CFDictionaryRemoveValue"));
  const PlatformId exceptionClass = TheObjectRuntime().getClass("NSException");
  if (exceptionClass == nullptr || dictionaryGet == nullptr || dictionarySet == nullptr ||
      dictionaryRemove == nullptr) {
    return "the sibling part: wanted NSException and pointer dictionaries, found a platform without them";
  }
  cache = ThePlatform().newPointerDictionary();
  SetNativeReplaced(&ForgetReplaced);
  RegisterExceptionWrapper();
  RegisterImageWrapper();
  RegisterPasteboardTypes();
  const PlatformId metaclass = ClassOf(exceptionClass);
  Problem problem = AddMethod(metaclass, "GetInstancesDictionaryQVX", &GetInstancesDictionary, "^v8@0:4");
  if (!problem) problem = AddMethod(metaclass, "PrepareNSExceptionQVX", &PrepareException, "v8@0:4");
  if (!problem) problem = AddMethod(metaclass, "NewNSExceptionQVX:", &NewWrapper, "^v12@0:4@8");
  return problem;
}

Object* CachedInstance(PlatformId native) {
  return static_cast<Object*>(const_cast<void*>(dictionaryGet(cache, native)));
}

void Wrap(Object* instance, PlatformId native) {
  NativePointerOf(instance) = native;
  dictionarySet(cache, native, instance);
}

void Unwrap(Object* instance) {
  const PlatformId native = std::exchange(NativePointerOf(instance), nullptr);
  if (native == nullptr) return;
  if (CachedInstance(native) == instance) dictionaryRemove(cache, native);
  ReleasePlatformObject(native);
}

}  // namespace hostrun
