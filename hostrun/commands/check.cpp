// hostrun/commands/check.cpp - "hostrun check": a validator for bundles of the binary interface.
//
// Each check runs in a process of its own: a bundle that crashes or hangs fails that check and no other. One
// process per host version loads the platform and the bundle; its copies make the checks.
#include <array>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <nlohmann/json.hpp>

#include "hostrun/commands/check_parts.h"
#include "hostrun/commands/commands.h"
#include "hostrun/commands/isolated.h"
#include "hostrun/commands/start.h"
#include "hostrun/commands/terminal.h"
#include "hostrun/language/program.h"

namespace hostrun {
namespace {

struct CheckOptions {
  HostOptions host;
  const CLI::Option* version = nullptr;  // counts whether one host version was asked for
  std::string bundle;                    // empty: the one of `host`
  std::string filter;
  double timeLimit = 10;  // seconds for one check
  bool json = false;
  bool onlyFailed = false;
};

using nlohmann::ordered_json;
using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

constexpr const char* kCommand = "hostrun check";
constexpr int kExitFailed = 1;
// One before and one from each change of the records' layout, and the newest.
constexpr std::array<const char*, 6> kVersions = {"2011.0",  "2012.0",  "2013.0",
                                                  "2013.03", "2013.04", "2015.0"};

struct Result {
  std::string name;
  std::string status;  // passed, failed, crashed, timed out, skipped
  std::string reason;
  std::int64_t ms = 0;
};

const char* NameOf(Outcome::Status status) {
  switch (status) {
    case Outcome::Status::Passed:
      return "passed";
    case Outcome::Status::Failed:
      return "failed";
    case Outcome::Status::Crashed:
      return "crashed";
    case Outcome::Status::TimedOut:
      return "timed out";
  }
  return "";
}

ordered_json ToJson(const Result& result) {
  return {{"check", result.name}, {"status", result.status}, {"reason", result.reason}, {"ms", result.ms}};
}

Result FromJson(const std::string& line) {
  const ordered_json json = ordered_json::parse(line);
  return {json["check"], json["status"], json["reason"], json["ms"]};
}

Result RunOne(const BundleCheck& check, milliseconds limit) {
  const Clock::time_point start = Clock::now();
  const Outcome outcome = RunIsolated(limit, [&check](const SendLine&) { return check.body(); });
  const auto took = std::chrono::duration_cast<milliseconds>(Clock::now() - start).count();
  return {check.name, NameOf(outcome.status), outcome.reason, took};
}

// Collects results and shows them as they come.
class Reporter {
 public:
  explicit Reporter(const CheckOptions& options)
      : options_(options), paint_(TakesColour(stdout)), progress_(TakesSequences(stderr)) {}

  void Take(const Result& result) {
    ++counts_[IndexOf(result.status)];
    const bool failed = result.status != "passed";
    if (failed || !options_.onlyFailed) {
      if (options_.json) {
        list_.push_back(ToJson(result));
      } else {
        ClearProgress();
        Print(result);
      }
    }
    ShowProgress(result.name);
  }

  // The tally is the last line. Gives the exit status.
  int Finish(const std::string& bundle) {
    ClearProgress();
    const int bad = counts_[1] + counts_[2] + counts_[3] + counts_[4];
    if (options_.json) {
      ordered_json tally;
      for (std::size_t i = 0; i < kNames.size(); ++i) tally[kNames[i]] = counts_[i];
      const ordered_json answer = {
          {"bundle", bundle}, {"checks", std::move(list_)}, {"tally", std::move(tally)}};
      std::printf("%s\n", answer.dump(2, ' ', false, ordered_json::error_handler_t::replace).c_str());
    } else {
      std::string text = Counted(static_cast<std::size_t>(Total()), "check");
      for (std::size_t i = 0; i < kNames.size(); ++i) {
        if (i < 2 || counts_[i] > 0) text += ", " + std::to_string(counts_[i]) + " " + kNames[i];
      }
      std::printf("%s\n", paint_(bad == 0 ? Style::Good : Style::Bad, text).c_str());
    }
    return bad == 0 ? kExitFine : kExitFailed;
  }

  int Total() const { return counts_[0] + counts_[1] + counts_[2] + counts_[3] + counts_[4]; }

 private:
  static constexpr std::array<const char*, 5> kNames = {"passed", "failed", "crashed", "timed out",
                                                        "skipped"};

  static std::size_t IndexOf(const std::string& status) {
    for (std::size_t i = 0; i < kNames.size(); ++i) {
      if (status == kNames[i]) return i;
    }
    return 1;
  }

