// tests/libcocoa/colours/archives_test.cpp - archives of colours made item by item: what is taken and what is
// refused.
#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "tests/libcocoa/colours/colour_calls.h"
#include "tests/libcocoa/colours/damage.h"
#include "tests/libcocoa/colours/trailer.h"

namespace {

using damage::Bytes;

constexpr unsigned kNothing = 0;
constexpr std::uint32_t kASCII = 1;
constexpr std::uint32_t kUTF8 = 4;
constexpr std::uint32_t kLatin1 = 5;
constexpr std::uint32_t kUnicode = 10;

// Items one behind the other. Objects and classes get their running numbers, in `width` bytes: 1, 2 or 4.
class Archive {
 public:
  explicit Archive(unsigned width = 1) : size_(width == 1 ? 0x20 : width == 2 ? 0x40 : 0x60), width_(width) {
    const std::string head = "GNUstep archive00002c24:00000001:00000001:00000000:";
    bytes_.assign(head.begin(), head.end());
  }

  Archive& object(const std::string& name, std::uint32_t version = 0) {
    reference(0x10, ++objects_);
    for (std::size_t i = 0; i < classes_.size(); ++i)
      if (classes_[i] == name) return reference(0x91, static_cast<std::uint32_t>(i + 1));
    classes_.push_back(name);
    reference(0x11, static_cast<std::uint32_t>(classes_.size()));
    return put(static_cast<std::uint32_t>(name.size()), 2).text(name).put(version, 4).put(0, 1);
  }
  // The number of the last object; for seen().
  [[nodiscard]] std::uint32_t last() const { return objects_; }
  Archive& seen(std::uint32_t number) { return reference(0x90, number); }
  Archive& nil() { return put(0x90, 1); }

  Archive& count(std::size_t count) { return put(0x26, 1).put(static_cast<std::uint32_t>(count), 4); }
  Archive& array(std::size_t count) { return put(0x15, 1).put(static_cast<std::uint32_t>(count), 4); }
  Archive& flag(bool flag) { return put(2, 1).put(flag ? 1 : 0, 1); }
  Archive& whole(std::uint32_t number) { return put(0x25, 1).put(number, 4); }
  Archive& number(float number) { return put(0x0B, 1).put(std::bit_cast<std::uint32_t>(number), 4); }
  Archive& size(float width, float height) { return put(0x16, 1).number(width).number(height); }

  Archive& string(const std::string& content, std::uint32_t encoding = kASCII) {
    object("NSString");
    count(content.size());
    return content.empty() ? *this : whole(encoding).array(content.size()).put(2, 1).text(content);
  }
  Archive& wideString(const std::u16string& units) {
    object("NSString").count(units.size()).whole(kUnicode).array(units.size()).put(4, 1);
    for (const char16_t unit : units) put(unit, 2);
    return *this;
  }
  Archive& data(const Bytes& content) {
    object("NSData").count(content.size());
    if (content.empty()) return *this;
    flag(false).array(content.size()).put(2, 1);
    bytes_.insert(bytes_.end(), content.begin(), content.end());
    return *this;
  }

  Archive& color(const std::string& kind) { return object("NSColor", 3).string(kind); }
  Archive& white() { return color("NSDeviceWhiteColorSpace").number(0.25F).number(0.5F); }
  // What follows are the image's background and its bitmaps.
  Archive& image(float width = 2, float height = 2) {
    return object("NSImage", 1).flag(false).size(width, height);
  }
  Archive& imageFlags() {
    for (int i = 0; i < 9; ++i) flag(i == 3);  // its size is its own
    return *this;
  }
  Archive& pattern() { return color("NSPatternColorSpace"); }
  Archive& members(std::size_t number) {
    object("NSArray").count(number);
    return number > 0 ? array(number) : *this;
  }
  // What follows is the data.
  Archive& bitmap() {
    object("NSBitmapImageRep").string("NSDeviceWhiteColorSpace").size(2, 2).flag(false).flag(true);
    return whole(8).whole(2).whole(2);
  }
  Archive& list(const std::string& name) { return object("NSColorList", 2).string(name); }
  Archive& dictionary(std::size_t entries) { return object("NSDictionary").count(entries); }

  [[nodiscard]] const Bytes& bytes() const { return bytes_; }

