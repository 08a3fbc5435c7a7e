// tests/libcocoa/colours/six_digits_test.cpp - numbers as texts: the C library's "%g", digit by digit.
#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <string>

extern "C" {
#include "libcocoa/colours/six_digits.h"
}

namespace {

std::string ByTheLibrary(float number) {
  std::string text(QVXNumberRoom + 1, '#');
  const std::size_t length = QVXWriteSixDigits(number, text.data());
  EXPECT_EQ(text.at(length), length == 0 ? '#' : 0);
  text.resize(length);
  return length == 0 ? "left to others" : text;
}

std::string ByTheCLibrary(float number) {
  char text[50];
  std::snprintf(text, sizeof text, "%g", static_cast<double>(number));
  return text;
}

TEST(SixDigits, AreThoseOfTheCLibraryAllOverTheRange) {
  constexpr std::uint32_t kStep = 997;  // a prime: no pattern of low bits is left out
  const auto least = std::bit_cast<std::uint32_t>(0.0001F) + 1;
  const auto end = std::bit_cast<std::uint32_t>(100'000.0F);
  unsigned compared = 0;
  for (std::uint32_t bits = least; bits < end; bits += kStep, ++compared) {
    const auto number = std::bit_cast<float>(bits);
    ASSERT_EQ(ByTheLibrary(number), ByTheCLibrary(number)) << bits;
    ASSERT_EQ(ByTheLibrary(-number), ByTheCLibrary(-number)) << bits;
  }
  EXPECT_GT(compared, 200'000U);
}

TEST(SixDigits, AreThoseOfTheCLibraryForEveryByteOfAComponent) {
  for (int byte = 0; byte <= 255; ++byte) {
    const float component = static_cast<float>(byte) / 255;
    EXPECT_EQ(ByTheLibrary(component), ByTheCLibrary(component));
  }
}

TEST(SixDigits, AreRoundedToTheEvenOneOfTwoThatAreAsNear) {
  EXPECT_EQ(ByTheLibrary(10000.25F), "10000.2");
  EXPECT_EQ(ByTheLibrary(10000.75F), "10000.8");
  EXPECT_EQ(ByTheLibrary(0.0009765625F), "0.000976562");
}

TEST(SixDigits, BecomeOneMoreBeforeThePointWhereRoundingCarries) {
  EXPECT_EQ(ByTheLibrary(0.99999999F), "1");
  EXPECT_EQ(ByTheLibrary(9999.9995F), "10000");
  EXPECT_EQ(ByTheLibrary(99999.995F), "100000");
}

TEST(SixDigits, OfZeroKeepItsSign) {
  EXPECT_EQ(ByTheLibrary(0.0F), "0");
  EXPECT_EQ(ByTheLibrary(-0.0F), "-0");
}

TEST(SixDigits, OfOtherMagnitudesAreLeftToOthers) {
  constexpr float kOthers[] = {std::bit_cast<float>(std::bit_cast<std::uint32_t>(0.0001F) - 1),
                               std::numeric_limits<float>::denorm_min(),
                               100'000.0F,
                               std::numeric_limits<float>::max(),
                               std::numeric_limits<float>::infinity(),
                               std::numeric_limits<float>::quiet_NaN()};
  for (const float each : kOthers) {
    EXPECT_EQ(ByTheLibrary(each), "left to others") << each;
    EXPECT_EQ(ByTheLibrary(-each), "left to others") << each;
  }
}

}  // namespace
