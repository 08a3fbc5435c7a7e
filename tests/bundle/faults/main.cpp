// tests/bundle/faults/main.cpp - the fault matrix: every function, every input, every event, every fault, and
// every stack that a host may call from.
//
//   fault_matrix BUNDLE                       everything
//   fault_matrix BUNDLE --only TEXT           functions whose declaration contains TEXT
//   fault_matrix BUNDLE --single              without pairs of faults
//   fault_matrix BUNDLE --once                the same events on several host versions count once
//   fault_matrix BUNDLE --faults N            of each function's faults every Nth, beginning with the first
//   fault_matrix BUNDLE --pairs N             a second fault after every Nth of those that are made
//   fault_matrix BUNDLE --reproduce CASE PLAN one call, with its events; CASE and PLAN as a report prints
//   them
//
// Every function runs in a process of its own, so that a crash is one function's finding.
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <set>
#include <string>
#include <thread>

#include "tests/bundle/faults/promises.h"
#include "tests/bundle/scripted/stack_call.h"

namespace faults {
namespace {

constexpr std::size_t kMostEventsForPairs = 12;
constexpr rlim_t kSecondsPerFunction = 300;  // of processor time: how busy the machine is does not count

// What the processes share: figures, and what each is doing.
struct Shared {
  unsigned long long cases, events, offsets, faults, pairs, reports, violations;
  unsigned long long used[64];  // by allowance
  char doing[1024];
};

Shared* shared = nullptr;  // of this process's function

std::string PlanText(const Plan& plan) {
  std::string text;
  for (const PlannedFault& each : plan) {
    text += (text.empty() ? "" : ",") + std::to_string(each.event) + ":" + NameOf(each.fault);
  }
  return text.empty() ? "none" : text;
}

void Note(const Case& each, const Plan& plan, std::uint32_t offset = 0) {
  const std::string text =
      "--reproduce '" + Describe(each) + "' " + PlanText(plan) + "@" + std::to_string(offset);
  std::strncpy(shared->doing, text.c_str(), sizeof shared->doing - 1);
}

// How much of everything is done.
struct Extent {
  bool pairs = true;
  std::size_t everyFault = 1;  // every Nth of them
  std::size_t everyPair = 1;
  bool everyVersion = true;
  bool everyFunction = true;

  // Whether what an allowance is for must have come.
  [[nodiscard]] bool IsWhole() const { return everyFunction && pairs && everyFault == 1 && everyPair == 1; }
};

class FunctionRun {
 public:
  FunctionRun(const Target& target, const Extent& extent) : target_(target), extent_(extent) {}

  void Run() {
    for (const long double version : kVersions) {
      if (extent_.everyVersion) tracesTried_.clear();
      for (const Choice& choice : Choices(target_)) {
        for (const Setting& setting : kSettings) RunCase({&target_, choice, &setting, version});
      }
    }
    for (const auto& [text, count] : findings_) std::printf("%s\n    (%zu times)\n", text.c_str(), count);
  }

 private:
  static std::string TraceOf(const Case& each, const Observation& observed) {
    std::string trace = std::string(each.setting->sparse ? "sparse" : "") + observed.result;
    for (const Step& step : observed.steps) trace += "\n" + step.text;
    return trace;
  }

