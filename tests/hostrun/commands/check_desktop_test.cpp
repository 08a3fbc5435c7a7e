// tests/hostrun/commands/check_desktop_test.cpp - "hostrun check" on files of desktop bundles, each with one
// fault.
#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "tests/hostrun/commands/run_hostrun.h"
#include "tests/hostrun/macho/test_file.h"

namespace command_tests {
namespace {

using namespace hostrun::macho;
using nlohmann::json;

// A desktop bundle without a fault, as far as its file goes: what it exports is no entry point to call.
TestFile SoundFile() {
  TestFile file;
  file.binds = Codes({0x11, 0x40}) + Text("_malloc") + Codes({0x51, 0x71, 4, 0x90, 0});
  file.exports = Codes({0, 1}) + Text("_REALPluginMain") + Codes({19, 3, 0, 0x80, 0x10, 0});
  file.moreCommands =
      Raw(OldestSystemCommand{{static_cast<std::uint32_t>(Command::OldestSystem), 16}, 0x000A0600, 0});
  file.moreCount = 1;
  return file;
}

// "name: reason" of each check of the file that did not pass.
std::vector<std::string> FaultsOf(const TestFile& file) {
  const std::vector<std::uint8_t> bytes = file.Bytes();
  const std::string path = TemporaryFile("Desktop", {bytes.begin(), bytes.end()});
  const json answer = json::parse(RunHostrun({"check", "--platform", "none", "--host-version", "2015.0",
                                              "--filter", "file/", "--json", path})
                                      .out);
  std::vector<std::string> faults;
  std::size_t made = 0;
  for (const json& check : answer["checks"]) {
    const std::string name = check["check"];
    if (!name.starts_with("file/")) continue;  // some of the faults keep it from loading too
    ++made;
    if (check["status"] != "passed") faults.push_back(name + ": " + check["reason"].get<std::string>());
  }
  EXPECT_EQ(made, kFileChecks);
  return faults;
}

TEST(Check, PassesADesktopFileThatKeepsTheContract) {
  EXPECT_EQ(FaultsOf(SoundFile()), std::vector<std::string>{});
}

TEST(Check, RefusesADesktopFileThatIsTooLargeToBeRead) {
  const std::vector<std::uint8_t> bytes = SoundFile().Bytes();
  const std::string path = TemporaryFile("Desktop", {bytes.begin(), bytes.end()});
  constexpr std::uintmax_t kSize = 3ULL << 30U;  // with a hole: it takes no room on the disk
  std::filesystem::resize_file(path, kSize);
  const Finished output = RunHostrun({"check", "--platform", "none", "--filter", "file/format", path});
  std::filesystem::remove(path);
  EXPECT_EQ(output.status, 1);
  EXPECT_NE(output.out.find("failed    file/format: " + path +
                            ": wanted a bundle of at most 67108864 bytes, found 3221225472\n"),
            std::string::npos)
      << output.out;
}

TEST(Use, ADesktopBundleIsEnteredWhereItMayBeExecutedOnly) {
  TestFile file = SoundFile();
  file.segments[0].protection = kRead;
  const std::vector<std::uint8_t> bytes = file.Bytes();
  const std::string path = TemporaryFile("Desktop", {bytes.begin(), bytes.end()});
  const Finished output = RunHostrun({"--platform", "none", "--bundle", path, "--execute", "Print 1"});
  EXPECT_EQ(output.status, 2);
  EXPECT_EQ(output.err,
            path +
                ": wanted an exported function REALPluginMain, found it in __TEXT, which can't be "
                "executed\n");
}

TEST(Use, ADesktopBundleWithoutItsPlatformIsToldFromOneThatWantsMoreThanThePlatform) {
  TestFile file = SoundFile();
  const auto found = [&file](const char* symbol) {
    file.binds = Codes({0x11, 0x40}) + Text(symbol) + Codes({0x51, 0x71, 4, 0x90, 0});
    const std::vector<std::uint8_t> bytes = file.Bytes();
    const std::string path = TemporaryFile("Desktop", {bytes.begin(), bytes.end()});
    const Finished output = RunHostrun({"--platform", "none", "--bundle", path, "--execute", "Print 1"});
    EXPECT_EQ(output.status, 2);
    return output.err.substr(path.size());
  };
  EXPECT_EQ(
      found("_objc_msgSend"),
      ": wanted the platform's symbol _objc_msgSend in this process, found none; load a platform library "
      "before the bundle\n");
  EXPECT_EQ(found("_printf"),
            ": wanted symbols of the platform and the language's run-time only, found _printf\n");
}

struct DesktopFault {
  const char* name;
  void (*spoil)(TestFile& file);
  const char* says;
};

void PrintTo(const DesktopFault& fault, std::ostream* out) {
  *out << fault.name;
}

class CheckOfDesktopFile : public testing::TestWithParam<DesktopFault> {};

TEST_P(CheckOfDesktopFile, FailsThatAndNothingElse) {
  TestFile file = SoundFile();
  GetParam().spoil(file);
  EXPECT_EQ(FaultsOf(file), std::vector<std::string>{GetParam().says});
}

const DesktopFault kDesktopFaults[] = {
    {"EntryPoint", [](TestFile& f) { f.exports.clear(); },
     "file/entry-point: wanted an exported function _REALPluginMain, found none; declare it extern \"C\" "
     "with "
     "default visibility"},
    {"Exports",
     [](TestFile& f) {
       f.exports = Codes({0, 2}) + Text("_REALPluginMain") + Codes({23}) + Text("_x") + Codes({23 + 5}) +
                   Codes({3, 0, 0x80, 0x10, 0}) + Codes({3, 0, 0x80, 0x10, 0});
     },
     "file/exports: wanted no exported symbol but the entry point, found _x; compile with "
     "-fvisibility=hidden"},
    {"UndefinedSymbols",
     [](TestFile& f) {
       f.binds = Codes({0x11, 0x40}) + Text("_printf") + Codes({0x71, 4, 0x90});
     },
     "file/undefined-symbols: wanted undefined symbols of the language's run-time and the platform only, "
     "found _printf of /usr/lib/libSystem.B.dylib"},
    {"SymbolOfAnotherLibrary",
     [](TestFile& f) {
       f.binds = Codes({0x11, 0x40}) + Text("_CFRelease") + Codes({0x71, 4, 0x90});
     },
     "file/undefined-symbols: wanted undefined symbols of the language's run-time and the platform only, "
     "found _CFRelease of /usr/lib/libSystem.B.dylib"},
    {"SymbolOfAnyLibrary",
     [](TestFile& f) {
       f.binds = Codes({0x3E, 0x40}) + Text("_malloc") + Codes({0x71, 4, 0x90});
     },
     "file/undefined-symbols: wanted undefined symbols of the language's run-time and the platform only, "
     "found _malloc of no library"},
    {"Libraries", [](TestFile& f) { f.libraries.emplace_back("@loader_path/libother.dylib"); },
     "file/needed-libraries: wanted libraries of the platform only, found @loader_path/libother.dylib"},
    {"TextRelocations",
     [](TestFile& f) {
       f.rebases = Codes({0x11, 0x20, 0x80, 0x10, 0x51, 0});
     },
     "file/text-relocations: wanted position-independent code, found an address to fill in at 0x800, in "
     "__TEXT; compile with -fPIC"},
    {"Protections", [](TestFile& f) { f.segments[1].protection |= kExecute; },
     "file/protections: wanted __DATA as rw-, found rwx"},
    {"OldestSystem",
     [](TestFile& f) {
       f.moreCommands.clear();
       f.moreCount = 0;
     },
     "file/oldest-system: wanted an oldest system from 10.5 to 10.14, which load 32-bit bundles, found none"},
    {"NewSystem",
     [](TestFile& f) {
       f.moreCommands =
           Raw(OldestSystemCommand{{static_cast<std::uint32_t>(Command::OldestSystem), 16}, 0x000A0F00, 0});
     },
     "file/oldest-system: wanted an oldest system from 10.5 to 10.14, which load 32-bit bundles, found "
     "10.15"},
};

INSTANTIATE_TEST_SUITE_P(Check, CheckOfDesktopFile, testing::ValuesIn(kDesktopFaults),
                         [](const auto& one) { return one.param.name; });

}  // namespace
}  // namespace command_tests
