// tests/hostrun/unit/bundle_test.cpp - which files are taken for a bundle, before anything of them is loaded;
// which memory is a loaded one's.
#include "hostrun/host/bundle.h"

#include <elf.h>
#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <fstream>

#include "tests/hostrun/unit/temporary_folder.h"

namespace hostrun {
namespace {

namespace fs = std::filesystem;

class BundleFiles : public testing::Test {
 protected:
  std::string Path(const std::string& name) const { return folder_.Path(name); }
  std::string Write(const std::string& bytes) const {
    std::ofstream(Path("file"), std::ios::binary) << bytes;
    return Path("file");
  }
  // What is said of a file of these bytes, without its name; empty: nothing.
  std::string ProblemOf(const std::string& bytes) const {
    const std::string file = Write(bytes);
    const Problem problem = CheckBundleFile(file);
    return problem ? problem->substr(file.size()) : "";
  }

 private:
  TemporaryFolder folder_;
};

template <class T>
std::string Raw(const T& value) {
  return {reinterpret_cast<const char*>(&value), sizeof value};
}

// An ELF file with one segment: the last eight bytes.
struct TestElf {
  Elf32_Ehdr header{};
  Elf32_Phdr segment{};
  std::string bytes = "12345678";

  TestElf() {
    std::copy_n(ELFMAG, SELFMAG, header.e_ident);
    header.e_ident[EI_CLASS] = ELFCLASS32;
    header.e_machine = EM_386;
    header.e_type = ET_DYN;
    header.e_phoff = sizeof header;
    header.e_phentsize = sizeof segment;
    header.e_phnum = 1;
    segment.p_offset = sizeof header + sizeof segment;
    segment.p_filesz = 8;
  }
  std::string Bytes() const { return Raw(header) + Raw(segment) + bytes; }
};

constexpr const char* kWanted =
    ": wanted a bundle (32-bit ELF shared object or Mach-O bundle, for i386), found ";

TEST_F(BundleFiles, AreSharedObjectsForTheI386) {
  EXPECT_EQ(ProblemOf(TestElf().Bytes()), "");
  TestElf wide;
  wide.header.e_ident[EI_CLASS] = ELFCLASS64;
  EXPECT_EQ(ProblemOf(wide.Bytes()), std::string(kWanted) + "a 64-bit ELF file");
  TestElf other;
  other.header.e_machine = EM_ARM;
  EXPECT_EQ(ProblemOf(other.Bytes()), std::string(kWanted) + "an ELF file for machine 40");
  TestElf program;
  program.header.e_type = ET_EXEC;
  EXPECT_EQ(ProblemOf(program.Bytes()), std::string(kWanted) + "an ELF file that is no shared object");
  TestElf none;
  none.header.e_ident[EI_MAG3] = 'G';
  EXPECT_EQ(ProblemOf(none.Bytes()), std::string(kWanted) + "a file that is neither ELF nor Mach-O");
  EXPECT_EQ(ProblemOf(""), std::string(kWanted) + "a file that is neither ELF nor Mach-O");
  EXPECT_EQ(CheckBundleFile(Path("none")), Path("none") + kWanted + "No such file or directory");
}

TEST_F(BundleFiles, AreWhole) {
  const std::string truncated = std::string(kWanted) + "a truncated ELF file";
  const std::string whole = TestElf().Bytes();
  EXPECT_EQ(ProblemOf(whole.substr(0, EI_NIDENT - 1)),
            std::string(kWanted) + "a file that is neither ELF nor Mach-O");
  for (std::size_t size = EI_NIDENT; size < whole.size(); ++size)
    EXPECT_EQ(ProblemOf(whole.substr(0, size)), truncated) << size;
  TestElf otherRecords;
  ++otherRecords.header.e_phentsize;
  EXPECT_EQ(ProblemOf(otherRecords.Bytes()), truncated);
  TestElf moreSegments;
  moreSegments.header.e_phnum = 2;
  EXPECT_EQ(ProblemOf(moreSegments.Bytes()), truncated);
  TestElf longerSegment;
  longerSegment.segment.p_filesz = 9;
  EXPECT_EQ(ProblemOf(longerSegment.Bytes()), truncated);
  TestElf wrapping;
  wrapping.segment.p_filesz = 0U - wrapping.segment.p_offset;
  EXPECT_EQ(ProblemOf(wrapping.Bytes()), truncated);
}

// Of a file with two segments the second counts too.
TEST_F(BundleFiles, HaveEachOfTheirSegments) {
  TestElf two;
  two.header.e_phnum = 2;
  Elf32_Phdr second{};
  second.p_offset = sizeof two.header + 2 * sizeof second;
  second.p_filesz = 8;
  const auto bytes = [&] { return Raw(two.header) + Raw(Elf32_Phdr{}) + Raw(second) + two.bytes; };
  EXPECT_EQ(ProblemOf(bytes()), "");
  ++second.p_filesz;
  EXPECT_EQ(ProblemOf(bytes()), std::string(kWanted) + "a truncated ELF file");
}

TEST_F(BundleFiles, OfTheDesktopBeginWithTheirMark) {
  EXPECT_TRUE(IsDesktopFile(Write("\xCE\xFA\xED\xFE")));
  EXPECT_FALSE(IsDesktopFile(Write("\xCE\xFA\xED")));
  EXPECT_FALSE(IsDesktopFile(Write(TestElf().Bytes())));
  EXPECT_FALSE(IsDesktopFile(Path("none")));
  EXPECT_EQ(ProblemOf("\xCE\xFA\xED\xFE"),
            ": wanted the header inside of its 4 bytes, found 28 bytes at 0x0");
}

TEST_F(BundleFiles, LieInsideOfTheirFolders) {
  fs::create_directory(Path("Any.bundle"));
  EXPECT_EQ(BundleFile(Path("Any.bundle")), Path("Any.bundle/Contents/MacOS/Any"));
  EXPECT_EQ(BundleFile(Path("Any.bundle/")), Path("Any.bundle/Contents/MacOS/Any"));
  fs::create_directory(Path("folder"));
  EXPECT_EQ(BundleFile(Path("folder")), Path("folder"));
  EXPECT_EQ(BundleFile(Write("a file")), Path("file"));
  EXPECT_EQ(BundleFile(Path("None.bundle")), Path("None.bundle"));
}

TEST(LoadedBundle, ContainsItsFirstByteAndNoneBehindItsLast) {
  const std::array<char, 4> memory{};
  const auto begin = reinterpret_cast<std::uintptr_t>(&memory[1]);
  const LoadedBundle bundle{nullptr, begin, begin + 2};
  EXPECT_FALSE(bundle.Contains(&memory[0]));
  EXPECT_TRUE(bundle.Contains(&memory[1]));
  EXPECT_TRUE(bundle.Contains(&memory[2]));
  EXPECT_FALSE(bundle.Contains(&memory[3]));
}

}  // namespace
}  // namespace hostrun