  void RunCase(const Case& each) {
    // There is no earlier call of these, and nothing to prepare them.
    const bool alone = target_.role == Role::kEntry || target_.role == Role::kConstructor;
    if (alone && each.setting != kSettings) return;
    if (target_.role == Role::kDestructor && each.setting->again) return;
    Note(each, {});
    const Observation baseline = Make(each, {}, true);
    // Another setting or input with the very same events tells nothing new.
    const std::string trace = TraceOf(each, baseline);
    if (!tracesTried_.insert(trace).second) return;
    const bool newForPairs = traces_.insert(trace).second;
    ++shared->cases;
    shared->events += baseline.steps.size();
    Judge(each, {}, baseline, baseline);
    for (const std::uint32_t offset : scripted::kStackOffsets) {
      if (offset == 0) continue;
      Note(each, {}, offset);
      const Observation observed = Make(each, {}, true, offset);
      ++shared->offsets;
      Judge(each, {}, baseline, observed);
      if (TraceOf(each, observed) != trace) Find(target_.declaration + ": another stack gives other events");
    }
    const auto faultable = static_cast<std::size_t>(
        std::ranges::count_if(baseline.steps, [](const Step& step) { return !FaultsAt(step).empty(); }));
    for (std::size_t i = 0; i < baseline.steps.size(); ++i) {
      for (const Fault fault : FaultsAt(baseline.steps[i])) {
        if (faults_++ % extent_.everyFault != 0) continue;
        const Plan plan{{i, fault}};
        Note(each, plan, StackOffsetFor(plan));
        const Observation observed = Make(each, plan, true, StackOffsetFor(plan));
        ++shared->faults;
        Judge(each, plan, baseline, observed);
        if (!extent_.pairs || !newForPairs || followed_++ % extent_.everyPair != 0) continue;
        if (faultable <= kMostEventsForPairs) {
          RunPairs(each, plan.front(), baseline, observed);
        } else {
          RunWhileReporting(each, plan.front(), baseline, observed);
        }
      }
    }
  }

  // Every second fault after the first, at the events that come then.
  void RunPairs(const Case& each, const PlannedFault& first, const Observation& baseline,
                const Observation& withFirst) {
    for (std::size_t i = first.event + 1; i < withFirst.steps.size(); ++i) {
      shared->pairs += RunSecond(each, first, i, baseline, withFirst);
    }
  }

  // Every second fault at the events that only the first one brings: making the exception, telling the host,
  // giving back what the call holds. The same events after the same fault tell nothing new.
  void RunWhileReporting(const Case& each, const PlannedFault& first, const Observation& baseline,
                         const Observation& withFirst) {
    std::multiset<std::string> expected;
    for (std::size_t i = first.event + 1; i < baseline.steps.size(); ++i)
      expected.insert(baseline.steps[i].text);
    const Step& at = withFirst.steps[first.event];
    std::vector<std::size_t> brought;
    std::string report = NameOf(first.fault);
    for (std::size_t i = first.event + 1; i < withFirst.steps.size(); ++i) {
      const Step& step = withFirst.steps[i];
      const auto found = expected.find(step.text);
      const bool usual = found != expected.end();
      if (usual) expected.erase(found);
      if (usual && step.delivered == at.delivered && step.raised == at.raised) continue;
      brought.push_back(i);
      report += "\n" + step.text;
    }
    if (!reports_.insert(report).second) return;
    for (const std::size_t i : brought) shared->reports += RunSecond(each, first, i, baseline, withFirst);
  }

  // Every fault at that event after the first. Answers how many.
  std::size_t RunSecond(const Case& each, const PlannedFault& first, std::size_t event,
                        const Observation& baseline, const Observation& withFirst) {
    const std::vector<Fault> faults = FaultsAt(withFirst.steps[event]);
    for (const Fault fault : faults) {
      const Plan plan{first, {event, fault}};
      Note(each, plan, StackOffsetFor(plan));
      Judge(each, plan, baseline, Make(each, plan, false, StackOffsetFor(plan)));
    }
    return faults.size();
  }

  void Judge(const Case& each, const Plan& plan, const Observation& baseline, const Observation& observed) {
    std::vector<Step> faulted;
    for (const PlannedFault& planned : plan) {
      if (planned.event < observed.steps.size()) faulted.push_back(observed.steps[planned.event]);
    }
    for (const std::string& sentence : BrokenPromises(each, plan, baseline, observed)) {
      if (const Allowance* const allowance = Allowed(each, faulted, sentence)) {
        ++shared->used[allowance - Allowances().data()];
        continue;
      }
      std::string key = target_.declaration + ": " + sentence;
      for (const Step& step : faulted) key += "; " + std::string(NameOf(step.fault)) + " at " + step.name;
      Find(key);
    }
  }

