// bench/allocations.h - counts what is allocated on the heap, and what of it by the bundle's own code.
#pragma once

namespace bench {

struct Allocations {
  long all;
  long bundle;
};

// Since the process began.
Allocations CountAllocations();

// The bundle's code lies here; a call of malloc from inside it counts as the bundle's.
void SetBundleRange(const void* begin, const void* end);

}  // namespace bench
