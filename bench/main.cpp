// bench/main.cpp - measures every row, or makes each call a few times so that its instructions can be
// counted.
//
//   bench measure FILE [--quick]   times and allocations of all rows, as JSON
//   bench pairs [--quick]          the fastest times of each row's prescribed path and of the row, as lines
//                                  "row <tab> nanoseconds <tab> nanoseconds"
//   bench count TIMES              makes each counted row's call TIMES times inside CountedCalls, one row
//                                  after the other; writes "row <tab> instructions", or "-" where the
//                                  processor doesn't count
//   bench guarded TIMES            the same for the rows whose instructions have a budget
//   bench one ROW TIMES            the same for the row of that full name alone
#include <valgrind/callgrind.h>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <exception>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>

#include "bench/host_program.h"
#include "bench/rows.h"

namespace bench {

std::vector<Row>& AllRows() {
  static std::vector<Row> rows;
  return rows;
}

std::vector<Pair>& AllPairs() {
  static std::vector<Pair> pairs;
  return pairs;
}

std::vector<Counted>& AllCounted() {
  static std::vector<Counted> counted;
  return counted;
}

namespace {

enum class Scale { kNone, kQuick, kFull };

struct Bundles {
  std::deque<Bundle> all;  // rows keep references

  Bundle& Load(const Platform& platform, const char* file) { return all.emplace_back(platform, file); }
};

// The scripted platform and every bundle on it come first: once the real platform is loaded globally, a
// bundle loaded later finds that one.
void AddPlatformRows(Bundles& bundles, const Platform& platform, const char* file, Scale scale) {
  Bundle& bundle = bundles.Load(platform, file);
  bundle.Activate();
  const Pool pool(platform);
  AddGetterRows(bundle);
  AddFactoryRows(bundle);
  AddStringRows(bundle);
  AddBlockRows(bundle);
  AddExceptionRows(bundle);
  AddColourSpaceRows(bundle);
  AddColourRows(bundle);
  for (const long colours : {1L, 10L, 100L}) AddListScaleRows(bundle, colours);
  if (scale == Scale::kNone) return;
  AddLargeStringRows(bundle);
  AddLargeBlockRows(bundle);
  for (const long colours : {1'000L, 100'000L}) AddListScaleRows(bundle, colours);
  for (const long live : {10L, 1'000L, 100'000L, 1'000'000L}) {
    if (scale == Scale::kQuick && live > 100'000) continue;
    AddScaleRows(bundles.Load(platform, file), live);
  }
}

// BENCH_DESKTOP in the environment names a desktop bundle to measure instead.
void AddAllRows(Bundles& bundles, Scale scale) {
  const char* const desktop = std::getenv("BENCH_DESKTOP");
  const auto bundle = [desktop](const char* file) { return desktop != nullptr ? desktop : file; };
  AddPlatformRows(bundles, ScriptedPlatform(&NewHostExceptionFor), bundle(BENCH_SCRIPTED_BUNDLE), scale);
  const Platform& real = RealPlatform(&NewHostExceptionFor);
  AddPlatformRows(bundles, real, bundle(BENCH_BUNDLE), scale);
  if (scale != Scale::kNone) AddLoadingRows(bundles.all.back(), BENCH_BUNDLE);
}

// ---- Measuring ----

struct Measured {
  std::vector<double> nanoseconds;  // one per repetition
  double allocations = 0;
  double bundleAllocations = 0;
  double instructions = 0;
};

// Keeps every repetition and shows how far the run is.
class Collector : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context& /*context*/) override { return true; }

  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.run_type != Run::RT_Iteration) continue;
      Measured& measured = measured_[run.run_name.function_name];
      measured.nanoseconds.push_back(run.GetAdjustedCPUTime());
      measured.allocations = run.counters.at("allocations");
      measured.bundleAllocations = run.counters.at("bundle_allocations");
      const auto instructions = run.counters.find("instructions");
      if (instructions != run.counters.end()) measured.instructions = instructions->second;
    }
  }

  const Measured& Of(const std::string& name) const { return measured_.at(name); }

 private:
  std::map<std::string, Measured> measured_;
};

void RunBenchmarks(bool quick, Collector& collector) {
  std::vector<std::string> arguments = {"bench", "--benchmark_enable_random_interleaving=true",
                                        quick ? "--benchmark_repetitions=3" : "--benchmark_repetitions=9",
                                        quick ? "--benchmark_min_time=0.004" : "--benchmark_min_time=0.02"};
  std::vector<char*> pointers;
  pointers.reserve(arguments.size());
  for (std::string& argument : arguments) pointers.push_back(argument.data());
  int count = static_cast<int>(pointers.size());
  benchmark::Initialize(&count, pointers.data());
  benchmark::RunSpecifiedBenchmarks(&collector);
}