  void Find(const std::string& key) {
    ++shared->violations;
    if (const auto found = known_.find(key); found != known_.end()) {
      ++findings_[found->second].second;
      return;
    }
    known_[key] = findings_.size();
    findings_.emplace_back(key + "\n    " + shared->doing, 1);
  }

  const Target& target_;
  const Extent extent_;
  std::size_t faults_ = 0;
  std::size_t followed_ = 0;
  std::set<std::string> tracesTried_;
  std::set<std::string> traces_;
  std::set<std::string> reports_;
  std::map<std::string, std::size_t> known_;
  std::vector<std::pair<std::string, std::size_t>> findings_;
};

struct Running {
  const Target* target;
  Shared* shared;
  FILE* output;
};

std::string ReadAll(FILE* file) {
  std::string text;
  std::rewind(file);
  char buffer[4096];
  for (std::size_t got = 0; (got = std::fread(buffer, 1, sizeof buffer, file)) > 0;) text.append(buffer, got);
  return text;
}

Plan PlanOf(const std::string& text) {
  Plan plan;
  for (std::size_t at = 0; at < text.size() && text != "none";) {
    const std::size_t comma = std::min(text.find(',', at), text.size());
    const std::size_t colon = text.find(':', at);
    const std::string name = text.substr(colon + 1, comma - colon - 1);
    for (int fault = 0; fault <= static_cast<int>(Fault::kRaiseOther); ++fault) {
      if (name == NameOf(static_cast<Fault>(fault))) {
        plan.push_back({static_cast<std::size_t>(std::atoi(text.c_str() + at)), static_cast<Fault>(fault)});
      }
    }
    at = comma + 1;
  }
  return plan;
}

void Show(const Case& each, const Plan& plan, std::uint32_t offset) {
  const Observation baseline = Make(each, {}, true);
  const Observation observed = Make(each, plan, plan.size() < 2, offset);
  for (std::size_t i = 0; i < observed.steps.size(); ++i) {
    const Step& step = observed.steps[i];
    std::printf("%3zu %d %s%s%s\n", i, step.openFrames, step.text.c_str(),
                step.fault == Fault::kNone ? "" : "   <- ",
                step.fault == Fault::kNone ? "" : NameOf(step.fault));
  }
  std::printf("result: %s\n", observed.result.empty() ? "neutral" : observed.result.c_str());
  for (const auto& raised : observed.raised) {
    std::printf("raised: %s \"%s\"\n", raised.className.c_str(), raised.message.c_str());
  }
  for (const std::string& sentence : BrokenPromises(each, plan, baseline, observed)) {
    std::printf("broken: %s\n", sentence.c_str());
  }
}

int Reproduce(const std::vector<Target>& targets, const std::string& wanted, const std::string& plan) {
  for (const Target& target : targets) {
    if (!wanted.starts_with(target.declaration + " | ")) continue;
    for (const long double version : kVersions) {
      for (const Choice& choice : Choices(target)) {
        for (const Setting& setting : kSettings) {
          const Case each{&target, choice, &setting, version};
          if (Describe(each) != wanted) continue;
          const std::size_t at = plan.find('@');
          const auto offset = at == std::string::npos ? 0 : std::atoi(plan.c_str() + at + 1);
          Show(each, PlanOf(plan.substr(0, at)), static_cast<std::uint32_t>(offset));
          return 0;
        }
      }
    }
  }
  std::fprintf(stderr, "wanted a case as a report prints it, found \"%s\"\n", wanted.c_str());
  return 2;
}

std::size_t EveryOf(const char* text) {
  const int every = std::atoi(text);
  if (every > 0) return static_cast<std::size_t>(every);
  std::fprintf(stderr, "wanted a number from 1 on, found \"%s\"\n", text);
  std::exit(2);
}

// A line that nothing needs hides what it would allow.
bool EveryAllowanceIsUsed(const Shared& sum) {
  bool all = true;
  for (std::size_t i = 0; i < Allowances().size(); ++i) {
    if (sum.used[i] > 0) continue;
    const Allowance& unused = Allowances()[i];
    std::printf("allowance %zu was not needed: \"%.*s\" at \"%.*s\"\n", i + 1,
                static_cast<int>(unused.promise.size()), unused.promise.data(),
                static_cast<int>(unused.event.size()), unused.event.data());
    all = false;
  }
  return all;
}

int RunAll(const std::vector<Target>& targets, const Extent& extent) {
  const auto start = std::chrono::steady_clock::now();
  auto* const area = static_cast<Shared*>(mmap(nullptr, targets.size() * sizeof(Shared),
                                               PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
  const std::size_t atOnce = std::max(1U, std::thread::hardware_concurrency());
  std::map<pid_t, Running> running;
  std::size_t crashes = 0;
  const auto waitForOne = [&] {
    int status = 0;
    const auto found = running.find(wait(&status));
    if (found == running.end()) return;
    const Running& each = found->second;
    std::fputs(ReadAll(each.output).c_str(), stdout);
    if (status != 0) {
      ++crashes;
      std::printf("%s: %s in\n    %s\n", each.target->declaration.c_str(),
                  WIFSIGNALED(status) ? strsignal(WTERMSIG(status)) : "a failed exit", each.shared->doing);
    }
    std::fclose(each.output);
    running.erase(found);
  };
  for (std::size_t i = 0; i < targets.size(); ++i) {
    if (running.size() == atOnce) waitForOne();
    FILE* const output = std::tmpfile();
    std::fflush(stdout);
    const pid_t child = fork();
    if (child == 0) {
      dup2(fileno(output), STDOUT_FILENO);
      dup2(fileno(output), STDERR_FILENO);
      const rlimit limit{kSecondsPerFunction, kSecondsPerFunction};
      setrlimit(RLIMIT_CPU, &limit);
      shared = area + i;
      FunctionRun(targets[i], extent).Run();
      std::exit(0);
    }
    running.emplace(child, Running{&targets[i], area + i, output});
  }
  while (!running.empty()) waitForOne();

  Shared sum{};
  for (std::size_t i = 0; i < targets.size(); ++i) {
    sum.cases += area[i].cases;
    sum.events += area[i].events;
    sum.offsets += area[i].offsets;
    sum.faults += area[i].faults;
    sum.pairs += area[i].pairs;
    sum.reports += area[i].reports;
    sum.violations += area[i].violations;
    for (std::size_t j = 0; j < Allowances().size(); ++j) sum.used[j] += area[i].used[j];
  }
  const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
  std::printf(
      "%zu functions, %llu cases, %llu events, %llu on other stacks, %llu faults, %llu pairs of faults, "
      "%llu while reporting: %llu violations, "
      "%zu crashes; %.1f s\n",
      targets.size(), sum.cases, sum.events, sum.offsets, sum.faults, sum.pairs, sum.reports, sum.violations,
      crashes, took.count());
  return sum.violations == 0 && crashes == 0 && (!extent.IsWhole() || EveryAllowanceIsUsed(sum)) ? 0 : 1;
}

}  // namespace
}  // namespace faults

int main(int argc, char** argv) {
  using namespace faults;  // NOLINT(google-build-using-namespace)
  if (argc < 2) {
    std::fprintf(stderr, "wanted the bundle's file, found no argument; see the head of main.cpp\n");
    return 2;
  }
  std::vector<Target> targets = PrepareCalls(argv[1]);
  Extent extent;
  for (int i = 2; i < argc; ++i) {
    const std::string argument = argv[i];
    if (argument == "--single") extent.pairs = false;
    if (argument == "--once") extent.everyVersion = false;
    if (argument == "--faults" && i + 1 < argc) extent.everyFault = EveryOf(argv[++i]);
    if (argument == "--pairs" && i + 1 < argc) extent.everyPair = EveryOf(argv[++i]);
    if (argument == "--reproduce" && i + 2 < argc) return Reproduce(targets, argv[i + 1], argv[i + 2]);
    if (argument == "--only" && i + 1 < argc) {
      extent.everyFunction = false;
      const std::string wanted = argv[++i];
      std::erase_if(targets, [&](const Target& target) {
        return target.declaration.find(wanted) == std::string::npos;
      });
    }
  }
  return RunAll(targets, extent);
}
