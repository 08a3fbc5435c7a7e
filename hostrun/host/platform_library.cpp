// hostrun/host/platform_library.cpp - what the runner needs of the platform library, looked up when it is
// loaded.
#include "hostrun/host/platform_library.h"

#include <dlfcn.h>
#include <unistd.h>

#include <utility>

namespace hostrun {
namespace {

Platform platform;

constinit void* callPool =
    nullptr;  // pushed inside of the innermost PoolScope, once that one calls the bundle
constinit int callsUnderWay = 0;

std::int32_t (*makeReference)(const std::uint8_t*, ::FSRef*, unsigned char*) = nullptr;
void* (*createDictionary)(const void*, long, const void*, const void*) = nullptr;
std::int32_t (*runLoop)(const void* mode, double seconds, unsigned char once) = nullptr;
const void* defaultMode = nullptr;

bool MakeFileReference(const char* path, ::FSRef* reference) {
  return makeReference(reinterpret_cast<const std::uint8_t*>(path), reference, nullptr) == 0;
}

void* PushPool() {
  return platform.pushPool == nullptr ? nullptr : platform.pushPool();
}

void PopPool(void* pool) {
  if (platform.popPool != nullptr) platform.popPool(pool);
}

void* NewPointerDictionary() {
  return createDictionary(nullptr, 0, nullptr, nullptr);
}

void RunOnce() {
  runLoop(defaultMode, 0, 0);
}

template <class F>
void Find(F& function, const char* name, std::string& missing) {
  function = reinterpret_cast<F>(GlobalSymbol(name));
  if (function == nullptr) missing = name;
}

}  // namespace

void* GlobalSymbol(const char* name) {
  return dlsym(RTLD_DEFAULT, name);
}

Problem LoadPlatform(const std::string& file) {
  if (access(file.c_str(), R_OK) != 0) {
    return file + ": wanted the platform library, found no such file; build it with tools/build cocoa";
  }
  const std::string path = file.find('/') == std::string::npos ? "./" + file : file;
  if (dlopen(path.c_str(), RTLD_NOW | RTLD_GLOBAL) == nullptr) {
    return file + ": wanted a platform library that loads, found: " + dlerror();
  }
  Platform found;
  std::string missing;
  Find(found.pushPool, "objc_autoreleasePoolPush", missing);
  Find(found.popPool, "objc_autoreleasePoolPop", missing);
  Find(found.newString, "CFStringCreateWithCharacters", missing);
  Find(found.release, "CFRelease", missing);
  Find(makeReference, "FSPathMakeRef", missing);
  Find(createDictionary, "CFDictionaryCreateMutable", missing);
  Find(runLoop, "CFRunLoopRunInMode", missing);
  const void* const* mode = nullptr;
  Find(mode, "kCFRunLoopDefaultMode", missing);
  if (!missing.empty()) return file + ": wanted a platform library, found a library without " + missing;
  defaultMode = *mode;
  found.emptyPool =
      reinterpret_cast<void (*)(void*)>(GlobalSymbol("QVXEmptyPool"));  // null: another platform's
  found.turnRunLoop = &RunOnce;
  found.makeFileReference = &MakeFileReference;
  found.newPointerDictionary = &NewPointerDictionary;
  platform = found;
  return {};
}

const Platform& ThePlatform() {
  return platform;
}

PoolScope::PoolScope() : pool_(PushPool()), callPoolOutside_(std::exchange(callPool, nullptr)) {}

PoolScope::~PoolScope() {
  PopPool(pool_);  // and with it the pool of the calls inside
  callPool = callPoolOutside_;
}

CallPoolScope::CallPoolScope() {
  if (callsUnderWay++ == 0 && callPool == nullptr) callPool = PushPool();
}

CallPoolScope::~CallPoolScope() {
  if (--callsUnderWay > 0 || callPool == nullptr) return;
  if (platform.emptyPool != nullptr) {
    platform.emptyPool(callPool);
  } else {
    PopPool(std::exchange(callPool, nullptr));
  }
}

}  // namespace hostrun
