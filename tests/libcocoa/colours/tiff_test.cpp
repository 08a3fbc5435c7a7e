// tests/libcocoa/colours/tiff_test.cpp - TIFFs made by hand: what is taken, what is refused, and nothing is
// written past the pixels.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

extern "C" {
#include "libcocoa/colours/tiff_bitmap.h"
}

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::uint32_t kNotPacked = 1;
constexpr std::uint32_t kLZW = 5;
constexpr std::uint32_t kPackBits = 32773;
constexpr std::uint8_t kGuard = 0xEE;

// The pixels of a strip of so many bytes; "refused" is none. Behind them nothing may be written.
Bytes Unpacked(std::uint32_t packing, const Bytes& strip, std::size_t size) {
  QVXBitmap bitmap{};
  bitmap.height = 1;
  bitmap.bytesPerRow = size;
  bitmap.packing = packing;
  bitmap.sizes[0] = static_cast<std::uint32_t>(strip.size());
  Bytes pixels(size + 300, kGuard);
  const bool isRead = QVXReadPlane(strip.data(), &bitmap, 0, pixels.data());
  EXPECT_TRUE(std::all_of(pixels.begin() + static_cast<std::ptrdiff_t>(size), pixels.end(),
                          [](std::uint8_t each) { return each == kGuard; }));
  pixels.resize(isRead ? size : 0);
  return pixels;
}

TEST(TIFFStrip, IsTakenAsItIsWhenItIsNotPacked) {
  EXPECT_EQ(Unpacked(kNotPacked, {1, 2, 3}, 3), (Bytes{1, 2, 3}));
  EXPECT_EQ(Unpacked(kNotPacked, {1, 2, 3}, 2), (Bytes{1, 2}));
  EXPECT_EQ(Unpacked(kNotPacked, {1, 2, 3}, 4), Bytes{});
}

TEST(PackBitsStrip, HoldsBytesAndRuns) {
  EXPECT_EQ(Unpacked(kPackBits, {1, 7, 8, 254, 9}, 5), (Bytes{7, 8, 9, 9, 9}));
  EXPECT_EQ(Unpacked(kPackBits, {128, 0, 7}, 1), Bytes{7});
}

TEST(PackBitsStrip, IsCutWhereThePixelsEnd) {
  EXPECT_EQ(Unpacked(kPackBits, {129, 9}, 3), (Bytes{9, 9, 9}));
  EXPECT_EQ(Unpacked(kPackBits, {3, 1, 2, 3, 4}, 3), (Bytes{1, 2, 3}));
}

TEST(PackBitsStrip, IsRefusedWhenItEndsTooSoon) {
  EXPECT_EQ(Unpacked(kPackBits, {254, 9}, 4), Bytes{});
  EXPECT_EQ(Unpacked(kPackBits, {2, 1, 2}, 3), Bytes{});
  EXPECT_EQ(Unpacked(kPackBits, {254}, 3), Bytes{});
}

// Codes of nine bits, the highest bit first.
Bytes Packed(const std::vector<unsigned>& codes) {
  Bytes strip((codes.size() * 9 + 7) / 8);
  std::size_t at = 0;
  for (const unsigned code : codes) {
    for (unsigned bit = 9; bit-- > 0; ++at) {
      if ((code >> bit & 1U) != 0) strip[at / 8] |= static_cast<std::uint8_t>(0x80U >> at % 8);
    }
  }
  return strip;
}

constexpr unsigned kClear = 256;
constexpr unsigned kEnd = 257;

TEST(LZWStrip, HoldsStringsThatGrow) {
  EXPECT_EQ(Unpacked(kLZW, Packed({kClear, 7, 8, 258, 260}), 7), (Bytes{7, 8, 7, 8, 7, 8, 7}));
}

// Every pixel by a code of its own. A code takes one bit more as soon as the table lacks one entry of what
// its bits can count, and never more than twelve.
Bytes PackedOneByOne(const Bytes& pixels) {
  Bytes strip;
  unsigned bits = 0;
  unsigned held = 0;
  const auto put = [&](unsigned code, unsigned width) {
    held = held << width | code;
    for (bits += width; bits >= 8; bits -= 8) strip.push_back(static_cast<std::uint8_t>(held >> (bits - 8)));
  };
  put(kClear, 9);
  unsigned entries = 258;
  for (std::size_t i = 0; i < pixels.size(); ++i) {
    put(pixels[i], entries < 511 ? 9 : entries < 1023 ? 10 : entries < 2047 ? 11 : 12);
    if (i > 0) ++entries;
  }
  put(kEnd, 12);
  put(0, 8);
  return strip;
}

TEST(LZWStrip, TakesWiderCodesAsItsTableGrowsAndKeepsAFullOne) {
  Bytes pixels(5000);
  for (std::size_t i = 0; i < pixels.size(); ++i) pixels[i] = static_cast<std::uint8_t>(i * 7 % 251);
  EXPECT_EQ(Unpacked(kLZW, PackedOneByOne(pixels), pixels.size()), pixels);
}

