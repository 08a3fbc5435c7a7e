// tests/libcocoa/colours/damage_test.cpp - thousands of damaged profiles, list files and pasted colours.
//
// Nothing may raise or crash; what is accepted must be usable. The damage is the same in every run, and
// QVX_DAMAGE_TIMES=10 in the environment makes ten times as many rounds of it.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "tests/libcocoa/colours/colour_calls.h"

namespace {

namespace fs = std::filesystem;
using Bytes = std::vector<std::uint8_t>;

Bytes readFile(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

// A new file each time: file systems write one out at once when it is truncated and closed.
void writeFile(const fs::path& path, const Bytes& bytes) {
  fs::remove(path);
  std::ofstream out(path, std::ios::binary);
  std::copy(bytes.begin(), bytes.end(), std::ostreambuf_iterator<char>(out));
}

// Some bytes changed, and now and then a piece cut off, doubled, or a word made absurd.
class Damager {
 public:
  explicit Damager(unsigned seed) : random_(seed) {}

  Bytes operator()(Bytes bytes) {
    const unsigned changes = 1 + below(8);
    for (unsigned i = 0; i < changes && !bytes.empty(); ++i) changeOnce(bytes);
    return bytes;
  }

 private:
  unsigned below(std::size_t limit) { return static_cast<unsigned>(random_() % limit); }

  void changeOnce(Bytes& bytes) {
    const std::size_t at = below(bytes.size());
    switch (below(8)) {
      case 0:
        bytes.resize(at);
        break;
      case 1:
        for (std::size_t i = at; i < at + 4 && i < bytes.size(); ++i) bytes[i] = below(2) != 0 ? 0xFF : 0;
        break;
      case 2: {
        const Bytes piece(bytes.begin() + static_cast<std::ptrdiff_t>(at),
                          bytes.begin() + static_cast<std::ptrdiff_t>(std::min(at + 16, bytes.size())));
        bytes.insert(bytes.begin() + static_cast<std::ptrdiff_t>(at), piece.begin(), piece.end());
        break;
      }
      case 3:
        bytes[at] ^= static_cast<std::uint8_t>(1U << below(8));
        break;
      default:
        bytes[at] = static_cast<std::uint8_t>(below(256));
        break;
    }
  }

  std::mt19937 random_;
};

class ListFile {
 public:
  ListFile() {
    std::string made = (fs::temp_directory_path() / "colour-damage-XXXXXX").string();
    if (mkdtemp(made.data()) == nullptr) throw std::runtime_error("no temporary folder");
    folder_ = made;
  }
  ~ListFile() {
    std::error_code ignored;
    fs::remove_all(folder_, ignored);
  }
  ListFile(const ListFile&) = delete;
  ListFile& operator=(const ListFile&) = delete;
  [[nodiscard]] fs::path path() const { return folder_ / "list.clr"; }

 private:
  fs::path folder_;
};

unsigned timesAsMany() {
  const char* const wanted = std::getenv("QVX_DAMAGE_TIMES");
  return wanted == nullptr ? 1 : static_cast<unsigned>(std::max(1UL, std::strtoul(wanted, nullptr, 10)));
}

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
  damageProfile("sgray.icc", 300);
}
TEST(DamagedProfiles, OfRGBRaiseNothing) {
  damageProfile("srgb.icc", 300);
}
TEST(DamagedProfiles, OfLabRaiseNothing) {
  damageProfile("lab.icc", 200);
}
TEST(DamagedProfiles, OfCMYKRaiseNothing) {
  damageProfile("ps_cmyk.icc", 200);
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
  ASSERT_EQ(writeListFile(file.path().c_str(), 0), 1);
  ASSERT_EQ(colorsInListFile(file.path().c_str()), 4);
  damageList(readFile(file.path()), 3000, 1);
}

TEST(DamagedLists, WithExactColoursRaiseNothing) {
  const ListFile file;
  ASSERT_EQ(writeListFile(file.path().c_str(), 1), 1);
  ASSERT_EQ(colorsInListFile(file.path().c_str()), 6);
  damageList(readFile(file.path()), 2000, 2);
}

TEST(DamagedLists, OfTextRaiseNothing) {
  const std::string text = "3\n0 0.25 0.5 0.75 1 first\n0 1 0 0 0.5 the second\n0 0 0 0 1 third\n";
  damageList({text.begin(), text.end()}, 2000, 3);
}

TEST(DamagedPasteboards, RaiseNothing) {
  Bytes whole(pasteboardBytes(nullptr, 0));
  pasteboardBytes(whole.data(), whole.size());
  ASSERT_EQ(colorFromBytes(whole.data(), whole.size()), 1);
  Damager damaged(4);
  unsigned colours = 0;
  const unsigned rounds = 2000 * timesAsMany();
  for (unsigned i = 0; i < rounds; ++i) {
    const Bytes bytes = damaged(whole);
    const int found = colorFromBytes(bytes.data(), bytes.size());
    ASSERT_NE(found, kRaised) << "round " << i;
    colours += found == 1 ? 1 : 0;
  }
  std::printf("%u of %u damaged pieces are still colours\n", colours, rounds);
}

}  // namespace
