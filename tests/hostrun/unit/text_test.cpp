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
