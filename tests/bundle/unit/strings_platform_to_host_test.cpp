// tests/bundle/unit/strings_platform_to_host_test.cpp - NSStringRB and REALBuildUnicodeString.
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <new>

#include "tests/bundle/unit/bridge.h"

namespace unit {
namespace {

using qvx::kEncodingASCII;
using qvx::kEncodingMacRoman;
using qvx::kEncodingUnknown;
using qvx::kEncodingUTF16;
using qvx::kEncodingUTF32;
using qvx::kEncodingUTF8;
using qvx::kEncodingWindowsLatin1;

void* ToHost(NativeObject* string) {
  return StringRB(string);
}

void* Build(std::string_view bytes, std::uint32_t encoding) {
  return Convert<&qvx::REALBuildUnicodeString>(static_cast<const void*>(bytes.data()),
                                               static_cast<std::int64_t>(bytes.size()), encoding);
}

std::string Units16(std::u16string_view text) {
  return {reinterpret_cast<const char*>(text.data()), text.size() * 2};
}
std::string Units32(std::u32string_view text) {
  return {reinterpret_cast<const char*>(text.data()), text.size() * 4};
}

std::string TextOf(void* string) {
  return TheHost().Text(string);
}
std::uint32_t EncodingOf(void* string) {
  return TheHost().String(string).encoding;
}

using NSStringRB = NewHost;

TEST_F(NSStringRB, NilIsTheNullStringAndNothingIsCalled) {
  EXPECT_THAT(ToHost(nullptr), IsNull());
  EXPECT_THAT(Log().Lines(), IsEmpty());
}

TEST_F(NSStringRB, AnEmptyStringIsTheNullString) {
  EXPECT_THAT(ToHost(MakeText("")), IsNull());
  EXPECT_EQ(Log().Count(EventKind::kCall, "CFStringGetCString"), 0);
  EXPECT_THAT(Log().Services(), IsEmpty());
}

TEST_F(NSStringRB, ANegativeLengthIsTheNullString) {
  NativeObject* const string = MakeText("x");
  string->claims = true;
  string->claimedLength = 0xFFFFFFFF;
  EXPECT_THAT(ToHost(string), IsNull());
  EXPECT_EQ(Log().Count(EventKind::kCall, "CFStringGetCString"), 0);
}

TEST_F(NSStringRB, HandsOverUTF8) {
  void* const string = ToHost(MakeText(u"Gr\u00FCn \U0001F3A8"));
  EXPECT_EQ(TextOf(string), "Gr\xC3\xBCn \xF0\x9F\x8E\xA8");
  EXPECT_EQ(EncodingOf(string), kEncodingUTF8);
  EXPECT_EQ(TheHost().String(string).references, 1);
}

TEST_F(NSStringRB, MeasuresReadsAndBuildsInThisOrder) {
  ToHost(MakeText("red"));
  EXPECT_THAT(Log().Lines(),
              ElementsAre("CFStringGetLength(@\"red\")", "CFStringGetCString(@\"red\", 600, 0x8000100)",
                          "resolve REALBuildString", "REALBuildString(\"red\")",
                          "resolve REALSetStringEncoding", "REALSetStringEncoding(\"red\", 0x8000100)"));
}

TEST_F(NSStringRB, UpTo99UnitsNothingIsAllocated) {
  for (const std::size_t length : {1U, 98U, 99U}) {
    Log().Clear();
    EXPECT_EQ(TextOf(ToHost(MakeText(std::string(length, 'x')))), std::string(length, 'x'));
    EXPECT_THAT(Log().Allocations(), IsEmpty());
    EXPECT_THAT(Log().Calls(), Contains(HasSubstr(", 600, ")));
  }
}

TEST_F(NSStringRB, From100UnitsOneHeapBufferOfSixBytesPerUnitIsUsedAndFreed) {
  EXPECT_EQ(TextOf(ToHost(MakeText(std::string(100, 'x')))), std::string(100, 'x'));
  EXPECT_THAT(Log().Allocations(), ElementsAre("calloc(600)"));
  EXPECT_THAT(Log().Calls(), Contains(HasSubstr(", 600, ")));
  EXPECT_EQ(LiveBundleBlocks(), 0);
  Log().Clear();
  EXPECT_EQ(TextOf(ToHost(MakeText(std::string(1000, 'x')))), std::string(1000, 'x'));
  EXPECT_THAT(Log().Calls(), Contains(HasSubstr(", 6000, ")));
}

TEST_F(NSStringRB, NinetyNineUnitsOfThreeBytesFitTheStackBuffer) {
  const std::u16string text(99, u'\u20AC');
  EXPECT_EQ(TextOf(ToHost(MakeText(text))), ToUTF8(text));
}

TEST_F(NSStringRB, AHeapBufferThatCannotBeHadGivesTheNullString) {
  Log().SetHook(
      [](const Event& event) { return event.kind == EventKind::kAllocation ? Fault::kNull : Fault::kNone; });
  EXPECT_THAT(ToHost(MakeText(std::string(100, 'x'))), IsNull());
  EXPECT_EQ(Log().Count(EventKind::kCall, "CFStringGetCString"), 0);
  EXPECT_THAT(host.raised, IsEmpty());
}

TEST_F(NSStringRB, ALengthWhoseBufferWouldBeTooLargeGivesTheNullString) {
  NativeObject* const string = MakeText("x");
  string->claims = true;
  for (const std::uint32_t length : {0x7FFFFFFFU / 6 + 1, 0x7FFFFFFFU}) {
    string->claimedLength = length;
    EXPECT_THAT(ToHost(string), IsNull());
  }
  EXPECT_THAT(Log().Allocations(), IsEmpty());
}

TEST_F(NSStringRB, ForTheLongestLengthWhoseBufferIsNotTooLargeOneIsAskedFor) {
  Log().SetHook(
      [](const Event& event) { return event.kind == EventKind::kAllocation ? Fault::kNull : Fault::kNone; });
  NativeObject* const string = MakeText("x");
  string->claims = true;
  string->claimedLength = 0x7FFFFFFFU / 6;
  EXPECT_THAT(ToHost(string), IsNull());
  EXPECT_THAT(Log().Allocations(), ElementsAre("calloc(2147483646)"));
}

TEST_F(NSStringRB, TextThatIsNotUTF8GivesTheNullStringNotAPart) {
  EXPECT_THAT(ToHost(MakeText(u"ab\xD800")), IsNull());
  EXPECT_THAT(Log().Services(), IsEmpty());
  EXPECT_THAT(ToHost(MakeText(std::u16string(100, u'x') + u"\xD800")), IsNull());
  EXPECT_EQ(LiveBundleBlocks(), 0);
}

TEST_F(NSStringRB, EndsAtAnEmbeddedZero) {
  EXPECT_EQ(TextOf(ToHost(MakeText(std::u16string(u"ab\0cd", 5)))), "ab");
}

TEST_F(NSStringRB, ATextOfZerosAloneIsTheNullString) {
  EXPECT_THAT(ToHost(MakeText(std::u16string(u"\0", 1))), IsNull());
  EXPECT_EQ(Calls("REALBuildString"), 0);
}

TEST_F(NSStringRB, GivesTheNullStringOnAHostThatBuildsNone) {
  host.missing = {"REALBuildString"};
  EXPECT_THAT(ToHost(MakeText("red")), IsNull());
  EXPECT_THAT(ToHost(MakeText(std::string(200, 'x'))), IsNull());
  EXPECT_EQ(LiveBundleBlocks(), 0);
}

class BuildOnAnyHost : public FreshBundle, public testing::WithParamInterface<long double> {
 protected:
  void SetUp() override { Start(GetParam()); }
};

INSTANTIATE_TEST_SUITE_P(Hosts, BuildOnAnyHost, testing::Values(2011.0L, 2012.0L, 2015.0L),
                         [](const auto& each) { return std::to_string(static_cast<int>(each.param)); });

TEST_P(BuildOnAnyHost, NoBytesGiveTheNullStringAndNoServiceIsCalled) {
  for (const std::uint32_t encoding : {kEncodingUTF8, kEncodingUTF16, kEncodingUTF32, kEncodingMacRoman}) {
    EXPECT_THAT(
        Convert<&qvx::REALBuildUnicodeString>(static_cast<const void*>(nullptr), std::int64_t{3}, encoding),
        IsNull());
    for (const std::int64_t length : {std::int64_t{0}, std::int64_t{-1}, std::int64_t{0x80000000LL},
                                      std::int64_t{0x100000001LL}, INT64_MIN}) {
      EXPECT_THAT(Convert<&qvx::REALBuildUnicodeString>(static_cast<const void*>("abc"), length, encoding),
                  IsNull());
    }
  }
  EXPECT_THAT(Log().Lines(), IsEmpty());
}

TEST_P(BuildOnAnyHost, AsksForTheLongestStringThatAHostCanHave) {
  host.missing = {"REALBuildString"};
  EXPECT_THAT(Convert<&qvx::REALBuildUnicodeString>(static_cast<const void*>("abc"), std::int64_t{0x7FFFFFFF},
                                                    kEncodingUTF8),
              IsNull());
  EXPECT_EQ(Asked("REALBuildString"), 1);
}

TEST_P(BuildOnAnyHost, KeepsTheEncodingOfOtherText) {
  for (const std::uint32_t encoding : {kEncodingUTF8, kEncodingASCII, 0x0201U}) {
    void* const string = Build("abc", encoding);
    EXPECT_EQ(TextOf(string), "abc");
    EXPECT_EQ(EncodingOf(string), encoding);
  }
}

TEST_P(BuildOnAnyHost, TagsEightBitTextThatIsPlainAsASCII) {
  for (const std::uint32_t encoding : {kEncodingMacRoman, kEncodingWindowsLatin1, kEncodingUnknown}) {
    void* const string = Build("plain\x7F", encoding);
    EXPECT_EQ(EncodingOf(string), kEncodingASCII);
    EXPECT_EQ(TextOf(string), "plain\x7F");
  }
}

TEST_P(BuildOnAnyHost, WindowsLatin1IsNumber500InHexadecimal) {
  EXPECT_EQ(EncodingOf(Build("plain", 0x500)), kEncodingASCII);
  EXPECT_EQ(EncodingOf(Build("\x80", 0x500)), 0x500U);
}

TEST_P(BuildOnAnyHost, KeepsEightBitTextWithOneByteFrom80AsItIs) {
  for (const std::uint32_t encoding : {kEncodingMacRoman, kEncodingWindowsLatin1, kEncodingUnknown}) {
    for (const std::string bytes : {"\x80plain", "pla\xFFin", "plain\x80"}) {
      void* const string = Build(bytes, encoding);
      EXPECT_EQ(EncodingOf(string), encoding);
      EXPECT_EQ(TextOf(string), bytes);
    }
  }
}

TEST_P(BuildOnAnyHost, DoesNotRetagUTF8ThatIsPlain) {
  EXPECT_EQ(EncodingOf(Build("plain", kEncodingUTF8)), kEncodingUTF8);
}

TEST_P(BuildOnAnyHost, GivesTheNullStringOnAHostThatBuildsNone) {
  host.missing = {"REALBuildString"};
  EXPECT_THAT(Build("abc", kEncodingUTF8), IsNull());
  EXPECT_EQ(Calls("REALSetStringEncoding"), 0);
}

TEST_P(BuildOnAnyHost, HandsOutAnUntaggedStringOnAHostThatTagsNone) {
  host.missing = {"REALSetStringEncoding"};
  EXPECT_EQ(TextOf(Build("abc", kEncodingUTF8)), "abc");
}

TEST_P(BuildOnAnyHost, KeepsZeroBytesInTheMiddle) {
  EXPECT_EQ(TextOf(Build(std::string_view("a\0b", 3), kEncodingUTF8)), std::string("a\0b", 3));
}

TEST_P(BuildOnAnyHost, TurnsUTF16IntoUTF8) {
  void* const string = Build(Units16(u"Gr\u00FCn"), kEncodingUTF16);
  EXPECT_EQ(TextOf(string), "Gr\xC3\xBCn");
  EXPECT_EQ(EncodingOf(string), kEncodingUTF8);
}

TEST_P(BuildOnAnyHost, TurnsUTF32IntoUTF8) {
  void* const string = Build(Units32(U"Gr\u00FCn"), kEncodingUTF32);
  EXPECT_EQ(TextOf(string), "Gr\xC3\xBCn");
  EXPECT_EQ(EncodingOf(string), kEncodingUTF8);
}

TEST_P(BuildOnAnyHost, ReleasesTheTemporaryOnAHostThatCannotConvert) {
  host.missing = {"REALConvertString"};
  EXPECT_THAT(Build(Units16(u"ab"), kEncodingUTF16), IsNull());
  EXPECT_THAT(Build(Units32(U"ab"), kEncodingUTF32), IsNull());
  EXPECT_EQ(Calls("REALUnlockString"), 2);
}

TEST_P(BuildOnAnyHost, RaisesOutOfMemoryWhenAServiceThrowsBadAlloc) {
  const char* const builder = GetParam() < 2012.0L ? "REALBuildString" : "REALBuildStringWithEncoding";
  bool first = true;
  host.before[builder] = [&first] {
    if (std::exchange(first, false)) throw std::bad_alloc();
  };
  EXPECT_THAT(Build(Units16(u"ab"), kEncodingUTF16), IsNull());
  ASSERT_THAT(host.raised, SizeIs(1));
  EXPECT_EQ(host.raised[0].className, "OutOfMemoryException");
  EXPECT_EQ(host.raised[0].message, "Failed to allocate memory for a string.");
}

TEST_P(BuildOnAnyHost, RaisesOutOfMemoryFromEveryStepAndReleasesTheTemporary) {
  for (const char* const step : {"REALSetStringEncoding", "REALConvertString", "REALUnlockString"}) {
    host.raised.clear();
    bool first = true;
    host.before[step] = [&first] {
      if (std::exchange(first, false)) throw std::bad_alloc();
    };
    void* const string = Build(Units16(u"ab"), kEncodingUTF16);
    const bool happened = !first;
    host.before.clear();
    if (!happened) continue;  // this host does not need that step
    EXPECT_THAT(string, IsNull()) << step;
    ASSERT_THAT(host.raised, SizeIs(1)) << step;
    EXPECT_EQ(host.raised[0].className, "OutOfMemoryException");
    if (std::string(step) == "REALUnlockString") {
      // The unlock that threw was never carried out.
      for (HostString* const each : host.Strings()) each->owned = each->references;
    }
  }
}

TEST_P(BuildOnAnyHost, LetsAnyOtherExceptionOfAServiceGoOn) {
  host.before["REALSetStringEncoding"] = [] { throw 1; };
  EXPECT_THROW(Build("abc", kEncodingUTF8), int);
  EXPECT_THAT(host.raised, IsEmpty());
}

TEST_P(BuildOnAnyHost, RaisesWithoutAMessageWhenEvenTheMessageCannotBeBuilt) {
  for (const char* const builder : {"REALBuildString", "REALBuildStringWithEncoding"}) {
    host.before[builder] = [] { throw std::bad_alloc(); };
  }
  EXPECT_THAT(Build("abc", kEncodingUTF8), IsNull());
  ASSERT_THAT(host.raised, SizeIs(1));
  EXPECT_EQ(host.raised[0].className, "OutOfMemoryException");
}

TEST_P(BuildOnAnyHost, LetsOtherThrownExceptionsPass) {
  for (const char* const builder : {"REALBuildString", "REALBuildStringWithEncoding"}) {
    host.before[builder] = [] { throw std::runtime_error("of the host"); };
  }
  EXPECT_THROW(Build("abc", kEncodingUTF8), std::runtime_error);
  EXPECT_THROW(Build(Units16(u"ab"), kEncodingUTF16), std::runtime_error);
  EXPECT_THAT(host.raised, IsEmpty());
}

using BuildOnNewHost = NewHost;

TEST_F(BuildOnNewHost, BuildsWithTheEncodingConvertsAndReleasesTheTemporary) {
  Build(Units16(u"ab"), kEncodingUTF16);
  EXPECT_THAT(Log().Services(), ElementsAre("REALBuildStringWithEncoding(\"a\\x00b\\x00\", 0x100)",
                                            "REALConvertString(\"a\\x00b\\x00\", 0x8000100)",
                                            "REALUnlockString(\"a\\x00b\\x00\")"));
}

TEST_F(BuildOnNewHost, DoesTheSameForUTF32) {
  Build(Units32(U"a"), kEncodingUTF32);
  EXPECT_THAT(Log().Services(), ElementsAre("REALBuildStringWithEncoding(\"a\\x00\\x00\\x00\", 0xc000100)",
                                            "REALConvertString(\"a\\x00\\x00\\x00\", 0x8000100)",
                                            "REALUnlockString(\"a\\x00\\x00\\x00\")"));
}

TEST_F(BuildOnNewHost, AsksForTheConversionEvenWhenThereIsNoTemporary) {
  host.missing = {"REALBuildStringWithEncoding"};
  for (const std::uint32_t encoding : {kEncodingUTF16, kEncodingUTF32}) {
    Log().Clear();
    EXPECT_THAT(Build("abcd", encoding), IsNull());
    EXPECT_THAT(Log().Services(), ElementsAre("REALConvertString(null, 0x8000100)"));
  }
}

TEST_F(BuildOnNewHost, KeepsCodePointsAboveFFFF) {
  EXPECT_EQ(TextOf(Build(Units32(U"\U0001F600"), kEncodingUTF32)), "\xF0\x9F\x98\x80");
}

TEST_F(BuildOnNewHost, AllocatesNothingItself) {
  Build(Units32(std::u32string(500, U'x')), kEncodingUTF32);
  EXPECT_THAT(Log().Allocations(), IsEmpty());
}

using BuildOnOldHost = OldHost;

TEST_F(BuildOnOldHost, BuildsTagsConvertsAndReleasesTheTemporary) {
  Build(Units16(u"ab"), kEncodingUTF16);
  EXPECT_THAT(
      Log().Services(),
      ElementsAre("REALBuildString(\"a\\x00b\\x00\")", "REALSetStringEncoding(\"a\\x00b\\x00\", 0x100)",
                  "REALConvertString(\"a\\x00b\\x00\", 0x8000100)", "REALUnlockString(\"a\\x00b\\x00\")"));
}

TEST_F(BuildOnOldHost, WithoutATemporaryUTF16IsNotConverted) {
  host.missing = {"REALBuildString"};
  EXPECT_THAT(Build(Units16(u"ab"), kEncodingUTF16), IsNull());
  EXPECT_THAT(Log().Services(), IsEmpty());
}

TEST_F(BuildOnOldHost, WithoutATemporaryTheConversionOfUTF32IsAskedForAllTheSame) {
  host.missing = {"REALBuildString"};
  EXPECT_THAT(Build(Units32(U"ab"), kEncodingUTF32), IsNull());
  EXPECT_THAT(Log().Services(), ElementsAre("REALConvertString(null, 0x8000100)"));
}

TEST_F(BuildOnOldHost, NarrowsUTF32TagsConvertsAndReleases) {
  Build(Units32(U"ab"), kEncodingUTF32);
  EXPECT_THAT(
      Log().Services(),
      ElementsAre("REALBuildString(\"a\\x00b\\x00\")", "REALSetStringEncoding(\"a\\x00b\\x00\", 0x100)",
                  "REALConvertString(\"a\\x00b\\x00\", 0x8000100)", "REALUnlockString(\"a\\x00b\\x00\")"));
}

TEST_F(BuildOnOldHost, DropsTrailingBytesOfUTF32) {
  EXPECT_EQ(TextOf(Build(std::string_view("x\0\0\0yz", 6), kEncodingUTF32)), "x");
}

TEST_F(BuildOnOldHost, LosesTheHighBitsAboveFFFF) {
  EXPECT_EQ(TextOf(Build(Units32(U"\U0001F600"), kEncodingUTF32)), ToUTF8(u"\uF600"));
}

TEST_F(BuildOnOldHost, BuildsAnEmptyTemporaryFromLessThanOneUnit) {
  Build("xyz", kEncodingUTF32);
  EXPECT_THAT(Log().Services()[0], Eq("REALBuildString(\"\")"));
}

TEST_F(BuildOnOldHost, NarrowsUpTo799BytesWithoutAllocation) {
  for (const std::size_t bytes : {796U, 797U, 799U}) {
    Log().Clear();
    std::string input = Units32(std::u32string(200, U'x')).substr(0, bytes);
    EXPECT_EQ(TextOf(Build(input, kEncodingUTF32)), std::string(199, 'x'));
    EXPECT_THAT(Log().Allocations(), IsEmpty());
  }
}

TEST_F(BuildOnOldHost, ReadsNothingBehindTheText) {
  const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  auto* const pages =
      static_cast<char*>(mmap(nullptr, 2 * page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
  ASSERT_EQ(mprotect(pages + page, page, PROT_NONE), 0);
  for (const std::size_t length : {1U, 250U}) {
    const std::string bytes = Units32(std::u32string(length, U'x'));
    char* const end = pages + page;
    const std::string_view text(std::copy_backward(bytes.begin(), bytes.end(), end), bytes.size());
    EXPECT_EQ(TextOf(Build(text, kEncodingUTF32)), std::string(length, 'x'));
  }
  munmap(pages, 2 * page);
}

TEST_F(BuildOnOldHost, NarrowsMoreInAHeapBufferOfTwoBytesPerUnitAndFour) {
  EXPECT_EQ(TextOf(Build(Units32(std::u32string(200, U'x')), kEncodingUTF32)), std::string(200, 'x'));
  EXPECT_THAT(Log().Allocations(), ElementsAre("calloc(404)"));
  EXPECT_EQ(LiveBundleBlocks(), 0);
}

TEST_F(BuildOnOldHost, NarrowsALongTextWhole) {
  std::u32string text;
  for (char32_t i = 0; i < 1000; ++i) text += U'a' + i % 26;
  EXPECT_EQ(TextOf(Build(Units32(text), kEncodingUTF32)), std::string(text.begin(), text.end()));
}

TEST_F(BuildOnOldHost, GivesTheNullStringWhenTheHeapBufferCannotBeHad) {
  Log().SetHook(
      [](const Event& event) { return event.kind == EventKind::kAllocation ? Fault::kNull : Fault::kNone; });
  EXPECT_THAT(Build(Units32(std::u32string(200, U'x')), kEncodingUTF32), IsNull());
  EXPECT_THAT(Log().Services(), IsEmpty());
}

TEST_F(BuildOnOldHost, FreesTheHeapBufferWhenAServiceThrows) {
  host.before["REALConvertString"] = [] { throw std::runtime_error("of the host"); };
  EXPECT_THROW(Build(Units32(std::u32string(200, U'x')), kEncodingUTF32), std::runtime_error);
  EXPECT_EQ(LiveBundleBlocks(), 0);
}

}  // namespace
}  // namespace unit