 private:
  Archive& put(std::uint32_t number, unsigned size) {
    while (size-- > 0) bytes_.push_back(static_cast<std::uint8_t>(number >> 8 * size));
    return *this;
  }
  Archive& text(const std::string& content) {
    bytes_.insert(bytes_.end(), content.begin(), content.end());
    return *this;
  }
  Archive& reference(std::uint32_t tag, std::uint32_t number) {
    return put(tag | size_, 1).put(number, width_);
  }

  Bytes bytes_;
  std::uint32_t size_;
  unsigned width_;
  std::uint32_t objects_ = 0;
  std::vector<std::string> classes_;
};

unsigned Told(const Bytes& bytes) {
  return colorTold(bytes.data(), bytes.size());
}
unsigned Told(const Archive& archive) {
  return Told(archive.bytes());
}

unsigned ListTold(const Bytes& bytes) {
  const damage::ListFile file;
  damage::writeFile(file.path(), bytes);
  return listTold(file.path().c_str());
}
unsigned ListTold(const Archive& archive) {
  return ListTold(archive.bytes());
}

bool IsTaken(unsigned told) {
  return told > 1;  // 0 is nothing, 1 is raised
}

// A pixel row by row in one strip, packed as PackBits.
Bytes LargeTIFF(std::uint32_t width, std::uint32_t height) {
  Bytes file{'I', 'I', '*', 0, 8, 0, 0, 0, 6, 0};
  const auto put = [&](std::uint32_t number, unsigned size) {
    for (unsigned i = 0; i < size; ++i) file.push_back(static_cast<std::uint8_t>(number >> 8 * i));
  };
  const std::uint32_t runs = width * height / 128;
  const std::uint32_t fields[][2]{{256, width}, {257, height},      {258, 8},
                                  {259, 32773}, {273, 10 + 6 * 12}, {279, 2 * runs}};
  for (const auto& [tag, value] : fields) {
    put(tag, 2);
    put(4, 2);
    put(1, 4);
    put(value, 4);
  }
  for (std::uint32_t i = 0; i < runs; ++i) put(0x2A81, 2);  // 128 times 42
  return file;
}

// A pattern of so many times that bitmap, with bytes behind it up to the size.
Bytes LargePattern(const Bytes& tiff, std::size_t times, std::size_t size = 0) {
  Archive archive;
  archive.pattern().image().nil().imageFlags().members(times).bitmap().data(tiff);
  const std::uint32_t data = archive.last();
  for (std::size_t i = 1; i < times; ++i) archive.bitmap().seen(data);
  Bytes bytes = archive.bytes();
  EXPECT_GE(std::max(size, bytes.size()), bytes.size());
  bytes.resize(std::max(size, bytes.size()));
  return bytes;
}

// What stands for a pattern that can't be made.
unsigned Grey() {
  return Told(Archive().color("NSDeviceWhiteColorSpace").number(0.5F).number(1));
}

TEST(Archives, AreReadWhateverTheWidthOfTheirNumbers) {
  const unsigned told = Told(Archive(1).white());
  EXPECT_TRUE(IsTaken(told));
  EXPECT_EQ(Told(Archive(2).white()), told);
  EXPECT_EQ(Told(Archive(4).white()), told);
}

TEST(Archives, AreRefusedWhereverTheyAreCutOff) {
  for (const Bytes& whole : {Archive().white().bytes(),
                             Archive()
                                 .color("NSDeviceRGBColorSpace")
                                 .number(1)
                                 .number(0)
                                 .number(0)
                                 .number(0)
                                 .number(1)
                                 .number(1)
                                 .number(1)
                                 .bytes(),
                             Archive().pattern().image().nil().imageFlags().members(0).bytes()}) {
    ASSERT_TRUE(IsTaken(Told(whole)));
    for (std::size_t size = 0; size < whole.size(); ++size)
      ASSERT_EQ(Told({whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)}), kNothing) << size;
  }
}

TEST(Archives, MayReferToTheLastObjectAgain) {
  Archive once;
  once.color("NSNamedColorSpace").string("name");
  once.seen(once.last());
  EXPECT_TRUE(IsTaken(Told(once)));
  EXPECT_EQ(Told(once), Told(Archive().color("NSNamedColorSpace").string("name").string("name")));
}

