// tests/libcocoa/colours/damage_test.cpp - thousands of damaged profiles, list files and pasted colours.
//
// Nothing may raise or crash; what is accepted must be usable. The damage is the same in every run, and
// QVX_DAMAGE_TIMES=10 in the environment makes ten times as many rounds of it.
#include "tests/libcocoa/colours/damage.h"

#include <gtest/gtest.h>

#include "tests/libcocoa/colours/colour_calls.h"

namespace {

namespace fs = std::filesystem;
using damage::Bytes;
using damage::Damager;
using damage::ListFile;
using damage::readFile;
using damage::timesAsMany;
using damage::writeFile;

void damageProfile(const char* name, unsigned rounds) {
  rounds *= timesAsMany();
  const Bytes whole = readFile(fs::path(QVX_ICC_FOLDER) / name);
  ASSERT_FALSE(whole.empty());
  Damager damaged(42);
  unsigned accepted = 0;
  for (unsigned i = 0; i < rounds; ++i) {
    const Bytes bytes = damaged(whole);
    const Space space = spaceFromProfile(bytes.data(), bytes.size());
    if (space == nullptr) continue;
    ++accepted;
    ASSERT_EQ(exerciseSpace(space), 1) << name << ", round " << i;
    releaseSpace(space);
  }
  std::printf("%s: %u of %u damaged profiles still describe a space\n", name, accepted, rounds);
}

TEST(DamagedProfiles, OfGrayRaiseNothing) {
  damageProfile("sgray.icc", 75);
}
TEST(DamagedProfiles, OfRGBRaiseNothing) {
  damageProfile("srgb.icc", 75);
}
TEST(DamagedProfiles, OfLabRaiseNothing) {
  damageProfile("lab.icc", 50);
}
TEST(DamagedProfiles, OfCMYKRaiseNothing) {
  damageProfile("ps_cmyk.icc", 50);
}

TEST(DamagedProfiles, AreAllRefusedWhenCutShort) {
  const Bytes whole = readFile(fs::path(QVX_ICC_FOLDER) / "srgb.icc");
  for (std::size_t size = 0; size < whole.size(); ++size)
    ASSERT_EQ(spaceFromProfile(whole.data(), size), nullptr) << "cut to " << size;
}

void damageList(const Bytes& whole, unsigned rounds, unsigned seed) {
  ASSERT_FALSE(whole.empty());
  rounds *= timesAsMany();
  const ListFile file;
  Damager damaged(seed);
  unsigned lists = 0;
  for (unsigned i = 0; i < rounds; ++i) {
    writeFile(file.path(), damaged(whole));
    const int found = colorsInListFile(file.path().c_str());
    ASSERT_NE(found, kRaised) << "round " << i;
    lists += found >= 0 ? 1 : 0;
  }
  std::printf("%u of %u damaged files are still lists\n", lists, rounds);
}

TEST(DamagedLists, RaiseNothing) {
  const ListFile file;
  ASSERT_EQ(writeListFile(file.path().c_str(), kStockColours), 1);
  ASSERT_EQ(colorsInListFile(file.path().c_str()), 4);
  damageList(readFile(file.path()), 750, 1);
}

TEST(DamagedLists, WithExactColoursRaiseNothing) {
  const ListFile file;
  ASSERT_EQ(writeListFile(file.path().c_str(), kExactColours), 1);
  ASSERT_EQ(colorsInListFile(file.path().c_str()), 6);
  damageList(readFile(file.path()), 500, 2);
}

TEST(DamagedLists, OfTextRaiseNothing) {
  const std::string text = "3\n0 0.25 0.5 0.75 1 first\n0 1 0 0 0.5 the second\n0 0 0 0 1 third\n";
  damageList({text.begin(), text.end()}, 500, 3);
}

TEST(DamagedPasteboards, RaiseNothing) {
  Bytes whole(pasteboardBytes(nullptr, 0));
  pasteboardBytes(whole.data(), whole.size());
  ASSERT_EQ(colorFromBytes(whole.data(), whole.size()), 1);
  Damager damaged(4);
  unsigned colours = 0;
  const unsigned rounds = 500 * timesAsMany();
  for (unsigned i = 0; i < rounds; ++i) {
    const Bytes bytes = damaged(whole);
    const int found = colorFromBytes(bytes.data(), bytes.size());
    ASSERT_NE(found, kRaised) << "round " << i;
    colours += found == 1 ? 1 : 0;
  }
  std::printf("%u of %u damaged pieces are still colours\n", colours, rounds);
}

}  // namespace
