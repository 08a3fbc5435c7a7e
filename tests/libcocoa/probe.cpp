// tests/libcocoa/probe.cpp - loads the platform library as a host does, and uses it.
//
//   platform_probe LIBRARY [BUNDLE]    prints one line per step; status 1 if something could not be loaded
//
// This program links nothing of the platform: every symbol is looked up after the library was loaded
// globally.
#include <dlfcn.h>

#include <cstdio>
#include <cstring>

#include "bundle/platform/cocoa.h"

namespace {

template <typename Function>
Function Find(const char* name) {
  void* const found = dlsym(RTLD_DEFAULT, name);
  if (found == nullptr) std::printf("missing: %s\n", name);
  return reinterpret_cast<Function>(found);
}

// What the bundle imports.
constexpr const char* kContract[] = {"objc_msgSend",
                                     "objc_msgSend_fpret",
                                     "objc_getClass",
                                     "sel_registerName",
                                     "objc_exception_try_enter",
                                     "objc_exception_try_exit",
                                     "objc_exception_extract",
                                     "objc_exception_match",
                                     "objc_exception_throw",
                                     "CFStringCreateWithCharacters",
                                     "CFStringCreateWithCString",
                                     "CFStringGetCString",
                                     "CFStringGetLength",
                                     "CFStringCreateMutableCopy",
                                     "CFStringNormalize",
                                     "CFURLCreateFromFSRef",
                                     "CFURLCreateCopyAppendingPathComponent",
                                     "CFURLCopyFileSystemPath",
                                     "CFRelease",
                                     "CFDictionaryGetValue",
                                     "CFDictionarySetValue",
                                     "CFDictionaryRemoveValue",
                                     "NSLog",
                                     "NSCalibratedRGBColorSpace"};

// What a host needs besides.
constexpr const char* kHostSupport[] = {"CFRetain",
                                        "CFDictionaryCreateMutable",
                                        "CFDictionaryGetCount",
                                        "FSPathMakeRef",
                                        "FSRefMakePath",
                                        "objc_autoreleasePoolPush",
                                        "objc_autoreleasePoolPop",
                                        "CFRunLoopRunInMode",
                                        "kCFRunLoopDefaultMode",
                                        "QVXCountInstances",
                                        "QVXLiveInstances"};

id Send(id receiver, const char* selector) {
  static const auto send = Find<id (*)(id, SEL)>("objc_msgSend");
  static const auto selector_named = Find<SEL (*)(const char*)>("sel_registerName");
  return send(receiver, selector_named(selector));
}

id ClassNamed(const char* name) {
  static const auto get = Find<id (*)(const char*)>("objc_getClass");
  return get(name);
}

// An index out of range, deep inside the platform.
void RaiseAndCatch() {
  static const auto enter = Find<void (*)(void*)>("objc_exception_try_enter");
  static const auto leave = Find<void (*)(void*)>("objc_exception_try_exit");
  static const auto extract = Find<id (*)(void*)>("objc_exception_extract");
  static const auto get_text =
      Find<Boolean (*)(CFStringRef, char*, CFIndex, std::uint32_t)>("CFStringGetCString");
  static const auto send_index = Find<id (*)(id, SEL, NSUInteger)>("objc_msgSend");
  static const auto selector_named = Find<SEL (*)(const char*)>("sel_registerName");
  ObjCExceptionFrame frame;
  enter(&frame);
  if (_setjmp(frame.buffer) == 0) {
    send_index(Send(ClassNamed("NSArray"), "array"), selector_named("objectAtIndex:"), 5);
    leave(&frame);
    std::puts("exception: none");
  } else {
    char name[100] = "";
    get_text(reinterpret_cast<CFStringRef>(Send(extract(&frame), "name")), name, sizeof name, 0x08000100);
    std::printf("exception: %s\n", name);
  }
}

void MakeColour() {
  const auto make = Find<id (*)(id, SEL, CGFloat, CGFloat, CGFloat, CGFloat)>("objc_msgSend");
  const auto component = Find<CGFloat (*)(id, SEL)>("objc_msgSend_fpret");
  const auto selector_named = Find<SEL (*)(const char*)>("sel_registerName");
  const id colour = make(ClassNamed("NSColor"), selector_named("colorWithCalibratedRed:green:blue:alpha:"),
                         0.25F, 0.5F, 0.75F, 1.0F);
  std::printf("green: %g\n", static_cast<double>(component(colour, selector_named("greenComponent"))));
  std::printf("system colour: %s\n", Send(ClassNamed("NSColor"), "controlColor") != nullptr ? "yes" : "no");
  std::printf("pasteboard: %s\n",
              Send(ClassNamed("NSPasteboard"), "generalPasteboard") != nullptr ? "yes" : "no");
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2 || dlopen(argv[1], RTLD_NOW | RTLD_GLOBAL) == nullptr) {
    std::printf("not loaded: %s\n", argc < 2 ? "no library named" : dlerror());
    return 1;
  }
  for (const char* name : kContract) Find<void*>(name);
  for (const char* name : kHostSupport) Find<void*>(name);
  RaiseAndCatch();
  MakeColour();
  if (argc > 2) {
    void* const bundle = dlopen(argv[2], RTLD_NOW);
    const bool loaded = bundle != nullptr && dlsym(bundle, "REALPluginMain") != nullptr;
    std::printf("bundle: %s\n", loaded ? "loaded" : dlerror());
    return loaded ? 0 : 1;
  }
  return 0;
}
