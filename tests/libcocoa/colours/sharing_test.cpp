// tests/libcocoa/colours/sharing_test.cpp - one conversion from many threads, and nothing that is left
// behind.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <lcms2.h>
#include <malloc.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <random>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "tests/libcocoa/colours/colour_calls.h"
#include "tests/libcocoa/colours/damage.h"

namespace {

std::atomic<int> transformsMade = 0;

std::size_t heapInUse() {
  const struct mallinfo2 use = ::mallinfo2();
  return use.uordblks + use.hblkhd;
}

// The transforms that there are, and what it took to make each.
struct Sizes {
  std::map<cmsHTRANSFORM, std::size_t> each;
  std::size_t all = 0;
  std::size_t most = 0;  // of `all`
  std::size_t largest = 0;
};
thread_local Sizes* sizes = nullptr;  // for who wants to know

}  // namespace

// Take the place of Little CMS's own, which they count and call.
extern "C" void cmsDeleteTransform(cmsHTRANSFORM transform) {
  if (sizes != nullptr && sizes->each.contains(transform)) {
    sizes->all -= sizes->each[transform];
    sizes->each.erase(transform);
  }
  static const auto own =
      reinterpret_cast<decltype(&cmsDeleteTransform)>(dlsym(RTLD_NEXT, "cmsDeleteTransform"));
  own(transform);
}

extern "C" cmsHTRANSFORM cmsCreateTransformTHR(cmsContext context, cmsHPROFILE input,
                                               cmsUInt32Number inputFormat, cmsHPROFILE output,
                                               cmsUInt32Number outputFormat, cmsUInt32Number intent,
                                               cmsUInt32Number flags) {
  ++transformsMade;
  const auto own =
      reinterpret_cast<decltype(&cmsCreateTransformTHR)>(dlsym(RTLD_NEXT, "cmsCreateTransformTHR"));
  const std::size_t before = sizes != nullptr ? heapInUse() : 0;
  cmsHTRANSFORM const made = own(context, input, inputFormat, output, outputFormat, intent, flags);
  if (sizes != nullptr) {
    const std::size_t size = heapInUse() - before;
    sizes->each[made] = size;
    sizes->all += size;
    sizes->most = std::max(sizes->most, sizes->all);
    sizes->largest = std::max(sizes->largest, size);
  }
  return made;
}

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