// Patterns whose images have patterns for a background: two objects deeper with each.
TEST(Archives, HoldObjectsWithinObjectsSixteenDeep) {
  const auto patterns = [](int number) {
    Archive archive;
    for (int i = 0; i < number; ++i) archive.pattern().image();
    return archive;
  };
  const auto ended = [](Archive archive, int number) {
    for (int i = 0; i < number; ++i) archive.imageFlags().members(0);
    return Told(archive);
  };
  EXPECT_TRUE(IsTaken(ended(patterns(7).white(), 7)));
  EXPECT_EQ(ended(patterns(8).nil(), 8), kNothing);
}

TEST(Archives, HaveNamesInASCIIUTF8AndLatin1) {
  const auto named = [](const std::string& name, std::uint32_t encoding) {
    return Told(Archive().color("NSNamedColorSpace").string("a").string(name, encoding));
  };
  const unsigned wide = Told(Archive().color("NSNamedColorSpace").string("a").wideString(u"caf\u00E9"));
  EXPECT_TRUE(IsTaken(wide));
  EXPECT_EQ(named("caf\xC3\xA9", kUTF8), wide);
  EXPECT_EQ(named("caf\xE9", kLatin1), wide);
  EXPECT_EQ(named("cafe", kASCII), named("cafe", kLatin1));
  for (const std::uint32_t other : {0U, 2U, 3U, 6U, 9U, 11U, 30U})
    EXPECT_EQ(named("cafe", other), kNothing) << other;
}

TEST(Archives, HaveNamesOfNoOneAndManyUnits) {
  const auto named = [](const std::string& name) {
    return Told(Archive().color("NSNamedColorSpace").string("a").string(name));
  };
  const auto wide = [](const std::u16string& name) {
    return Told(Archive().color("NSNamedColorSpace").string("a").wideString(name));
  };
  EXPECT_TRUE(IsTaken(named("")));
  EXPECT_TRUE(IsTaken(named("b")));
  EXPECT_NE(named("b"), named(""));
  EXPECT_EQ(named("b"), wide(u"b"));
  EXPECT_EQ(named(std::string(5000, 'b')), wide(std::u16string(5000, u'b')));
}

TEST(ArchivedColours, HaveTheSpacesThatGNUstepsColoursHave) {
  EXPECT_EQ(Told(Archive().color("NSDeviceBlackColorSpace").number(0.25F).number(0.5F)), kNothing);
  EXPECT_EQ(Told(Archive().color("NSCalibratedBlackColorSpace").number(0.25F).number(0.5F)), kNothing);
  EXPECT_EQ(Told(Archive().object("NSColor", 3).nil()), kNothing);
  EXPECT_EQ(Told(Archive().object("NSColor", 3).white()), kNothing);
}

TEST(ArchivedColours, HaveStringsForNames) {
  EXPECT_EQ(Told(Archive().color("NSNamedColorSpace").string("a").white()), kNothing);
  EXPECT_EQ(Told(Archive().color("NSNamedColorSpace").white().string("a")), kNothing);
  EXPECT_EQ(Told(Archive().color("NSNamedColorSpace").string("a").nil()), kNothing);
}

TEST(ArchivedPatterns, HaveImagesOrNone) {
  const Bytes none = Archive().pattern().nil().bytes();
  EXPECT_EQ(colorFromBytes(none.data(), none.size()), 1);
  EXPECT_EQ(Told(Archive().pattern().string("image")), kNothing);
}

TEST(ArchivedImages, ByNameReadAsGrey) {
  EXPECT_EQ(Told(Archive().pattern().object("NSImage", 1).flag(true).string("NSSwitch")), Grey());
  EXPECT_EQ(Told(Archive().pattern().object("NSImage", 1).flag(true).nil()), kNothing);
  EXPECT_EQ(Told(Archive().pattern().object("NSImage", 1).flag(true).white()), kNothing);
}