  void Print(const Result& result) {
    const bool good = result.status == "passed";
    const std::string status = paint_(good ? Style::Good : Style::Bad, Padded(result.status, 10));
    std::printf("%s%s\n", status.c_str(), result.name.c_str());
    if (!result.reason.empty()) std::printf("          %s\n", result.reason.c_str());
    std::fflush(stdout);
  }

  // Only where nothing else shows that time passes.
  bool ShowsProgress() const { return progress_ && (options_.json || options_.onlyFailed); }
  void ShowProgress(const std::string& name) {
    if (!ShowsProgress()) return;
    std::fprintf(stderr, "\r\033[K%s, %d failed: %.60s",
                 Counted(static_cast<std::size_t>(Total()), "check").c_str(), Total() - counts_[0],
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
  std::array<int, 5> counts_{};
};

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

  void CheckTheFile() {
    for (const BundleCheck& check : FileChecks(host_.bundle)) {
      if (Wanted(check.name)) reporter_.Take(RunOne(check, limit_));
    }
  }

  void CheckOn(const std::string& version) {
    host_.identity.version = std::strtod(version.c_str(), nullptr);
    const std::string load = version + "/load";
    bool loaded = false;
    const Clock::time_point start = Clock::now();
    const auto body = [&](const SendLine& send) { return RunHost(version, send); };
    const auto onLine = [&](const std::string& line) {
      const Result result = FromJson(line);
      loaded = loaded || result.name == load;
      if (Wanted(result.name)) reporter_.Take(result);
    };
    // A little longer than a check may take: the host reports that one itself.
    const Outcome outcome = RunIsolated(limit_ + limit_ / 2, body, onLine);
    const auto took = std::chrono::duration_cast<milliseconds>(Clock::now() - start).count();
    if (!loaded) {
      reporter_.Take({load, NameOf(outcome.status), outcome.reason, took});
      reporter_.Take(
          {version + "/everything else", "skipped", "the bundle could not be entered on this host", 0});
    } else if (outcome.status != Outcome::Status::Passed) {
      reporter_.Take({version + "/host", NameOf(outcome.status), outcome.reason, took});
    }
  }

 private:
  bool Wanted(const std::string& name) const {
    return options_.filter.empty() || name.find(options_.filter) != std::string::npos;
  }

  // In the process of one host.
  std::string RunHost(const std::string& version, const SendLine& send) const {
    std::string problem = EnterBundle(host_);
    if (!problem.empty()) return problem;
    send(ToJson({version + "/load", "passed", "", 0}).dump());
    for (const auto& checks : {RegistrationChecks(), CallChecks()}) {
      for (BundleCheck check : checks) {
        check.name = version + "/" + check.name;
        if (!Wanted(check.name)) continue;
        send(ToJson(RunOne(check, limit_)).dump(-1, ' ', false, ordered_json::error_handler_t::replace));
      }
    }
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
    return Refuse(kCommand, checker.bundle() + ": wanted a bundle, found no such file");
  checker.CheckTheFile();
  if (options.version != nullptr && options.version->count() > 0) {
    checker.CheckOn(options.version->as<std::string>());
  } else {
    for (const char* const version : kVersions) checker.CheckOn(version);
  }
  if (reporter.Total() == 0)
    return Refuse(kCommand, "--filter: wanted part of a check's name, found no check with " + options.filter);
  return reporter.Finish(checker.bundle());
}

}  // namespace

Action CheckCommand(CLI::App& app) {
  const auto options = std::make_shared<CheckOptions>();
  AddHostOptions(app, options->host);
  options->version = app.get_option("--host-version");
  app.add_option("file", options->bundle, "The bundle to check; without one that of --bundle")
      ->option_text("BUNDLE");
  app.add_option("--filter", options->filter, "Only checks whose name contains this text")
      ->option_text("TEXT");
  app.add_option("--time-limit", options->timeLimit, "Seconds that one check may take")
      ->option_text("SECONDS (10)")
      ->check(CLI::Range(0.1, 3600.0));
  app.add_flag("--json", options->json, "Answer in JSON, for tools (docs/hostrun.md says what it holds)");
  app.add_flag("--only-failed", options->onlyFailed, "Leave out what passed");
  app.footer(
      "Without --host-version the bundle is checked on hosts 2011.0, 2012.0, 2013.0, 2013.03, 2013.04 and "
      "2015.0.\n\n"
      "Examples:\n  hostrun check build/QVXColor.so\n  hostrun check --only-failed --filter /call/ "
      "build/QVXColor.so\n\n"
      "Exit status: 0 every check passed, 1 one failed, crashed, took too long or had to be skipped, 2 an "
      "error of use.");
  return [options] { return Check(*options); };
}

}  // namespace hostrun
