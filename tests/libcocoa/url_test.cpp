// tests/libcocoa/url_test.cpp - file references and URLs of files.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>

#include "libcocoa/foundation/FSRef.h"
#include "tests/libcocoa/guarded.h"

namespace {

constexpr CFIndex kPOSIX = 0;

OSStatus MakeRef(const std::string& path, FSRef* ref, Boolean* folder = nullptr) {
  return FSPathMakeRef(reinterpret_cast<const std::uint8_t*>(path.c_str()), ref, folder);
}

std::string PathOf(CFURLRef url) {
  const CFStringRef path = CFURLCopyFileSystemPath(url, kPOSIX);
  std::string text = Text(reinterpret_cast<id>(const_cast<void*>(static_cast<const void*>(path))));
  if (path != nullptr) CFRelease(path);
  return text;
}

std::string TextOf(CFURLRef url) {
  return Text(qvx::Message<"absoluteString", id()>()(
      reinterpret_cast<id>(const_cast<void*>(static_cast<const void*>(url)))));
}

CFStringRef NewString(const char* text) {
  return CFStringCreateWithCString(nullptr, text, 0x08000100);
}

// A folder of its own that goes with the test.
class FileReference : public testing::Test {
 protected:
  FileReference() : folder_(std::filesystem::temp_directory_path() / "cocoa-url-XXXXXX") {
    std::string pattern = folder_.string();
    folder_ = ::mkdtemp(pattern.data());
  }
  ~FileReference() override { std::filesystem::remove_all(folder_); }

  std::string Create(const std::string& name) const {
    std::string path = (folder_ / name).string();
    std::ofstream(path) << "contents";
    return path;
  }

