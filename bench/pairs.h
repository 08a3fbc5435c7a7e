// bench/pairs.h - a row's time as a multiple of its prescribed path's.
//
// Both take turns in short slices, so that a busy machine, a slow hour and a slow processor meet both alike,
// and the fastest slice of each counts: the one that nothing came between.
#pragma once

#include <algorithm>
#include <chrono>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "bench/bundle.h"

namespace bench {

using Nanoseconds = std::chrono::duration<double, std::nano>;

// One call of each, in its fastest slice so far.
struct Fastest {
  Nanoseconds path = Nanoseconds::max();
  Nanoseconds row = Nanoseconds::max();
};

struct Pair {
  std::string name;                       // of the row, "platform/name"
  std::function<void(Fastest&)> measure;  // both for an eighth of a second
};

// All pairs, in the order of the table.
std::vector<Pair>& AllPairs();

// What one of `calls` calls takes, with its share of draining the pool.
template <Pooled pooled, typename Call>
Nanoseconds Slice(Pool& pool, Call& call, long calls) {
  const auto start = std::chrono::steady_clock::now();
  for (long i = 0; i < calls; ++i) {
    call();
    if constexpr (pooled == Pooled::kYes) pool.Turn();
  }
  const Nanoseconds taken = std::chrono::steady_clock::now() - start;
  return taken / calls;
}

template <Pooled pooled, typename Path, typename Call>
void MeasurePair(Bundle& bundle, Path& path, Call& call, Fastest& fastest) {
  constexpr Nanoseconds kSlice = std::chrono::microseconds(100);
  constexpr auto kTime = std::chrono::milliseconds(125);
  constexpr int kLeastSlices = 5;
  bundle.Activate();
  Pool pool(bundle.GetPlatform());
  Slice<pooled>(pool, path, 1);
  const Nanoseconds once = std::min(Slice<pooled>(pool, call, 1), Slice<pooled>(pool, call, 1));
  const long calls = std::clamp(static_cast<long>(kSlice / once), 1L, 100'000L);
  const auto end = std::chrono::steady_clock::now() + kTime;
  for (int slices = 0; slices < kLeastSlices || std::chrono::steady_clock::now() < end; ++slices) {
    fastest.path = std::min(fastest.path, Slice<pooled>(pool, path, calls));
    fastest.row = std::min(fastest.row, Slice<pooled>(pool, call, calls));
  }
}

}  // namespace bench