// Programs of the host language: first the two calls of the row "colour made, read and freed", then loops
// that call nothing of the bundle, for the evaluator's own cost.
struct HostProgram {
  const char* row;
  const char* file;
  long turns;
  const char* limit;
  double target;
};
constexpr HostProgram kHostPrograms[] = {
    {"the same by a host program", "loop.bas", 200'000, "colour made, read and freed", 2.0},
    {"a turn of arithmetic", "loop_arithmetic.bas", 200'000, "", 0},
    {"a turn of strings", "loop_strings.bas", 200'000, "", 0},
    {"a turn of arrays", "loop_arrays.bas", 200'000, "", 0},
    {"a turn of properties", "loop_properties.bas", 200'000, "", 0},
    {"a turn of exceptions", "loop_exceptions.bas", 20'000, "", 0},
};

void AddHostPrograms(int repetitions, nlohmann::json& rows) {
  for (const HostProgram& program : kHostPrograms) {
    const std::vector<double> nanoseconds = MeasureHostProgram(program.file, program.turns, repetitions);
    if (nanoseconds.empty()) return;
    rows.push_back({{"platform", "real"},
                    {"name", program.row},
                    {"limit", program.limit},
                    {"target", program.target},
                    {"target_nanoseconds", 0.0},
                    {"nanoseconds", nanoseconds}});
  }
}

int MeasureAll(const char* file, bool quick) {
  Bundles bundles;
  AddAllRows(bundles, quick ? Scale::kQuick : Scale::kFull);
  Collector collector;
  RunBenchmarks(quick, collector);
  nlohmann::json rows = nlohmann::json::array();
  for (const Row& row : AllRows()) {
    const Measured& measured = collector.Of(row.platform + "/" + row.name);
    nlohmann::json entry = {{"platform", row.platform},
                            {"name", row.name},
                            {"limit", row.limit},
                            {"target", row.target},
                            {"target_nanoseconds", row.nanoseconds},
                            {"path", row.path},
                            {"path_target", row.pathTarget},
                            {"series", row.series},
                            {"size", row.size},
                            {"nanoseconds", measured.nanoseconds},
                            {"allocations", measured.allocations},
                            {"bundle_allocations", measured.bundleAllocations}};
    if (measured.instructions > 0) entry["instructions"] = measured.instructions;
    rows.push_back(std::move(entry));
  }
  AddHostPrograms(quick ? 3 : 9, rows);
  std::ofstream(file) << nlohmann::json{{"quick", quick}, {"rows", rows}}.dump(1) << "\n";
  return 0;
}

// In two rounds, so that a bad moment of the machine does not meet all slices of a pair.
int MeasurePairs(bool quick) {
  Bundles bundles;
  AddAllRows(bundles, quick ? Scale::kQuick : Scale::kFull);
  std::map<std::string, Fastest> fastest;
  for (int round = 0; round < 2; ++round) {
    for (const Pair& pair : AllPairs()) pair.measure(fastest[pair.name]);
  }
  for (const auto& [name, each] : fastest) {
    std::printf("%s\t%.3f\t%.3f\n", name.c_str(), each.path.count(), each.row.count());
  }
  return 0;
}

// ---- Counting ----

// Which rows are counted: the name of one, or all of those that fit.
struct Choice {
  bool guardedOnly = false;
  std::string name{};
};

int CountAll(int times, const Choice& choice) {
  Bundles bundles;
  AddAllRows(bundles, Scale::kNone);
  std::map<std::string, bool> guarded;
  for (const Row& row : AllRows()) {
    guarded[row.platform + "/" + row.name] =
        row.guard == Guard::kBoth || (row.guard == Guard::kScripted && row.platform == "scripted");
  }
  // What counting itself costs, to be subtracted.
  AllCounted().insert(AllCounted().begin(),
                      {"nothing", [](int count) { CountedCalls([](void*) {}, nullptr, count); }});
  guarded["nothing"] = true;
  InstructionCounter counter;
  CALLGRIND_START_INSTRUMENTATION;  // loading the platforms would take callgrind longer than all the rows
  for (const Counted& each : AllCounted()) {
    if (choice.guardedOnly && !guarded[each.name]) continue;
    if (!choice.name.empty() && each.name != choice.name) continue;
    each.run(times);
    if (!counter.Works()) {
      std::printf("%s\t-\n", each.name.c_str());
      continue;
    }
    // Warmed up now. Twice as many calls cost what is to be known, and nothing of the calls around them.
    counter.Start();
    each.run(times);
    counter.Stop();
    const std::uint64_t once = counter.Count();
    counter.Start();
    each.run(2 * times);
    counter.Stop();
    std::printf("%s\t%.0f\n", each.name.c_str(), static_cast<double>(counter.Count() - once));
  }
  return 0;
}

int Run(int count, char** arguments) {
  const std::string command = count > 1 ? arguments[1] : "";
  const bool quick = count > 2 && std::strcmp(arguments[count - 1], "--quick") == 0;
  if (count > 2 && command == "measure") return MeasureAll(arguments[2], quick);
  if (command == "pairs") return MeasurePairs(quick);
  if (count > 2 && (command == "count" || command == "guarded")) {
    return CountAll(std::atoi(arguments[2]), {.guardedOnly = command == "guarded"});
  }
  if (count > 3 && command == "one") return CountAll(std::atoi(arguments[3]), {.name = arguments[2]});
  std::fprintf(stderr,
               "bench: wanted measure FILE [--quick], pairs [--quick], count TIMES, guarded TIMES or one ROW "
               "TIMES; use tools/bench\n");
  return 2;
}

}  // namespace

}  // namespace bench

int main(int count, char** arguments) {
  try {
    return bench::Run(count, arguments);
  } catch (const std::exception& problem) {
    std::fprintf(stderr, "bench: %s\n", problem.what());
    return 1;
  }
}
