// tests/libcocoa/colours/sharing_test.cpp - one conversion from many threads, and nothing that is left
// behind.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

#include "tests/libcocoa/colours/colour_calls.h"

namespace {

std::vector<char> profile(const std::string& name) {
  std::ifstream in(std::filesystem::path(QVX_ICC_FOLDER) / name, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

Space spaceNamed(const std::string& name) {
  const std::vector<char> bytes = profile(name);
  return spaceFromProfile(bytes.data(), bytes.size());
}

TEST(Threads, ConvertTheSameColoursToTheSameNumbers) {
  const Space srgb = predefinedSpace("sRGBColorSpace");
  const Space adobe = predefinedSpace("adobeRGB1998ColorSpace");
  constexpr int kColours = 200;
  constexpr int kRounds = 50;
  std::vector<std::array<float, kMostComponents>> expected(kColours);
  const auto colour = [](int i) {
    return std::array<float, 4>{static_cast<float>(i) / kColours, 0.5F, 1 - static_cast<float>(i) / kColours,
                                1};
  };
  for (int i = 0; i < kColours; ++i)
    convertColour(srgb, colour(i).data(), adobe, expected[static_cast<std::size_t>(i)].data());
  std::atomic<int> wrong = 0;
  constexpr int kThreads = 4;
  std::vector<std::thread> threads;
  threads.reserve(kThreads);
  for (int t = 0; t < kThreads; ++t)
    threads.emplace_back([&] {
      for (int round = 0; round < kRounds; ++round)
        for (int i = 0; i < kColours; ++i) {
          std::array<float, kMostComponents> converted{};
          const int count = convertColour(srgb, colour(i).data(), adobe, converted.data());
          if (count != 4 || converted != expected[static_cast<std::size_t>(i)]) ++wrong;
        }
    });
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(wrong, 0);
}

// Spaces come and go in every thread while others convert with them: more pairs than transforms are kept.
TEST(Threads, OpenAndCloseTheSameProfiles) {
  const std::vector<std::string> names{"srgb.icc",    "a98.icc",         "sgray.icc",
                                       "lab.icc",     "esrgb.icc",       "ps_cmyk.icc",
                                       "rommrgb.icc", "default_rgb.icc", "default_gray.icc"};
  std::atomic<int> failed = 0;
  constexpr int kThreads = 4;
  std::vector<std::thread> threads;
  threads.reserve(kThreads);
  for (int t = 0; t < kThreads; ++t)
    threads.emplace_back([&] {
      for (const std::string& from : names)
        for (const std::string& to : names) {
          const Space source = spaceNamed(from);
          const Space target = spaceNamed(to);
          const std::array<float, kMostComponents> half{0.5F, 0.5F, 0.5F, 0.5F, 0.5F};
          std::array<float, kMostComponents> converted{};
          if (source == nullptr || target == nullptr ||
              convertColour(source, half.data(), target, converted.data()) == 0)
            ++failed;
          releaseSpace(source);
          releaseSpace(target);
        }
    });
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(failed, 0);
}

TEST(Memory, SpacesAndColoursAreGoneWhenNobodyHoldsThem) {
  countObjects();
  const std::array<float, kMostComponents> half{0.5F, 0.5F, 0.5F, 0.5F, 0.5F};
  std::array<float, kMostComponents> converted{};
  const int spacesBefore = liveObjects("NSColorSpace");
  const int coloursBefore = liveObjects("QVXProfileColor");
  for (int i = 0; i < 100; ++i) {
    const Space cmyk = spaceNamed("ps_cmyk.icc");
    ASSERT_EQ(convertColour(cmyk, half.data(), predefinedSpace("sRGBColorSpace"), converted.data()), 4);
    releaseSpace(cmyk);
    ASSERT_EQ(spaceFromProfile("junk", 4), nullptr);
  }
  EXPECT_EQ(liveObjects("NSColorSpace"), spacesBefore);
  EXPECT_EQ(liveObjects("QVXProfileColor"), coloursBefore);
}

// The figures are for the reader of the log; no machine is fast enough for a limit that never fails.
TEST(Cost, OfAConversionIsReported) {
  struct Named {
    const char* name;
    Space space;
  };
  const std::vector<Named> spaces{{"sRGB", predefinedSpace("sRGBColorSpace")},
                                  {"Adobe RGB", predefinedSpace("adobeRGB1998ColorSpace")},
                                  {"gray 2.2", predefinedSpace("genericGamma22GrayColorSpace")},
                                  {"generic RGB", predefinedSpace("genericRGBColorSpace")},
                                  {"CMYK", spaceNamed("default_cmyk.icc")},
                                  {"Lab", spaceNamed("lab.icc")}};
  std::printf("median microseconds of processor time\n%-12s", "from \\ to");
  for (const Named& to : spaces) std::printf("%12s", to.name);
  for (const Named& from : spaces) {
    std::printf("\n%-12s", from.name);
    for (const Named& to : spaces) {
      constexpr int kRounds = 2000;
      std::array<double, 9> took{};
      for (double& each : took) each = microsecondsToConvert(from.space, to.space, kRounds);
      std::nth_element(took.begin(), took.begin() + took.size() / 2, took.end());
      EXPECT_GT(took[took.size() / 2], 0);
      std::printf("%12.2f", took[took.size() / 2]);
    }
  }
  std::printf("\n");
}

}  // namespace
