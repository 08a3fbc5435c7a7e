// hostrun/commands/check.cpp - "hostrun check": a validator for bundles of the binary interface.
//
// Each check runs in a process of its own: a bundle that crashes or hangs fails that check and no other. For
// each host version one process loads the platform and the bundle; the checks run in copies of it.
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <numeric>
#include <optional>

#include "hostrun/commands/check_parts.h"
#include "hostrun/commands/commands.h"
#include "hostrun/commands/isolated.h"
#include "hostrun/commands/json.h"
#include "hostrun/commands/start.h"
#include "hostrun/commands/terminal.h"
#include "hostrun/host/output.h"
#include "hostrun/host/platform_library.h"
#include "hostrun/language/program.h"
#include "hostrun/sibling/platform_objects.h"

namespace hostrun {
namespace {

struct CheckOptions {
  HostOptions host;
  std::optional<Option> version;  // that asks for one host version
  std::string bundle;             // empty: the one of `host`
  std::string filter;
  double timeLimit = 10;  // seconds for one check
  bool json = false;
  bool onlyFailed = false;
  bool verbose = false;

  // A person at a terminal waits for what failed; a file or a tool gets everything.
  bool LeavesOutPassed() const { return onlyFailed || (!json && !verbose && isatty(STDOUT_FILENO) != 0); }
};

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

constexpr const char* kCheckName = "hostrun check";
constexpr int kExitFailed = 1;
// One before and one from each change of the records' layout, and the newest.
constexpr std::array<const char*, 6> kVersions = {"2011.0",  "2012.0",  "2013.0",
                                                  "2013.03", "2013.04", "2015.0"};

// In the order of Status.
constexpr std::array kStatusNames = {"passed", "failed", "crashed", "timed out", "skipped"};

constexpr std::size_t IndexOf(Status status) {
  return static_cast<std::size_t>(status);
}

// What came of one check.
struct Result {
  std::string name;
  Status status;
  std::string reason;  // empty when it passed
  std::int64_t ms = 0;
};

ordered_json ToJson(const Result& result) {
  return {{"check", result.name},
          {"status", kStatusNames[IndexOf(result.status)]},
          {"reason", result.reason},
          {"ms", result.ms}};
}

Result FromJson(const std::string& line) {
  const ordered_json json = ReadJson(line).value();
  const auto* const status = std::find(kStatusNames.begin(), kStatusNames.end(), json["status"]);
  return {json["check"], static_cast<Status>(status - kStatusNames.begin()), json["reason"], json["ms"]};
}

// "VERSION/records/CLASS" of a host and a subject: "2015.0/records/NSColorQVX".
std::string CheckName(const CheckKind& kind, const std::string& version, const std::string& subject = {}) {
  constexpr std::string_view kVersion = "VERSION";
  std::string name(kind.name);
  if (!subject.empty()) name.replace(name.rfind('/') + 1, std::string::npos, subject);
  if (name.starts_with(kVersion)) name.replace(0, kVersion.size(), version);
  return name;
}

// Collects results and shows them as they come.
class Reporter {
 public:
  explicit Reporter(const CheckOptions& options)
      : options_(options), paint_(TakesColour(stdout)), progress_(TakesSequences(stderr)) {}

  void Take(const Result& result) {
    ++counts_.at(IndexOf(result.status));
    if (result.status != Status::Passed || !options_.LeavesOutPassed()) {
      if (options_.json) {
        list_.push_back(ToJson(result));
      } else {
        ClearProgress();
        Print(result);
      }
    }
    ShowProgress(result.name);
  }

  // The one finding after which nothing else can be checked. Gives the exit status.
  int FinishEarly(const std::string& bundle, const Result& finding) {
    if (options_.json) {
      Take(finding);
      return Finish(bundle);
    }
    const std::string status = Padded(kStatusNames[IndexOf(finding.status)], 10);
    std::printf("%s%s: %s\n", paint_(Style::Bad, status).c_str(), finding.name.c_str(),
                finding.reason.c_str());
    return kExitFailed;
  }

