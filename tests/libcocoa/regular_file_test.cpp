// tests/libcocoa/regular_file_test.cpp - files that are asked what they are before they are touched.
#include <dlfcn.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <malloc.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <deque>
#include <filesystem>
#include <fstream>
#include <functional>
#include <optional>
#include <string>
#include <vector>

extern "C" {
#include "libcocoa/files/regular_file.h"
}

namespace {

// How the next reads of this thread end: with so many bytes at most, or with an error, which is negative.
// Those after them end as the system has it.
struct Reads {
  std::deque<ssize_t> ends;
  std::vector<std::size_t> wanted{};  // bytes by each, in order
};
thread_local Reads* reads = nullptr;

// What happens to a file just before it is opened, and how it is opened then.
struct Opening {
  std::function<void()> before;
  int flags = 0;
};
thread_local Opening* opening = nullptr;

}  // namespace

// Take the place of the C library's own, which they call.
extern "C" ssize_t read(int file, void* bytes, std::size_t size) {
  static const auto own = reinterpret_cast<decltype(&read)>(dlsym(RTLD_NEXT, "read"));
  if (reads == nullptr) return own(file, bytes, size);
  reads->wanted.push_back(size);
  if (reads->ends.empty()) return own(file, bytes, size);
  const ssize_t end = reads->ends.front();
  reads->ends.pop_front();
  if (end >= 0) return end == 0 ? 0 : own(file, bytes, std::min(size, static_cast<std::size_t>(end)));
  errno = static_cast<int>(-end);
  return -1;
}
extern "C" int open64(const char* path, int flags, ...) {
  static const auto own = reinterpret_cast<int (*)(const char*, int, ...)>(dlsym(RTLD_NEXT, "open64"));
  va_list more;
  va_start(more, flags);
  const auto mode = (flags & O_CREAT) != 0 ? va_arg(more, mode_t) : mode_t{};
  va_end(more);
  if (opening != nullptr) {
    opening->flags = flags;
    opening->before();
  }
  return own(path, flags, mode);
}

namespace {

namespace fs = std::filesystem;

class RegularFile : public testing::Test {
 protected:
  RegularFile() {
    std::string made = (fs::canonical(fs::temp_directory_path()) / "regular-file-XXXXXX").string();
    folder_ = mkdtemp(made.data());
  }
  ~RegularFile() override {
    std::error_code ignored;
    fs::remove_all(folder_, ignored);
  }

  std::string Path(const std::string& name) const { return (folder_ / name).string(); }
  std::string Written(const std::string& name, const std::string& contents) const {
    std::ofstream(Path(name), std::ios::binary) << contents;
    return Path(name);
  }
  std::string Folder(const std::string& name) const {
    fs::create_directories(Path(name));
    return Path(name);
  }
  std::string Link(const std::string& name, const std::string& target) const {
    fs::create_symlink(target, Path(name));
    return Path(name);
  }