TEST(LZWStrip, BeginsAfreshAfterAClearCode) {
  EXPECT_EQ(Unpacked(kLZW, Packed({kClear, 7, 8, kClear, 9, 9, 258}), 5), (Bytes{7, 8, 9, 9, 9}));
  EXPECT_EQ(Unpacked(kLZW, Packed({kClear, 7, 8, kClear, 258}), 4), Bytes{});
}

TEST(LZWStrip, IsCutWhereThePixelsEnd) {
  EXPECT_EQ(Unpacked(kLZW, Packed({kClear, 7, 258, 259}), 5), (Bytes{7, 7, 7, 7, 7}));
}

TEST(LZWStrip, IsRefusedWhenItEndsTooSoonOrNamesNoString) {
  EXPECT_EQ(Unpacked(kLZW, Packed({kClear, 7, kEnd, 8}), 2), Bytes{});
  EXPECT_EQ(Unpacked(kLZW, Packed({kClear, 7}), 2), Bytes{});
  EXPECT_EQ(Unpacked(kLZW, Packed({kClear, 7, 259}), 3), Bytes{});
  EXPECT_EQ(Unpacked(kLZW, Packed({kClear, 258}), 2), Bytes{});
}

using Fields = std::map<std::uint32_t, std::uint32_t>;

// Two by two pixels of a gray byte each. The strip is before the directory.
const Fields kSmall{{256, 2}, {257, 2}, {258, 8}, {259, 1}, {266, 1}, {273, 8},
                    {277, 1}, {278, 2}, {279, 4}, {284, 1}, {317, 1}};

Bytes File(const Fields& fields) {
  Bytes file{'I', 'I', '*', 0, 12, 0, 0, 0, 1, 2, 3, 4};
  const auto put = [&](std::uint32_t number, unsigned size) {
    for (unsigned i = 0; i < size; ++i) file.push_back(static_cast<std::uint8_t>(number >> 8 * i));
  };
  put(static_cast<std::uint32_t>(fields.size()), 2);
  for (const auto& [tag, value] : fields) {
    put(tag, 2);
    put(4, 2);
    put(1, 4);
    put(value, 4);
  }
  return file;
}

bool IsTaken(const Bytes& file) {
  QVXBitmap bitmap{};
  return QVXOpenBitmap(file.data(), file.size(), &bitmap);
}

TEST(TIFFFile, IsTakenAsSmallAsItCanBe) {
  const Bytes file = File(kSmall);
  QVXBitmap bitmap{};
  ASSERT_TRUE(QVXOpenBitmap(file.data(), file.size(), &bitmap));
  EXPECT_EQ(bitmap.width, 2U);
  EXPECT_EQ(bitmap.height, 2U);
  EXPECT_EQ(bitmap.bytesPerRow, 2U);
  EXPECT_EQ(bitmap.planes, 1U);
  Bytes pixels(4);
  EXPECT_TRUE(QVXReadPlane(file.data(), &bitmap, 0, pixels.data()));
  EXPECT_EQ(pixels, (Bytes{1, 2, 3, 4}));
}

TEST(TIFFFile, MayLeaveOutWhatHasAUsualValue) {
  for (const std::uint32_t tag : {259U, 266U, 277U, 278U, 284U, 317U}) {
    Fields fields = kSmall;
    fields.erase(tag);
    EXPECT_TRUE(IsTaken(File(fields))) << tag;
  }
}

TEST(TIFFFile, IsRefusedForWhatGNUstepDoesNotWrite) {
  const std::vector<std::pair<std::uint32_t, std::uint32_t>> strange{
      {256, 0}, {256, 65536}, {257, 0}, {257, 65536}, {258, 0}, {258, 3}, {258, 32}, {259, 2},
      {259, 7}, {266, 2},     {277, 0}, {277, 6},     {278, 1}, {284, 0}, {284, 3},  {317, 2}};
  for (const auto& [tag, value] : strange) {
    Fields fields = kSmall;
    fields[tag] = value;
    EXPECT_FALSE(IsTaken(File(fields))) << tag << " is " << value;
  }
}

TEST(TIFFFile, TakesTheLargestSides) {
  for (const std::uint32_t tag : {256U, 257U}) {
    Fields fields = kSmall;
    fields[tag] = fields[278] = 65535;
    EXPECT_TRUE(IsTaken(File(fields))) << tag;
  }
}

TEST(TIFFFile, IsRefusedWhenItsStripIsNotInIt) {
  const auto size = static_cast<std::uint32_t>(File(kSmall).size());
  Fields fields = kSmall;
  fields[273] = size - 4;
  EXPECT_TRUE(IsTaken(File(fields)));
  fields[273] = size - 3;
  EXPECT_FALSE(IsTaken(File(fields)));
  fields[273] = 0xFFFFFFFE;
  EXPECT_FALSE(IsTaken(File(fields)));
}

TEST(TIFFFile, IsRefusedWhereverItIsCutOff) {
  const Bytes whole = File(kSmall);
  for (std::size_t size = 0; size < whole.size(); ++size) {
    EXPECT_FALSE(IsTaken(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)))) << size;
  }
}

}  // namespace
