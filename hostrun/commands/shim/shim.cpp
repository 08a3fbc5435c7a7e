// hostrun/commands/shim/shim.cpp - the library that "hostrun trace" loads before the platform.
#include "hostrun/commands/shim/shim.h"

#include <dlfcn.h>

#include <array>
#include <cstdio>
#include <cstdlib>

#include "hostrun/host/platform_symbols.h"

extern "C" {
[[gnu::visibility("hidden")]] extern const char hostrun_trace_spare[];
[[gnu::visibility("hidden")]] void* hostrun_trace_arrived(std::uint32_t number, const std::uint32_t* stack);
}

namespace {

using hostrun::kPlatformSymbols;
constexpr std::size_t kPlatformCount = kPlatformSymbols.size();
constexpr std::size_t kSpareCount = 64;
constexpr std::size_t kThunkSize = 16;

struct Slot {
  const char* name;
  void* function;
};
constinit std::array<Slot, kPlatformCount + kSpareCount> slots{};
constinit std::size_t used = kPlatformCount;
constinit const char* platformPath = nullptr;
constinit HostrunTraceArrived tell = nullptr;

// By the library's own handle: while it is being loaded no wider search finds it.
void* FindInPlatform(const char* name) {
  void* const library = platformPath == nullptr ? nullptr : dlopen(platformPath, RTLD_LAZY | RTLD_NOLOAD);
  void* const function = library == nullptr ? nullptr : dlsym(library, name);
  if (function == nullptr) {
    std::fprintf(stderr, "hostrun trace: wanted the platform's %s, found none\n", name);
    std::abort();
  }
  return function;
}

}  // namespace

void* hostrun_trace_arrived(std::uint32_t number, const std::uint32_t* stack) {
  Slot& slot = slots[number];
  if (number < kPlatformCount && slot.function == nullptr) {
    slot.name = kPlatformSymbols[number];
    slot.function = FindInPlatform(slot.name);
  }
  if (tell != nullptr) tell(slot.name, reinterpret_cast<const void*>(stack[0]), stack + 1);
  return slot.function;
}

void hostrun_trace_connect(const char* platform, HostrunTraceArrived arrived) {
  platformPath = platform;
  tell = arrived;
}

void* hostrun_trace_wrap(const char* name, void* function) {
  std::size_t at = kPlatformCount;
  while (at < used && (slots[at].function != function || slots[at].name != name)) ++at;
  if (at == used) {
    if (used == slots.size()) return function;
    slots[used++] = {name, function};
  }
  return const_cast<char*>(hostrun_trace_spare) + (at - kPlatformCount) * kThunkSize;
}