  std::filesystem::path folder_;
};

class AnyName : public FileReference, public testing::WithParamInterface<std::string> {};

TEST_P(AnyName, GoesThroughAReferenceAndAURLUnchanged) {
  const std::string path = Create(GetParam());
  FSRef ref;
  ASSERT_EQ(MakeRef(path, &ref), noErr);
  const CFURLRef url = CFURLCreateFromFSRef(nullptr, &ref);
  ASSERT_NE(url, nullptr);
  EXPECT_EQ(PathOf(url), path);
  CFRelease(url);
}

TEST_P(AnyName, CanBeAppended) {
  FSRef ref;
  ASSERT_EQ(MakeRef(folder_.string(), &ref), noErr);
  const CFURLRef parent = CFURLCreateFromFSRef(nullptr, &ref);
  const CFStringRef name = NewString(GetParam().c_str());
  const CFURLRef url = CFURLCreateCopyAppendingPathComponent(nullptr, parent, name, 0);
  EXPECT_EQ(PathOf(url), (folder_ / GetParam()).string());
  EXPECT_EQ(PathOf(parent), folder_.string());
  CFRelease(url);
  CFRelease(name);
  CFRelease(parent);
}

TEST_P(AnyName, LeadsToTheFilesContents) {
  FSRef ref;
  ASSERT_EQ(MakeRef(Create(GetParam()), &ref), noErr);
  const CFURLRef url = CFURLCreateFromFSRef(nullptr, &ref);
  const CFStringRef path = CFURLCopyFileSystemPath(url, kPOSIX);
  const id data = qvx::Message<"dataWithContentsOfFile:", id(id)>()(
      qvx::PlatformClass<"NSData">(),
      reinterpret_cast<id>(const_cast<void*>(static_cast<const void*>(path))));
  EXPECT_EQ((qvx::Message<"length", NSUInteger()>()(data)), 8U);
  CFRelease(path);
  CFRelease(url);
}

INSTANTIATE_TEST_SUITE_P(All, AnyName,
                         testing::Values("plain.icc", "with space", "percent %41 %", "question?and#hash;semi",
                                         "caf\xC3\xA9", "cafe\xCC\x81", "\xE6\x97\xA5\xE6\x9C\xAC", "a:b",
                                         "~", "line\nbreak", "\xF0\x9F\x98\x80", "..dots..", "back\\slash",
                                         "a&b=c+d"));

TEST_F(FileReference, TellsFoldersFromFiles) {
  FSRef ref;
  Boolean folder = 2;
  EXPECT_EQ(MakeRef(folder_.string(), &ref, &folder), noErr);
  EXPECT_EQ(folder, 1);
  EXPECT_EQ(MakeRef(Create("file"), &ref, &folder), noErr);
  EXPECT_EQ(folder, 0);
}

TEST_F(FileReference, IsMadeOfAFileOfAnySizeAndTime) {
  FSRef ref;
  const std::string large = Create("large");
  ASSERT_EQ(::truncate64(large.c_str(), 3LL << 30), 0);
  EXPECT_EQ(MakeRef(large, &ref), noErr);
  ASSERT_EQ(std::system(("touch -d 2100-01-01 " + folder_.string()).c_str()), 0);
  ASSERT_EQ(MakeRef(folder_.string(), &ref), noErr);
  const CFURLRef url = CFURLCreateFromFSRef(nullptr, &ref);
  EXPECT_EQ(TextOf(url).back(), '/') << "it is a folder's";
  CFRelease(url);
}

TEST_F(FileReference, GivesAURLThatEndsWithASlashForFoldersOnly) {
  std::filesystem::create_symlink(folder_, folder_ / "to a folder");
  std::filesystem::create_symlink("nowhere", folder_ / "to nowhere");
  Create("file");
  for (const char* const name : {"", "to a folder", "to nowhere", "file"}) {
    FSRef ref;
    ASSERT_EQ(MakeRef((folder_ / name).string(), &ref), noErr) << name;
    const CFURLRef url = CFURLCreateFromFSRef(nullptr, &ref);
    EXPECT_EQ(TextOf(url).back() == '/', std::filesystem::is_directory(folder_ / name)) << name;
    CFRelease(url);
  }
}

TEST_F(FileReference, IsAsGoodAsNoneOnceItsFileIsGone) {
  FSRef ref;
  ASSERT_EQ(MakeRef(Create("file"), &ref), noErr);
  std::filesystem::remove(folder_ / "file");
  const CFURLRef url = CFURLCreateFromFSRef(nullptr, &ref);
  EXPECT_NE(TextOf(url).back(), '/');
  CFRelease(url);
}

TEST_F(FileReference, NeedsAnExistingFile) {
  FSRef ref;
  std::memset(&ref, 0x5A, sizeof ref);
  EXPECT_EQ(MakeRef((folder_ / "missing").string(), &ref), fnfErr);
  EXPECT_EQ(CFURLCreateFromFSRef(nullptr, &ref), nullptr) << "a failure must leave no reference";
  EXPECT_EQ(MakeRef("", &ref), paramErr);
  EXPECT_EQ(FSPathMakeRef(nullptr, &ref, nullptr), paramErr);
  EXPECT_EQ(MakeRef(folder_.string(), nullptr), paramErr);
}

TEST_F(FileReference, StandsForASymbolicLinkItself) {
  const std::string link = (folder_ / "link").string();
  ASSERT_EQ(::symlink("nowhere", link.c_str()), 0);
  FSRef ref;
  EXPECT_EQ(MakeRef(link, &ref), noErr);
  const CFURLRef url = CFURLCreateFromFSRef(nullptr, &ref);
  EXPECT_EQ(PathOf(url), link);
  CFRelease(url);
}

TEST_F(FileReference, MakesARelativePathAbsolute) {
  Create("file");
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(folder_);
  FSRef ref;
  EXPECT_EQ(MakeRef("file", &ref), noErr);
  std::filesystem::current_path(before);
  const CFURLRef url = CFURLCreateFromFSRef(nullptr, &ref);
  EXPECT_EQ(PathOf(url), (folder_ / "file").string());
  CFRelease(url);
}

TEST_F(FileReference, IsTheSameForTheSamePath) {
  const std::string path = Create("file");
  FSRef first;
  FSRef second;
  ASSERT_EQ(MakeRef(path, &first), noErr);
  ASSERT_EQ(MakeRef(path, &second), noErr);
  EXPECT_EQ(std::memcmp(&first, &second, sizeof first), 0);
}

TEST_F(FileReference, StaysThatOfItsPathAmongManyOthers) {
  std::array<FSRef, 100> references{};
  for (std::size_t i = 0; i < references.size(); ++i) {
    ASSERT_EQ(MakeRef(std::string(i + 1, '/'), &references[i]), noErr);
  }
  for (std::size_t i = 0; i < references.size(); ++i) {
    std::array<std::uint8_t, 200> path{};
    ASSERT_EQ(FSRefMakePath(&references[i], path.data(), path.size()), noErr);
    EXPECT_EQ(reinterpret_cast<const char*>(path.data()), std::string(i + 1, '/'));
  }
}

TEST_F(FileReference, GivesItsPathBackIfTheBufferIsLargeEnough) {
  const std::string path = Create("file");
  FSRef ref;
  ASSERT_EQ(MakeRef(path, &ref), noErr);
  std::string buffer(path.size() + 1, 'x');
  const auto bytes = reinterpret_cast<std::uint8_t*>(buffer.data());
  EXPECT_EQ(FSRefMakePath(&ref, bytes, static_cast<std::uint32_t>(path.size())), pathTooLongErr);
  EXPECT_EQ(FSRefMakePath(&ref, bytes, static_cast<std::uint32_t>(path.size() + 1)), noErr);
  EXPECT_EQ(buffer.c_str(), path);
  EXPECT_EQ(FSRefMakePath(&ref, nullptr, 100), paramErr);
  EXPECT_EQ(FSRefMakePath(nullptr, bytes, 100), paramErr);
}

TEST_F(FileReference, IsNoneWithoutItsTagOrPastTheTable) {
  FSRef ref{};
  EXPECT_EQ(CFURLCreateFromFSRef(nullptr, &ref), nullptr);
  ASSERT_EQ(MakeRef(Create("file"), &ref), noErr);
  std::memset(ref.hidden + 8, 0x7F, 4);
  EXPECT_EQ(CFURLCreateFromFSRef(nullptr, &ref), nullptr);
  EXPECT_EQ(CFURLCreateFromFSRef(nullptr, nullptr), nullptr);
}

TEST_F(FileReference, OfANameThatIsNotUTF8GivesNoURL) {
  FSRef ref;
  ASSERT_EQ(MakeRef(Create("latin\xE9"), &ref), noErr);
  EXPECT_EQ(CFURLCreateFromFSRef(nullptr, &ref), nullptr);
}

TEST_F(FileReference, OfAFolderGivesAPathWithoutATrailingSlash) {
  FSRef ref;
  ASSERT_EQ(MakeRef(folder_.string() + "/", &ref), noErr);
  const CFURLRef url = CFURLCreateFromFSRef(nullptr, &ref);
  EXPECT_EQ(PathOf(url), folder_.string());
  CFRelease(url);
}

TEST(URL, HasNoPathForNothingOrForAnotherStyle) {
  FSRef ref;
  ASSERT_EQ(MakeRef("/", &ref), noErr);
  const CFURLRef url = CFURLCreateFromFSRef(nullptr, &ref);
  EXPECT_EQ(PathOf(url), "/");
  EXPECT_EQ(CFURLCopyFileSystemPath(nullptr, kPOSIX), nullptr);
  EXPECT_EQ(CFURLCopyFileSystemPath(url, 1), nullptr);
  EXPECT_EQ(CFURLCopyFileSystemPath(url, 2), nullptr);
  CFRelease(url);
}

TEST(URL, IsNotMadeFromAComponentThatNoPathCanHold) {
  FSRef ref;
  ASSERT_EQ(MakeRef("/", &ref), noErr);
  const CFURLRef url = CFURLCreateFromFSRef(nullptr, &ref);
  for (const std::u16string& units :
       {std::u16string(u"a\0b", 3), std::u16string(u"\0b", 2), std::u16string(u"a\0", 2),
        std::u16string{u'a', 0xD800}, std::u16string{u'a', 0xDBFF, u'b'}, std::u16string{0xDC00, u'a'},
        std::u16string{0xDFFF}, std::u16string{0xD83D, u'a'}, std::u16string{0xD83D, 0xD83D, 0xDE00}}) {
    const CFStringRef name = CFStringCreateWithCharacters(
        nullptr, reinterpret_cast<const UniChar*>(units.data()), static_cast<CFIndex>(units.size()));
    EXPECT_EQ(CFURLCreateCopyAppendingPathComponent(nullptr, url, name, 0), nullptr);
    CFRelease(name);
  }
  CFRelease(url);
}

TEST(URL, EndsWithASlashWhereTheComponentIsAFolder) {
  FSRef ref;
  ASSERT_EQ(MakeRef("/", &ref), noErr);
  const CFURLRef url = CFURLCreateFromFSRef(nullptr, &ref);
  const CFStringRef name = NewString("name");
  for (const Boolean folder : {Boolean{0}, Boolean{1}, Boolean{2}}) {
    const CFURLRef inside = CFURLCreateCopyAppendingPathComponent(nullptr, url, name, folder);
    EXPECT_EQ(TextOf(inside), folder != 0 ? "file:///name/" : "file:///name") << int{folder};
    CFRelease(inside);
  }
  CFRelease(name);
  CFRelease(url);
}

TEST(URL, IsNotMadeFromNothing) {
  FSRef ref;
  ASSERT_EQ(MakeRef("/", &ref), noErr);
  const CFURLRef url = CFURLCreateFromFSRef(nullptr, &ref);
  const CFStringRef name = NewString("name");
  EXPECT_EQ(CFURLCreateCopyAppendingPathComponent(nullptr, nullptr, name, 0), nullptr);
  EXPECT_EQ(CFURLCreateCopyAppendingPathComponent(nullptr, url, nullptr, 0), nullptr);
  CFRelease(name);
  CFRelease(url);
}

}  // namespace
