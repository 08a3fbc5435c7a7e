// tests/hostrun/unit/text_test.cpp - strings and their encodings.
#include <gtest/gtest.h>

#include "bundle/host/types.h"
#include "hostrun/host/functions.h"
#include "hostrun/host/strings.h"
#include "hostrun/host/text.h"

namespace hostrun {
namespace {

constexpr std::uint32_t kAll[] = {qvx::kEncodingUTF8, qvx::kEncodingUTF16, qvx::kEncodingUTF32};

StringRef Text(std::string_view utf8) {
  return StringRef::Adopt(NewString(utf8));
}

TEST(Encodings, UnicodeFormsKeepEveryCharacter) {
  const std::u32string text = U"a\u00E9\u20AC\U0001F600";
  for (const std::uint32_t encoding : kAll) EXPECT_EQ(DecodeStrictly(Encode(text, encoding), encoding), text);
}

TEST(Encodings, MacRomanAndWindowsLatin1KeepTheirOwnCharacters) {
  for (const std::uint32_t encoding : {qvx::kEncodingMacRoman, qvx::kEncodingWindowsLatin1}) {
    for (int byte = 1; byte < 256; ++byte) {
      const std::string one(1, static_cast<char>(byte));
      EXPECT_EQ(Encode(Decode(one, encoding), encoding), one) << encoding << " " << byte;
    }
  }
}

TEST(Encodings, MacRomanHasTheseCharactersFrom0x80) {
  const std::u32string wanted =
      U"ÄÅÇÉÑÖÜáàâäãåçéèêëíìîïñóòôöõúùûü"
      U"†°¢£§•¶ß®©™´¨≠ÆØ∞±≤≥¥µ∂∑∏π∫ªºΩæø"
      U"¿¡¬√ƒ≈∆«»…\u00A0ÀÃÕŒœ–—“”‘’÷◊ÿŸ⁄€‹›ﬁﬂ"
      U"‡·‚„‰ÂÊÁËÈÍÎÏÌÓÔ\uF8FFÒÚÛÙıˆ˜¯˘˙˚¸˝˛ˇ";
  ASSERT_EQ(wanted.size(), 128U);
  std::string bytes;
  for (int byte = 0x80; byte <= 0xFF; ++byte) bytes += static_cast<char>(byte);
  EXPECT_EQ(Decode(bytes, qvx::kEncodingMacRoman), wanted);
  EXPECT_EQ(Encode(wanted, qvx::kEncodingMacRoman), bytes);
}

// Five bytes have no character of their own, and stand for control characters.
TEST(Encodings, WindowsLatin1HasTheseCharactersFrom0x80) {
  const std::u32string wanted =
      U"€\x81"
      U"‚ƒ„…†‡ˆ‰Š‹Œ\x8D"
      U"Ž\x8F"
      U"\x90"
      U"‘’“”•–—˜™š›œ\x9D"
      U"žŸ";
  ASSERT_EQ(wanted.size(), 32U);
  std::string bytes;
  for (int byte = 0x80; byte < 0xA0; ++byte) bytes += static_cast<char>(byte);
  EXPECT_EQ(Decode(bytes, qvx::kEncodingWindowsLatin1), wanted);
  EXPECT_EQ(Encode(wanted, qvx::kEncodingWindowsLatin1), bytes);
  EXPECT_EQ(Decode("\xA0\xFF", qvx::kEncodingWindowsLatin1), U"\xA0\xFF");
}

TEST(Encodings, EachUtf8LengthHasItsFirstAndLastCharacter) {
  const struct {
    std::string_view bytes;
    char32_t character;
  } edges[] = {{"\x7F", 0x7F},
               {"\xC2\x80", 0x80},
               {"\xDF\xBF", 0x7FF},
               {"\xE0\xA0\x80", 0x800},
               {"\xED\x9F\xBF", 0xD7FF},
               {"\xEE\x80\x80", 0xE000},
               {"\xEF\xBF\xBF", 0xFFFF},
               {"\xF0\x90\x80\x80", 0x10000},
               {"\xF4\x8F\xBF\xBF", 0x10FFFF}};
  for (const auto& [bytes, character] : edges) {
    EXPECT_EQ(DecodeStrictly(bytes, qvx::kEncodingUTF8), std::u32string(1, character)) << bytes;
    EXPECT_EQ(Encode(std::u32string(1, character), qvx::kEncodingUTF8), bytes);
  }
}

TEST(Encodings, MalformedUtf8IsReplacedAndTheRestRead) {
  EXPECT_EQ(Decode("a\xC1\x81z", qvx::kEncodingUTF8), U"a\uFFFD\uFFFDz");
  EXPECT_EQ(Decode("a\xE0\x9F\xBFz", qvx::kEncodingUTF8), U"a\uFFFDz");
  EXPECT_EQ(Decode("a\xF5z", qvx::kEncodingUTF8), U"a\uFFFDz");
  EXPECT_EQ(Decode("a\xE2\x82z", qvx::kEncodingUTF8), U"a\uFFFDz");
}

TEST(Encodings, Utf16HasItsFirstAndLastPair) {
  for (const char32_t character : {0x10000, 0x103FF, 0x10400, 0x10FFFF}) {
    const std::u32string text(1, character);
    EXPECT_EQ(DecodeStrictly(Encode(text, qvx::kEncodingUTF16), qvx::kEncodingUTF16), text);
  }
  EXPECT_EQ(Utf16(U"\U0001F600"), u"\xD83D\xDE00");
  EXPECT_EQ(Utf16(U"\uFFFF"), u"\uFFFF");
}

TEST(Encodings, HalvesOfUtf16PairsAreReplacedOneByOne) {
  const auto decoded = [](std::u16string_view units) {
    return Decode({reinterpret_cast<const char*>(units.data()), units.size() * 2}, qvx::kEncodingUTF16);
  };
  EXPECT_EQ(decoded(u"a\xD800z"), U"a\uFFFDz");
  EXPECT_EQ(decoded(u"a\xDC00z"), U"a\uFFFDz");
  EXPECT_EQ(decoded(u"\xD800\xD800"), U"\uFFFD\uFFFD");
  EXPECT_EQ(decoded(u"\xDC00\xDC00"), U"\uFFFD\uFFFD");
  EXPECT_EQ(decoded(u"\xD800"), U"\uFFFD");
}

TEST(Encodings, BrokenUnitsAreRefusedStrictly) {
  EXPECT_FALSE(DecodeStrictly("abc", qvx::kEncodingUTF16).has_value());
  EXPECT_FALSE(DecodeStrictly("abcde", qvx::kEncodingUTF32).has_value());
  EXPECT_FALSE(DecodeStrictly(std::string_view("\0\0\x11\0", 4), qvx::kEncodingUTF32).has_value());
  EXPECT_FALSE(DecodeStrictly(std::string_view("\0\xD8\0\0a\0\0\0", 8), qvx::kEncodingUTF32).has_value());
}

TEST(Encodings, WhatAnEncodingLacksIsAQuestionMark) {
  for (const std::uint32_t encoding :
       {qvx::kEncodingMacRoman, qvx::kEncodingWindowsLatin1, qvx::kEncodingASCII}) {
    EXPECT_EQ(Encode(U"a\u0416\U000100C4z", encoding), "a??z") << encoding;
  }
}

TEST(Encodings, MalformedUtf8AndAsciiAreRefusedStrictly) {
  for (const std::string_view malformed :
       {"\x80", "\xC1\x81", "\xF5\x80\x80\x80", "\xE2\x82", "\xE2\x82z", "\xE0\x9F\xBF", "\xED\xA0\x80",
        "\xED\xBF\xBF", "\xF4\x90\x80\x80"}) {
    EXPECT_FALSE(DecodeStrictly(malformed, qvx::kEncodingUTF8).has_value()) << malformed;
  }
  EXPECT_EQ(DecodeStrictly("a\x7F", qvx::kEncodingASCII), U"a\x7F");
  EXPECT_FALSE(DecodeStrictly("a\x80", qvx::kEncodingASCII).has_value());
  EXPECT_EQ(Decode("a\x80z", qvx::kEncodingASCII), U"a\uFFFDz");
}

TEST(Encodings, Utf32HasEachCharacterButHalvesOfPairs) {
  const auto decoded = [](char32_t unit) {
    return Decode({reinterpret_cast<const char*>(&unit), sizeof unit}, qvx::kEncodingUTF32);
  };
  for (const char32_t character : {0x0, 0xD7FF, 0xE000, 0x10FFFF}) {
    EXPECT_EQ(decoded(character), std::u32string(1, character));
  }
  for (const char32_t none : {0xD800, 0xDFFF, 0x110000}) EXPECT_EQ(decoded(none), U"\uFFFD");
}

TEST(Letters, AreFoldedInAsciiAndBeyond) {
  EXPECT_EQ(LowerCase(U'A'), U'a');
  EXPECT_EQ(LowerCase(U'Z'), U'z');
  EXPECT_EQ(LowerCase(U'@'), U'@');
  EXPECT_EQ(LowerCase(U'['), U'[');
  EXPECT_EQ(UpperCase(U'a'), U'A');
  EXPECT_EQ(UpperCase(U'z'), U'Z');
  EXPECT_EQ(UpperCase(U'`'), U'`');
  EXPECT_EQ(UpperCase(U'{'), U'{');
  EXPECT_EQ(LowerCase(U'\u00C4'), U'\u00E4');
  EXPECT_EQ(UpperCase(U'\u00E4'), U'\u00C4');
}

TEST(Names, AreTheSameInEitherCaseOfAscii) {
  EXPECT_EQ(LowerName("AZ@[az"), "az@[az");
  EXPECT_TRUE(SameName("Name", "nAME"));
  EXPECT_FALSE(SameName("Name", "Names"));
  EXPECT_FALSE(SameName("Name", "Nama"));
}

TEST(Encodings, KnownBytes) {
  EXPECT_EQ(Decode("\x8E", qvx::kEncodingMacRoman), U"\u00E9");
  EXPECT_EQ(Decode("\x80", qvx::kEncodingWindowsLatin1), U"\u20AC");
  EXPECT_EQ(Encode(U"\u20AC", qvx::kEncodingASCII), "?");
}

TEST(Encodings, MalformedTextIsRefusedStrictlyAndReplacedOtherwise) {
  for (const std::string_view bytes : {"\xFF", "\xC0\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80", "a\xE2\x82"}) {
    EXPECT_FALSE(DecodeStrictly(bytes, qvx::kEncodingUTF8).has_value());
    EXPECT_NE(Decode(bytes, qvx::kEncodingUTF8).find(U'\uFFFD'), std::u32string::npos);
  }
  EXPECT_FALSE(DecodeStrictly(std::string_view("\x00\xD8", 2), qvx::kEncodingUTF16).has_value());
  EXPECT_FALSE(DecodeStrictly("\x80", qvx::kEncodingASCII).has_value());
}

TEST(Strings, NoBytesAreTheNullString) {
  EXPECT_EQ(NewString(""), nullptr);
  EXPECT_EQ(BytesOf(nullptr), "");
}

TEST(Strings, AreCounted) {
  const std::int32_t before = LiveStrings();
  HostString* const s = NewString("text");
  LockString(s);
  UnlockString(s);
  EXPECT_EQ(LiveStrings(), before + 1);
  UnlockString(s);
  EXPECT_EQ(LiveStrings(), before);
}

TEST(Strings, OldRecordsShowTextOneByteIntoTheBuffer) {
  UseOldStringRecords(true);
  const StringRef s = Text("old");
  UseOldStringRecords(false);
  ASSERT_NE(s.get()->old.buffer, nullptr);
  EXPECT_STREQ(s.get()->old.buffer + 1, "old");
  EXPECT_EQ(s.get()->old.length, 3);
}

TEST(Strings, NewRecordsShowNothingOfThat) {
  const StringRef s = Text("new");
  EXPECT_EQ(s.get()->old.buffer, nullptr);
  EXPECT_EQ(s.get()->old.length, 0);
}

TEST(Strings, CompareWithoutRegardToCaseAndEncoding) {
  const StringRef a = Text("\u00C4pfel");
  const StringRef b = StringRef::Adopt(ConvertString(Text("\u00E4PFEL").get(), qvx::kEncodingUTF16));
  EXPECT_EQ(CompareStrings(a.get(), b.get()), 0);
  EXPECT_NE(CompareStringsExactly(a.get(), b.get()), 0);
  EXPECT_LT(CompareStrings(Text("a").get(), Text("B").get()), 0);
  EXPECT_GT(CompareStrings(Text("ab").get(), Text("a").get()), 0);
}

TEST(Strings, HaveTheOrderOfTheirCharactersOutsideOfAsciiToo) {
  const char* const ordered[] = {"a",      "z",      "z\u00E4",   "\u00E4", "\u00E4\u00E4",
                                 "\u00F6", "\u20AC", "\U0001F600"};
  for (const char* const& left : ordered) {
    for (const char* const& right : ordered) {
      const int wanted = &left == &right ? 0 : &left < &right ? -1 : 1;
      EXPECT_EQ(CompareStrings(Text(left).get(), Text(right).get()), wanted) << left << " " << right;
      EXPECT_EQ(CompareStringsExactly(Text(left).get(), Text(right).get()), wanted) << left << " " << right;
    }
  }
}

TEST(Strings, JoinInUtf8WhenEncodingsDiffer) {
  const StringRef a = StringRef::Adopt(ConvertString(Text("x").get(), qvx::kEncodingUTF16));
  const StringRef joined = StringRef::Adopt(JoinStrings(a.get(), Text("y").get()));
  EXPECT_EQ(BytesOf(joined.get()), "xy");
  EXPECT_EQ(EncodingOf(joined.get()), qvx::kEncodingUTF8);
}

TEST(Numbers, AreShownWithSevenDigitsAndWholeOnesInFull) {
  EXPECT_EQ(NumberText(0.1 + 0.2, 7), "0.3");
  EXPECT_EQ(NumberText(123456789, 7), "123456789");
  EXPECT_EQ(NumberText(-0.0, 7), "0");
  EXPECT_EQ(NumberText(1e20, 7), "1e+20");
  EXPECT_EQ(NumberText(0.0 / 0.0, 7), "NaN");
}

}  // namespace
}  // namespace hostrun