TEST(ArchivedImages, HaveSidesFromNothingTo65536) {
  const auto sized = [](float width, float height) {
    return Told(Archive().pattern().image(width, height).nil().imageFlags().members(0));
  };
  constexpr float kBeyond[]{-1, 65537, std::numeric_limits<float>::infinity(),
                            std::numeric_limits<float>::quiet_NaN()};
  EXPECT_TRUE(IsTaken(sized(0, 65536)));
  EXPECT_TRUE(IsTaken(sized(65536, 0)));
  EXPECT_TRUE(IsTaken(sized(0.5F, 0.5F)));
  for (const float side : kBeyond) {
    EXPECT_EQ(sized(side, 1), kNothing) << side;
    EXPECT_EQ(sized(1, side), kNothing) << side;
  }
}

TEST(ArchivedImages, HaveAColourForBackgroundAndAnArrayOfBitmaps) {
  const auto begun = [] { return Archive().pattern().image(); };
  EXPECT_TRUE(IsTaken(Told(begun().white().imageFlags().members(0))));
  EXPECT_EQ(Told(begun().string("white").imageFlags().members(0)), kNothing);
  EXPECT_EQ(Told(begun().nil().imageFlags().nil()), kNothing);
  EXPECT_EQ(Told(begun().nil().imageFlags().string("bitmaps")), kNothing);
  EXPECT_EQ(Told(begun().nil().imageFlags().members(1).string("bitmap")), kNothing);
  EXPECT_EQ(Told(begun().nil().imageFlags().members(1).nil()), kNothing);
}

TEST(ArchivedBitmaps, HaveASpaceAndData) {
  const auto begun = [] { return Archive().pattern().image().nil().imageFlags().members(1); };
  const auto ended = [](Archive archive) {
    return archive.size(2, 2).flag(false).flag(true).whole(8).whole(2).whole(2);
  };
  EXPECT_EQ(Told(begun().bitmap().data({1})), Grey());
  EXPECT_EQ(Told(begun().bitmap().data({})), Grey());
  EXPECT_EQ(Told(begun().bitmap().nil()), kNothing);
  EXPECT_EQ(Told(begun().bitmap().string("data")), kNothing);
  EXPECT_EQ(Told(ended(begun().object("NSBitmapImageRep").nil()).data({})), kNothing);
  EXPECT_EQ(Told(ended(begun().object("NSBitmapImageRep").white()).data({})), kNothing);
}

TEST(ArchivedBitmaps, OfASpaceThatBitmapsDoNotHaveReadAsGrey) {
  const auto inSpace = [](const std::string& space, bool hasAlpha) {
    Archive archive =
        Archive().pattern().image().nil().imageFlags().members(1).object("NSBitmapImageRep").string(space);
    archive.size(2, 2).flag(hasAlpha).flag(true).whole(8).whole(2).whole(2).data(LargeTIFF(128, 1));
    return Told(archive);
  };
  EXPECT_TRUE(IsTaken(inSpace("NSDeviceWhiteColorSpace", false)));
  EXPECT_NE(inSpace("NSDeviceWhiteColorSpace", false), Grey());
  EXPECT_EQ(inSpace("NSDeviceWhiteColorSpace", true), Grey());
  EXPECT_EQ(inSpace("NSNamedColorSpace", true), Grey());
  EXPECT_EQ(inSpace("NSNamedColorSpace", false), Grey());
}

// 4 MiB, and 16 bytes for each byte of the archive.
TEST(ArchivedBitmaps, HaveRoomInProportionToTheirArchive) {
  const Bytes tiff = LargeTIFF(2432, 2432);
  constexpr std::size_t kEnough = (2432 * 2432 - 4 * 1024 * 1024) / 16;
  const unsigned pattern = Told(LargePattern(tiff, 1, kEnough));
  EXPECT_TRUE(IsTaken(pattern));
  EXPECT_NE(pattern, Grey());
  EXPECT_EQ(Told(LargePattern(tiff, 1, kEnough - 1)), Grey());
}

TEST(ArchivedBitmaps, ShareTheRoomOfTheirArchive) {
  const Bytes tiff = LargeTIFF(2048, 2048);
  EXPECT_NE(Told(LargePattern(tiff, 1)), Grey());
  EXPECT_EQ(Told(LargePattern(tiff, 2)), Grey());
}

// --- trailers

