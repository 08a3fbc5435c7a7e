// tests/hostrun/unit/output_file_test.cpp - files that appear under their name once all of them is written.
#include "hostrun/commands/output_file.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <vector>

#include "tests/hostrun/unit/temporary_folder.h"

namespace hostrun {
namespace {

namespace fs = std::filesystem;

// A folder of its own for each test.
class OutputFiles : public testing::Test {
 protected:
  std::string Path(const char* name) const { return folder_.Path(name); }
  std::vector<std::string> Found() const {
    std::vector<std::string> names;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder_.path())) {
      names.push_back(entry.path().filename().native());
    }
    return names;
  }
  static std::string Read(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
  }

 private:
  TemporaryFolder folder_;
};

using Names = std::vector<std::string>;

TEST_F(OutputFiles, AreThereOnceTheyAreFinished) {
  OutputFile file(Path("new"));
  file.Write("all ");
  file.Write("of it");
  EXPECT_FALSE(fs::exists(Path("new")));
  file.Finish();
  EXPECT_EQ(Read(Path("new")), "all of it");
  EXPECT_EQ(Found(), Names{"new"});
}

TEST_F(OutputFiles, LeaveNothingWhereTheyAreNotFinished) {
  { OutputFile(Path("new")).Write("half"); }
  EXPECT_EQ(Found(), Names{});
}

TEST_F(OutputFiles, LeaveWhatWasThereWhereTheyAreNotFinished) {
  WriteFile(Path("old"), "before");
  { OutputFile(Path("old")).Write("half"); }
  EXPECT_EQ(Read(Path("old")), "before");
  EXPECT_EQ(Found(), Names{"old"});
}

TEST_F(OutputFiles, KeepTheModeOfWhatTheyReplaceAndElseHaveThatOfANewFile) {
  const auto mode = [](const std::string& path) {
    return static_cast<unsigned>(fs::status(path).permissions());
  };
  const mode_t mask = umask(027);
  WriteFile(Path("file"), "new");
  EXPECT_EQ(mode(Path("file")), 0640U);
  EXPECT_EQ(umask(mask), 027U);
  chmod(Path("file").c_str(), 0751);
  WriteFile(Path("file"), "again");
  EXPECT_EQ(mode(Path("file")), 0751U);
}

TEST_F(OutputFiles, ReplaceWhatALinkLeadsTo) {
  WriteFile(Path("real"), "before");
  fs::create_symlink("real", Path("link"));
  WriteFile(Path("link"), "after");
  EXPECT_TRUE(fs::is_symlink(Path("link")));
  EXPECT_EQ(Read(Path("real")), "after");
}

TEST_F(OutputFiles, MayBeLongerThanWhatIsCollectedBeforeItIsWritten) {
  const std::string half(40'000, 'a');
  const std::string whole(200'000, 'b');
  OutputFile file(Path("long"));
  for (const std::string& part : {half, half, whole, half}) file.Write(part);
  file.Finish();
  EXPECT_TRUE(Read(Path("long")) == half + half + whole + half);
}

TEST_F(OutputFiles, HaveTheirNameWithAllThatWasWrittenAfterACrash) {
  {
    OutputFile file(Path("rescued"));
    file.Write("so far");
    file.Rescue();
    EXPECT_EQ(Read(Path("rescued")), "so far");
  }
  EXPECT_EQ(Read(Path("rescued")), "so far");
  EXPECT_EQ(Found(), Names{"rescued"});
}

TEST_F(OutputFiles, AreNotWrittenAgainByARescueOnceTheyAreFinished) {
  OutputFile file(Path("finished"));
  file.Write("all");
  file.Finish();
  file.Rescue();
  EXPECT_EQ(Read(Path("finished")), "all");
}

TEST_F(OutputFiles, RefuseAFolderAndWhatIsInNone) {
  const auto refusal = [](const std::string& path) -> std::string {
    try {
      OutputFile file(path);
    } catch (const std::runtime_error& error) {
      return error.what();
    }
    return "none";
  };
  fs::create_directory(Path("folder"));
  EXPECT_EQ(refusal(Path("folder")), Path("folder") + ": wanted a file to write to, found: Is a directory");
  EXPECT_EQ(refusal(Path("none/file")),
            Path("none/file") + ": wanted a file to write to, found: No such file or directory");
  EXPECT_EQ(Found(), Names{"folder"});
}

TEST_F(OutputFiles, TellWhyNotEverythingWasWritten) {
  OutputFile file("/dev/full");
  file.Write("text");
  try {
    file.Finish();
    FAIL() << "wanted a refusal";
  } catch (const std::runtime_error& error) {
    EXPECT_STREQ(error.what(), "/dev/full: wanted a file to write to, found: No space left on device");
  }
}

// A pipe that takes a part at a time, and whoever empties it interrupts the one who writes.
TEST_F(OutputFiles, AreWrittenWholeThoughSignalsInterrupt) {
  static int pipeEnd = -1;
  static std::array<char, 300'000> received;
  static std::size_t count = 0;
  ASSERT_EQ(mkfifo(Path("pipe").c_str(), 0600), 0);
  pipeEnd = open(Path("pipe").c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  ASSERT_GE(pipeEnd, 0);
  struct sigaction action {};
  action.sa_handler = [](int) {
    const ssize_t got = read(pipeEnd, received.data() + count, received.size() - count);
    if (got > 0) count += static_cast<std::size_t>(got);
  };
  struct sigaction before {};
  sigaction(SIGALRM, &action, &before);
  const itimerval often = {{0, 2'000}, {0, 2'000}};
  setitimer(ITIMER_REAL, &often, nullptr);
  std::string text;
  for (int i = 0; text.size() < 250'000; ++i) text += std::to_string(i) + " ";
  WriteFile(Path("pipe"), text);
  const itimerval never = {{0, 0}, {0, 0}};
  setitimer(ITIMER_REAL, &never, nullptr);
  action.sa_handler(SIGALRM);
  sigaction(SIGALRM, &before, nullptr);
  close(pipeEnd);
  EXPECT_TRUE(std::string_view(received.data(), count) == text);
  EXPECT_EQ(Found(), Names{"pipe"});
}

}  // namespace
}  // namespace hostrun
