// tests/hostrun/commands/check_test.cpp - "hostrun check": a bundle that keeps the contract passes, and each
// way to break it fails the check that is about it.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <filesystem>
#include <ostream>
#include <set>

#include "tests/bundle/unit/declarations.h"
#include "tests/hostrun/commands/run_hostrun.h"

namespace command_tests {
namespace {

using nlohmann::json;

constexpr const char* kSound = "broken/Any.so";  // keeps the contract unless the environment names a fault

// What the broken bundles need no platform for is checked on one host.
std::vector<std::string> CheckArguments(const std::string& bundle, std::vector<std::string> more = {}) {
  more.insert(more.begin(), {"check", "--platform", "none", "--host-version", "2015.0", "--time-limit", "1"});
  more.push_back(bundle);
  return more;
}

// Checks the bundle with that fault: one that is built with it, or the one that the environment tells.
Finished CheckBroken(const std::string& fault, std::vector<std::string> more = {}) {
  const std::string built = BuiltFile("broken/" + fault + ".so");
  const std::string bundle = std::filesystem::exists(built) ? built : BuiltFile(kSound);
  return RunHostrun(CheckArguments(bundle, std::move(more)), {}, {"BROKEN_BUNDLE_FAULT=" + fault});
}

Finished CheckSound(std::vector<std::string> more = {}) {
  return RunHostrun(CheckArguments(BuiltFile(kSound), std::move(more)));
}

struct Fault {
  const char* name;
  std::vector<std::string> failing;  // "status check"
  const char* reason;                // part of the first one's
};

void PrintTo(const Fault& fault, std::ostream* out) {
  *out << fault.name;
}

const Fault kFaults[] = {
    {"ExtraExport", {"failed file/exports"}, "found AnotherOne"},
    {"UnknownSymbol",
     {"failed file/undefined-symbols", "failed 2015.0/load", "skipped 2015.0/everything else"},
     "found NoSuchFunctionAnywhere"},
    {"NoEntryPoint",
     {"failed file/entry-point", "failed file/exports", "failed 2015.0/load",
      "skipped 2015.0/everything else"},
     "wanted an exported function REALPluginMain, found SomethingElse"},
    {"NeedsLibrary", {"failed file/needed-libraries"}, "found libresolv.so.2"},
    {"TextRelocations", {"failed file/text-relocations"}, "compile with -fPIC"},
    {"NoRelro", {"failed file/relro"}, "link with -z relro"},
    {"ExecutableStack", {"failed file/stack"}, "found one that can"},
    {"CrashOnEntry", {"crashed 2015.0/load", "skipped 2015.0/everything else"}, "crashed with signal 6"},
    {"HangOnEntry", {"timed out 2015.0/load", "skipped 2015.0/everything else"}, "did not come back within"},
    {"EndsOnEntry",
     {"crashed 2015.0/load", "skipped 2015.0/everything else"},
     "ended its process with status 0"},
    {"CrashLater", {"crashed 2015.0/host"}, "crashed with signal 6"},
    {"WrongVersion", {"failed 2015.0/version"}, "to be called once with 13, found 12"},
    {"TwoVersions", {"failed 2015.0/version"}, "found 2 calls"},
    {"LateVersion", {"failed 2015.0/order"}, "found a class before it"},
    {"NoClass", {"failed 2015.0/order"}, "wanted a registered class, found none"},
    {"SameClassTwice",
     {"failed 2015.0/order", "failed 2015.0/declarations/Sound"},
     "found Sound a second time"},
    {"UnknownSuperclass", {"failed 2015.0/order", "failed 2015.0/declarations/Sound"}, "found no Missing"},
    {"WrongLayoutWord", {"failed 2015.0/records/Sound"}, "word 0 (layout version): wanted 13, found 14"},
    {"DataSize",
     {"failed 2015.0/records/Sound"},
     "word 3 (size of the class data): wanted a multiple of 16, found 4"},
    {"ReservedWord", {"failed 2015.0/records/Sound"}, "properties [0], word 8 (reserved): wanted 0, found 5"},
    {"NoFunction",
     {"failed 2015.0/records/Sound", "failed 2015.0/declarations/Sound"},
     "methods [0], word 0 (function): wanted a pointer, found null"},
    {"FunctionIsData",
     {"failed 2015.0/records/Sound", "crashed 2015.0/call/Sound.Number"},
     "word 4 (getter): wanted a function, found a pointer to no code"},
    {"DefinitionNowhere",
     {"failed 2015.0/order", "failed 2015.0/records/class 1"},
     "wanted a registered class, found none"},
    {"DeclarationIsNoText",
     {"failed 2015.0/records/Sound", "failed 2015.0/declarations/Sound"},
     "methods [1], word 2 (declaration): wanted a text, found a pointer to none"},
    {"TextWithoutEnd",
     {"failed 2015.0/records/Sound", "failed 2015.0/declarations/Sound"},
     "methods [1], word 2 (declaration): wanted a text, found a pointer to none"},
    {"RecordsBehindMemory",
     {"failed 2015.0/records/Sound", "failed 2015.0/declarations/Sound"},
     "word 18 (constants): wanted 0 records, found memory that can't be read"},
    {"CountTooLarge",
     {"failed 2015.0/records/Sound", "failed 2015.0/declarations/Sound"},
     "word 18 (constants): wanted a count from 0 to 10000, found 1000000"},
    {"BadDeclaration", {"failed 2015.0/declarations/Sound"}, "wanted 'as' and a type after parameter other"},
    {"UnknownType", {"failed 2015.0/declarations/Sound"}, "found Nowhere, which nobody registered"},
    {"BadConstant", {"failed 2015.0/declarations/Sound"}, "wanted '=' after a constant's name"},
    {"FullInstance", {"failed 2015.0/life/Sound"}, "wanted an empty instance"},
    {"Crash", {"crashed 2015.0/call/Sound.Use(other as Sound)"}, "crashed with signal 6"},
    {"Hang", {"timed out 2015.0/call/Sound.Use(other as Sound)"}, "did not come back within 1000 ms"},
    {"NotNeutral",
     {"failed 2015.0/call/Sound.Number"},
     "on an empty instance: wanted the neutral result, found 7"},
    {"NotNeutralByReference",
     {"failed 2015.0/call/Sound.Read(byref out as double)"},
     "on an empty instance: wanted 0 in out, found 0.5"},
    {"Raises",
     {"failed 2015.0/call/Sound.Use(other as Sound)"},
     "wanted a call that raises nothing, found UnsupportedOperationException"},
    {"KeepsArgument",
     {"failed 2015.0/call/Sound.Use(other as Sound)"},
     "wanted argument 1 with 1 references as before, found 2"},
    {"LeaksString",
     {"failed 2015.0/call/Sound.Make as Sound"},
     "live strings after the call as before, found 1 more"},
    {"LeaksObject",
     {"failed 2015.0/call/Sound.Make as Sound"},
     "live objects after the call as before, found 1 more"},
    {"FillsKeptInstance",
     {"failed 2015.0/call/Sound.Make as Sound"},
     "live native objects after the call as before, found 1 more"},
    {"WrongClass",
     {"failed 2015.0/call/Sound.Make as Sound"},
     "wanted a result of type Sound, found a RuntimeException"},
    {"NullHandle",
     {"failed 2015.0/call/Sound.Number"},
     "on a null handle: wanted the neutral result, found 3"},
};

class CheckOf : public testing::TestWithParam<Fault> {};

TEST_P(CheckOf, FailsThatAndNothingElse) {
  const Finished finished = CheckBroken(GetParam().name, {"--json"});
  EXPECT_EQ(finished.status, 1);
  EXPECT_EQ(finished.err, "");
  const json answer = json::parse(finished.out);
  std::vector<std::string> failing;
  std::string reason;
  for (const json& check : answer["checks"]) {
    if (check["status"] == "passed") continue;
    if (failing.empty()) reason = check["reason"];
    failing.push_back(check["status"].get<std::string>() + " " + check["check"].get<std::string>());
  }
  EXPECT_EQ(failing, GetParam().failing);
  EXPECT_NE(reason.find(GetParam().reason), std::string::npos) << reason;
}

INSTANTIATE_TEST_SUITE_P(Check, CheckOf, testing::ValuesIn(kFaults),
                         [](const auto& fault) { return std::string(fault.param.name); });

// Without the host's version and the names of classes and members.
std::string KindOf(const std::string& check) {
  const std::size_t begin = check.starts_with("file/") ? 0 : check.find('/') + 1;
  return begin == 0 ? check : check.substr(begin, check.find('/', begin) - begin);
}

TEST(Check, MakesNoCheckThatNothingCanFail) {
  std::set<std::string> failed = {"file/format"};  // StopsAtWhatIsNoBundleAtAll
  for (const Fault& fault : kFaults) {
    for (const std::string& one : fault.failing) {
      const bool skipped = one.starts_with("skipped ");
      if (!skipped) failed.insert(KindOf(one.substr(one.find_last_of(' ', one.find('/')) + 1)));
    }
  }
  std::set<std::string> made = {"host"};  // named only when it fails
  const json sound = json::parse(CheckSound({"--json"}).out);
  for (const json& check : sound["checks"]) made.insert(KindOf(check["check"]));
  EXPECT_EQ(failed, made);
}

TEST(Check, PassesABundleThatKeepsTheContract) {
  const Finished finished = CheckSound({"--json"});
  EXPECT_EQ(finished.status, 0);
  const json answer = json::parse(finished.out);
  EXPECT_EQ(answer["checks"].size(), kSoundChecks);
  EXPECT_EQ(
      answer["tally"],
      (json{{"passed", kSoundChecks}, {"failed", 0}, {"crashed", 0}, {"timed out", 0}, {"skipped", 0}}));
}

TEST(Check, PassesTheBundleOfThisBuildOnEveryHost) {
  const Finished finished = RunHostrun({"check", "--only-failed"});
  EXPECT_EQ(finished.status, 0);
  constexpr std::size_t kHosts = 6;
  // Load, version and order; for each class records, declarations and life; each function.
  const std::size_t onOneHost = 3 + 3 * 3 + unit::DeclaredFunctions();
  EXPECT_EQ(finished.out, Tally(kFileChecks + kHosts * onOneHost) + "\n");
}

TEST(Check, StopsAtWhatIsNoBundleAtAllAndSaysSoInOneLine) {
  const std::pair<std::string, std::string> files[] = {
      {TemporaryFile("text.so", "no bundle"), "found a file that is neither ELF nor Mach-O"},
      {"/", "found a folder; take the folder NAME.bundle, or the file in it"},
      {"/bin/true", "found a 64-bit ELF file"}};
  for (const auto& [file, found] : files) {
    const Finished finished = RunHostrun(CheckArguments(file));
    EXPECT_EQ(finished.status, 1);
    EXPECT_EQ(Lines(finished.out).size(), 1U) << finished.out;
    EXPECT_TRUE(finished.out.starts_with("failed    file/format: " + file + ": wanted ")) << finished.out;
    EXPECT_NE(finished.out.find(found), std::string::npos) << finished.out;
    EXPECT_EQ(finished.err, "");
    EXPECT_EQ(json::parse(RunHostrun(CheckArguments(file, {"--json"})).out)["tally"]["failed"], 1);
  }
}

TEST(Check, GivesALinePerCheckAndATallyAsTheLastLine) {
  const std::vector<std::string> lines = Lines(CheckSound().out);
  ASSERT_EQ(lines.size(), kSoundChecks + 1);
  EXPECT_EQ(lines.front(), "passed    file/format");
  EXPECT_EQ(lines[kSoundChecks - 1], "passed    2015.0/call/Sound.Make as Sound");
  EXPECT_EQ(lines.back(), Tally(kSoundChecks));
}

TEST(Check, LeavesOutWhatPassedWhenAsked) {
  const std::vector<std::string> lines = Lines(CheckBroken("NotNeutral", {"--only-failed"}).out);
  ASSERT_EQ(lines.size(), 3U);
  EXPECT_EQ(lines[0], "failed    2015.0/call/Sound.Number");
  EXPECT_EQ(lines[2], Tally(kSoundChecks, 1));
}

TEST(Check, TakesOnlyTheChecksThatAFilterNames) {
  const Finished finished = CheckBroken("NotNeutral", {"--filter", "/call/Sound.R"});
  EXPECT_EQ(finished.status, 0);
  EXPECT_EQ(finished.out,
            "passed    2015.0/call/Sound.Read(byref out as double)\n1 check, 1 passed, 0 failed\n");
}

TEST(Check, RefusesAFilterThatNamesNoCheck) {
  const Finished finished = CheckSound({"--filter", "nonsense"});
  EXPECT_EQ(finished.status, 2);
  EXPECT_EQ(finished.out, "");
  EXPECT_NE(finished.err.find("found no check with nonsense"), std::string::npos);
}

TEST(Check, ReadsTheShorterRecordsOfAnOldHost) {
  const Finished finished = RunHostrun(
      {"check", "--platform", "none", "--host-version", "2011.0", "--only-failed", BuiltFile(kSound)});
  EXPECT_EQ(finished.out, Tally(kSoundChecks) + "\n");
}

}  // namespace
}  // namespace command_tests
