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

TEST(TIFFStrip, OfEachPlaneIsItsOwn) {
  const Bytes file{1, 2, 3, 4, 5, 6};
  QVXBitmap bitmap{};
  bitmap.height = 1;
  bitmap.bytesPerRow = 2;
  bitmap.packing = kNotPacked;
  bitmap.starts[1] = 3;
  bitmap.sizes[0] = 1;
  bitmap.sizes[1] = 2;
  Bytes pixels(2);
  EXPECT_FALSE(QVXReadPlane(file.data(), &bitmap, 0, pixels.data()));
  EXPECT_TRUE(QVXReadPlane(file.data(), &bitmap, 1, pixels.data()));
  EXPECT_EQ(pixels, (Bytes{4, 5}));
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

TEST(LZWStrip, MayEndWithTheLastBitOfAByte) {
  EXPECT_EQ(Unpacked(kLZW, Packed({kClear, 1, 2, 3, 4, 5, 6, 7}), 7), (Bytes{1, 2, 3, 4, 5, 6, 7}));
}

TEST(LZWStrip, HoldsStringsThatGrow) {
  EXPECT_EQ(Unpacked(kLZW, Packed({kClear, 7, 8, 258, 260}), 7), (Bytes{7, 8, 7, 8, 7, 8, 7}));
}

// Every pixel by a code of its own. A code takes one bit more as soon as the table lacks one entry of what
// its bits can count, and never more than twelve. Before the pixel of that number the table is cleared.
Bytes PackedOneByOne(const Bytes& pixels, std::size_t cleared = 0) {
  Bytes strip;
  unsigned bits = 0;
  unsigned held = 0;
  const auto put = [&](unsigned code, unsigned width) {
    held = held << width | code;
    for (bits += width; bits >= 8; bits -= 8) strip.push_back(static_cast<std::uint8_t>(held >> (bits - 8)));
  };
  unsigned entries = 258;
  const auto width = [&] { return entries < 511 ? 9U : entries < 1023 ? 10U : entries < 2047 ? 11U : 12U; };
  put(kClear, 9);
  for (std::size_t i = 0; i < pixels.size(); ++i) {
    const bool isFirst = i == 0 || i == cleared;
    if (i > 0 && isFirst) {
      put(kClear, width());
      entries = 258;
    }
    put(pixels[i], width());
    if (!isFirst) ++entries;
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

TEST(LZWStrip, HasNarrowCodesAgainAfterAClearCode) {
  Bytes pixels(1000);
  for (std::size_t i = 0; i < pixels.size(); ++i) pixels[i] = static_cast<std::uint8_t>(i * 7 % 251);
  EXPECT_EQ(Unpacked(kLZW, PackedOneByOne(pixels, 600), pixels.size()), pixels);
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
    QVXBitmap bitmap{};
    const Bytes file = File(fields);
    ASSERT_TRUE(QVXOpenBitmap(file.data(), file.size(), &bitmap)) << tag;
    EXPECT_EQ(bitmap.samplesPerPixel, 1U) << tag;
    EXPECT_EQ(bitmap.packing, kNotPacked) << tag;
    EXPECT_FALSE(bitmap.isPlanar) << tag;
  }
}

TEST(TIFFFile, HasABitForASampleThatSaysNoSize) {
  Fields fields = kSmall;
  fields.erase(258);
  QVXBitmap bitmap{};
  const Bytes file = File(fields);
  ASSERT_TRUE(QVXOpenBitmap(file.data(), file.size(), &bitmap));
  EXPECT_EQ(bitmap.bitsPerSample, 1U);
  EXPECT_EQ(bitmap.bytesPerRow, 1U);
}

TEST(TIFFFile, MustSayWhatHasNoUsualValue) {
  for (const std::uint32_t tag : {256U, 257U, 273U, 279U}) {
    Fields fields = kSmall;
    fields.erase(tag);
    EXPECT_FALSE(IsTaken(File(fields))) << tag;
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

TEST(TIFFFile, TakesEverySizeOfASample) {
  // A row of three samples: bits, bytes.
  const Fields sizes{{1, 1}, {2, 1}, {4, 2}, {8, 3}, {16, 6}};
  for (const auto& [bits, bytes] : sizes) {
    Fields fields = kSmall;
    fields[256] = 3;
    fields[258] = bits;
    QVXBitmap bitmap{};
    const Bytes file = File(fields);
    ASSERT_TRUE(QVXOpenBitmap(file.data(), file.size(), &bitmap)) << bits;
    EXPECT_EQ(bitmap.bitsPerSample, bits);
    EXPECT_EQ(bitmap.bytesPerRow, bytes);
    EXPECT_EQ(bitmap.starts[0], 8U);
    EXPECT_EQ(bitmap.sizes[0], 4U);
  }
}

TEST(TIFFFile, TakesUpToFiveSamplesOfAPixel) {
  for (std::uint32_t samples = 1; samples <= 5; ++samples) {
    Fields fields = kSmall;
    fields[277] = samples;
    QVXBitmap bitmap{};
    const Bytes file = File(fields);
    ASSERT_TRUE(QVXOpenBitmap(file.data(), file.size(), &bitmap)) << samples;
    EXPECT_EQ(bitmap.samplesPerPixel, samples);
    EXPECT_EQ(bitmap.bytesPerRow, 2 * samples);
    EXPECT_EQ(bitmap.planes, 1U);
  }
}

// The file with a field of several values, which stand behind the directory or in the field itself.
Bytes FileWith(std::uint32_t tag, std::uint32_t type, std::uint32_t count, const Bytes& values,
               Bytes file = File(kSmall)) {
  std::size_t field = 14;
  while (file[field] + 256U * file[field + 1] != tag) field += 12;
  file[field + 2] = static_cast<std::uint8_t>(type);
  file[field + 4] = static_cast<std::uint8_t>(count);
  if (values.size() <= 4) {
    std::copy(values.begin(), values.end(), file.begin() + static_cast<std::ptrdiff_t>(field + 8));
  } else {
    file[field + 8] = static_cast<std::uint8_t>(file.size());
    file.insert(file.end(), values.begin(), values.end());
  }
  return file;
}

constexpr std::uint32_t kByte = 1;
constexpr std::uint32_t kShort = 3;
constexpr std::uint32_t kLong = 4;

TEST(TIFFFile, HasAsManyStripsAsPlanes) {
  Fields fields = kSmall;
  fields[277] = 2;
  fields[284] = 2;
  EXPECT_FALSE(IsTaken(File(fields)));  // two planes, one strip
  const Bytes twoStrips = FileWith(273, kLong, 2, {8, 0, 0, 0, 8, 0, 0, 0});
  EXPECT_FALSE(IsTaken(twoStrips));
  EXPECT_FALSE(IsTaken({twoStrips.begin(), twoStrips.end() - 1}));
  fields[277] = 1;
  QVXBitmap bitmap{};
  const Bytes file = File(fields);
  ASSERT_TRUE(QVXOpenBitmap(file.data(), file.size(), &bitmap));
  EXPECT_TRUE(bitmap.isPlanar);
  EXPECT_EQ(bitmap.planes, 1U);
  EXPECT_EQ(bitmap.bytesPerRow, 2U);
}

TEST(TIFFFile, MayHaveShortAndLongNumbersInAndBehindAField) {
  EXPECT_TRUE(IsTaken(FileWith(258, kShort, 1, {8, 0})));
  EXPECT_TRUE(IsTaken(FileWith(258, kShort, 2, {8, 0, 8, 0})));
  EXPECT_TRUE(IsTaken(FileWith(258, kShort, 3, {8, 0, 8, 0, 8, 0})));
  EXPECT_TRUE(IsTaken(FileWith(258, kLong, 2, {8, 0, 0, 0, 8, 0, 0, 0})));
  EXPECT_FALSE(IsTaken(FileWith(258, kByte, 1, {8, 0, 0, 0})));
  EXPECT_FALSE(IsTaken(FileWith(258, 5, 1, {8, 0, 0, 0})));
  EXPECT_FALSE(IsTaken(FileWith(258, kShort, 0, {8, 0})));
}

TEST(TIFFFile, IsRefusedForANumberOfAnotherKind) {
  for (const auto& [tag, value] : kSmall) {
    const Bytes number{static_cast<std::uint8_t>(value), 0, 0, 0};
    EXPECT_TRUE(IsTaken(FileWith(tag, kLong, 1, number))) << tag;
    EXPECT_FALSE(IsTaken(FileWith(tag, kByte, 1, number))) << tag;
  }
}

TEST(TIFFFile, HoldsTheValuesBehindAFieldToTheLastByte) {
  for (const std::uint32_t type : {kShort, kLong}) {
    Bytes file = FileWith(
        258, type, 3, type == kShort ? Bytes{8, 0, 8, 0, 8, 0} : Bytes{8, 0, 0, 0, 8, 0, 0, 0, 8, 0, 0, 0});
    EXPECT_TRUE(IsTaken(file));
    const std::size_t size = file.size();
    for (std::size_t missing = 1; missing <= 6; ++missing) {
      QVXBitmap bitmap{};
      EXPECT_FALSE(QVXOpenBitmap(file.data(), size - missing, &bitmap)) << type << ' ' << missing;
    }
  }
}

TEST(TIFFFile, HoldsTheStripOfEachPlane) {
  Fields fields = kSmall;
  fields[277] = 2;
  fields[284] = 2;
  const auto planes = [&](std::uint8_t second) {
    return FileWith(279, kShort, 2, {2, 0, second, 0}, FileWith(273, kShort, 2, {8, 0, 10, 0}, File(fields)));
  };
  EXPECT_TRUE(IsTaken(planes(2)));
  EXPECT_FALSE(IsTaken(planes(255)));
}

TEST(TIFFFile, HasOneSizeForAllSamples) {
  EXPECT_FALSE(IsTaken(FileWith(258, kShort, 2, {8, 0, 4, 0})));
  EXPECT_FALSE(IsTaken(FileWith(258, kShort, 3, {8, 0, 4, 0, 8, 0})));
  EXPECT_FALSE(IsTaken(FileWith(258, kShort, 3, {8, 0, 8, 0, 4, 0})));
}

TEST(TIFFFile, HasAtMostFiveValuesInAField) {
  EXPECT_TRUE(IsTaken(FileWith(258, kShort, 5, {8, 0, 8, 0, 8, 0, 8, 0, 8, 0})));
  EXPECT_FALSE(IsTaken(FileWith(258, kShort, 6, {8, 0, 8, 0, 8, 0, 8, 0, 8, 0, 8, 0})));
}

TEST(TIFFFile, HasAtMost64Fields) {
  Fields fields = kSmall;
  for (std::uint32_t tag = 1000; fields.size() < 64; ++tag) fields[tag] = 0;
  EXPECT_TRUE(IsTaken(File(fields)));
  fields[2000] = 0;
  EXPECT_FALSE(IsTaken(File(fields)));
}

TEST(TIFFFile, BeginsAsGNUstepBeginsIt) {
  for (std::size_t i = 0; i < 4; ++i) {
    Bytes file = File(kSmall);
    file[i] ^= 1;
    EXPECT_FALSE(IsTaken(file)) << i;
  }
}

TEST(TIFFFile, TakesTheSmallestAndTheLargestSides) {
  for (const std::uint32_t tag : {256U, 257U}) {
    for (const std::uint32_t side : {1U, 65535U}) {
      Fields fields = kSmall;
      fields[tag] = side;
      fields[278] = 65535;
      EXPECT_TRUE(IsTaken(File(fields))) << tag << " is " << side;
    }
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