  // The tally is the last line. Gives the exit status.
  int Finish(const std::string& bundle) {
    ClearProgress();
    const bool good = NotPassed() == 0;
    if (options_.json) {
      ordered_json tally;
      for (std::size_t i = 0; i < counts_.size(); ++i) tally[kStatusNames[i]] = counts_[i];
      const ordered_json answer = {
          {"bundle", bundle}, {"checks", std::move(list_)}, {"tally", std::move(tally)}};
      WriteOutput(JsonText(answer, 2) + "\n");
    } else {
      std::string text = Counted(Total(), "check");
      for (std::size_t i = 0; i < counts_.size(); ++i) {
        const bool always = i <= IndexOf(Status::Failed);
        if (always || counts_[i] > 0) text += ", " + std::to_string(counts_[i]) + " " + kStatusNames[i];
      }
      std::printf("%s\n", paint_(good ? Style::Good : Style::Bad, text).c_str());
    }
    return good ? kExitFine : kExitFailed;
  }

  std::size_t Total() const { return std::accumulate(counts_.begin(), counts_.end(), std::size_t{0}); }

 private:
  std::size_t NotPassed() const { return Total() - counts_[IndexOf(Status::Passed)]; }

  void Print(const Result& result) {
    const Style style = result.status == Status::Passed ? Style::Good : Style::Bad;
    const std::string status = Padded(kStatusNames[IndexOf(result.status)], 10);
    std::printf("%s%s\n", paint_(style, status).c_str(), result.name.c_str());
    if (!result.reason.empty()) std::printf("          %s\n", result.reason.c_str());
    FlushOutput();
  }

  // Only where nothing else shows that something is going on.
  bool ShowsProgress() const { return progress_ && (options_.json || options_.LeavesOutPassed()); }
  void ShowProgress(const std::string& name) {
    if (!ShowsProgress()) return;
    std::fprintf(stderr, "\r\033[K%s, %zu failed: %.60s", Counted(Total(), "check").c_str(), NotPassed(),
                 name.c_str());
    std::fflush(stderr);
  }
  void ClearProgress() const {
    if (ShowsProgress()) std::fputs("\r\033[K", stderr);
  }

  const CheckOptions& options_;
  Painter paint_;
  bool progress_;
  ordered_json list_ = ordered_json::array();
  std::array<std::size_t, kStatusNames.size()> counts_{};
};

// What the platform makes when it is first asked for a colour, each copy of this process would make anew.
void PrepareColours() {
  const ObjectRuntime& runtime = TheObjectRuntime();
  const PlatformId colours = runtime.getClass == nullptr ? nullptr : runtime.getClass("NSColor");
  if (colours == nullptr) return;
  const PoolScope pool;
  Send<PlatformId>(colours, "redColor");
}

// Makes the checks that were asked for, on one host after the other.
class Checker {
 public:
  Checker(const CheckOptions& options, Reporter& reporter)
      : options_(options),
        reporter_(reporter),
        limit_(static_cast<std::int64_t>(options.timeLimit * 1000)),
        host_(options.host) {
    if (!options.bundle.empty()) host_.bundle = options.bundle;
  }

  const std::string& bundle() const { return host_.bundle; }

  // Loads nothing, and starts no host. Gives what makes every other check pointless: it is no bundle at all.
  std::optional<Result> CheckTheFile() {
    const std::vector<BundleCheck> checks = FileChecks(host_.bundle);
    const Result format = RunOne(checks.front(), CheckName(checks.front().kind, {}));
    if (format.status != Status::Passed) return format;
    RunWanted(checks, {}, [this](const Result& result) { reporter_.Take(result); });
    return {};
  }

  // On a host of that version, in a process of its own. Where the bundle can't be entered, the rest is
  // skipped.
  void CheckOn(const std::string& version) {
    host_.identity.version = std::strtod(version.c_str(), nullptr);
    const std::string load = CheckName(KindNamed("VERSION/load"), version);
    bool loaded = false;
    const Clock::time_point start = Clock::now();
    const auto body = [&](const SendLine& send) { return RunHost(version, load, send); };
    const auto onLine = [&](const std::string& line) {
      const Result result = FromJson(line);
      loaded = loaded || result.name == load;
      if (Wanted(result.name)) reporter_.Take(result);
    };
    // A little longer than a check may take: the host itself reports a check that takes too long.
    const Outcome outcome = RunIsolated(limit_ + limit_ / 2, body, onLine);
    const auto took = std::chrono::duration_cast<milliseconds>(Clock::now() - start).count();
    if (!loaded) {
      reporter_.Take({load, outcome.status, outcome.reason, took});
      reporter_.Take({CheckName(KindNamed("VERSION/everything else"), version), Status::Skipped,
                      "the bundle could not be entered on this host", 0});
    } else if (outcome.status != Status::Passed) {
      reporter_.Take({CheckName(KindNamed("VERSION/host"), version), outcome.status, outcome.reason, took});
    }
  }

