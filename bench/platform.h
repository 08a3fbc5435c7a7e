// bench/platform.h - one platform library as its functions, for the limits and for making what the rows need.
#pragma once

#include <string>

#include "bundle/platform/cocoa.h"

namespace bench {

// Called through pointers, as a bundle calls through its table.
struct Platform {
  std::string name;
  void* library;  // for dlsym
  void (*objc_msgSend)();
  void (*objc_msgSend_fpret)();
  id (*objc_getClass)(const char*);
  SEL (*sel_registerName)(const char*);
  void (*objc_exception_try_enter)(void*);
  void (*objc_exception_try_exit)(void*);
  id (*objc_exception_extract)(void*);
  Boolean (*CFStringGetCString)(const void*, char*, CFIndex, std::uint32_t);
  CFIndex (*CFStringGetLength)(const void*);
  const void* (*CFStringCreateWithCString)(const void*, const char*, std::uint32_t);
  const void* (*CFDictionaryGetValue)(const void*, const void*);
  void (*CFDictionarySetValue)(void*, const void*, const void*);
  void (*CFDictionaryRemoveValue)(void*, const void*);
  void* (*CFDictionaryCreateMutable)(const void*, CFIndex, const void*, const void*);
  void (*CFRelease)(const void*);
  void (*NSLog)(id, ...);
  int (*objc_exception_match)(Class, id);
  void* (*objc_autoreleasePoolPush)();
  void (*objc_autoreleasePoolPop)(void*);

  template <typename Result, typename... Arguments>
  Result Send(id receiver, SEL selector, Arguments... arguments) const {
    using Method = Result (*)(id, SEL, Arguments...);
    if constexpr (std::is_floating_point_v<Result>) {
      return reinterpret_cast<Method>(objc_msgSend_fpret)(receiver, selector, arguments...);
    } else {
      return reinterpret_cast<Method>(objc_msgSend)(receiver, selector, arguments...);
    }
  }
};

// What the sibling parts would add to NSException: the bundle's instance cache, taken from here when a bundle
// starts, and the host exception for a platform one.
using NewHostException = void* (*)(id exception);

// The scripted platform, whose symbols stay its own: only a bundle that is linked to it sees them.
const Platform& ScriptedPlatform(NewHostException newException);

// libcocoa.so, global from now on: every bundle loaded later sees it. Logs nothing.
const Platform& RealPlatform(NewHostException newException);

// The cache that the next bundle to start is given.
void OfferInstances(const Platform& platform, void* dictionary);

// An autorelease pool that is drained every so often, as a host's event loop does, so that its cost is shared
// by many calls.
class Pool {
 public:
  explicit Pool(const Platform& platform) : platform_(platform), pool_(platform.objc_autoreleasePoolPush()) {}
  Pool(const Pool&) = delete;
  Pool& operator=(const Pool&) = delete;
  ~Pool() { platform_.objc_autoreleasePoolPop(pool_); }

  void Turn() {
    if (++calls_ % kCalls == 0) Drain();
  }

 private:
  static constexpr unsigned kCalls = 256;

  void Drain() {
    platform_.objc_autoreleasePoolPop(pool_);
    pool_ = platform_.objc_autoreleasePoolPush();
  }

  const Platform& platform_;
  void* pool_;
  unsigned calls_ = 0;
};

// How a row's calls are made: with a pool that is drained every so often, or without for calls that
// autorelease nothing.
enum class Pooled { kNo, kYes };

}  // namespace bench
