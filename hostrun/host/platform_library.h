// hostrun/host/platform_library.h - what the runner needs of the platform library, looked up when it is
// loaded.
//
// The runner links nothing of the platform: the library is loaded globally before the bundle, which finds its
// own symbols in it.
#pragma once

#include <cstdint>
#include <string>

#include "hostrun/host/problem.h"

struct FSRef;

namespace hostrun {

// Null members: no platform library is loaded.
struct Platform {
  void* (*pushPool)() = nullptr;
  void (*popPool)(void*) = nullptr;
  void (*emptyPool)(void*) = nullptr;
  void (*turnRunLoop)() = nullptr;
  bool (*makeFileReference)(const char* path, ::FSRef* reference) = nullptr;  // false: no such file
  void* (*newPointerDictionary)() = nullptr;
  const void* (*newString)(const void* allocator, const std::uint16_t* units, long count) = nullptr;
  void (*release)(const void*) = nullptr;
};

// Loads the library.
Problem LoadPlatform(const std::string& file);
const Platform& ThePlatform();

// An autorelease pool of the platform's for as long as this lives: what the platform autoreleases meanwhile
// goes with it. Scopes end in the reverse order of their beginnings. Without a platform library it does
// nothing.
class PoolScope {
 public:
  PoolScope();
  PoolScope(const PoolScope&) = delete;
  PoolScope& operator=(const PoolScope&) = delete;
  ~PoolScope();

 private:
  void* pool_;
  void* callPoolOutside_;
};

// The same around one call into the bundle, and around those that it makes in turn. Calls that follow each
// other share a pool, which is emptied after each.
class CallPoolScope {
 public:
  CallPoolScope();
  CallPoolScope(const CallPoolScope&) = delete;
  CallPoolScope& operator=(const CallPoolScope&) = delete;
  ~CallPoolScope();
};

// Lets the platform's run loop do what is due, and returns. Without a platform library it does nothing.
inline void TurnRunLoop() {
  if (ThePlatform().turnRunLoop != nullptr) ThePlatform().turnRunLoop();
}

// The address of a global symbol, or null.
void* GlobalSymbol(const char* name);

}  // namespace hostrun