 private:
  fs::path folder_;
};

std::optional<std::string> ContentsOf(const std::string& path, std::size_t largest = 100) {
  std::size_t size = 0;
  void* const bytes = QVXReadRegularFile(path.c_str(), largest, &size);
  if (bytes == nullptr) return std::nullopt;
  std::string contents(static_cast<const char*>(bytes), size);
  std::free(bytes);
  return contents;
}

TEST_F(RegularFile, IsReadWholeUpToTheLargestSize) {
  const std::string file = Written("file", "con");
  EXPECT_EQ(ContentsOf(file), "con");
  EXPECT_EQ(ContentsOf(file, 3), "con");
  EXPECT_EQ(ContentsOf(file, 2), std::nullopt);
  EXPECT_EQ(ContentsOf(Link("link", "file")), "con");
  EXPECT_EQ(ContentsOf(Written("empty", "")), "");
}

TEST_F(RegularFile, IsReadAsFarAsItGoesWhereItIsShorterThanItsSize) {
  const std::string file = "/sys/kernel/uevent_seqnum";  // a page, by its size
  if (access(file.c_str(), R_OK) != 0) GTEST_SKIP() << "wanted " << file << ", found none";
  const std::optional<std::string> contents = ContentsOf(file, 1U << 20U);
  ASSERT_TRUE(contents);
  EXPECT_TRUE(contents->ends_with('\n'));
  EXPECT_LT(contents->size(), 100U);
}

std::optional<std::string> ContentsByReads(const std::string& path, Reads& by) {
  reads = &by;
  std::optional<std::string> contents = ContentsOf(path);
  reads = nullptr;
  return contents;
}

using Sizes = std::vector<std::size_t>;

TEST_F(RegularFile, IsReadOnWhereItComesInPieces) {
  Reads pieces{{3, 2}};
  EXPECT_EQ(ContentsByReads(Written("file", "0123456789"), pieces), "0123456789");
  EXPECT_EQ(pieces.wanted, (Sizes{10, 7, 5}));
}

TEST_F(RegularFile, IsReadOnAfterAnInterruption) {
  Reads interrupted{{-EINTR, 4, -EINTR}};
  EXPECT_EQ(ContentsByReads(Written("file", "0123456789"), interrupted), "0123456789");
  EXPECT_EQ(interrupted.wanted, (Sizes{10, 10, 6, 6}));
}

TEST_F(RegularFile, IsNoneWhereItCanNotBeReadToTheEnd) {
  Reads failing{{4, -EIO}};
  EXPECT_EQ(ContentsByReads(Written("file", "0123456789"), failing), std::nullopt);
  EXPECT_EQ(failing.wanted, (Sizes{10, 6}));
}

TEST_F(RegularFile, EndsWhereItHasBecomeShorter) {
  Reads shorter{{-EINTR, 4, 0}};  // the interruption before is over
  EXPECT_EQ(ContentsByReads(Written("file", "0123456789"), shorter), "0123");
  EXPECT_EQ(shorter.wanted, (Sizes{10, 10, 6}));
}

TEST_F(RegularFile, IsNoneOfAnythingElse) {
  ASSERT_EQ(mkfifo(Path("pipe").c_str(), 0600), 0);
  EXPECT_EQ(ContentsOf(Path("pipe")), std::nullopt);
  EXPECT_EQ(ContentsOf(Folder("folder"), 1U << 20U), std::nullopt);
  EXPECT_EQ(ContentsOf("/dev/null"), std::nullopt);
  EXPECT_EQ(ContentsOf(Path("nothing")), std::nullopt);
}

// Opening a pipe would let the program go on that waits to write into it, and then end it.
TEST_F(RegularFile, IsAskedForBeforeAnythingIsOpened) {
  const std::string pipe = Path("pipe");
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  const int watch = inotify_init1(IN_NONBLOCK);
  ASSERT_GE(inotify_add_watch(watch, pipe.c_str(), IN_OPEN), 0);
  EXPECT_EQ(ContentsOf(pipe), std::nullopt);
  inotify_event event;
  EXPECT_EQ(read(watch, &event, sizeof event), -1) << "it was opened";
  close(watch);
}

TEST_F(RegularFile, IsAskedForAgainOnceItIsOpen) {
  const std::string file = Written("file", "contents");
  int other = -1;  // holds the pipe open, so that nobody could wait for it
  Opening byAnother{[&] {
    opening = nullptr;
    fs::remove(file);
    ASSERT_EQ(mkfifo(file.c_str(), 0600), 0);
    other = open(file.c_str(), O_RDWR);
  }};
  opening = &byAnother;
  EXPECT_EQ(ContentsOf(file), std::nullopt);
  EXPECT_GE(other, 0) << "it was not opened";
  close(other);
  EXPECT_EQ(byAnother.flags, O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
}

std::size_t MemoryInUse() {
  const struct mallinfo2 use = ::mallinfo2();
  return use.uordblks + use.hblkhd;
}

int NextFile() {
  const int next = dup(STDIN_FILENO);
  close(next);
  return next;
}

// So many uses that the C library has no room left over from others.
void ExpectNothingLeftBehind(const std::function<void()>& use) {
  constexpr int kUses = 100;
  constexpr std::size_t kSmallest = 16;  // block of memory, in bytes
  use();
  const std::size_t memory = MemoryInUse();
  const int file = NextFile();
  for (int i = 0; i < kUses; ++i) use();
  EXPECT_LT(MemoryInUse(), memory + kUses * kSmallest / 2);
  EXPECT_EQ(NextFile(), file);
}

TEST_F(RegularFile, LeavesNothingBehindOnceItIsRead) {
  const std::string file = Written("file", "0123456789");
  ExpectNothingLeftBehind([&] { ContentsOf(file); });
  ExpectNothingLeftBehind([&] {
    Reads failing{{4, -EIO}};
    ContentsByReads(file, failing);
  });
}

TEST_F(RegularFile, LeavesNothingBehindOnceItsPlaceIsKnown) {
  const std::string folder = Folder("folder");
  Link("folder/out", "..");
  ExpectNothingLeftBehind([&] { QVXIsReallyInFolder((folder + "/out/x").c_str(), folder.c_str()); });
  ExpectNothingLeftBehind([&] { QVXLeavesFolderByLink((folder + "/out/x").c_str(), folder.c_str()); });
}

TEST_F(RegularFile, IsOneWhateverItsSizeAndTime) {
  const std::string file = Written("file", "contents");
  ASSERT_EQ(std::system(("touch -d 2100-01-01 " + file).c_str()), 0);
  EXPECT_EQ(ContentsOf(file), "contents");
  const std::string large = Written("large", "");
  ASSERT_EQ(truncate64(large.c_str(), 3LL << 30), 0);
  EXPECT_TRUE(QVXIsPlaceForFile(file.c_str()));
  EXPECT_TRUE(QVXIsPlaceForFile(large.c_str()));
}

TEST_F(RegularFile, IsNoFolder) {
  EXPECT_TRUE(QVXIsFolder(Folder("folder").c_str()));
  EXPECT_TRUE(QVXIsFolder(Link("to-folder", "folder").c_str()));
  EXPECT_FALSE(QVXIsFolder(Written("file", "").c_str()));
  EXPECT_FALSE(QVXIsFolder(Path("nothing").c_str()));
}

TEST_F(RegularFile, MayBePutWhereNothingOrARegularFileIs) {
  Written("file", "");
  EXPECT_TRUE(QVXIsPlaceForFile(Path("file").c_str()));
  EXPECT_TRUE(QVXIsPlaceForFile(Path("nothing").c_str()));
  EXPECT_TRUE(QVXIsPlaceForFile(Link("to-file", "file").c_str()));
  EXPECT_TRUE(QVXIsPlaceForFile(Link("to-nothing", "nothing").c_str()));
  EXPECT_FALSE(QVXIsPlaceForFile(Folder("folder").c_str()));
  EXPECT_FALSE(QVXIsPlaceForFile(Link("to-folder", "folder").c_str()));
  EXPECT_FALSE(QVXIsPlaceForFile(Path("file/below").c_str()));
}

TEST_F(RegularFile, IsInAFolderOrBelowIt) {
  const std::string folder = Folder("folder");
  Folder("folder/inner");
  const auto inside = [&](const std::string& path) {
    return QVXIsReallyInFolder(path.c_str(), folder.c_str());
  };
  EXPECT_TRUE(inside(folder + "/file"));
  EXPECT_TRUE(inside(folder + "/inner/file"));
  EXPECT_TRUE(inside(folder + "/inner/../file"));
  EXPECT_FALSE(inside(folder + "/../file"));
  EXPECT_FALSE(inside(folder));
  EXPECT_FALSE(inside(Folder("folder2") + "/file")) << "its name only begins like the folder's";
  EXPECT_FALSE(inside(folder + "/nothing/file"));
  EXPECT_FALSE(QVXIsReallyInFolder((folder + "/file").c_str(), Path("nothing").c_str()));
}

TEST_F(RegularFile, IsWhereLinksLead) {
  const std::string folder = Folder("folder");
  Folder("elsewhere");
  const std::string in = Link("in", "folder");
  const std::string out = Link("folder/out", "../elsewhere");
  EXPECT_TRUE(QVXIsReallyInFolder((in + "/file").c_str(), folder.c_str()));
  EXPECT_TRUE(QVXIsReallyInFolder((folder + "/file").c_str(), in.c_str()));
  EXPECT_FALSE(QVXIsReallyInFolder((out + "/file").c_str(), folder.c_str()));
  EXPECT_TRUE(QVXIsReallyInFolder(out.c_str(), folder.c_str())) << "the last link is the file itself";
}

TEST_F(RegularFile, LeavesAFolderByALinkHoweverThePathIsSpelled) {
  const std::string folder = Folder("folder");
  Folder("folder/inner");
  Folder("elsewhere/deep");
  Link("folder/out", "../elsewhere");
  Link("folder/around", "inner");
  Link("folder/up", "..");
  Link("in", "folder");
  const auto leaves = [&](const std::string& path) {
    return QVXLeavesFolderByLink(path.c_str(), folder.c_str());
  };
  EXPECT_TRUE(leaves(folder + "/out/file"));
  EXPECT_TRUE(leaves(folder + "//out/./file"));
  EXPECT_TRUE(leaves(folder + "/up/file"));
  EXPECT_TRUE(leaves(folder + "/inner/../out/deep/file"));
  EXPECT_TRUE(leaves(folder + "/out/../file"));
  EXPECT_TRUE(leaves(Path("in/out/file")));
  EXPECT_TRUE(leaves(Path("elsewhere/../folder/out/file")));
  EXPECT_FALSE(leaves(folder + "/file"));
  EXPECT_FALSE(leaves(folder + "/around/file")) << "the link stays in the folder";
  EXPECT_FALSE(leaves(folder + "/out")) << "the last link is the file itself";
  EXPECT_FALSE(leaves(folder + "/../elsewhere/file")) << "no link leads there";
  EXPECT_FALSE(leaves(Path("elsewhere/file")));
  EXPECT_FALSE(QVXLeavesFolderByLink((folder + "/file").c_str(), Path("nothing").c_str()));
  const fs::path before = fs::current_path();
  fs::current_path(folder);
  EXPECT_TRUE(leaves("out/file"));
  EXPECT_FALSE(leaves("inner/file"));
  EXPECT_FALSE(leaves("file"));
  EXPECT_FALSE(leaves(folder + "/file")) << "the path begins at the root";
  fs::current_path(Path(""));
  EXPECT_FALSE(leaves("elsewhere/file"));
  fs::current_path(before);
}

TEST_F(RegularFile, IsInTheCurrentFolderWithoutASlash) {
  const fs::path before = fs::current_path();
  fs::current_path(Folder("folder"));
  EXPECT_TRUE(QVXIsReallyInFolder("file", Path("folder").c_str()));
  EXPECT_FALSE(QVXIsReallyInFolder("file", Folder("elsewhere").c_str()));
  fs::current_path(before);
  EXPECT_TRUE(QVXIsReallyInFolder("/file", "/"));
  EXPECT_FALSE(QVXIsReallyInFolder("/file", Path("folder").c_str()));
}

}  // namespace
