// tests/libcocoa/colours/changed_bytes_test.cpp - what becomes of profiles, archives and trailers of which
// one byte is another.
//
// changed_bytes.txt has a character for each byte, in their order: what is read with that byte changed.
//   .  nothing      =  the same as without the change      x  something else      !  one is raised
// A test that fails prints what it found; where that is as it should be, it takes the place of those lines.
#include <gtest/gtest.h>

#include <functional>
#include <sstream>

#include "tests/libcocoa/colours/colour_calls.h"
#include "tests/libcocoa/colours/damage.h"
#include "tests/libcocoa/colours/trailer.h"

namespace {

using damage::Bytes;

struct Change {
  const char* name;
  std::uint8_t (*made)(std::uint8_t);
};
constexpr Change kChanges[] = {
    {"one more", [](std::uint8_t byte) { return static_cast<std::uint8_t>(byte + 1); }},
    {"one less", [](std::uint8_t byte) { return static_cast<std::uint8_t>(byte - 1); }},
    {"bit 5", [](std::uint8_t byte) { return static_cast<std::uint8_t>(byte ^ 0x20U); }},
    {"bit 7", [](std::uint8_t byte) { return static_cast<std::uint8_t>(byte ^ 0x80U); }},
};

// The lines of the approved file from the heading on, to the next empty one.
std::string Approved(const std::string& heading) {
  std::ifstream in(QVX_CHANGED_BYTES);
  std::string lines;
  std::string line;
  while (std::getline(in, line) && line != heading) {
  }
  for (; in && !line.empty(); std::getline(in, line)) lines += line + '\n';
  return lines;
}

// Compares what `told` says of the bytes from begin to end, each changed, with the approved lines.
void Compare(const std::string& name, const Bytes& whole, std::size_t begin, std::size_t end,
             const std::function<unsigned(const Bytes&)>& told) {
  const unsigned unchanged = told(whole);
  ASSERT_GT(unchanged, 1U);
  for (const Change& change : kChanges) {
    const std::string heading = name + ", " + change.name;
    std::ostringstream found;
    found << heading;
    for (std::size_t at = begin; at < end; ++at) {
      Bytes changed = whole;
      changed[at] = change.made(changed[at]);
      const unsigned now = told(changed);
      if ((at - begin) % 100 == 0) found << '\n';
      found << (now == 0 ? '.' : now == 1 ? '!' : now == unchanged ? '=' : 'x');
    }
    found << '\n';
    EXPECT_EQ(found.str(), Approved(heading));
  }
}

// 2 for a space that equals the one of the whole profile, 3 for another.
TEST(ChangedBytes, OfAProfilesHeader) {
  const Bytes whole = damage::readFile(std::filesystem::path(QVX_ICC_FOLDER) / "sgray.icc");
  const Space space = spaceFromProfile(whole.data(), whole.size());
  Compare("header of a profile", whole, 0, 132, [&](const Bytes& bytes) {
    const Space changed = spaceFromProfile(bytes.data(), bytes.size());
    const unsigned told = changed == nullptr ? 0 : spacesAreEqual(changed, space) != 0 ? 2 : 3;
    releaseSpace(changed);
    return told;
  });
  releaseSpace(space);
}

TEST(ChangedBytes, OfAnArchivedPattern) {
  Bytes whole(archiveWithPattern(kPackBits, 0, nullptr, 0));
  archiveWithPattern(kPackBits, 0, whole.data(), whole.size());
  Compare("archived pattern", whole, 0, whole.size(),
          [](const Bytes& bytes) { return colorTold(bytes.data(), bytes.size()); });
}

TEST(ChangedBytes, OfAnArchivedNamedColour) {
  Bytes whole(archiveOfNamedColor(nullptr, 0));
  archiveOfNamedColor(whole.data(), whole.size());
  Compare("archived named colour", whole, 0, whole.size(),
          [](const Bytes& bytes) { return colorTold(bytes.data(), bytes.size()); });
}

// Of red and the other kinds that GNUstep has, without a trailer.
TEST(ChangedBytes, OfAnArchivedList) {
  const damage::ListFile file;
  ASSERT_EQ(writeListFile(file.path().c_str(), kStockColours), 1);
  const Bytes whole = damage::readFile(file.path());
  Compare("archived list", whole, 0, whole.size(), [&](const Bytes& bytes) {
    damage::writeFile(file.path(), bytes);
    return listTold(file.path().c_str());
  });
}

// One colour in the pasteboard's way. The seal is made again, so that the checksum is right.
TEST(ChangedBytes, OfATrailer) {
  Bytes whole(pasteboardBytes(nullptr, 0));
  pasteboardBytes(whole.data(), whole.size());
  const std::size_t end = whole.size() - kSealSize;
  constexpr std::size_t kTrailer =
      10 * 4;  // no profile; a colour without a key of four components; no pattern
  Compare("trailer", whole, end - kTrailer, end, [&](Bytes bytes) {
    MakeSeal(bytes.data(), end, kTrailer, bytes.data() + end);
    return colorTold(bytes.data(), bytes.size());
  });
  Compare("seal", whole, end, whole.size(),
          [](const Bytes& bytes) { return colorTold(bytes.data(), bytes.size()); });
}

}  // namespace
