// bench/rows.h - what a row of the table is, and how one is added.
#pragma once

#include <benchmark/benchmark.h>

#include <functional>
#include <string>
#include <vector>

#include "bench/allocations.h"
#include "bench/bundle.h"
#include "bench/instructions.h"
#include "bench/pairs.h"

namespace bench {

// Which of a row's instruction counts have a budget. On the real platform only calls that neither look an
// address up nor allocate count the same in every process.
enum class Guard { kNo, kScripted, kBoth };

// One line of the table: a call that is measured.
struct Row {
  std::string platform{};  // "scripted", "real"
  std::string name;
  std::string
      limit{};        // the row of the same platform that this one is compared with; empty for a limit itself
  double target = 0;  // the largest ratio to the limit; 0 for none
  // The row of its prescribed path, empty for none, and the largest ratio to it, in instructions and in time:
  // kGetter for getters.
  std::string path{};
  double pathTarget = 1.15;
  static constexpr double kGetter = 1.10;
  double nanoseconds = 0;    // the largest time where that is the target; 0 for none
  bool counted = true;       // whether its instructions are worth counting
  Guard guard = Guard::kNo;  // whether its instructions have a budget
  // Rows of one series differ in their size only: what of it grows is shown.
  std::string series{};
  long size = 0;
};

// All rows, in the order of the table, by full name "platform/name".
std::vector<Row>& AllRows();

// What counts a row's instructions: makes the call so many times inside CountedCalls, warmed up before.
struct Counted {
  std::string name;
  std::function<void(int times)> run;
};
std::vector<Counted>& AllCounted();

template <Pooled pooled, typename Call>
void Measure(benchmark::State& state, Bundle& bundle, Call& call) {
  bundle.Activate();
  Pool pool(bundle.GetPlatform());
  call();
  InstructionCounter instructions;
  const Allocations before = CountAllocations();
  instructions.Start();
  for (auto _ : state) {
    call();
    if constexpr (pooled == Pooled::kYes) pool.Turn();
  }
  instructions.Stop();
  const Allocations after = CountAllocations();
  const auto calls = static_cast<double>(state.iterations());
  state.counters["allocations"] = static_cast<double>(after.all - before.all) / calls;
  state.counters["bundle_allocations"] = static_cast<double>(after.bundle - before.bundle) / calls;
  if (instructions.Works()) {
    state.counters["instructions"] = static_cast<double>(instructions.Count()) / calls;
  }
}

// Makes the calls that are counted next once before, so that what is kept for reuse is there.
template <typename Call>
void Warm(Bundle& bundle, Call& call, int times) {
  const Pool pool(bundle.GetPlatform());
  for (int i = 0; i < times; ++i) call();
}

// Adds a row. `call` makes the call once and gives back what it gets.
template <Pooled pooled = Pooled::kNo, typename Call>
void AddRow(Bundle& bundle, Row row, Call call) {
  row.platform = bundle.GetPlatform().name;
  const std::string name = row.platform + "/" + row.name;
  benchmark::RegisterBenchmark(name.c_str(), [&bundle, call](benchmark::State& state) mutable {
    Measure<pooled>(state, bundle, call);
  });
  if (row.counted) {
    AllCounted().push_back({name, [&bundle, call](int times) mutable {
                              bundle.Activate();
                              Warm(bundle, call, times);
                              const Pool pool(bundle.GetPlatform());
                              CountedCalls([](void* context) { (*static_cast<Call*>(context))(); }, &call,
                                           times);
                            }});
  }
  AllRows().push_back(std::move(row));
}

// Adds a row and, before it, its prescribed path, which is called the same way.
template <Pooled pooled = Pooled::kNo, typename Path, typename Call>
void AddRow(Bundle& bundle, Row row, Path path, Call call) {
  row.path = "prescribed path: " + row.name;
  AllPairs().push_back(
      {bundle.GetPlatform().name + "/" + row.name, [&bundle, path, call](Fastest& fastest) mutable {
         MeasurePair<pooled>(bundle, path, call, fastest);
       }});
  AddRow<pooled>(bundle, {.name = row.path, .counted = row.counted}, path);
  AddRow<pooled>(bundle, std::move(row), call);
}

// The rows, by theme. A bundle of each platform goes through each.
void AddGetterRows(Bundle& bundle);
void AddFactoryRows(Bundle& bundle);
void AddStringRows(Bundle& bundle);
void AddBlockRows(Bundle& bundle);
// Too large to count their instructions.
void AddLargeStringRows(Bundle& bundle);
void AddLargeBlockRows(Bundle& bundle);
void AddExceptionRows(Bundle& bundle);
void AddColourSpaceRows(Bundle& bundle);
// The platform library alone, where it is not scripted.
void AddColourRows(Bundle& bundle);
// Conversions and destructions with that many live wrappers. The bundle must be fresh.
void AddScaleRows(Bundle& bundle, long live);
void AddListScaleRows(Bundle& bundle, long colours);
// Loading `file`, which finds the platform that is loaded globally.
void AddLoadingRows(Bundle& bundle, const std::string& file);

}  // namespace bench