 private:
  bool Wanted(const std::string& name) const {
    return options_.filter.empty() || name.find(options_.filter) != std::string::npos;
  }

  // In a process of its own.
  Result RunOne(const BundleCheck& check, const std::string& name) const {
    const Clock::time_point start = Clock::now();
    const Outcome outcome = RunIsolated(limit_, [&check](const SendLine&) { return check.check(); });
    const auto took = std::chrono::duration_cast<milliseconds>(Clock::now() - start).count();
    return {name, outcome.status, outcome.reason, took};
  }

  // `take` gets the results in order.
  template <class Take>
  void RunWanted(const std::vector<BundleCheck>& checks, const std::string& version, Take take) const {
    for (const BundleCheck& check : checks) {
      const std::string name = CheckName(check.kind, version, check.subject);
      if (Wanted(name)) take(RunOne(check, name));
    }
  }

  // In the process of one host.
  Problem RunHost(const std::string& version, const std::string& load, const SendLine& send) const {
    const auto report = [&send](const Result& result) { send(JsonText(ToJson(result), -1)); };
    Problem problem = EnterBundle(host_);
    if (problem) return problem;
    report({load, Status::Passed, {}, 0});
    PrepareColours();
    RunWanted(RegistrationChecks(), version, report);
    RunWanted(CallChecks(), version, report);
    return {};
  }

  const CheckOptions& options_;
  Reporter& reporter_;
  milliseconds limit_;
  HostOptions host_;
};

int Check(const CheckOptions& options) {
  Reporter reporter(options);
  Checker checker(options, reporter);
  std::error_code error;
  if (!std::filesystem::exists(checker.bundle(), error))
    return Refuse(kCheckName, checker.bundle() + ": wanted a bundle, found no such file");
  if (const std::optional<Result> fatal = checker.CheckTheFile())
    return reporter.FinishEarly(checker.bundle(), *fatal);
  if (const std::optional<std::string> asked = options.version->Typed()) {
    checker.CheckOn(*asked);
  } else {
    for (const char* const version : kVersions) checker.CheckOn(version);
  }
  if (reporter.Total() == 0)
    return Refuse(kCheckName,
                  "--filter: wanted part of a check's name, found no check with " + options.filter);
  return reporter.Finish(checker.bundle());
}

}  // namespace

Action CheckCommand(CommandLine& line) {
  const auto options = std::make_shared<CheckOptions>();
  AddHostOptions(line, options->host);
  options->version = line.Find("--host-version");
  line.Add("file", options->bundle, "The bundle to check; without one that of --bundle").Takes("BUNDLE");
  line.Add("--filter", options->filter, "Only checks whose name contains this text").Takes("TEXT");
  line.Add("--time-limit", options->timeLimit, "Seconds that one check may take")
      .Takes("SECONDS (10)")
      .Between(0.1, 3600.0);
  line.AddFlag("--json", options->json, "Answer in JSON, for tools (docs/hostrun.md says what it holds)");
  const Option onlyFailed =
      line.AddFlag("--only-failed", options->onlyFailed, "Leave out what passed, as at a terminal");
  line.AddFlag("--verbose", options->verbose, "At a terminal, show also what passed").Excludes(onlyFailed);
  line.SetFooter(
      "Without --host-version the bundle is checked on hosts 2011.0, 2012.0, 2013.0, 2013.03, 2013.04 and "
      "2015.0.\n\n"
      "Examples:\n  hostrun check build/QVXColor.so\n  hostrun check --only-failed --filter /call/ "
      "build/QVXColor.so\n\n"
      "Exit status: 0 every check passed, 1 one failed, crashed, took too long or had to be skipped, 2 an "
      "error of use.");
  return [options] { return Check(*options); };
}

}  // namespace hostrun
