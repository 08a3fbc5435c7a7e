// tests/libcocoa/loading_test.cpp - the library loaded by a program that links nothing of it, in bare
// surroundings.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "tests/libcocoa/child_process.h"

namespace {

const std::string kUsed = "exception: NSRangeException\ngreen: 0.5\nsystem colour: yes\npasteboard: yes\n";

void ExpectSilentSuccess(const Outcome& outcome, const std::string& output = kUsed) {
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.output, output);
  EXPECT_EQ(outcome.errors, "");
}

// Whether users who are neither the owner nor of its group get to the file.
bool OthersMayReach(const std::filesystem::path& file) {
  for (std::filesystem::path folder = file.parent_path(); folder != folder.root_path();
       folder = folder.parent_path()) {
    const auto rights = std::filesystem::status(folder).permissions();
    if ((rights & std::filesystem::perms::others_exec) == std::filesystem::perms::none) return false;
  }
  return true;
}

// A folder of its own that goes with the test.
class Loading : public testing::Test {
 protected:
  Loading() {
    std::string pattern = (std::filesystem::temp_directory_path() / "cocoa-load-XXXXXX").string();
    folder_ = ::mkdtemp(pattern.data());
  }
  ~Loading() override { std::filesystem::remove_all(folder_); }
  std::filesystem::path folder_;
};

TEST_F(Loading, NeedsNoEnvironment) {
  ExpectSilentSuccess(RunProgram({PROBE, LIBRARY}, {}));
}

TEST_F(Loading, GivesTheBundleEverySymbol) {
  ExpectSilentSuccess(RunProgram({PROBE, LIBRARY, BUNDLE}, {}), kUsed + "bundle: loaded\n");
}

TEST_F(Loading, NeedsNoHome) {
  ExpectSilentSuccess(RunProgram({PROBE, LIBRARY}, {"HOME=/nonexistent"}));
  ExpectSilentSuccess(RunProgram({PROBE, LIBRARY}, {"HOME="}));
  ExpectSilentSuccess(RunProgram({PROBE, LIBRARY}, {"HOME=relative"}));
}

TEST_F(Loading, NeedsNoUserWithAName) {
  if (::getuid() != 0) GTEST_SKIP() << "only root can be another user";
  if (!OthersMayReach(LIBRARY)) GTEST_SKIP() << "another user can't get to where this tree lies";
  ExpectSilentSuccess(RunProgram({PROBE, LIBRARY}, {}, 12345));
}

TEST_F(Loading, WritesNothingIntoAHome) {
  ExpectSilentSuccess(RunProgram({PROBE, LIBRARY}, {"HOME=" + folder_.string()}));
  EXPECT_TRUE(std::filesystem::is_empty(folder_));
}

TEST_F(Loading, IgnoresADisplayThatDoesNotAnswer) {
  ExpectSilentSuccess(RunProgram({PROBE, LIBRARY}, {"DISPLAY=:99"}));
}

TEST_F(Loading, IgnoresUnknownLocalesAndZones) {
  ExpectSilentSuccess(RunProgram({PROBE, LIBRARY}, {"LANG=xx_YY.foo", "LC_ALL=nowhere", "TZ=No/Where"}));
}

// GNUstep takes the temporary folder from TEMP, and says where that is none.
TEST_F(Loading, NeedsNoTemporaryFolder) {
  const Outcome outcome = RunProgram({PROBE, LIBRARY}, {"TEMP=/nonexistent"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.output, kUsed);
  EXPECT_NE(outcome.errors.find("Temporary directory (/nonexistent) does not exist"), std::string::npos)
      << outcome.errors;
}

TEST_F(Loading, NamesANeededLibraryThatIsMissingInOneLine) {
  // A copy of the library that asks for a file that is nowhere.
  std::ifstream original(LIBRARY, std::ios::binary);
  std::string bytes((std::istreambuf_iterator<char>(original)), std::istreambuf_iterator<char>());
  const std::size_t name = bytes.find("liblcms2.so.2");
  ASSERT_NE(name, std::string::npos);
  bytes.replace(name, 13, "liblcms2.so.X");
  const std::string copy = (folder_ / "libcocoa.so").string();
  std::ofstream(copy, std::ios::binary) << bytes;
  // The others are found beside it.
  const std::filesystem::path beside = std::filesystem::path(LIBRARY).parent_path() / "sysroot";
  std::filesystem::create_directory_symlink(std::filesystem::canonical(beside), folder_ / "sysroot");

  const Outcome outcome = RunProgram({PROBE, copy}, {});
  EXPECT_NE(outcome.status, 0);
  EXPECT_EQ(outcome.output,
            "not loaded: liblcms2.so.X: cannot open shared object file: No such file or directory\n");
  EXPECT_EQ(outcome.errors, "");
}

TEST_F(Loading, SaysSoWhenTheRuntimeWasThereFirst) {
  const Outcome outcome = RunProgram({PROBE, LIBRARY}, {"LD_PRELOAD=libobjc.so.4"});
  EXPECT_NE(outcome.errors.find("libcocoa: wanted to be loaded before the Objective-C runtime"),
            std::string::npos)
      << outcome.errors;
  EXPECT_EQ(std::count(outcome.errors.begin(),
                       outcome.errors.begin() + static_cast<std::ptrdiff_t>(std::min(
                                                    outcome.errors.size(), outcome.errors.find('\n') + 1)),
                       '\n'),
            1);
}

// ---- pasteboards between processes

class PasteboardServer : public Loading {
 protected:
  // Ports are files of the temporary folder, which GNUstep asks this variable for: an own one keeps these
  // processes to themselves.
  std::vector<std::string> environment_{"TEMP=" + folder_.string(), "HOME=" + folder_.string()};
};

TEST_F(PasteboardServer, ThatRunsIsUsed) {
  const Background server({PEER, "serve"}, environment_);
  ASSERT_EQ(server.FirstLine(), "ready");
  EXPECT_EQ(RunProgram({PEER, "write", "from one to another"}, environment_).status, 0);
  EXPECT_EQ(RunProgram({PEER, "read"}, environment_).output, "from one to another\n");
}

TEST_F(PasteboardServer, ThatDoesNotRunIsNotStarted) {
  const Outcome outcome = RunProgram({PEER, "write", "for nobody"}, environment_);
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.errors, "");
  EXPECT_EQ(RunProgram({PEER, "read"}, environment_).output, "(nothing)\n") << "each process has its own";
}

}  // namespace
