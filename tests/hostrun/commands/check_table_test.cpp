// tests/hostrun/commands/check_table_test.cpp - the table of checks in docs/hostrun.md is the one that
// "hostrun check" works by.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <fstream>
#include <set>

#include "hostrun/commands/check_parts.h"
#include "tests/hostrun/commands/run_hostrun.h"
#include "tests/hostrun/macho/test_file.h"

namespace command_tests {
namespace {

using testing::ElementsAreArray;

// The rows of the first table under that heading, without the table's own two lines.
std::vector<std::string> TableUnder(const std::string& heading) {
  std::ifstream document(SOURCE_FOLDER "/docs/hostrun.md");
  std::vector<std::string> rows;
  bool under = false;
  for (std::string line; std::getline(document, line);) {
    if (line.starts_with("## ")) under = line == "## " + heading;
    if (under && line.starts_with("|")) rows.push_back(line);
    if (rows.size() > 1 && !line.starts_with("|")) break;
  }
  return rows.size() < 2 ? rows : std::vector<std::string>(rows.begin() + 2, rows.end());
}

TEST(Check, HasEachKindOfCheckInTheDocuments) {
  std::vector<std::string> rows;
  for (const hostrun::CheckKind& kind : hostrun::kCheckKinds)
    rows.push_back("| `" + std::string(kind.name) + "` | " + std::string(kind.wants) + " |");
  EXPECT_THAT(TableUnder("check"), ElementsAreArray(rows));
}

TEST(Check, MakesAtLeastOneCheckOfEachKind) {
  std::set<std::string> made;
  const auto run = [&made](const std::string& fault, const std::string& bundle) {
    const auto answer = nlohmann::json::parse(RunHostrun({"check", "--platform", "none", "--host-version",
                                                          "2015.0", "--time-limit", "1", "--json", bundle},
                                                         {}, {"BROKEN_BUNDLE_FAULT=" + fault})
                                                  .out);
    for (const auto& check : answer["checks"]) {
      // As the table has it: "2015.0/records/Sound" is one of VERSION/records/CLASS.
      std::string name = check["check"];
      const auto replace = [&name](std::string_view text, std::string_view by) {
        const std::size_t at = name.find(text);
        if (at != std::string::npos) name.replace(at, by == "CLASS.MEMBER" ? name.npos : text.size(), by);
      };
      replace("2015.0", "VERSION");
      replace("Sound.", "CLASS.MEMBER");
      replace("Sound", "CLASS");
      made.insert(name);
    }
  };
  for (const char* const fault : {"None", "CrashOnEntry", "CrashLater"})
    run(fault, BuiltFile("broken/Any.so"));
  const std::vector<std::uint8_t> desktop = TestFile().Bytes();
  run("None", TemporaryFile("Desktop", {desktop.begin(), desktop.end()}));
  std::set<std::string> kinds;
  for (const hostrun::CheckKind& kind : hostrun::kCheckKinds) kinds.emplace(kind.name);
  EXPECT_EQ(made, kinds);
}

}  // namespace
}  // namespace command_tests
