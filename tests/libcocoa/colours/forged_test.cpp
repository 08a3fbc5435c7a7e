// tests/libcocoa/colours/forged_test.cpp - damage that no checksum finds: whoever made it made the checksum
// right.
//
// Nothing may raise or crash. QVX_DAMAGE_TIMES=80 in the environment makes 8,000 rounds of each.
#include <gtest/gtest.h>

#include "tests/libcocoa/colours/colour_calls.h"
#include "tests/libcocoa/colours/damage.h"
#include "tests/libcocoa/colours/trailer.h"

namespace {

using damage::Bytes;
using damage::Damager;
using damage::ListFile;

constexpr unsigned kRounds = 100;

// GNUstep's archive, and the trailer behind it without its seal.
struct Parts {
  Bytes archive, trailer;
};

Parts partsOf(const Bytes& whole) {
  if (whole.size() < kSealSize) throw std::runtime_error("no trailer");
  const auto end = whole.end() - kSealSize;
  std::size_t length = 0;
  for (int i = 3; i >= 0; --i) length = length << 8 | end[4 + i];
  const auto middle = end - static_cast<std::ptrdiff_t>(length - 4);
  return {{whole.begin(), middle}, {middle, end}};
}

Bytes sealed(const Parts& parts) {
  Bytes whole = parts.archive;
  whole.insert(whole.end(), parts.trailer.begin(), parts.trailer.end());
  Bytes seal(kSealSize);
  MakeSeal(whole.data(), whole.size(), parts.trailer.size(), seal.data());
  whole.insert(whole.end(), seal.begin(), seal.end());
  return whole;
}

Bytes listWith(ListContents contents) {
  const ListFile file;
  if (writeListFile(file.path().c_str(), contents) != 1) throw std::runtime_error("no list written");
  return damage::readFile(file.path());
}

Bytes pattern(Packing packing, bool inList) {
  Bytes bytes(archiveWithPattern(packing, inList ? 1 : 0, nullptr, 0));
  archiveWithPattern(packing, inList ? 1 : 0, bytes.data(), bytes.size());
  return bytes;
}

// Reads what `make` makes, so often; says how much of it could still be read.
template <typename Make>
void readLists(Make make) {
  const ListFile file;
  unsigned lists = 0;
  const unsigned rounds = kRounds * damage::timesAsMany();
  for (unsigned i = 0; i < rounds; ++i) {
    damage::writeFile(file.path(), make());
    const int found = colorsInListFile(file.path().c_str());
    ASSERT_NE(found, kRaised) << "round " << i;
    lists += found >= 0 ? 1 : 0;
  }
  std::printf("%u of %u forged files are lists\n", lists, rounds);
}

template <typename Make>
void readPasteboards(Make make) {
  unsigned colours = 0;
  const unsigned rounds = kRounds * damage::timesAsMany();
  for (unsigned i = 0; i < rounds; ++i) {
    const Bytes bytes = make();
    const int found = colorFromBytes(bytes.data(), bytes.size());
    ASSERT_NE(found, kRaised) << "round " << i;
    colours += found == 1 ? 1 : 0;
  }
  std::printf("%u of %u forged pieces are colours\n", colours, rounds);
}

TEST(Forgeries, AreSealedAsTheLibrarySealsItsOwn) {
  const Bytes whole = listWith(kPatterns);
  EXPECT_EQ(sealed(partsOf(whole)), whole);
}

TEST(ForgedLists, WithADamagedTrailerRaiseNothing) {
  const Parts parts = partsOf(listWith(kPatterns));
  Damager damaged(11);
  readLists([&] { return sealed({parts.archive, damaged(parts.trailer)}); });
}

TEST(ForgedLists, WithADamagedArchiveBeforeTheTrailerRaiseNothing) {
  const Parts parts = partsOf(listWith(kPatterns));
  Damager damaged(12);
  readLists([&] { return sealed({damaged(parts.archive), parts.trailer}); });
}

TEST(ForgedLists, WithAPatternByGNUstepRaiseNothing) {
  const std::vector<Bytes> whole{pattern(kUnpacked, true), pattern(kLZW, true), pattern(kPackBits, true)};
  Damager damaged(13);
  unsigned next = 0;
  readLists([&] { return damaged(whole[next++ % whole.size()]); });
}

TEST(ForgedPasteboards, WithAPatternByGNUstepRaiseNothing) {
  const std::vector<Bytes> whole{pattern(kUnpacked, false), pattern(kLZW, false), pattern(kPackBits, false)};
  for (const Bytes& each : whole) ASSERT_EQ(colorFromBytes(each.data(), each.size()), 1);
  Damager damaged(14);
  unsigned next = 0;
  readPasteboards([&] { return damaged(whole[next++ % whole.size()]); });
}

TEST(ForgedPasteboards, WithADamagedTrailerRaiseNothing) {
  Bytes whole(pasteboardBytes(nullptr, 0));
  pasteboardBytes(whole.data(), whole.size());
  const Parts parts = partsOf(whole);
  Damager damaged(15);
  readPasteboards([&] { return sealed({parts.archive, damaged(parts.trailer)}); });
}

// Lists whose names are lists: each takes seven bytes of the archive, and hundreds of the stack to be read.
TEST(ForgedPasteboards, WithListsInListsEndBeforeTheStackDoes) {
  constexpr std::uint32_t kLists = 200'000;
  const std::string head = "GNUstep archive00002c24:00000001:00000001:00000000:";
  const std::string newClass = std::string{0x31, 1, 0, 11} + "NSColorList" + std::string{0, 0, 0, 2, 0};
  Bytes bytes(head.begin(), head.end());
  for (std::uint32_t i = 1; i <= kLists; ++i) {
    bytes.push_back(0x70);  // an object, with its number in four bytes
    for (unsigned shift : {24U, 16U, 8U, 0U}) bytes.push_back(static_cast<std::uint8_t>(i >> shift));
    if (i == 1)
      bytes.insert(bytes.end(), newClass.begin(), newClass.end());
    else
      bytes.insert(bytes.end(), {0xB1, 1});  // of the first class
  }
  EXPECT_EQ(colorFromBytes(bytes.data(), bytes.size()), 0);
}

}  // namespace