// Words, and blocks with their lengths before them.
struct Trailer {
  Bytes bytes;
  Trailer& word(std::size_t word) {
    for (unsigned i = 0; i < 4; ++i) bytes.push_back(static_cast<std::uint8_t>(word >> 8 * i));
    return *this;
  }
  Trailer& block(const Bytes& block) {
    word(block.size());
    bytes.insert(bytes.end(), block.begin(), block.end());
    return *this;
  }
  Trailer& block(const std::string& text) { return block(Bytes(text.begin(), text.end())); }
  // Three fourths each, in the space of that number: 7 is sRGB, 256 the first profile.
  Trailer& color(const std::string& key, std::size_t space = 7, std::size_t components = 4) {
    block(key).word(space).word(components);
    for (std::size_t i = 0; i < components; ++i) word(0x3F400000);
    return *this;
  }
};

Bytes Sealed(Bytes file, const Bytes& trailer) {
  file.insert(file.end(), trailer.begin(), trailer.end());
  Bytes seal(kSealSize);
  MakeSeal(file.data(), file.size(), trailer.size(), seal.data());
  file.insert(file.end(), seal.begin(), seal.end());
  return file;
}

Bytes OneGrey(const std::string& key) {
  Archive archive;
  archive.list("List").dictionary(1).string(key);
  const std::uint32_t number = archive.last();
  return archive.color("NSDeviceWhiteColorSpace").number(0.5F).number(1).members(1).seen(number).bytes();
}

// Whether the list of one grey has another colour by that trailer.
bool Counts(const Trailer& trailer, const std::string& key = "a") {
  const Bytes file = OneGrey(key);
  const unsigned told = ListTold(Sealed(file, trailer.bytes));
  EXPECT_TRUE(IsTaken(told));
  return told != ListTold(file);
}

TEST(ArchivedTrailers, HaveColoursInSpacesThatThereAre) {
  EXPECT_TRUE(Counts(Trailer().word(0).word(1).color("a")));
  for (const std::size_t space : {0U, 10U, 255U, 256U, 257U})
    EXPECT_FALSE(Counts(Trailer().word(0).word(1).color("a", space))) << space;
}

TEST(ArchivedTrailers, HaveAsManyComponentsAsTheSpace) {
  for (const std::size_t components : {0U, 1U, 3U, 5U, 16U, 17U})
    EXPECT_FALSE(Counts(Trailer().word(0).word(1).color("a", 7, components))) << components;
}

TEST(ArchivedTrailers, HaveKeysInUTF8OfAnyLength) {
  const std::string longKey(5000, 'a');
  EXPECT_TRUE(Counts(Trailer().word(0).word(1).color(longKey), longKey));
  EXPECT_TRUE(Counts(Trailer().word(0).word(1).color(""), ""));
  EXPECT_FALSE(Counts(Trailer().word(0).word(1).color("\xFF")));
}

TEST(ArchivedTrailers, EndWhereTheyAreDamaged) {
  EXPECT_TRUE(Counts(Trailer().word(0).word(2).color("other").color("a")));
  EXPECT_FALSE(Counts(Trailer().word(0).word(2).color("\xFF").color("a")));
  EXPECT_FALSE(Counts(Trailer().word(0).word(2).color("other", 255).color("a")));
  EXPECT_FALSE(Counts(Trailer().word(1).block("no profile").word(1).color("a")));
  EXPECT_FALSE(Counts(Trailer().word(1).word(0xFFFFFFFF).word(1).color("a")));
}

TEST(ArchivedTrailers, HavePatternsBehindTheirColours) {
  const Bytes pattern = LargePattern(LargeTIFF(128, 1), 1);
  EXPECT_TRUE(Counts(Trailer().word(0).word(0).word(1).block("a").block(pattern)));
  EXPECT_TRUE(
      Counts(Trailer().word(0).word(1).color("other").word(2).block("other").block(pattern).block("a").block(
          pattern)));
  EXPECT_FALSE(
      Counts(Trailer().word(0).word(0).word(2).block("\xFF").block(pattern).block("a").block(pattern)));
  EXPECT_FALSE(Counts(Trailer().word(0).word(0).word(1).block("a").block(Archive().white().bytes())));
}

