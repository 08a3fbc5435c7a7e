// tests/libcocoa/string_test.cpp - Core Foundation strings: encodings, strictness, bounds.
#include <gtest/gtest.h>
#include <malloc.h>
#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <string>
#include <vector>

extern "C" {
#include "libcocoa/foundation/text_encoding.h"
}
#include "tests/libcocoa/guarded.h"

namespace {

constexpr std::uint32_t kMacRoman = 0x0000;
constexpr std::uint32_t kUTF16 = 0x0100;
constexpr std::uint32_t kISOLatin1 = 0x0201;
constexpr std::uint32_t kWindowsLatin1 = 0x0500;
constexpr std::uint32_t kASCII = 0x0600;
constexpr std::uint32_t kUTF8 = 0x08000100;
constexpr std::uint32_t kUTF32 = 0x0C000100;
constexpr std::uint32_t kUTF16BE = 0x10000100;
constexpr std::uint32_t kUTF16LE = 0x14000100;
constexpr std::uint32_t kUTF32BE = 0x18000100;
constexpr std::uint32_t kUTF32LE = 0x1C000100;

// Owns one reference, or none.
class String {
 public:
  explicit String(CFStringRef string) : string_(string) {}
  String(const String&) = delete;
  String& operator=(const String&) = delete;
  ~String() {
    if (string_ != nullptr) CFRelease(string_);
  }
  CFStringRef Get() const { return string_; }
  id Object() const { return reinterpret_cast<id>(const_cast<void*>(static_cast<const void*>(string_))); }

