// tests/hostrun/macho/bytes_test.cpp - what is read from bytes, at the ends of what there is and of what
// fits.
#include "hostrun/macho/bytes.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

namespace {

using namespace hostrun::macho;

std::vector<std::uint8_t> Made(std::initializer_list<unsigned> codes) {
  return {codes.begin(), codes.end()};
}

// What reading says; empty: nothing.
template <class Read>
std::string ProblemOf(const std::vector<std::uint8_t>& bytes, Read read) {
  try {
    Cursor in(bytes, "the test");
    read(in);
    return {};
  } catch (const FormatError& error) {
    return error.what();
  }
}

TEST(DesktopBytes, HaveEachPartThatIsWhollyInside) {
  const std::vector<std::uint8_t> bytes = Made({1, 2, 3});
  EXPECT_EQ(Part(bytes, 0, 3, "it").size(), 3U);
  EXPECT_EQ(Part(bytes, 2, 1, "it")[0], 3);
  EXPECT_TRUE(Part(bytes, 3, 0, "it").empty());
  for (const auto& [offset, size] :
       {std::pair(0U, 4U), {3U, 1U}, {4U, 0U}, {1U, 0xFFFFFFFFU}, {0xFFFFFFFFU, 2U}})
    EXPECT_THROW(Part(bytes, offset, size, "it"), FormatError) << offset << " " << size;
}

TEST(DesktopBytes, AreReadOneAfterTheOther) {
  const std::vector<std::uint8_t> bytes = Made({1, 2, 0, 0, 0, 'a', 'b', 0, 9, 7});
  Cursor in(bytes, "the test");
  EXPECT_EQ(in.Byte(), 1);
  EXPECT_EQ(in.Word(), 2U);
  EXPECT_EQ(in.at(), 5U);
  EXPECT_EQ(in.Text(), "ab");
  EXPECT_EQ(in.at(), 8U);
  in.Skip(1);
  EXPECT_FALSE(in.AtEnd());
  EXPECT_EQ(in.Unsigned(), 7U);
  EXPECT_TRUE(in.AtEnd());
  in.GoTo(8);
  EXPECT_EQ(in.Byte(), 9);
  in.GoTo(10);
  EXPECT_TRUE(in.AtEnd());
}

TEST(DesktopBytes, EndWhereTheyEnd) {
  const std::vector<std::uint8_t> three = Made({0x80, 0x80, 0x80});
  const std::string end = "wanted the test inside of its 3 bytes, found ";
  EXPECT_EQ(ProblemOf(three, [](Cursor& in) { in.Word(); }), end + "4 bytes at 0x0");
  EXPECT_EQ(ProblemOf(three, [](Cursor& in) { in.Skip(4); }), end + "4 bytes at 0x0");
  EXPECT_EQ(ProblemOf(three, [](Cursor& in) { in.GoTo(4); }), end + "0 bytes at 0x4");
  EXPECT_EQ(ProblemOf(three, [](Cursor& in) { in.Unsigned(); }), end + "1 bytes at 0x3");
  EXPECT_EQ(ProblemOf(three, [](Cursor& in) { in.Text(); }), end + "1 bytes at 0x3");
}

TEST(DesktopBytes, HoldNumbersOf32Bits) {
  const auto unsignedOf = [](std::initializer_list<unsigned> codes) {
    const std::vector<std::uint8_t> bytes = Made(codes);
    return Cursor(bytes, "the test").Unsigned();
  };
  EXPECT_EQ(unsignedOf({0x00}), 0U);
  EXPECT_EQ(unsignedOf({0x7F}), 127U);
  EXPECT_EQ(unsignedOf({0x80, 0x01}), 128U);
  EXPECT_EQ(unsignedOf({0xFF, 0xFF, 0xFF, 0xFF, 0x0F}), 0xFFFFFFFFU);
  const auto large = [](Cursor& in) { in.Unsigned(); };
  EXPECT_EQ(ProblemOf(Made({0x80, 0x80, 0x80, 0x80, 0x10}), large),
            "wanted numbers of 32 bits in the test, found a larger one");
  EXPECT_EQ(ProblemOf(Made({0x81, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x00}), large),
            "wanted numbers of at most 64 bits in the test, found a longer one");
}

TEST(DesktopBytes, HoldStepsOf64BitsOfWhichTheLowOnesCount) {
  const std::vector<std::uint8_t> back = Made({0xFC, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x01});
  Cursor in(back, "the test");
  EXPECT_EQ(in.UnsignedStep(), 0xFFFFFFFCU);
  EXPECT_TRUE(in.AtEnd());
}

TEST(DesktopBytes, HoldSignedNumbersOf32Bits) {
  const auto signedOf = [](std::initializer_list<unsigned> codes) {
    const std::vector<std::uint8_t> bytes = Made(codes);
    return Cursor(bytes, "the test").Signed();
  };
  EXPECT_EQ(signedOf({0x3F}), 63);
  EXPECT_EQ(signedOf({0x40}), -64);
  EXPECT_EQ(signedOf({0x7F}), -1);
  EXPECT_EQ(signedOf({0xC0, 0x00}), 64);
  EXPECT_EQ(signedOf({0xBF, 0x7F}), -65);
  EXPECT_EQ(signedOf({0xFF, 0xFF, 0xFF, 0xFF, 0x07}), std::numeric_limits<std::int32_t>::max());
  EXPECT_EQ(signedOf({0x80, 0x80, 0x80, 0x80, 0x78}), std::numeric_limits<std::int32_t>::min());
  EXPECT_EQ(signedOf({0xFE, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x7F}), -2);
  const auto large = [](Cursor& in) { in.Signed(); };
  for (const auto& codes : {Made({0x80, 0x80, 0x80, 0x80, 0x08}), Made({0xFF, 0xFF, 0xFF, 0xFF, 0x77})})
    EXPECT_EQ(ProblemOf(codes, large), "wanted numbers of 32 bits in the test, found a larger one");
}

TEST(DesktopBytes, HoldNamesUpToTheLongest) {
  std::vector<std::uint8_t> bytes(Cursor::kLongestText, 'x');
  bytes.push_back(0);
  EXPECT_EQ(Cursor(bytes, "the test").Text().size(), 1024U);
  bytes.insert(bytes.begin(), 'x');
  EXPECT_EQ(ProblemOf(bytes, [](Cursor& in) { in.Text(); }),
            "wanted names of at most 1024 bytes in the test, found a longer one");
}

}  // namespace