TEST(ArchivedTrailers, AreNoLongerThanTheirFile) {
  const Bytes file = OneGrey("a");
  for (const std::size_t length : {std::size_t{0}, file.size(), file.size() + 1, file.size() + 5000}) {
    Bytes sealed = file;
    Bytes seal(kSealSize);
    MakeSeal(file.data(), file.size(), length, seal.data());
    sealed.insert(sealed.end(), seal.begin(), seal.end());
    EXPECT_EQ(ListTold(sealed), ListTold(file)) << length;
  }
}

// --- lists

// A list of two greys, and behind it the same pattern for that many of them.
Bytes ListWithPatterns(const Bytes& pattern, const std::string& keys, std::size_t size) {
  Archive archive;
  archive.list("List").dictionary(2).string("a");
  const std::uint32_t a = archive.last();
  archive.color("NSDeviceWhiteColorSpace").number(0.5F).number(1).string("b");
  const std::uint32_t b = archive.last();
  archive.color("NSDeviceWhiteColorSpace").number(0.5F).number(1).members(2).seen(a).seen(b);
  Bytes file = archive.bytes();
  Trailer trailer;
  trailer.word(0).word(0).word(keys.size());
  for (const char key : keys) trailer.block(std::string(1, key)).block(pattern);
  file.resize(std::max(file.size(), size - trailer.bytes.size() - kSealSize));
  return Sealed(file, trailer.bytes);
}

TEST(ArchivedLists, ShareTheRoomOfTheirFileAmongTheirPatterns) {
  const Bytes pattern = LargePattern(LargeTIFF(2048, 2048), 1);
  constexpr std::size_t kSize = 200'000;  // room for one
  const unsigned one = ListTold(ListWithPatterns(pattern, "a", kSize));
  EXPECT_TRUE(IsTaken(one));
  EXPECT_NE(one, ListTold(ListWithPatterns(pattern, "", kSize)));
  EXPECT_EQ(one, ListTold(ListWithPatterns(pattern, "ab", kSize)));
  EXPECT_NE(one, ListTold(ListWithPatterns(pattern, "ab", 2 * kSize)));
  EXPECT_NE(one, ListTold(ListWithPatterns(pattern, "b", kSize)));
}

TEST(ArchivedLists, MayBeEmptyAndHaveNoName) {
  EXPECT_TRUE(IsTaken(ListTold(Archive().list("List").dictionary(0).members(0))));
  EXPECT_TRUE(IsTaken(ListTold(Archive().object("NSColorList", 2).nil().dictionary(0).members(0))));
}

TEST(ArchivedLists, HaveANameColoursAndKeys) {
  EXPECT_EQ(ListTold(Archive().object("NSColorList", 2).white().dictionary(0).members(0)), kNothing);
  EXPECT_EQ(ListTold(Archive().list("List").nil().members(0)), kNothing);
  EXPECT_EQ(ListTold(Archive().list("List").members(0).members(0)), kNothing);
  EXPECT_EQ(ListTold(Archive().list("List").dictionary(0).nil()), kNothing);
  EXPECT_EQ(ListTold(Archive().list("List").dictionary(0).dictionary(0)), kNothing);
}

TEST(ArchivedLists, HaveAColourForEachKeyAndAKeyForEachColour) {
  const auto begun = [] {
    return Archive().list("List").dictionary(2).string("a").white().string("b").white();
  };
  EXPECT_TRUE(IsTaken(ListTold(begun().members(2).string("b").string("a"))));
  EXPECT_EQ(ListTold(begun().members(1).string("a")), kNothing);
  EXPECT_EQ(ListTold(begun().members(2).string("a").string("a")), kNothing);
  EXPECT_EQ(ListTold(begun().members(2).string("a").string("c")), kNothing);
  EXPECT_EQ(ListTold(begun().members(2).string("a").white()), kNothing);
  EXPECT_EQ(ListTold(Archive().list("List").dictionary(1).string("a").string("a").members(1).string("a")),
            kNothing);
}

TEST(ArchivedLists, HaveNoEntryWithoutAKeyOrAColour) {
  EXPECT_EQ(ListTold(Archive().list("List").dictionary(1).nil().white().members(1).string("a")), kNothing);
  EXPECT_EQ(ListTold(Archive().list("List").dictionary(1).string("a").nil().members(1).string("a")),
            kNothing);
  EXPECT_EQ(ListTold(Archive().list("List").dictionary(1).white().white().members(1).string("a")), kNothing);
}

}  // namespace
