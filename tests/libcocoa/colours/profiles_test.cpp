// tests/libcocoa/colours/profiles_test.cpp - profiles by their functions: what is told of them, who holds
// them, and numbers from one to another.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <set>
#include <string>

#include "tests/libcocoa/colours/damage.h"

extern "C" {
#include "libcocoa/profiles/colour_profiles.h"
#include "libcocoa/profiles/components.h"
#include "libcocoa/profiles/hash.h"
}

namespace {

using damage::Bytes;

Bytes File(const char* name) {
  return damage::readFile(std::filesystem::path(QVX_ICC_FOLDER) / name);
}

QVXProfile* Opened(const Bytes& bytes) {
  return QVXProfileOpen(bytes.data(), bytes.size());
}

std::string NameOf(const QVXProfile* profile) {
  std::size_t length = 0;
  const std::uint16_t* const units = QVXProfileDescription(profile, &length);
  return {units, units + length};
}

TEST(Profile, TellsModelChannelsAndName) {
  struct Told {
    const char* file;
    int model;
    unsigned channels;
    const char* name;
  };
  constexpr std::array<Told, 4> kTold{{{"sgray.icc", QVXGrayModel, 1, "Artifex Software sGray ICC Profile"},
                                       {"srgb.icc", QVXRGBModel, 3, "Artifex Software sRGB ICC Profile"},
                                       {"default_cmyk.icc", QVXCMYKModel, 4, "Artifex CMYK SWOP Profile"},
                                       {"lab.icc", QVXLabModel, 3, "Lab2Lab"}}};
  for (const Told& told : kTold) {
    const Bytes bytes = File(told.file);
    QVXProfile* const profile = Opened(bytes);
    ASSERT_NE(profile, nullptr) << told.file;
    EXPECT_EQ(QVXProfileModel(profile), told.model) << told.file;
    EXPECT_EQ(QVXProfileChannels(profile), told.channels) << told.file;
    EXPECT_EQ(NameOf(profile), told.name);
    EXPECT_TRUE(QVXProfileLeadsBothWays(profile)) << told.file;
    std::size_t size = 0;
    const auto* const kept = static_cast<const std::uint8_t*>(QVXProfileBytes(profile, &size));
    EXPECT_EQ(Bytes(kept, kept + size), bytes) << told.file;
    QVXProfileRelease(profile);
  }
}

TEST(Profile, IsOneAndTheSameWhileItLives) {
  const Bytes bytes = File("a98.icc");
  QVXProfile* const one = Opened(bytes);
  EXPECT_EQ(Opened(bytes), one);
  EXPECT_EQ(QVXProfileFromHandle(one), one);
  QVXProfileRelease(one);
  QVXProfileRelease(one);
  EXPECT_EQ(QVXProfileFromHandle(one), one);  // by the last reference
  QVXProfileRelease(one);
  QVXProfileRelease(one);
  EXPECT_EQ(QVXProfileFromHandle(one), nullptr);
  EXPECT_EQ(QVXProfileFromHandle(nullptr), nullptr);
  QVXProfileRelease(nullptr);
}

TEST(Profile, IsAnotherForOtherColours) {
  QVXProfile* const one = Opened(File("a98.icc"));
  QVXProfile* const other = Opened(File("srgb.icc"));
  EXPECT_NE(one, other);
  EXPECT_NE(QVXProfileHash(one), QVXProfileHash(other));
  QVXProfileRelease(one);
  EXPECT_EQ(QVXProfileFromHandle(one), nullptr);
  EXPECT_EQ(QVXProfileFromHandle(other), other);
  QVXProfileRelease(other);
  QVXProfileRelease(other);
}

// Those of Little CMS 2.14: in whatever run and on whatever machine, archives that hold them say the same.
TEST(BuiltInProfile, HasTheseBytes) {
  struct Known {
    std::size_t size;
    std::uint32_t hash;
    const char* name;
  };
  constexpr std::array<Known, QVXBuiltInCount> kKnown{{{596, 0x43A4B3A0U, "sRGB IEC61966-2.1"},
                                                       {576, 0x9BA9A9D2U, "Adobe RGB (1998)"},
                                                       {584, 0x92F03860U, "Generic RGB Profile"},
                                                       {360, 0xB1C597EAU, "Generic Gray Profile"},
                                                       {380, 0x33720CDCU, "Generic Gray Gamma 2.2 Profile"}}};
  for (int which = 0; which < QVXBuiltInCount; ++which) {
    const Known& known = kKnown.at(static_cast<std::size_t>(which));
    const QVXProfile* const profile = QVXProfileBuiltIn(static_cast<QVXBuiltIn>(which));
    ASSERT_NE(profile, nullptr) << known.name;
    EXPECT_EQ(QVXProfileBuiltIn(static_cast<QVXBuiltIn>(which)), profile);
    EXPECT_EQ(NameOf(profile), known.name);
    EXPECT_TRUE(QVXProfileLeadsBothWays(profile)) << known.name;
    std::size_t size = 0;
    const auto* const bytes = static_cast<const std::uint8_t*>(QVXProfileBytes(profile, &size));
    std::uint32_t hash = QVXHashOfNothing;
    for (std::size_t i = 0; i < size; ++i) hash = QVXHashWith(hash, bytes[i]);
    EXPECT_EQ(size, known.size) << known.name;
    EXPECT_EQ(hash, known.hash) << known.name;
  }
}

using Numbers = std::array<double, QVXMostChannels>;

TEST(Conversion, TakesWhatIsNoNumberForNothingAndWritesTheChannelsOnly) {
  const QVXProfile* const srgb = QVXProfileBuiltIn(QVXBuiltInSRGB);
  const QVXProfile* const gray = QVXProfileBuiltIn(QVXBuiltInGamma22Gray);
  Numbers in{};
  Numbers out{};
  out.fill(-7);
  in[0] = in[1] = in[2] = 1;
  ASSERT_TRUE(QVXConvert(srgb, in.data(), gray, out.data()));
  EXPECT_NEAR(out[0], 1, 1e-4);
  EXPECT_EQ(out[1], -7);
  in[0] = in[1] = in[2] = std::numeric_limits<double>::quiet_NaN();
  ASSERT_TRUE(QVXConvert(srgb, in.data(), gray, out.data()));
  EXPECT_NEAR(out[0], 0, 1e-4);
}

TEST(Conversion, KeepsTheUnitsOfLab) {
  QVXProfile* const lab = Opened(File("lab.icc"));
  const QVXProfile* const srgb = QVXProfileBuiltIn(QVXBuiltInSRGB);
  const Numbers in{50, 0, 0};
  Numbers out{};
  ASSERT_TRUE(QVXConvert(lab, in.data(), srgb, out.data()));
  for (std::size_t i = 0; i < 3; ++i) EXPECT_NEAR(out.at(i), 0.466, 0.001);
  Numbers back{};
  ASSERT_TRUE(QVXConvert(srgb, out.data(), lab, back.data()));
  EXPECT_NEAR(back[0], 50, 0.01);
  QVXProfileRelease(lab);
}

TEST(Components, AreHeldWithinTheirRange) {
  constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  EXPECT_EQ(QVXClip(-0.5), 0);
  EXPECT_EQ(QVXClip(0.5), 0.5);
  EXPECT_EQ(QVXClip(1.5), 1);
  EXPECT_EQ(QVXClip(kNaN), 0);
  EXPECT_FALSE(std::signbit(QVXClip(-0.0)));
  EXPECT_EQ(QVXHeldComponent(1.5, false), 1);
  EXPECT_EQ(QVXHeldComponent(-60, true), -60);
  EXPECT_EQ(QVXHeldComponent(kInfinity, true), 0);
  EXPECT_EQ(QVXHeldComponent(kNaN, true), 0);
}

TEST(Components, OfEachPlaceCountInTheHash) {
  std::array<float, 4> one{0.25F, 0.5F, 0.75F, 1};
  const std::uint32_t hash = QVXHashOfComponents(one.data(), 4);
  EXPECT_NE(QVXHashOfComponents(one.data(), 3), hash);
  for (float& each : one) {
    const float kept = each;
    each = 0.125F;
    EXPECT_NE(QVXHashOfComponents(one.data(), 4), hash);
    each = kept;
  }
  EXPECT_EQ(QVXHashOfComponents(one.data(), 4), hash);
  std::swap(one[0], one[1]);
  EXPECT_NE(QVXHashOfComponents(one.data(), 4), hash);
}

TEST(Components, BehindTheLastDoNotCountInTheHash) {
  const std::array<float, 2> one{0.5F, 0};
  const std::array<float, 2> other{0.5F, 1};
  EXPECT_EQ(QVXHashOfComponents(one.data(), 1), QVXHashOfComponents(other.data(), 1));
}

std::uint32_t HashOf(float component) {
  return QVXHashOfComponents(&component, 1);
}

TEST(Components, ThatAreEqualHaveEqualHashes) {
  EXPECT_EQ(HashOf(-0.0F), HashOf(0.0F));
  EXPECT_NE(HashOf(1), HashOf(0));
  EXPECT_NE(HashOf(2), HashOf(1));
}

// The lowest bits choose the place in a table, and those of most components are zeros.
TEST(Components, SpreadOverTheLowestBitsOfTheHash) {
  for (const int steps : {16, 128, 255}) {
    std::set<std::uint32_t> places;
    for (int i = 0; i < steps; ++i)
      places.insert(HashOf(static_cast<float>(i) / static_cast<float>(steps)) % 64);
    EXPECT_GT(places.size(), std::min(steps, 64) * 3U / 4) << steps;
  }
}

TEST(Components, AreFifteenAndAnAlphaAtMost) {
  EXPECT_EQ(int{QVXMostChannels}, 15);
  EXPECT_EQ(int{QVXMostComponents}, 16);
}

}  // namespace
