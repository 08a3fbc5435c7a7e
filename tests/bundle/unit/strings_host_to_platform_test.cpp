// tests/bundle/unit/strings_host_to_platform_test.cpp - NewNSString and REALGetStringData.
#include <cstdlib>
#include <cstring>
#include <new>

#include "tests/bundle/unit/bridge.h"

namespace unit {
namespace {

using qvx::kEncodingASCII;
using qvx::kEncodingUnknown;
using qvx::kEncodingUTF16;
using qvx::kEncodingUTF8;
using qvx::REALstringData;

NativeObject* ToPlatform(qvx::REALstring string) {
  return NewString(string);
}

std::u16string TextOf(const NativeObject* string) {
  return string == nullptr ? u"(nil)" : string->text;
}

// A service that answers null although it is there.
void AnswerNull(const char* service) {
  Log().SetHook([service](const Event& event) {
    return event.kind == EventKind::kService && event.name == service ? Fault::kNull : Fault::kNone;
  });
}

class NewNSStringAnywhere : public FreshBundle, public testing::WithParamInterface<long double> {
 protected:
  void SetUp() override { Start(GetParam()); }
};

INSTANTIATE_TEST_SUITE_P(Hosts, NewNSStringAnywhere, testing::Values(2011.0L, 2012.0L, 2015.0L),
                         [](const auto& each) { return std::to_string(static_cast<int>(each.param)); });

TEST_P(NewNSStringAnywhere, NullIsNilAndNoServiceIsCalled) {
  EXPECT_THAT(ToPlatform(nullptr), IsNull());
  EXPECT_THAT(Log().Lines(), IsEmpty());
}

TEST_P(NewNSStringAnywhere, TakesTheHostsPlatformStringAutoreleasedOnce) {
  NativeObject* const string = ToPlatform(host.NewString("key"));
  EXPECT_EQ(TextOf(string), u"key");
  EXPECT_EQ(string->autoreleases, 1);
  EXPECT_EQ(string->held, 0);
  EXPECT_EQ(Calls("REALGetStringCFString"), 1);
  EXPECT_EQ(Calls("REALGetStringEncoding"), 0);
}

TEST_P(NewNSStringAnywhere, ReadsTheBytesOnAHostThatHasNoPlatformStrings) {
  host.missing = {"REALGetStringCFString"};
  const auto string = host.NewString("gr\xC3\xBCn");
  NativeObject* const native = ToPlatform(string);
  EXPECT_EQ(TextOf(native), u"gr\u00FCn");
  EXPECT_EQ(native->autoreleases, 1);
  EXPECT_EQ(host.String(string).references, 1);
}

TEST_P(NewNSStringAnywhere, ReadsUTF16ByItsLengthAndDropsAnOddByte) {
  host.missing = {"REALGetStringCFString"};
  EXPECT_EQ(TextOf(ToPlatform(host.NewString(std::string_view("a\0b\0c", 5), kEncodingUTF16))), u"ab");
  EXPECT_THAT(Log().Calls(), Contains("CFStringCreateWithCharacters(\"ab\", 2)"));
}

TEST_P(NewNSStringAnywhere, KeepsZerosInsideUTF16) {
  host.missing = {"REALGetStringCFString"};
  EXPECT_EQ(TextOf(ToPlatform(host.NewString(std::string_view("a\0\0\0c\0", 6), kEncodingUTF16))),
            std::u16string(u"a\0c", 3));
}

TEST_P(NewNSStringAnywhere, OtherTextEndsAtItsFirstZero) {
  host.missing = {"REALGetStringCFString"};
  EXPECT_EQ(TextOf(ToPlatform(host.NewString(std::string_view("a\0b", 3), kEncodingUTF8))), u"a");
}

TEST_P(NewNSStringAnywhere, ReadsTextOfUnknownEncodingAsMacRoman) {
  host.missing = {"REALGetStringCFString"};
  ToPlatform(host.NewString("abc", kEncodingUnknown));
  EXPECT_THAT(Log().Calls(), ElementsAre("CFStringCreateWithCString(\"abc\", 0x0)"));
}

TEST_P(NewNSStringAnywhere, ReadsTextAsMacRomanOnAHostThatTellsNoEncodings) {
  host.missing = {"REALGetStringCFString", "REALGetStringEncoding"};
  ToPlatform(host.NewString("abc", kEncodingUTF8));
  EXPECT_THAT(Log().Calls(), ElementsAre("CFStringCreateWithCString(\"abc\", 0x0)"));
}

TEST_P(NewNSStringAnywhere, TextThatThePlatformRefusesIsNil) {
  host.missing = {"REALGetStringCFString"};
  EXPECT_THAT(ToPlatform(host.NewString("\xFF\xFE", kEncodingUTF8)), IsNull());
}

using NewNSStringOnNewHost = NewHost;

TEST_F(NewNSStringOnNewHost, GivesNothingBackWhenTheHostThrowsInsteadOfFillingTheData) {
  host.missing = {"REALGetStringCFString"};
  host.before["PluginGetStringData"] = [] { throw std::bad_alloc(); };
  EXPECT_THROW(ToPlatform(host.NewString("abc")), std::bad_alloc);
  EXPECT_EQ(Asked("PluginDisposeStringData"), 0);
}

TEST_F(NewNSStringOnNewHost, AsksForThePlatformStringTwiceBeforeItReadsBytes) {
  AnswerNull("REALGetStringCFString");
  ToPlatform(host.NewString("abc"));
  EXPECT_THAT(Log().Services(),
              ElementsAre("REALGetStringCFString(\"abc\")", "REALGetStringCFString(\"abc\")",
                          "REALGetStringEncoding(\"abc\")", "PluginGetStringData(\"abc\", 0xffff)",
                          "PluginDisposeStringData(\"abc\")"));
  EXPECT_EQ(Asked("REALGetStringCFString"), 2);
}

TEST_F(NewNSStringOnNewHost, TheSecondAskingMaySucceed) {
  bool first = true;
  Log().SetHook([&first](const Event& event) {
    const bool null = event.kind == EventKind::kService && event.name == "REALGetStringCFString" &&
                      std::exchange(first, false);
    return null ? Fault::kNull : Fault::kNone;
  });
  EXPECT_EQ(TextOf(ToPlatform(host.NewString("abc"))), u"abc");
  EXPECT_EQ(Calls("REALGetStringEncoding"), 0);
}

TEST_F(NewNSStringOnNewHost, MakesTheStringBeforeTheBytesAreGivenBackAndAutoreleasesItLast) {
  host.missing = {"REALGetStringCFString"};
  NativeObject* const string = ToPlatform(host.NewString("abc"));
  EXPECT_EQ(string->autoreleases, 1);
  Lines order = Log().Lines({EventKind::kService, EventKind::kCall, EventKind::kMessage});
  EXPECT_THAT(order, ElementsAre("REALGetStringEncoding(\"abc\")", "PluginGetStringData(\"abc\", 0xffff)",
                                 "CFStringCreateWithCString(\"abc\", 0x8000100)",
                                 "PluginDisposeStringData(\"abc\")", "[@\"abc\" autorelease]"));
}

TEST_F(NewNSStringOnNewHost, NeitherLocksNorReadsTheRecord) {
  host.missing = {"REALGetStringCFString"};
  ToPlatform(host.NewString("abc"));
  EXPECT_EQ(Calls("REALLockString"), 0);
  EXPECT_EQ(Calls("REALUnlockString"), 0);
}

TEST_F(NewNSStringOnNewHost, GoesOnWithNothingWhenTheBytesCannotBeHad) {
  host.missing = {"REALGetStringCFString"};
  AnswerNull("PluginGetStringData");
  EXPECT_THAT(ToPlatform(host.NewString("abc")), IsNull());
  EXPECT_THAT(Log().Calls(), ElementsAre("CFStringCreateWithCString(null, 0x8000100)"));
  EXPECT_EQ(Calls("PluginDisposeStringData"), 0);
}

TEST_F(NewNSStringOnNewHost, GoesOnWithNothingForUTF16Too) {
  host.missing = {"REALGetStringCFString"};
  AnswerNull("PluginGetStringData");
  ToPlatform(host.NewString(std::string_view("a\0", 2), kEncodingUTF16));
  EXPECT_THAT(Log().Calls(), ElementsAre("CFStringCreateWithCharacters(null, 0)"));
}

TEST_F(NewNSStringOnNewHost, FreesTheBytesItselfOnAHostThatDoesNot) {
  host.missing = {"REALGetStringCFString", "PluginDisposeStringData", "PluginGetStringData"};
  EXPECT_EQ(TextOf(ToPlatform(host.NewString("abc"))), u"abc");
  EXPECT_EQ(LiveBundleBlocks(), 0);
}

TEST_F(NewNSStringOnNewHost, TheFallbackGetsALengthThatFits) {
  // Nothing may be written past a buffer sized by the length that is in the record on entry.
  host.missing = {"REALGetStringCFString", "PluginGetStringData"};
  const std::string text(1000, 'x');
  EXPECT_EQ(TextOf(ToPlatform(host.NewString(text))), std::u16string(1000, u'x'));
  EXPECT_THAT(Log().Allocations(), ElementsAre("malloc(1004)"));
}

TEST_F(NewNSStringOnNewHost, AHostWithStringDataSeesNoFurtherLookups) {
  host.missing = {"REALGetStringCFString"};
  ToPlatform(host.NewString("abc"));
  EXPECT_EQ(Asked("REALLoadGlobalMethod"), 0);
  EXPECT_EQ(Asked("StringGetCString"), 0);
}

TEST_F(NewNSStringOnNewHost, IsNilOnAHostThatHasNoWayToTheBytes) {
  host.missing = {"REALGetStringCFString", "PluginGetStringData", "StringGetCString"};
  EXPECT_THAT(ToPlatform(host.NewString("abc")), IsNull());
  EXPECT_THAT(Log().Allocations(), IsEmpty());
  EXPECT_EQ(Asked("PluginDisposeStringData"), 0);
}

using NewNSStringOnOldHost = OldHost;

TEST_F(NewNSStringOnOldHost, AsksForThePlatformStringOnce) {
  AnswerNull("REALGetStringCFString");
  ToPlatform(host.NewString("abc"));
  EXPECT_THAT(Log().Services(),
              ElementsAre("REALGetStringCFString(\"abc\")", "REALGetStringEncoding(\"abc\")",
                          "REALLockString(\"abc\")", "REALUnlockString(\"abc\")"));
  EXPECT_EQ(Asked("PluginGetStringData"), 0);
}

TEST_F(NewNSStringOnOldHost, AsksForThePlatformStringWithTheFlagZero) {
  host.flagOfLastString = 7;
  ToPlatform(host.NewString("abc"));
  EXPECT_EQ(host.flagOfLastString, 0);
}

TEST_F(NewNSStringOnOldHost, LocksReadsTheRecordPastItsFirstByteAndUnlocks) {
  host.missing = {"REALGetStringCFString"};
  const auto string = host.NewString("abc");
  EXPECT_EQ(TextOf(ToPlatform(string)), u"abc");
  EXPECT_EQ(host.String(string).locks, 1);
  EXPECT_EQ(host.String(string).unlocks, 1);
  EXPECT_THAT(Log().Lines({EventKind::kService, EventKind::kCall}),
              ElementsAre("REALGetStringEncoding(\"abc\")", "REALLockString(\"abc\")",
                          "CFStringCreateWithCString(\"abc\", 0x8000100)", "REALUnlockString(\"abc\")"));
}

TEST_F(NewNSStringOnOldHost, UnlocksOnAHostThatCannotLock) {
  host.missing = {"REALGetStringCFString", "REALLockString"};
  const auto string = host.NewString("abc");
  ++host.String(string).references;  // the one that is given back unlocked
  EXPECT_EQ(TextOf(ToPlatform(string)), u"abc");
  EXPECT_EQ(host.String(string).unlocks, 1);
}

TEST_F(NewNSStringOnOldHost, UnlocksWhenTheLockItselfThrows) {
  host.missing = {"REALGetStringCFString"};
  host.before["REALLockString"] = [] { throw std::bad_alloc(); };
  const auto string = host.NewString("abc");
  ++host.String(string).references;
  EXPECT_THROW(ToPlatform(string), std::bad_alloc);
  EXPECT_EQ(host.String(string).unlocks, 1);
}

TEST_F(NewNSStringOnOldHost, ARecordWithoutABufferIsReadAsNoText) {
  host.missing = {"REALGetStringCFString"};
  const auto string = host.NewString("abc");
  host.String(string).record.buffer = nullptr;
  EXPECT_THAT(ToPlatform(string), IsNull());
  EXPECT_EQ(host.String(string).unlocks, 1);
}

// REALGetStringData, called directly.
class StringData : public NewHost {
 protected:
  static bool Get(qvx::REALstring string, std::uint32_t encoding, REALstringData* out) {
    return Convert<&qvx::REALGetStringData>(string, encoding, out);
  }
  static std::string Bytes(const REALstringData& data) {
    return {data.data, static_cast<std::size_t>(data.length)};
  }
  // The buffer is the caller's.
  static void Dispose(REALstringData& data) {
    std::erase(host.liveStringData, data.data);
    std::free(data.data);
  }
  static bool EndsInFourZeros(const REALstringData& data) {
    return std::memcmp(data.data + data.length, "\0\0\0\0", 4) == 0;
  }
};

TEST_F(StringData, AnswersWhatTheHostAnswers) {
  REALstringData data{};
  EXPECT_TRUE(Get(host.NewString("abc"), kEncodingUTF8, &data));
  EXPECT_EQ(Bytes(data), "abc");
  EXPECT_THAT(Log().Services(), ElementsAre("PluginGetStringData(\"abc\", 0x8000100)"));
  Dispose(data);
}

TEST_F(StringData, AFalseOfTheHostIsFalseAndNotTriedOtherwise) {
  AnswerNull("PluginGetStringData");
  REALstringData data{};
  EXPECT_FALSE(Get(host.NewString("abc"), kEncodingUTF8, &data));
  EXPECT_EQ(Asked("StringGetCString"), 0);
}

class StringDataFallback : public StringData {
 protected:
  void SetUp() override {
    StringData::SetUp();
    host.missing = {"PluginGetStringData"};
  }
};

TEST_F(StringDataFallback, CopiesTheBytesAsStoredIntoABufferSizedByTheRecord) {
  REALstringData data{nullptr, 10, 77};
  ASSERT_TRUE(Get(host.NewString("abc", kEncodingUTF8), kEncodingUnknown, &data));
  EXPECT_EQ(Bytes(data), "abc");
  EXPECT_EQ(data.encoding, kEncodingUnknown);
  EXPECT_TRUE(EndsInFourZeros(data));
  EXPECT_THAT(Log().Allocations(), ElementsAre("malloc(14)"));
  EXPECT_EQ(Calls("REALGetStringEncoding"), 0);
  Dispose(data);
}

TEST_F(StringDataFallback, CopiesTheBytesWhenTheEncodingIsTheStringsOwn) {
  REALstringData data{nullptr, 99, 77};
  ASSERT_TRUE(Get(host.NewString("abc", kEncodingUTF8), kEncodingUTF8, &data));
  EXPECT_EQ(Bytes(data), "abc");
  EXPECT_EQ(data.encoding, kEncodingUTF8);
  EXPECT_TRUE(EndsInFourZeros(data));
  EXPECT_THAT(Log().Allocations(), ElementsAre("malloc(7)"));
  EXPECT_EQ(Calls("REALConvertString"), 0);
  Dispose(data);
}

TEST_F(StringDataFallback, ConvertsOtherwiseAndReleasesTheConvertedString) {
  REALstringData data{};
  ASSERT_TRUE(Get(host.NewString("gr\xC3\xBC", kEncodingUTF8), kEncodingUTF16, &data));
  EXPECT_EQ(Bytes(data), std::string("g\0r\0\xFC\0", 6));
  EXPECT_EQ(data.encoding, kEncodingUTF16);
  EXPECT_TRUE(EndsInFourZeros(data));
  EXPECT_THAT(Log().Allocations(), ElementsAre("malloc(10)"));
  EXPECT_EQ(Calls("REALUnlockString"), 1);
  Dispose(data);
}

TEST_F(StringDataFallback, CopiesNothingIntoARecordOfNoBytes) {
  for (const std::int32_t length : {0, -1}) {
    REALstringData data{nullptr, length, 77};
    ASSERT_TRUE(Get(host.NewString("abc", kEncodingUTF8), kEncodingUnknown, &data));
    EXPECT_EQ(data.length, 0);
    EXPECT_TRUE(EndsInFourZeros(data));
    Dispose(data);
  }
}

TEST_F(StringDataFallback, CopiesASingleByte) {
  REALstringData data{nullptr, 1, 77};
  ASSERT_TRUE(Get(host.NewString("a", kEncodingUTF8), kEncodingUnknown, &data));
  EXPECT_EQ(Bytes(data), "a");
  EXPECT_TRUE(EndsInFourZeros(data));
  Dispose(data);
}

TEST_F(StringDataFallback, AnEmptyStringGivesNoBytesAndFourZeros) {
  REALstringData data{};
  ASSERT_TRUE(Get(host.NewString("", kEncodingUTF8), kEncodingUnknown, &data));
  EXPECT_EQ(data.length, 0);
  EXPECT_TRUE(EndsInFourZeros(data));
  Dispose(data);
}

TEST_F(StringDataFallback, IsFalseForNull) {
  REALstringData data{};
  EXPECT_FALSE(Get(nullptr, kEncodingUnknown, &data));
  EXPECT_THAT(Log().Allocations(), IsEmpty());
}

TEST_F(StringDataFallback, IsFalseWithoutTheServiceForBytes) {
  host.missing.insert("StringGetCString");
  REALstringData data{};
  EXPECT_FALSE(Get(host.NewString("abc"), kEncodingUnknown, &data));
}

TEST_F(StringDataFallback, IsFalseWithoutTheServiceForConversion) {
  host.missing.insert("REALConvertString");
  REALstringData data{};
  EXPECT_FALSE(Get(host.NewString("abc", kEncodingUTF8), kEncodingASCII, &data));
}

TEST_F(StringDataFallback, IsFalseWhenTheConversionFails) {
  AnswerNull("REALConvertString");
  REALstringData data{};
  EXPECT_FALSE(Get(host.NewString("abc", kEncodingUTF8), kEncodingASCII, &data));
}

TEST_F(StringDataFallback, ALengthWithoutBytesIsFalse) {
  AnswerNull("StringGetCString");
  REALstringData data{};
  EXPECT_FALSE(Get(host.NewString("abc", kEncodingUTF8), kEncodingUTF8, &data));
  EXPECT_FALSE(Get(host.NewString("a", kEncodingUTF8), kEncodingUTF8, &data));
  EXPECT_THAT(Log().Allocations(), IsEmpty());
}

TEST_F(StringDataFallback, NoLengthAndNoBytesAreNoBytesAndFourZeros) {
  AnswerNull("StringGetCString");
  REALstringData data{};
  ASSERT_TRUE(Get(host.NewString("", kEncodingUTF8), kEncodingUTF8, &data));
  EXPECT_EQ(data.length, 0);
  EXPECT_TRUE(EndsInFourZeros(data));
  Dispose(data);
}

TEST_F(StringDataFallback, ALengthBelowZeroIsFalse) {
  host.lengthOfEveryString = -1;
  REALstringData data{};
  EXPECT_FALSE(Get(host.NewString("abc", kEncodingUTF8), kEncodingUTF8, &data));
  EXPECT_THAT(Log().Allocations(), IsEmpty());
}

TEST_F(StringDataFallback, AFailedLookupOfLenBIsTriedAgainAndAFoundOneKept) {
  host.missing.insert("LenB");
  REALstringData data{};
  EXPECT_FALSE(Get(host.NewString("abc"), kEncodingUTF8, &data));
  EXPECT_FALSE(Get(host.NewString("abc"), kEncodingUTF8, &data));
  EXPECT_EQ(Calls("REALLoadGlobalMethod"), 2);
  host.missing.erase("LenB");
  for (int i = 0; i < 2; ++i) {
    EXPECT_TRUE(Get(host.NewString("abc"), kEncodingUTF8, &data));
    Dispose(data);
  }
  EXPECT_EQ(Calls("REALLoadGlobalMethod"), 3);
  EXPECT_EQ(Asked("REALLoadGlobalMethod"), 1);
  EXPECT_THAT(Log().Services(), Contains("REALLoadGlobalMethod(\"LenB( s as string ) as integer\")"));
}

TEST_F(StringDataFallback, AsksForStringDataAgainOnEveryUse) {
  REALstringData data{};
  for (int i = 0; i < 2; ++i) {
    EXPECT_TRUE(Get(host.NewString("abc"), kEncodingUTF8, &data));
    Dispose(data);
  }
  EXPECT_GE(Asked("PluginGetStringData"), 2);
}

TEST_F(StringDataFallback, FreesNothingTwiceWhenTheCopyCannotBeMade) {
  Log().SetHook(
      [](const Event& event) { return event.kind == EventKind::kAllocation ? Fault::kNull : Fault::kNone; });
  REALstringData data{};
  EXPECT_FALSE(Get(host.NewString("abc", kEncodingUTF8), kEncodingASCII, &data));
  EXPECT_EQ(Calls("REALUnlockString"), 1);
}

// The record on the stack that gives back in a fixed order.
using DataScope = NewHost;

TEST_F(DataScope, GivesBackTheStringThenTheObjectThenTheData) {
  const auto string = host.NewString("text");
  HostObject& block = host.NewBlock({1});
  {
    qvx::UnguardedHoldings holdings;
    qvx::HostDataScope scope(holdings);
    scope.LockString(string);
    scope.LockObject(static_cast<qvx::REALobject>(block.Handle()));
    scope.ReadStringData(host.NewString("data"));
    Log().Clear();
    scope.Release();
    EXPECT_THAT(Log().Services(), ElementsAre("REALUnlockString(\"text\")", "REALUnlockObject(block#1)",
                                              "PluginDisposeStringData(\"data\")"));
    scope.Release();
  }
  EXPECT_THAT(Log().Services(), SizeIs(3));
}

}  // namespace
}  // namespace unit
