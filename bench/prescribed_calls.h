// bench/prescribed_calls.h - what the prescribed paths call, on a platform and the host.
#pragma once

#include "bench/host.h"
#include "bench/prescribed.h"

namespace bench {

// The calls, with this cache of wrapper instances.
PrescribedCalls CallsFor(const Platform& platform, void* instances);

// A selector, untyped as the paths take it.
void* SelectorOf(const Platform& platform, const char* name);

}  // namespace bench
