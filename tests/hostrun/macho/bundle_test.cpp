// tests/hostrun/macho/bundle_test.cpp - the built desktop bundle: mapped twice, and 2,000 spoilt copies of
// it.
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>

#include "hostrun/macho/image.h"

namespace {

using namespace hostrun::macho;

// Stands for every symbol: nothing of the bundle is called here.
int anything = 0;
void* FindAnything(const std::string& /*symbol*/) {
  return &anything;
}

class BuiltDesktopBundle : public testing::Test {
 protected:
  void SetUp() override {
    if (!std::filesystem::exists(DESKTOP_BUNDLE_FILE)) {
      GTEST_SKIP() << "wanted " DESKTOP_BUNDLE_FILE ", found none; tools/desktop builds it";
    }
    std::ifstream in(DESKTOP_BUNDLE_FILE, std::ios::binary);
    bytes_.assign(std::istreambuf_iterator<char>(in), {});
  }

  std::vector<std::uint8_t> bytes_;
};

TEST_F(BuiltDesktopBundle, CanBeMappedTwice) {
  const File file = ReadFile(bytes_);
  ASSERT_EQ(file.exports.size(), 1U);
  const Image first(file, &FindAnything);
  const Image second(file, &FindAnything);
  EXPECT_NE(first.memory().data(), second.memory().data());
  EXPECT_NE(first.Exported("_REALPluginMain"), second.Exported("_REALPluginMain"));
  const std::uint32_t apart = static_cast<std::uint32_t>(second.memory().data() - first.memory().data());
  ASSERT_FALSE(file.rebases.empty());
  for (const std::uint32_t address : file.rebases) {
    const std::uint32_t offset = address - file.segments.front().address;
    std::uint32_t here = 0;
    std::uint32_t there = 0;
    std::memcpy(&here, first.memory().data() + offset, sizeof here);
    std::memcpy(&there, second.memory().data() + offset, sizeof there);
    ASSERT_EQ(there - here, apart) << "the word at " << Hex(address);
  }
}

// Each mutant changes a few bytes where the loader looks: the header and the load commands, the unwind
// tables, the link information; or the file ends early. It is refused with a line, or maps.
TEST_F(BuiltDesktopBundle, SurvivesTwoThousandMutants) {
  constexpr int kMutants = 2000;
  const File good = ReadFile(bytes_);
  struct Part {
    std::uint32_t begin;
    std::uint32_t size;
  };
  std::vector<Part> parts = {{0, 28}, {28, 1500}};
  for (const Section& section : good.segments.front().sections) {
    if (section.name == "__eh_frame")
      parts.push_back({section.address - good.segments.front().address, section.size});
  }
  const Segment& last = good.segments.back();
  parts.push_back({last.fileOffset, last.fileSize});
  parts.push_back({last.fileOffset, std::min<std::uint32_t>(last.fileSize, 256)});

  std::mt19937 random(1);
  const auto below = [&random](std::size_t bound) { return static_cast<std::uint32_t>(random() % bound); };
  int refused = 0;
  int mapped = 0;
  for (int i = 0; i < kMutants; ++i) {
    std::vector<std::uint8_t> mutant = bytes_;
    for (std::uint32_t changes = 1 + below(3); changes > 0; --changes) {
      const Part& part = parts[below(parts.size())];
      const std::uint32_t at = part.begin + below(part.size);
      static constexpr std::uint32_t kTelling[] = {0,     1,      4,          0x7F,       0x80,
                                                   0xFFF, 0x1000, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};
      const std::uint32_t word = below(2) == 0 ? kTelling[below(std::size(kTelling))] : random();
      std::memcpy(&mutant[at], &word, std::min<std::size_t>(1 + 3 * below(2), mutant.size() - at));
    }
    if (below(20) == 0) mutant.resize(below(mutant.size()));
    try {
      const Image image(ReadFile(std::move(mutant)), &FindAnything);
      ++mapped;
    } catch (const FormatError& error) {
      EXPECT_EQ(std::string(error.what()).find("wanted "), 0U) << error.what();
      ++refused;
    }
  }
  EXPECT_GT(refused, kMutants / 4);
  EXPECT_GT(mapped, kMutants / 20);
  std::printf("%d mutants refused, %d mapped\n", refused, mapped);
}

}  // namespace