 private:
  CFStringRef string_;
};

String FromUnits(std::u16string_view units) {
  return String(CFStringCreateWithCharacters(nullptr, reinterpret_cast<const UniChar*>(units.data()),
                                             static_cast<CFIndex>(units.size())));
}

String FromBytes(const char* bytes, std::uint32_t encoding) {
  return String(CFStringCreateWithCString(nullptr, bytes, encoding));
}

std::u16string Units(const String& string) {
  constexpr qvx::Message<"characterAtIndex:", std::uint16_t(NSUInteger)> kCharacter;
  std::u16string units;
  for (CFIndex i = 0; i < CFStringGetLength(string.Get()); ++i) {
    units += static_cast<char16_t>(kCharacter(string.Object(), static_cast<NSUInteger>(i)));
  }
  return units;
}

// The whole buffer after a conversion into `room` bytes, with guard bytes behind it checked.
struct Conversion {
  bool whole;
  std::string bytes;
};

Conversion Convert(const String& string, std::uint32_t encoding, std::size_t room) {
  std::string buffer(room + 8, '\x5A');
  const bool whole =
      CFStringGetCString(string.Get(), buffer.data(), static_cast<CFIndex>(room), encoding) != 0;
  EXPECT_EQ(buffer.substr(room), std::string(8, '\x5A')) << "written past the end";
  return {whole, buffer.substr(0, room)};
}

std::string Bytes(const String& string, std::uint32_t encoding, std::size_t size) {
  const Conversion conversion = Convert(string, encoding, size);
  EXPECT_TRUE(conversion.whole);
  return conversion.bytes;
}

TEST(StringCreation, TakesUnitsAsTheyAre) {
  const String string = FromUnits(u"A\u00E9\u20AC\U0001F600");
  EXPECT_EQ(CFStringGetLength(string.Get()), 5);
  EXPECT_EQ(Units(string), u"A\u00E9\u20AC\U0001F600");
}

TEST(StringCreation, GivesOneReference) {
  const String string = FromUnits(u"a text that is too long to be a tagged or shared constant");
  EXPECT_EQ((qvx::Message<"retainCount", NSUInteger()>()(string.Object())), 1U);
}

TEST(StringCreation, GivesAnEmptyStringForNoUnits) {
  const String from_none(CFStringCreateWithCharacters(nullptr, nullptr, 0));
  ASSERT_NE(from_none.Get(), nullptr);
  EXPECT_EQ(CFStringGetLength(from_none.Get()), 0);
}

TEST(StringCreation, GivesNothingForNullOrANegativeCount) {
  constexpr UniChar kUnit = 'a';
  EXPECT_EQ(CFStringCreateWithCharacters(nullptr, nullptr, 1), nullptr);
  EXPECT_EQ(CFStringCreateWithCharacters(nullptr, &kUnit, -1), nullptr);
  EXPECT_EQ(CFStringCreateWithCString(nullptr, nullptr, kUTF8), nullptr);
}

TEST(StringCreation, KeepsEmbeddedZeroUnits) {
  const String string = FromUnits(std::u16string_view(u"a\0b", 3));
  EXPECT_EQ(CFStringGetLength(string.Get()), 3);
  EXPECT_EQ(Bytes(string, kUTF8, 4), std::string("a\0b\0", 4));
}

class UnpairedSurrogate : public testing::TestWithParam<std::u16string> {};

TEST_P(UnpairedSurrogate, IsKeptAsAUnitAndHasNoBytes) {
  const String string = FromUnits(GetParam());
  ASSERT_NE(string.Get(), nullptr);
  EXPECT_EQ(Units(string), GetParam());
  for (const std::uint32_t encoding : {kUTF8, kUTF16, kUTF32, kASCII, kMacRoman}) {
    const Conversion conversion = Convert(string, encoding, 64);
    EXPECT_FALSE(conversion.whole) << std::hex << encoding;
    EXPECT_EQ(conversion.bytes.substr(0, 4),
              std::string("\0\0\0\0", 4).substr(0, encoding == kUTF32 ? 4 : 1) +
                  conversion.bytes.substr(encoding == kUTF32 ? 4 : 1, encoding == kUTF32 ? 0 : 3));
  }
}

TEST_P(UnpairedSurrogate, SurvivesBeingCopiedComparedAndAppendedTo) {
  const String string = FromUnits(GetParam());
  const String twin = FromUnits(GetParam());
  EXPECT_NE((qvx::Message<"isEqual:", BOOL(id)>()(string.Object(), twin.Object())), 0);
  EXPECT_EQ((qvx::Message<"hash", NSUInteger()>()(string.Object())),
            (qvx::Message<"hash", NSUInteger()>()(twin.Object())));
  const String copy(CFStringCreateMutableCopy(nullptr, 0, string.Get()));
  ASSERT_NE(copy.Get(), nullptr);
  EXPECT_EQ(Units(copy), GetParam());
}

TEST(UnpairedSurrogates, LeaveNoMemoryBehind) {
  const std::u16string text(1000, u'\xD800');
  const auto makeMany = [&] {
    for (int i = 0; i < 100; ++i) EXPECT_EQ(CFStringGetLength(FromUnits(text).Get()), 1000);
  };
  makeMany();
  const std::size_t before = ::mallinfo2().uordblks;
  makeMany();
  EXPECT_LT(::mallinfo2().uordblks, before + 1000);
}

INSTANTIATE_TEST_SUITE_P(All, UnpairedSurrogate,
                         testing::Values(std::u16string{0xD800}, std::u16string{0xDC00},
                                         std::u16string{u'a', 0xD83D}, std::u16string{0xDE00, u'a'},
                                         std::u16string{0xDE00, 0xD83D}, std::u16string{0xDC00, 0xDC00},
                                         std::u16string{0xD83D, 0xE000},
                                         std::u16string{0xD83D, 0xD83D, 0xDE00}));

struct Sample {
  std::uint32_t encoding;
  std::string bytes;  // with its terminator
  std::u16string units;
};

void PrintTo(const Sample& sample, std::ostream* out) {
  *out << "encoding 0x" << std::hex << sample.encoding;
}

class EncodedText : public testing::TestWithParam<Sample> {};

TEST_P(EncodedText, IsDecoded) {
  const String string = FromBytes(GetParam().bytes.c_str(), GetParam().encoding);
  ASSERT_NE(string.Get(), nullptr);
  EXPECT_EQ(Units(string), GetParam().units);
}

TEST_P(EncodedText, IsEncodedIntoABufferOfExactlyItsSize) {
  const String string = FromUnits(GetParam().units);
  EXPECT_EQ(Bytes(string, GetParam().encoding, GetParam().bytes.size()), GetParam().bytes);
}

TEST_P(EncodedText, IsRefusedABufferThatIsOneByteShort) {
  const String string = FromUnits(GetParam().units);
  const Conversion conversion = Convert(string, GetParam().encoding, GetParam().bytes.size() - 1);
  EXPECT_FALSE(conversion.whole);
  EXPECT_EQ(conversion.bytes[0], '\0') << "a part must not pass for the whole";
}

std::string WithZeros(const char* bytes, std::size_t size) {
  return {bytes, size};
}

INSTANTIATE_TEST_SUITE_P(
    All, EncodedText,
    testing::Values(
        Sample{kASCII, WithZeros("Plain~", 7), u"Plain~"},
        Sample{kMacRoman, WithZeros("\x80\x8E\xDB\xF0\xCA\xFF", 7), u"\u00C4\u00E9\u20AC\uF8FF\u00A0\u02C7"},
        Sample{kWindowsLatin1, WithZeros("\x80\x9F\xE9\xFF", 5), u"\u20AC\u0178\u00E9\u00FF"},
        Sample{kISOLatin1, WithZeros("\x80\xE9\xFF", 4), u"\u0080\u00E9\u00FF"},
        Sample{kUTF8, WithZeros("A\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80", 11), u"A\u00E9\u20AC\U0001F600"},
        Sample{kUTF8,
               WithZeros("\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF\xF0\x90\x80\x80\xF4\x8F\xBF\xBF", 20),
               u"\u007F\u0080\u07FF\u0800\uFFFF\U00010000\U0010FFFF"},
        Sample{kUTF8, WithZeros("\xEF\xBB\xBFx", 5), u"\uFEFFx"},
        Sample{kUTF8, WithZeros("\xED\x9F\xBF\xEE\x80\x80", 7), std::u16string{0xD7FF, 0xE000}},
        Sample{kUTF16, WithZeros("A\0\xAC\x20\x3D\xD8\x00\xDE\0\0", 10), u"A\u20AC\U0001F600"},
        Sample{kUTF16LE, WithZeros("A\0\xAC\x20\x3D\xD8\x00\xDE\0\0", 10), u"A\u20AC\U0001F600"},
        Sample{kUTF16BE, WithZeros("\0A\x20\xAC\xD8\x3D\xDE\x00\0\0", 10), u"A\u20AC\U0001F600"},
        Sample{kUTF32, WithZeros("A\0\0\0\x00\xF6\x01\0\0\0\0\0", 12), u"A\U0001F600"},
        Sample{kUTF32LE, WithZeros("A\0\0\0\x00\xF6\x01\0\0\0\0\0", 12), u"A\U0001F600"},
        Sample{kUTF32BE, WithZeros("\0\0\0A\0\x01\xF6\x00\0\0\0\0", 12), u"A\U0001F600"}));

TEST(EncodedTextBounds, HoldForEverySize) {
  const String string = FromUnits(u"A\u00E9\u20AC\U0001F600");
  for (const std::uint32_t encoding : {kUTF8, kUTF16, kUTF32}) {
    const std::size_t needed = encoding == kUTF8 ? 11 : encoding == kUTF16 ? 12 : 20;
    for (std::size_t room = 0; room <= 24; ++room) {
      EXPECT_EQ(Convert(string, encoding, room).whole, room >= needed) << std::hex << encoding << " " << room;
    }
  }
}

TEST(EncodedTextBounds, AreRefusedWhenNegativeOrWithoutABuffer) {
  const String string = FromUnits(u"a");
  std::array<char, 8> buffer{};
  EXPECT_EQ(CFStringGetCString(string.Get(), buffer.data(), -1, kUTF8), 0);
  EXPECT_EQ(CFStringGetCString(string.Get(), nullptr, 8, kUTF8), 0);
  EXPECT_EQ(CFStringGetCString(nullptr, buffer.data(), 8, kUTF8), 0);
  EXPECT_EQ(CFStringGetLength(nullptr), 0);
}

TEST(EncodedTextBounds, TakeLongTextsWhole) {
  const std::u16string units(100000, u'\u20AC');
  const String string = FromUnits(units);
  const std::string bytes = Bytes(string, kUTF8, 300001);
  const String back = FromBytes(bytes.c_str(), kUTF8);
  EXPECT_EQ(CFStringGetLength(back.Get()), 100000);
}

// ASCII goes in blocks: the odd one out may stand anywhere in or between them.
TEST(MixedText, GoesThereAndBackWhereverTheOddCharacterStands) {
  const std::array<std::string, 4> oddOnes = {"\x7f", "\u00e9", "\u20ac", "\U0001f3a8"};
  for (std::size_t length = 0; length < 50; ++length) {
    for (std::size_t place = 0; place <= length; ++place) {
      for (const std::string& odd : oddOnes) {
        const std::string letters = "abcdefghijklmnopqrstuvwxyzabcdefghijklmnopqrstuvwxyz";
        const std::string text = letters.substr(0, place) + odd + letters.substr(place, length - place);
        const String string = FromBytes(text.c_str(), kUTF8);
        std::array<char, 80> buffer;
        ASSERT_TRUE(CFStringGetCString(string.Get(), buffer.data(), buffer.size(), kUTF8));
        ASSERT_EQ(buffer.data(), text);
        ASSERT_EQ(Units(string).substr(0, place),
                  std::u16string(letters.begin(), letters.begin() + static_cast<int>(place)));
        ASSERT_EQ(CFStringGetLength(string.Get()), static_cast<CFIndex>(length + (odd.size() == 4 ? 2 : 1)));
      }
    }
  }
}

TEST(MixedText, HasTheOddByteOfMacRomanWhereverItStands) {
  for (std::size_t place = 0; place < 50; ++place) {
    std::string bytes(50, 'a');
    bytes[place] = '\x8e';
    std::u16string units(50, u'a');
    units[place] = u'\u00e9';
    EXPECT_EQ(Units(FromBytes(bytes.c_str(), kMacRoman)), units) << place;
  }
}

TEST(MixedText, IsRefusedWhereverTheOddCharacterStands) {
  for (std::size_t place = 0; place < 50; ++place) {
    std::string bytes(50, 'a');
    bytes[place] = '\xff';
    EXPECT_EQ(FromBytes(bytes.c_str(), kUTF8).Get(), nullptr) << place;
    EXPECT_EQ(FromBytes(bytes.c_str(), kASCII).Get(), nullptr) << place;
    std::u16string units(50, u'a');
    for (const char16_t odd : {u'\u0080', u'\u0100', u'\u8000', u'\u807f', u'\uff41'}) {
      units[place] = odd;
      std::array<char, 80> buffer;
      EXPECT_FALSE(CFStringGetCString(FromUnits(units).Get(), buffer.data(), buffer.size(), kASCII)) << place;
    }
  }
}

TEST(LoneSurrogate, IsKeptWhereverItStands) {
  for (std::size_t place = 0; place < 40; ++place) {
    std::u16string units(40, u'a');
    for (const char16_t odd : {char16_t{0xD800}, char16_t{0xDBFF}, char16_t{0xDC00}, char16_t{0xDFFF}}) {
      units[place] = odd;
      ASSERT_EQ(Units(FromUnits(units)), units) << place;
    }
  }
}

TEST(LoneSurrogate, AloneMakesAStringOfAnotherClass) {
  constexpr qvx::Message<"class", id()> kClass;
  const id plain = kClass(FromUnits(u"a\u20ACb").Object());
  const id verbatim = kClass(FromUnits(std::u16string{0xD83D, u'b'}).Object());
  ASSERT_NE(verbatim, nullptr);
  EXPECT_NE(verbatim, plain);
  EXPECT_EQ(kClass(FromUnits(u"a\U0001F600b").Object()), plain);
  EXPECT_EQ(kClass(FromUnits(u"a\U0001F600").Object()), plain);
  EXPECT_EQ(kClass(FromUnits(u"a\xD83D").Object()), verbatim);
  // What lies behind the last unit is no other half.
  EXPECT_EQ(Units(FromUnits(std::u16string_view(u"a\U0001F600").substr(0, 2))), u"a\xD83D");
  // The outermost ones of both kinds make whole pairs with each other, and what lies beside them is plain.
  for (const char16_t high : {char16_t{0xD800}, char16_t{0xDBFF}}) {
    for (const char16_t low : {char16_t{0xDC00}, char16_t{0xDFFF}})
      EXPECT_EQ(kClass(FromUnits(std::u16string{high, low}).Object()), plain);
    for (const char16_t other : {char16_t{0xD7FF}, char16_t{0xDBFF}, char16_t{0xE000}})
      EXPECT_EQ(kClass(FromUnits(std::u16string{high, other}).Object()), verbatim);
  }
  EXPECT_EQ(kClass(FromUnits(std::u16string{0xDC00, 0xDC00}).Object()), verbatim);
  EXPECT_EQ(kClass(FromUnits(std::u16string{0xD7FF, 0xE000, 0xFEFF, 0xFFFE}).Object()), plain);
  EXPECT_EQ(kClass(FromUnits(std::u16string{0xFEFF}).Object()), verbatim);
  EXPECT_EQ(kClass(FromUnits(std::u16string{0xFFFE}).Object()), verbatim);
}

TEST(MacRoman, GoesThereAndBackForEveryByte) {
  std::string bytes;
  for (int byte = 1; byte < 256; ++byte) bytes += static_cast<char>(byte);
  const String string = FromBytes(bytes.c_str(), kMacRoman);
  EXPECT_EQ(CFStringGetLength(string.Get()), 255);
  EXPECT_EQ(Bytes(string, kMacRoman, 256), bytes + '\0');
}

TEST(MacRoman, HasTheseCharactersFrom0x80) {
  std::string bytes;
  for (int byte = 0x80; byte < 0x100; ++byte) bytes += static_cast<char>(byte);
  EXPECT_EQ(Units(FromBytes(bytes.c_str(), kMacRoman)),
            u"ÄÅÇÉÑÖÜáàâäãåçéèêëíìîïñóòôöõúùûü"
            u"†°¢£§•¶ß®©™´¨≠ÆØ∞±≤≥¥µ∂∑∏π∫ªºΩæø"
            u"¿¡¬√ƒ≈∆«»…\u00A0ÀÃÕŒœ–—“”‘’÷◊ÿŸ⁄€‹›ﬁﬂ"
            u"‡·‚„‰ÂÊÁËÈÍÎÏÌÓÔ\uF8FFÒÚÛÙıˆ˜¯˘˙˚¸˝˛ˇ");
}

TEST(WindowsLatin1, HasTheseCharactersFrom0x80AndLatin1From0xA0) {
  std::string bytes;
  std::u16string units = u"€‚ƒ„…†‡ˆ‰Š‹ŒŽ‘’“”•–—˜™š›œžŸ";
  for (int byte = 0x80; byte < 0x100; ++byte) {
    if (std::strchr("\x81\x8D\x8F\x90\x9D", byte) == nullptr) bytes += static_cast<char>(byte);
    if (byte >= 0xA0) units += static_cast<char16_t>(byte);
  }
  EXPECT_EQ(Units(FromBytes(bytes.c_str(), kWindowsLatin1)), units);
}

TEST(WindowsLatin1, LacksFiveBytes) {
  for (const char* const byte : {"\x81", "\x8D", "\x8F", "\x90", "\x9D"})
    EXPECT_EQ(FromBytes(byte, kWindowsLatin1).Get(), nullptr) << byte;
}

TEST(WindowsLatin1, GoesThereAndBackForEveryByteThatIsDefined) {
  std::string bytes;
  for (int byte = 1; byte < 256; ++byte) {
    if (std::strchr("\x81\x8D\x8F\x90\x9D", byte) == nullptr) bytes += static_cast<char>(byte);
  }
  const String string = FromBytes(bytes.c_str(), kWindowsLatin1);
  EXPECT_EQ(CFStringGetLength(string.Get()), 250);
  EXPECT_EQ(Bytes(string, kWindowsLatin1, 251), bytes + '\0');
}

struct Malformed {
  std::uint32_t encoding;
  std::string bytes;
};

void PrintTo(const Malformed& sample, std::ostream* out) {
  *out << "encoding 0x" << std::hex << sample.encoding << ":";
  for (const char byte : sample.bytes) *out << ' ' << static_cast<int>(static_cast<unsigned char>(byte));
}

class MalformedText : public testing::TestWithParam<Malformed> {};

TEST_P(MalformedText, GivesNothing) {
  EXPECT_EQ(FromBytes(GetParam().bytes.c_str(), GetParam().encoding).Get(), nullptr);
}

INSTANTIATE_TEST_SUITE_P(All, MalformedText,
                         testing::Values(Malformed{kUTF8, "\x80"},              // continuation alone
                                         Malformed{kUTF8, "a\xC3"},             // cut off
                                         Malformed{kUTF8, "\xE2\x82"},          // cut off
                                         Malformed{kUTF8, "\xF0\x9F\x98"},      // cut off
                                         Malformed{kUTF8, "\xC3("},             // no continuation
                                         Malformed{kUTF8, "\xC0\xAF"},          // overlong
                                         Malformed{kUTF8, "\xE0\x80\xAF"},      // overlong
                                         Malformed{kUTF8, "\xF0\x80\x80\xAF"},  // overlong
                                         Malformed{kUTF8, "\xED\xA0\x80"},      // surrogate
                                         Malformed{kUTF8, "\xF4\x90\x80\x80"},  // past the last code
                                         Malformed{kUTF8, "\xF5\x80\x80\x80"},  // no first bytes
                                         Malformed{kUTF8, "\xF8\x90\x80\x80"},
                                         Malformed{kUTF8, "\xF8\x88\x80\x80\x80"}, Malformed{kUTF8, "\xFF"},
                                         Malformed{kUTF8, "\xFF\x90\x80\x80"}, Malformed{kASCII, "caf\xE9"},
                                         Malformed{kWindowsLatin1, "\x81"},
                                         Malformed{kUTF32, std::string("\x00\xD8\0\0\0\0\0\0", 8)},
                                         Malformed{kUTF32, std::string("\x00\x00\x11\0\0\0\0\0", 8)}));

TEST(DecodedText, EndsWithItsLastByteWhateverLiesBehind) {
  for (const std::string text : {"\u00e9", "\u20ac", "\U0001f600"}) {
    for (std::size_t length = 1; length <= text.size(); ++length) {
      std::array<std::uint16_t, 4> units;
      std::size_t count = 0;
      EXPECT_EQ(QVXDecodeText(kUTF8, text.data(), length, units.data(), &count), length == text.size())
          << length;
    }
  }
}

TEST(UnknownEncoding, IsRefusedBothWays) {
  const String string = FromUnits(u"a");
  for (const std::uint32_t encoding : {0xFFFFU, 0xFFFFFFFFU, 0x0A01U, 0x0101U}) {
    EXPECT_EQ(FromBytes("a", encoding).Get(), nullptr) << std::hex << encoding;
    EXPECT_FALSE(Convert(string, encoding, 16).whole) << std::hex << encoding;
  }
}

TEST(StrictConversion, RefusesWhatTheEncodingLacks) {
  EXPECT_FALSE(Convert(FromUnits(u"\u00E9"), kASCII, 16).whole);
  EXPECT_FALSE(Convert(FromUnits(u"\u20AC"), kISOLatin1, 16).whole);
  EXPECT_FALSE(Convert(FromUnits(u"\u0081"), kWindowsLatin1, 16).whole);
  EXPECT_FALSE(Convert(FromUnits(u"a\u4E00"), kMacRoman, 16).whole);
  EXPECT_FALSE(Convert(FromUnits(u"\U0001F600"), kMacRoman, 16).whole);
}

// One page after another shows the same file: two gigabytes of text that take a megabyte of memory.
TEST(StrictConversion, RefusesATextWhoseUnitsMemoryCannotHold) {
  constexpr std::size_t kPiece = 1U << 20U;
  constexpr std::size_t kPieces = 2048;
  const int file = memfd_create("text", 0);
  ASSERT_EQ(write(file, std::string(kPiece, 'a').data(), kPiece), static_cast<ssize_t>(kPiece));
  void* const place =
      mmap(nullptr, (kPieces + 1) * kPiece, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (place == MAP_FAILED) GTEST_SKIP() << "wanted two gigabytes of addresses, found less";
  char* const text = static_cast<char*>(place);
  for (std::size_t i = 0; i < kPieces; ++i)
    ASSERT_NE(mmap(text + i * kPiece, kPiece, PROT_READ, MAP_SHARED | MAP_FIXED, file, 0), MAP_FAILED);
  EXPECT_EQ(CFStringCreateWithCString(nullptr, text, kUTF8), nullptr);
  munmap(text, (kPieces + 1) * kPiece);
  close(file);
}

TEST(MutableCopy, IsIndependentOfItsOriginalAndOfTheLimit) {
  const String string = FromUnits(u"abc");
  const String copy(CFStringCreateMutableCopy(nullptr, 1, string.Get()));
  qvx::Message<"appendString:", void(id)>()(copy.Object(), string.Object());
  EXPECT_EQ(Units(copy), u"abcabc");
  EXPECT_EQ(Units(string), u"abc");
  EXPECT_EQ(CFStringCreateMutableCopy(nullptr, 0, nullptr), nullptr);
}

struct Normalization {
  CFIndex form;
  std::u16string result;
};

class Normalized : public testing::TestWithParam<Normalization> {};

TEST_P(Normalized, InPlace) {
  // e with acute, A with ring as its own sign, the ligature fi, a Hangul syllable.
  const String string = FromUnits(u"\u00E9\u212B\uFB01\uAC00");
  const CFMutableStringRef copy = CFStringCreateMutableCopy(nullptr, 0, string.Get());
  CFStringNormalize(copy, GetParam().form);
  const String result(copy);
  EXPECT_EQ(Units(result), GetParam().result);
}

INSTANTIATE_TEST_SUITE_P(All, Normalized,
                         testing::Values(Normalization{0, u"e\u0301A\u030A\uFB01\u1100\u1161"},
                                         Normalization{1, u"e\u0301A\u030Afi\u1100\u1161"},
                                         Normalization{2, u"\u00E9\u00C5\uFB01\uAC00"},
                                         Normalization{3, u"\u00E9\u00C5fi\uAC00"},
                                         Normalization{9, u"\u00E9\u212B\uFB01\uAC00"}));

TEST(Normalization, KeepsUnitsThatAreNoTextAndPassesOverThem) {
  const struct {
    std::u16string text;
    CFIndex form;
    std::u16string result;
  } cases[] = {
      {{0xFEFF, 0xE9}, 0, {0xFEFF, u'e', 0x301}},
      {{0xFFFE, 0xE9}, 0, {0xFFFE, u'e', 0x301}},
      {{0xFEFF, 0xFEFF, u'e', 0x301}, 2, {0xFEFF, 0xFEFF, 0xE9}},
      {{0xE9, 0xD800}, 0, {u'e', 0x301, 0xD800}},
      {{u'e', 0xD800, 0x301}, 2, {u'e', 0xD800, 0x301}},
      {{0xDC00, 0xFEFF, u'e', 0x301, 0xD83D, 0xDE00, 0xD83D},
       3,
       {0xDC00, 0xFEFF, 0xE9, 0xD83D, 0xDE00, 0xD83D}},
      {std::u16string(300, u'\u00E9') + u'\xD800', 2, std::u16string(300, u'\u00E9') + u'\xD800'},
  };
  for (const auto& each : cases) {
    const String string = FromUnits(each.text);
    const CFMutableStringRef copy = CFStringCreateMutableCopy(nullptr, 0, string.Get());
    CFStringNormalize(copy, each.form);
    const String result(copy);
    EXPECT_EQ(Units(result), each.result);
  }
}

// A long text is normalised a piece at a time: no letter may be cut from its marks.
TEST(Normalization, OfALongTextIsThatOfItsParts) {
  for (const std::u16string& part : {std::u16string(u"e\u0323\u0301\u4E00\uAC00\u1100\u1161\u11A8 "),
                                     std::u16string(u"\u1100\u1161\u11A8"), std::u16string(u"\u00E9\u0323"),
                                     std::u16string(u"\u4E00\u0301\U0001D15E")}) {
    for (CFIndex form = 0; form < 4; ++form) {
      const auto normalized = [&](const std::u16string& text) {
        const String string = FromUnits(text);
        const CFMutableStringRef copy = CFStringCreateMutableCopy(nullptr, 0, string.Get());
        CFStringNormalize(copy, form);
        return Units(String(copy));
      };
      const std::u16string once = normalized(part);
      std::u16string many;
      std::u16string expected;
      for (int i = 0; i < 20'000; ++i) {
        many += part;
        expected += once;
      }
      EXPECT_TRUE(normalized(many) == expected) << "form " << form;
    }
  }
}

TEST(Normalization, OfNothingIsNothing) {
  CFStringNormalize(nullptr, 0);
}

}  // namespace
