// hostrun/commands/shim/shim.h - the library that "hostrun trace" loads before the platform.
//
// It exports the platform's functions that a bundle uses. Loaded globally before the platform library, it is
// what the bundle finds; each call is reported, then goes on to the platform.
#pragma once

#include <cstdint>

extern "C" {

// `arguments` lie behind the return address, as the caller pushed them.
using HostrunTraceArrived = void (*)(const char* name, const void* returnAddress,
                                     const std::uint32_t* arguments);

// Before the platform is loaded. `platform` is its path, kept by the caller.
void hostrun_trace_connect(const char* platform, HostrunTraceArrived arrived);

// A function that reports `name` and goes on to `function`; `function` itself when there are no thunks left.
// The name is kept by the caller. The same pair gives the same function.
void* hostrun_trace_wrap(const char* name, void* function);
}
