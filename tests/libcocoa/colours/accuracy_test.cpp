// tests/libcocoa/colours/accuracy_test.cpp - conversions agree with Little CMS's own command-line tool.
//
// Every ordered pair of eight spaces, on a grid of at least 1,000 colours, within 1/4096 per component. The
// tool gets the very profiles that the spaces carry, and does not clip: its results are clipped here as the
// library clips.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "tests/libcocoa/colours/colour_calls.h"
#include "tests/libcocoa/colours/ink_profile.h"

namespace {

namespace fs = std::filesystem;
using Colour = std::vector<float>;

constexpr double kTolerance = 1.0 / 4096;
constexpr std::size_t kSmallestGrid = 1000;

enum class Kind { kRGB, kGray, kCMYK, kLab, kInks };

struct TestedSpace {
  const char* name;
  Kind kind;
  const char* source;  // a class method, or a file of the installed profiles
};

constexpr unsigned kInks = 6;
constexpr std::array<TestedSpace, 8> kSpaces{{{"sRGB", Kind::kRGB, "sRGBColorSpace"},
                                              {"AdobeRGB", Kind::kRGB, "adobeRGB1998ColorSpace"},
                                              {"Gray22", Kind::kGray, "genericGamma22GrayColorSpace"},
                                              {"GenericRGB", Kind::kRGB, "genericRGBColorSpace"},
                                              {"GenericGray", Kind::kGray, "genericGrayColorSpace"},
                                              {"CMYK", Kind::kCMYK, "default_cmyk.icc"},
                                              {"Lab", Kind::kLab, "lab.icc"},
                                              {"SixInks", Kind::kInks, nullptr}}};

std::vector<char> readFile(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

Space open(const TestedSpace& tested) {
  if (tested.kind == Kind::kInks) {
    std::size_t size = 0;
    const std::unique_ptr<void, decltype(&std::free)> bytes(MakeInkProfile(kInks, &size), &std::free);
    return spaceFromProfile(bytes.get(), size);
  }
  if (tested.kind != Kind::kCMYK && tested.kind != Kind::kLab) return predefinedSpace(tested.source);
  const std::vector<char> bytes = readFile(fs::path(QVX_ICC_FOLDER) / tested.source);
  return spaceFromProfile(bytes.data(), bytes.size());
}

// The tool's unit for a component: what it calls 1.
double unit(Kind kind) {
  return kind == Kind::kCMYK || kind == Kind::kInks ? 100 : kind == Kind::kLab ? 1 : 255;
}

// Every combination of evenly spaced values, for each component from low to high.
std::vector<Colour> combinations(const std::vector<std::pair<float, float>>& ranges, int steps) {
  std::vector<Colour> grid{{}};
  for (const auto& [low, high] : ranges) {
    std::vector<Colour> longer;
    for (const Colour& colour : grid)
      for (int i = 0; i < steps; ++i) {
        longer.push_back(colour);
        longer.back().push_back(low + (high - low) * static_cast<float>(i) / static_cast<float>(steps - 1));
      }
    grid = std::move(longer);
  }
  return grid;
}

std::vector<Colour> gridOf(Kind kind) {
  switch (kind) {
    case Kind::kGray:
      return combinations({{0.F, 1.F}}, 1001);
    case Kind::kRGB:
      return combinations({{0.F, 1.F}, {0.F, 1.F}, {0.F, 1.F}}, 11);
    case Kind::kCMYK:
      return combinations({{0.F, 1.F}, {0.F, 1.F}, {0.F, 1.F}, {0.F, 1.F}}, 6);
    case Kind::kInks:
      return combinations(std::vector<std::pair<float, float>>(kInks, {0.F, 1.F}), 4);
    case Kind::kLab:
      return combinations({{0.F, 100.F}, {-100.F, 100.F}, {-100.F, 100.F}}, 11);
  }
  return {};
}

class Folder {
 public:
  Folder() {
    std::string made = (fs::temp_directory_path() / "colour-accuracy-XXXXXX").string();
    if (mkdtemp(made.data()) == nullptr) throw std::runtime_error("no temporary folder");
    path_ = made;
  }
  ~Folder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
  }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;
  [[nodiscard]] fs::path at(const char* name) const { return path_ / name; }

 private:
  fs::path path_;
};

void writeProfile(Space space, const fs::path& path) {
  std::vector<char> bytes(profileOfSpace(space, nullptr, 0));
  ASSERT_FALSE(bytes.empty());
  profileOfSpace(space, bytes.data(), bytes.size());
  std::ofstream(path, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

// What the tool makes of the grid, in its own units.
std::vector<std::vector<double>> toolsResults(const Folder& folder, const std::vector<Colour>& grid,
                                              double inUnit, int components) {
  std::ofstream in(folder.at("in"));
  in.precision(9);
  for (const Colour& colour : grid) {
    for (const float component : colour) in << static_cast<double>(component) * inUnit << ' ';
    in << '\n';
  }
  in.close();
  const std::string command = "LD_LIBRARY_PATH=" QVX_SYSROOT_PATH " " QVX_TRANSICC " -n -t1 -i " +
                              folder.at("from.icc").string() + " -o " + folder.at("to.icc").string() + " <" +
                              folder.at("in").string() + " >" + folder.at("out").string() + " 2>/dev/null";
  if (std::system(command.c_str()) != 0) return {};  // NOLINT: the command is made here
  std::vector<std::vector<double>> results;
  std::ifstream out(folder.at("out"));
  for (std::size_t i = 0; i < grid.size(); ++i) {
    std::vector<double> result(static_cast<std::size_t>(components));
    for (double& component : result) out >> component;
    if (!out) return {};
    results.push_back(result);
  }
  return results;
}

using Pair = std::tuple<std::size_t, std::size_t>;
class Accuracy : public testing::TestWithParam<Pair> {};

TEST_P(Accuracy, AgreesWithTheToolOnAGrid) {
  const TestedSpace& from = kSpaces.at(std::get<0>(GetParam()));
  const TestedSpace& to = kSpaces.at(std::get<1>(GetParam()));
  const Space source = open(from);
  const Space target = open(to);
  ASSERT_NE(source, nullptr);
  ASSERT_NE(target, nullptr);
  const Folder folder;
  writeProfile(source, folder.at("from.icc"));
  writeProfile(target, folder.at("to.icc"));
  const std::vector<Colour> grid = gridOf(from.kind);
  ASSERT_GE(grid.size(), kSmallestGrid);
  const int components = componentsOfSpace(target);
  const auto expected = toolsResults(folder, grid, unit(from.kind), components);
  ASSERT_EQ(expected.size(), grid.size()) << "the tool gave no or too few results";

  double worst = 0;
  for (std::size_t i = 0; i < grid.size(); ++i) {
    Colour colour = grid[i];
    colour.push_back(0.5F);
    std::array<float, kMostComponents> converted{};
    ASSERT_EQ(convertColour(source, colour.data(), target, converted.data()), components + 1);
    EXPECT_EQ(converted.at(static_cast<std::size_t>(components)), 0.5F) << "the alpha changed";
    for (std::size_t c = 0; c < static_cast<std::size_t>(components); ++c) {
      double wanted = expected[i][c] / unit(to.kind);
      if (to.kind != Kind::kLab) wanted = std::clamp(wanted, 0.0, 1.0);
      worst = std::max(worst, std::abs(wanted - static_cast<double>(converted.at(c))));
    }
  }
  EXPECT_LE(worst, kTolerance);
  RecordProperty("worst", std::to_string(worst));
  std::printf("%s to %s: %zu colours, worst difference %.2g\n", from.name, to.name, grid.size(), worst);
}

std::vector<Pair> allPairs() {
  std::vector<Pair> pairs;
  for (std::size_t from = 0; from < kSpaces.size(); ++from)
    for (std::size_t to = 0; to < kSpaces.size(); ++to)
      if (from != to) pairs.emplace_back(from, to);
  return pairs;
}

std::string nameOfPair(const testing::TestParamInfo<Pair>& tested) {
  return std::string(kSpaces.at(std::get<0>(tested.param)).name) + "To" +
         kSpaces.at(std::get<1>(tested.param)).name;
}

INSTANTIATE_TEST_SUITE_P(EveryPair, Accuracy, testing::ValuesIn(allPairs()), nameOfPair);

}  // namespace
