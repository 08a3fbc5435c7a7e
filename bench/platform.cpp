// bench/platform.cpp - loading the two platform libraries.
#include "bench/platform.h"

#include <dlfcn.h>

#include <stdexcept>
#include <type_traits>

namespace bench {

namespace {

template <typename Function>
void Find(void* library, const char* name, Function& function) {
  void* const found = dlsym(library, name);
  if (found == nullptr) throw std::runtime_error(std::string("wanted ") + name + ", found: " + dlerror());
  function = reinterpret_cast<Function>(found);
}

void* Open(const char* path, int flags) {
  void* const library = dlopen(path, flags);
  if (library == nullptr) throw std::runtime_error(dlerror());
  return library;
}

Platform Functions(void* library, const char* name) {
  Platform platform{};
  platform.name = name;
  platform.library = library;
  Find(library, "objc_msgSend", platform.objc_msgSend);
  Find(library, "objc_msgSend_fpret", platform.objc_msgSend_fpret);
  Find(library, "objc_getClass", platform.objc_getClass);
  Find(library, "sel_registerName", platform.sel_registerName);
  Find(library, "objc_exception_try_enter", platform.objc_exception_try_enter);
  Find(library, "objc_exception_try_exit", platform.objc_exception_try_exit);
  Find(library, "objc_exception_extract", platform.objc_exception_extract);
  Find(library, "CFStringGetCString", platform.CFStringGetCString);
  Find(library, "CFStringGetLength", platform.CFStringGetLength);
  Find(library, "CFStringCreateWithCString", platform.CFStringCreateWithCString);
  Find(library, "CFDictionaryGetValue", platform.CFDictionaryGetValue);
  Find(library, "CFDictionarySetValue", platform.CFDictionarySetValue);
  Find(library, "CFDictionaryRemoveValue", platform.CFDictionaryRemoveValue);
  Find(library, "CFDictionaryCreateMutable", platform.CFDictionaryCreateMutable);
  Find(library, "CFRelease", platform.CFRelease);
  Find(library, "NSLog", platform.NSLog);
  Find(library, "objc_exception_match", platform.objc_exception_match);
  Find(library, "objc_autoreleasePoolPush", platform.objc_autoreleasePoolPush);
  Find(library, "objc_autoreleasePoolPop", platform.objc_autoreleasePoolPop);
  return platform;
}

void** scriptedInstances;
void* realInstances;
NewHostException newHostException;

// Class methods of NSException on the real platform.
void* GetInstancesDictionaryQVX(id /*self*/, SEL /*selector*/) {
  return realInstances;
}
void PrepareNSExceptionQVX(id /*self*/, SEL /*selector*/) {}
void* NewNSExceptionQVX(id /*self*/, SEL /*selector*/, id exception) {
  return newHostException(exception);
}

void AddSiblingMethods(void* library) {
  id (*objc_getMetaClass)(const char*);
  SEL (*sel_registerTypedName)(const char*, const char*);
  BOOL (*class_addMethod)(Class, SEL, void (*)(), const char*);
  Find(library, "objc_getMetaClass", objc_getMetaClass);
  Find(library, "sel_registerTypedName", sel_registerTypedName);
  Find(library, "class_addMethod", class_addMethod);
  const auto metaclass = reinterpret_cast<Class>(objc_getMetaClass("NSException"));
  const auto add = [&](const char* name, auto* method, const char* types) {
    class_addMethod(metaclass, sel_registerTypedName(name, types), reinterpret_cast<void (*)()>(method),
                    types);
  };
  add("GetInstancesDictionaryQVX", &GetInstancesDictionaryQVX, "^v8@0:4");
  add("PrepareNSExceptionQVX", &PrepareNSExceptionQVX, "v8@0:4");
  add("NewNSExceptionQVX:", &NewNSExceptionQVX, "^v12@0:4@8");
}

// A log line per raised exception would measure the terminal.
void SilenceLog(void* library) {
  void (**handler)(id);
  Find(library, "_NSLog_printf_handler", handler);
  *handler = [](id) {};
}

}  // namespace

const Platform& ScriptedPlatform(NewHostException newException) {
  static Platform platform;
  void* const library = Open(BENCH_SCRIPTED_PLATFORM, RTLD_NOW | RTLD_LOCAL);
  platform = Functions(library, "scripted");
  Find(library, "scripted_instances", scriptedInstances);
  NewHostException* hook;
  Find(library, "scripted_new_exception", hook);
  *hook = newException;
  return platform;
}

const Platform& RealPlatform(NewHostException newException) {
  static Platform platform;
  void* const library = Open(BENCH_REAL_PLATFORM, RTLD_NOW | RTLD_GLOBAL);
  platform = Functions(library, "real");
  newHostException = newException;
  AddSiblingMethods(library);
  SilenceLog(library);
  return platform;
}

void OfferInstances(const Platform& platform, void* dictionary) {
  (platform.name == "scripted" ? *scriptedInstances : realInstances) = dictionary;
}

}  // namespace bench