// Spaces come and go in every thread while others convert with them.
TEST(Threads, OpenAndCloseTheSameProfiles) {
  const std::vector<std::string> names{"srgb.icc", "a98.icc",     "sgray.icc",
                                       "lab.icc",  "ps_cmyk.icc", "default_gray.icc"};
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

// Another profile than the installed one, with the same colours: its maker differs.
Space spaceByMaker(const char* name, unsigned maker) {
  std::vector<char> bytes = profile(name);
  bytes.at(48) = static_cast<char>(maker);
  bytes.at(49) = static_cast<char>(maker + 1);
  return spaceFromProfile(bytes.data(), bytes.size());
}

std::vector<Space> spacesByMakers(const char* name, unsigned count) {
  std::vector<Space> spaces;
  for (unsigned i = 0; i < count; ++i) spaces.push_back(spaceByMaker(name, i));
  return spaces;
}

int convertHalf(Space from, Space to) {
  const std::array<float, kMostComponents> half{0.5F, 0.25F, 0.75F, 1};
  std::array<float, kMostComponents> converted{};
  return convertColour(from, half.data(), to, converted.data());
}

// Of gray, whose transforms are soon made.
TEST(Threads, MakeEachTransformOfManyProfilesOnce) {
  constexpr unsigned kProfiles = 20;
  const std::vector<Space> spaces = spacesByMakers("sgray.icc", kProfiles);
  const auto convertAll = [&] {
    int failed = 0;
    for (const Space from : spaces)
      for (const Space to : spaces) failed += convertHalf(from, to) == 2 ? 0 : 1;
    return failed;
  };
  const int before = transformsMade;
  EXPECT_EQ(convertAll(), 0);
  const int made = transformsMade;
  EXPECT_EQ(made - before, static_cast<int>(kProfiles * (kProfiles - 1)));
  std::atomic<int> failed = 0;
  {
    std::vector<std::jthread> threads;
    threads.reserve(6);
    for (int i = 0; i < 6; ++i) threads.emplace_back([&] { failed += convertAll(); });
  }
  EXPECT_EQ(failed, 0);
  EXPECT_EQ(transformsMade, made);
  for (const Space each : spaces) releaseSpace(each);
}

using Pair = std::pair<Space, Space>;

// Each space there and back to sRGB.
std::vector<Pair> pairsWithSRGB(const std::vector<Space>& spaces) {
  const Space srgb = predefinedSpace("sRGBColorSpace");
  std::vector<Pair> pairs;
  for (const Space each : spaces) {
    pairs.emplace_back(each, srgb);
    pairs.emplace_back(srgb, each);
  }
  return pairs;
}

// Each space to each other.
std::vector<Pair> allPairs(const std::vector<Space>& spaces) {
  std::vector<Pair> pairs;
  for (const Space from : spaces)
    for (const Space to : spaces)
      if (from != to) pairs.emplace_back(from, to);
  return pairs;
}

// The time from start to end of one conversion, in microseconds, while so many threads convert with the
// pairs, each in an order of its own.
double microsecondsAmong(const std::vector<Pair>& pairs, unsigned threadCount) {
  constexpr unsigned kEach = 10000;
  const auto start = std::chrono::steady_clock::now();
  {
    std::vector<std::jthread> threads;
    for (unsigned t = 0; t < threadCount; ++t)
      threads.emplace_back([&, t] {
        std::minstd_rand random(t + 1);
        for (unsigned i = 0; i < kEach; ++i) {
          const Pair& pair = pairs[random() % pairs.size()];
          convertHalf(pair.first, pair.second);
        }
      });
  }
  const std::chrono::duration<double, std::micro> took = std::chrono::steady_clock::now() - start;
  return took.count() / (kEach * threadCount);
}

// The median of several rounds of how many times as long six threads take with `many` as four with `few`.
double slowdown(const std::vector<Pair>& few, const std::vector<Pair>& many) {
  microsecondsAmong(few, 4);
  microsecondsAmong(many, 6);
  std::array<double, 7> ratios{};
  for (double& each : ratios) {
    const double alone = microsecondsAmong(few, 4);
    each = microsecondsAmong(many, 6) / alone;
  }
  std::nth_element(ratios.begin(), ratios.begin() + ratios.size() / 2, ratios.end());
  return ratios[ratios.size() / 2];
}

TEST(Memory, OfProfilesIsGivenBackWhetherTheyCanBeOpenedOrNot) {
  const Space target = predefinedSpace("sRGBColorSpace");
  std::vector<char> withTooManyTags = profile("sgray.icc");
  std::fill_n(withTooManyTags.begin() + 128, 4, '\xFF');
  constexpr unsigned kRounds = 50;
  const auto openMany = [&](unsigned firstMaker) {
    for (unsigned i = 0; i < kRounds; ++i) {
      const Space gray = spaceByMaker("sgray.icc", firstMaker + i);
      ASSERT_EQ(convertHalf(gray, target), 4);
      releaseSpace(gray);
      ASSERT_EQ(spaceFromProfile(withTooManyTags.data(), withTooManyTags.size()), nullptr);
    }
  };
  openMany(0);
  const std::size_t before = heapInUse();
  openMany(kRounds);  // others: none may be found again
  EXPECT_LT(heapInUse(), before + kRounds * 16);
}

TEST(Memory, OfTransformsIsLimitedAndThoseInUseStay) {
  constexpr std::size_t kLimit = 128 * 1024 * 1024;
  constexpr std::size_t kOverhead = kLimit / 200;  // what the C library needs beside each block
  Sizes found;
  sizes = &found;
  const std::vector<Space> spaces = spacesByMakers("default_cmyk.icc", 22);
  const int madeBefore = transformsMade;
  const std::vector<Pair> pairs = allPairs(spaces);
  for (const Pair& pair : pairs) ASSERT_EQ(convertHalf(pair.first, pair.second), 5);
#ifndef __SANITIZE_ADDRESS__  // its allocator counts nothing
  EXPECT_GT(found.most, kLimit - found.largest);
#endif
  EXPECT_LT(found.most, kLimit + kOverhead);
  EXPECT_EQ(transformsMade - madeBefore, static_cast<int>(pairs.size()));
  int madeThough = 0;  // it was in use just before
  for (std::size_t next = 0; transformsMade - madeBefore < 3 * static_cast<int>(pairs.size()); ++next) {
    const Pair& pair = pairs[next % pairs.size()];
    convertHalf(pair.first, pair.second);
    const int before = transformsMade;
    convertHalf(pairs[0].first, pairs[0].second);
    madeThough += transformsMade - before;
  }
  EXPECT_EQ(madeThough, 0);
  for (const Space each : spaces) releaseSpace(each);
  EXPECT_TRUE(found.each.empty());
  sizes = nullptr;
}

using Bytes = std::vector<unsigned char>;

// Whether each round leaves memory behind. What grows now and then, such as a table, leaves some of many
// series of rounds alone.
template <typename Body>
bool leavesMemoryBehind(const Body& body) {
  constexpr int kSeries = 10;
  constexpr int kRounds = 40;
  constexpr std::size_t kSmallest = 16;  // block of memory, in bytes
  for (int series = 0; series < kSeries; ++series) {
    const std::size_t before = heapInUse();
    for (int i = 0; i < kRounds; ++i) body();
    if (heapInUse() < before + kRounds * kSmallest) return false;
  }
  return true;
}

TEST(Memory, OfListsReadAndWrittenIsGivenBack) {
  const damage::ListFile file;
  Bytes profile(profileOfSpace(predefinedSpace("sRGBColorSpace"), nullptr, 0));
  profileOfSpace(predefinedSpace("sRGBColorSpace"), profile.data(), profile.size());
  profile.at(48) ^= 1U;
  const Space held = spaceFromProfile(profile.data(), profile.size());  // so that no list has to open it anew
  for (const ListContents contents : {kStockColours, kPatterns}) {
    EXPECT_FALSE(leavesMemoryBehind([&] { EXPECT_EQ(writeListFile(file.path().c_str(), contents), 1); }))
        << contents;
    EXPECT_FALSE(leavesMemoryBehind([&] { EXPECT_GT(listTold(file.path().c_str()), 1U); })) << contents;
  }
  releaseSpace(held);
  damage::Bytes half = damage::readFile(file.path());
  half.resize(half.size() / 8);
  damage::writeFile(file.path(), half);
  EXPECT_FALSE(leavesMemoryBehind([&] { EXPECT_EQ(listTold(file.path().c_str()), 0U); }));
  damage::writeFile(file.path(), {'1', '\n', '0', ' ', '0', ' ', '0', ' ', '0', ' ', '1', ' ', 'a', '\n'});
  EXPECT_FALSE(leavesMemoryBehind([&] { EXPECT_GT(listTold(file.path().c_str()), 1U); }));
}

TEST(Memory, OfPastedColoursIsGivenBack) {
  Bytes exact(pasteboardBytes(nullptr, 0));
  EXPECT_FALSE(leavesMemoryBehind([&] { pasteboardBytes(exact.data(), exact.size()); }));
  EXPECT_FALSE(leavesMemoryBehind([&] { EXPECT_GT(colorTold(exact.data(), exact.size()), 1U); }));
  EXPECT_FALSE(leavesMemoryBehind([&] { EXPECT_EQ(colorTold(exact.data(), 100), 0U); }));
  for (const Packing packing : {kUnpacked, kLZW, kPackBits}) {
    Bytes pattern(archiveWithPattern(packing, 0, nullptr, 0));
    archiveWithPattern(packing, 0, pattern.data(), pattern.size());
    EXPECT_FALSE(leavesMemoryBehind([&] { EXPECT_GT(colorTold(pattern.data(), pattern.size()), 1U); }))
        << packing;
  }
}

TEST(Memory, OfColoursMadeConvertedAndArchivedIsGivenBack) {
  for (int use = 0; useColors(use) == 1; ++use)
    EXPECT_FALSE(leavesMemoryBehind([&] { EXPECT_EQ(useColors(use), 1); })) << use;
}

// The figures are for the reader of the log. Between all pairs, what is left is what the processor's caches
// hold: it is the same with one thread.
TEST(Cost, OfManyProfilesAndThreadsIsReported) {
  const std::vector<Space> spaces = spacesByMakers("a98.icc", 40);
  const std::vector<Space> ten(spaces.begin(), spaces.begin() + 10);
  const double withOne = slowdown(pairsWithSRGB(ten), pairsWithSRGB(spaces));
  const double withAll = slowdown(allPairs(ten), allPairs(spaces));
  EXPECT_GT(withOne, 0);
  EXPECT_GT(withAll, 0);
  std::printf(
      "6 threads and 40 profiles take, against 4 and 10: to and from sRGB %.2f, between all %.2f times\n",
      withOne, withAll);
  for (const Space each : spaces) releaseSpace(each);
}

int problemsTold = 0;

// A process may use Little CMS itself, and have it tell what goes wrong: that is not for the library's work.
TEST(LittleCMS, TellsTheProcessNothingOfTheLibrarysProfiles) {
  cmsSetLogErrorHandler([](cmsContext, cmsUInt32Number, const char*) { ++problemsTold; });
  std::vector<char> damaged = profile("a98.icc");
  const std::string tag = "rXYZ";
  const auto entry = std::search(damaged.begin() + 128, damaged.end(), tag.begin(), tag.end());
  ASSERT_NE(entry, damaged.end());
  *entry = 'x';  // a profile without red
  ASSERT_EQ(spaceFromProfile(damaged.data(), damaged.size()), nullptr);
  EXPECT_EQ(problemsTold, 0);
  // The same, done by the process.
  const cmsHPROFILE own = cmsOpenProfileFromMem(damaged.data(), static_cast<cmsUInt32Number>(damaged.size()));
  ASSERT_NE(own, nullptr);
  EXPECT_EQ(cmsCreateTransform(own, TYPE_RGB_DBL, own, TYPE_RGB_DBL, INTENT_RELATIVE_COLORIMETRIC, 0),
            nullptr);
  EXPECT_GT(problemsTold, 0);
  cmsCloseProfile(own);
  cmsSetLogErrorHandler(nullptr);
}

TEST(Memory, SpacesAndColoursAreGoneWhenNobodyHoldsThem) {
  countObjects();
  const std::array<float, kMostComponents> half{0.5F, 0.5F, 0.5F, 0.5F, 0.5F};
  std::array<float, kMostComponents> converted{};
  const Space kept = predefinedSpace("sRGBColorSpace");  // for the life of the process
  const int spacesBefore = liveObjects("NSColorSpace");
  const int coloursBefore = liveObjects("QVXProfileColor");
  for (int i = 0; i < 100; ++i) {
    const Space cmyk = spaceNamed("ps_cmyk.icc");
    ASSERT_EQ(convertColour(cmyk, half.data(), kept, converted.data()), 4);
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
