// tests/bundle/unit/exceptions_test.cpp - raising host exceptions.
#include "bundle/bridge/exceptions.h"

#include <new>

#include "bundle/host/types.h"
#include "tests/bundle/unit/bridge.h"

namespace unit {
namespace {

class Raising : public NewHost {
 protected:
  static void Raise(const char* className, const char* message) {
    Raise(className, message, qvx::kEncodingASCII, 0);
  }
  static void Raise(const char* className, const char* message, std::uint32_t encoding, std::int32_t number) {
    const auto raise =
        +[](const char* name, const char* text, std::uint32_t textEncoding, std::int32_t error) {
          OwnHoldings holdings;
          qvx::RaiseException(name, text, holdings, textEncoding, error);
        };
    Call(raise, className, message, encoding, number);
  }
};

TEST_F(Raising, BuildsMakesSetsRaisesAndReleasesInThisOrder) {
  Raise("NilObjectException", "It is nil");
  EXPECT_THAT(Log().Services(),
              ElementsAre("REALBuildString(\"It is nil\")", "REALSetStringEncoding(\"It is nil\", 0x600)",
                          "PluginNewInstance(\"NilObjectException\")",
                          "REALSetPropValueString(NilObjectException#1, \"Message\", \"It is nil\")",
                          "REALSetPropValueInt(NilObjectException#1, \"ErrorNumber\", 0)",
                          "RuntimeRaiseException(NilObjectException#1)",
                          "REALUnlockObject(NilObjectException#1)", "REALUnlockString(\"It is nil\")"));
}

TEST_F(Raising, SendsNoPlatformMessage) {
  Raise("NilObjectException", "It is nil");
  EXPECT_THAT(Log().Messages(), IsEmpty());
  EXPECT_THAT(Log().Calls(), IsEmpty());
  EXPECT_THAT(Log().Frames(), IsEmpty());
}

TEST_F(Raising, RaisesClassMessageAndErrorNumberZero) {
  Raise("NilObjectException", "It is nil");
  ASSERT_THAT(host.raised, SizeIs(1));
  EXPECT_EQ(host.raised[0].className, "NilObjectException");
  EXPECT_EQ(host.raised[0].message, "It is nil");
  EXPECT_EQ(host.raised[0].errorNumber, "0");
}

TEST_F(Raising, PassesOnEncodingAndErrorNumber) {
  Raise("RuntimeException", "gr\xC3\xBC", qvx::kEncodingUTF8, 42);
  EXPECT_EQ(host.raised[0].errorNumber, "42");
  EXPECT_THAT(Log().Services(), Contains("REALSetStringEncoding(\"gr\\xC3\\xBC\", 0x8000100)"));
}

TEST_F(Raising, UnlessToldOtherwiseAMessageIsASCIIAndTheErrorNumberZero) {
  Call(+[] {
    OwnHoldings holdings;
    qvx::RaiseException("RuntimeException", "gr\xC3\xBC", holdings);
  });
  EXPECT_EQ(host.raised[0].errorNumber, "0");
  EXPECT_THAT(Log().Services(), Contains("REALSetStringEncoding(\"gr\\xC3\\xBC\", 0x600)"));
}

TEST_F(Raising, ANullMessageIsRaisedEmpty) {
  Raise("NilObjectException", nullptr);
  ASSERT_THAT(host.raised, SizeIs(1));
  EXPECT_EQ(host.raised[0].message, "");
  EXPECT_EQ(host.raised[0].errorNumber, "0");
  EXPECT_EQ(Calls("REALBuildString"), 0);
  EXPECT_EQ(Calls("REALUnlockString"), 0);
  EXPECT_THAT(Log().Services(), Contains("REALSetPropValueString(NilObjectException#1, \"Message\", null)"));
}

TEST_F(Raising, AHostThatLacksTheClassGetsARuntimeExceptionWithTheSameMessage) {
  host.missingClasses = {"OutOfBoundsException"};
  Raise("OutOfBoundsException", "Too far");
  ASSERT_THAT(host.raised, SizeIs(1));
  EXPECT_EQ(host.raised[0].className, "RuntimeException");
  EXPECT_EQ(host.raised[0].message, "Too far");
  EXPECT_EQ(Calls("PluginNewInstance"), 2);
}

TEST_F(Raising, AHostThatLacksBothGetsNothingAndTheStringIsReleased) {
  host.missingClasses = {"OutOfBoundsException", "RuntimeException"};
  Raise("OutOfBoundsException", "Too far");
  EXPECT_THAT(host.raised, IsEmpty());
  EXPECT_EQ(Calls("REALSetPropValueString"), 0);
  EXPECT_EQ(Calls("REALSetPropValueInt"), 0);
  EXPECT_EQ(Calls("REALUnlockObject"), 0);
  EXPECT_EQ(Calls("REALUnlockString"), 1);
}

TEST_F(Raising, WithoutTheServiceForInstancesItIsAskedForTwiceAndNothingIsRaised) {
  host.missing = {"PluginNewInstance"};
  Raise("OutOfBoundsException", "Too far");
  EXPECT_EQ(Asked("PluginNewInstance"), 2);
  EXPECT_THAT(host.raised, IsEmpty());
  EXPECT_EQ(Calls("REALUnlockString"), 1);
}

TEST_F(Raising, SkipsTheMessageOnAHostThatSetsNoStrings) {
  host.missing = {"REALSetPropValueString"};
  Raise("NilObjectException", "It is nil");
  ASSERT_THAT(host.raised, SizeIs(1));
  EXPECT_EQ(host.raised[0].message, "");
  EXPECT_EQ(host.raised[0].errorNumber, "0");
}

TEST_F(Raising, SkipsTheErrorNumberOnAHostThatSetsNoIntegers) {
  host.missing = {"REALSetPropValueInt"};
  Raise("NilObjectException", "It is nil");
  ASSERT_THAT(host.raised, SizeIs(1));
  EXPECT_EQ(host.raised[0].message, "It is nil");
  EXPECT_EQ(host.raised[0].errorNumber, "");
}

TEST_F(Raising, ReleasesObjectAndStringOnAHostThatCannotRaise) {
  host.missing = {"RuntimeRaiseException"};
  Raise("NilObjectException", "It is nil");
  EXPECT_EQ(Calls("REALUnlockObject"), 1);
  EXPECT_EQ(Calls("REALUnlockString"), 1);
}

TEST_F(Raising, RaisesWithoutAMessageOnAHostThatBuildsNoStrings) {
  host.missing = {"REALBuildString"};
  Raise("NilObjectException", "It is nil");
  ASSERT_THAT(host.raised, SizeIs(1));
  EXPECT_EQ(host.raised[0].message, "");
  EXPECT_EQ(Calls("REALUnlockString"), 0);
}

TEST_F(Raising, WhatTheHostAnswersToTheSettersIsIgnored) {
  Log().SetHook([](const Event& event) {
    return event.name.starts_with("REALSetPropValue") ? Fault::kNull : Fault::kNone;
  });
  Raise("NilObjectException", "It is nil");
  EXPECT_THAT(host.raised, SizeIs(1));
}

class OutOfBounds : public NewHost {
 protected:
  static void Raise(std::int64_t value, std::int64_t minimum = 1, std::int64_t maximum = 19,
                    const char* parameter = "values ubound", const char* method = "colorWithColorSpace") {
    Convert<&qvx::RaiseOutOfBoundsException>(value, minimum, maximum, parameter, method);
  }
  static std::string Message() { return host.raised.at(0).message; }
};

TEST_F(OutOfBounds, BelowTheMinimumIsTooSmall) {
  Raise(0);
  EXPECT_EQ(host.raised[0].className, "OutOfBoundsException");
  EXPECT_EQ(Message(),
            "Parameter values ubound to method colorWithColorSpace is too small. Range is 1 to 19, but value "
            "is 0.");
}

TEST_F(OutOfBounds, AboveTheMaximumIsTooBig) {
  Raise(20);
  EXPECT_EQ(
      Message(),
      "Parameter values ubound to method colorWithColorSpace is too big. Range is 1 to 19, but value is 20.");
}

TEST_F(OutOfBounds, AnythingFromTheMinimumUpIsTooBig) {
  Raise(1);
  EXPECT_THAT(Message(), HasSubstr("is too big"));
}

TEST_F(OutOfBounds, WritesNumbersOfSixtyFourBits) {
  Raise(-9000000000LL, -8000000000LL, 7000000000LL, "p", "m");
  EXPECT_EQ(
      Message(),
      "Parameter p to method m is too small. Range is -8000000000 to 7000000000, but value is -9000000000.");
}

TEST_F(OutOfBounds, CutsAMessageAt231Characters) {
  const std::string longName(300, 'x');
  Raise(0, 1, 19, longName.c_str(), "m");
  EXPECT_EQ(Message(), "Parameter " + std::string(221, 'x'));
  EXPECT_EQ(Message().size(), 231U);
}

TEST_F(OutOfBounds, KeepsAMessageOfExactly231Characters) {
  const std::string rest = " to method m is too small. Range is 1 to 19, but value is 0.";
  const std::string name(231 - 10 - rest.size(), 'x');
  Raise(0, 1, 19, name.c_str(), "m");
  EXPECT_EQ(Message(), "Parameter " + name + rest);
  EXPECT_EQ(Message().size(), 231U);
}

TEST_F(OutOfBounds, UsesOneBufferOf232BytesAndFreesIt) {
  Raise(0);
  EXPECT_THAT(Log().Allocations(), ElementsAre("calloc(232)"));
  EXPECT_EQ(LiveBundleBlocks(), 0);
}

TEST_F(OutOfBounds, RaisesAShortMessageWhenTheBufferCannotBeHad) {
  Log().SetHook(
      [](const Event& event) { return event.kind == EventKind::kAllocation ? Fault::kNull : Fault::kNone; });
  Raise(0);
  EXPECT_EQ(host.raised.at(0).className, "OutOfBoundsException");
  EXPECT_EQ(Message(), "Out of Bounds");
}

TEST_F(OutOfBounds, FreesTheBufferWhenTheRaiseThrows) {
  host.before["PluginNewInstance"] = [] { throw std::bad_alloc(); };
  EXPECT_THROW(Raise(0), std::bad_alloc);
  EXPECT_EQ(LiveBundleBlocks(), 0);
}

class RaisingNative : public NewHost {
 protected:
  void RaiseIt() { Call(&qvx::RaiseNSExceptionQVX, AsId(exception)); }
  NativeObject* exception = MakeException("NSRangeException", "beyond the end");
};

TEST_F(RaisingNative, LogsNameReasonAndUserInfoOfTheException) {
  RaiseIt();
  const NativeObject* const info = exception->items[2];
  EXPECT_THAT(Log().Calls(), Contains("NSLog(@\"A %@: %@, Info: %@\\x0A\", @\"NSRangeException\", "
                                      "@\"beyond the end\", " +
                                      info->name + ")"));
  EXPECT_EQ(Log().Count(EventKind::kCall, "NSLog"), 1);
}

TEST_F(RaisingNative, AsksTheSiblingWithoutTestingForIt) {
  RaiseIt();
  EXPECT_THAT(Log().Messages(),
              ElementsAre("[" + exception->name + " name]", "[" + exception->name + " reason]",
                          "[" + exception->name + " userInfo]",
                          "[NSException NewNSExceptionQVX:" + exception->name + "]"));
}

TEST_F(RaisingNative, LogsBeforeTheSiblingIsAsked) {
  RaiseIt();
  const Lines lines = Log().Lines();
  const auto log =
      std::ranges::find_if(lines, [](const std::string& line) { return line.starts_with("NSLog"); });
  const auto ask = std::ranges::find(lines, "[NSException NewNSExceptionQVX:" + exception->name + "]");
  EXPECT_LT(log, ask);
  EXPECT_NE(ask, lines.end());
}

TEST_F(RaisingNative, RaisesWhatTheSiblingMadeAndGivesUpItsReference) {
  RaiseIt();
  EXPECT_THAT(Log().Services(),
              ElementsAre("RuntimeRaiseException(NSExceptionQVX#1)", "REALUnlockObject(NSExceptionQVX#1)"));
  ASSERT_THAT(host.raised, SizeIs(1));
  EXPECT_EQ(host.raised[0].native, exception);
}

TEST_F(RaisingNative, SetsNoPropertiesItself) {
  RaiseIt();
  EXPECT_EQ(Calls("REALSetPropValueString"), 0);
  EXPECT_EQ(Calls("REALSetPropValueInt"), 0);
}

TEST_F(RaisingNative, StopsWhenTheSiblingMakesNothing) {
  platform.Answer("NewNSExceptionQVX:", nullptr);
  RaiseIt();
  EXPECT_THAT(Log().Services(), IsEmpty());
  EXPECT_EQ(Log().Count(EventKind::kCall, "NSLog"), 1);
}

TEST_F(RaisingNative, WithoutAFormatNothingIsLoggedAndTheExceptionIsRaised) {
  Log().SetHook([](const Event& event) {
    return event.name == "CFStringCreateWithCString" ? Fault::kNull : Fault::kNone;
  });
  RaiseIt();
  EXPECT_EQ(Log().Count(EventKind::kCall, "NSLog"), 0);
  ASSERT_THAT(host.raised, SizeIs(1));
  EXPECT_EQ(host.raised[0].native, exception);
}

TEST_F(RaisingNative, ReleasesTheObjectOnAHostThatCannotRaise) {
  host.missing = {"RuntimeRaiseException"};
  RaiseIt();
  EXPECT_THAT(Log().Services(), ElementsAre("REALUnlockObject(NSExceptionQVX#1)"));
}

TEST_F(RaisingNative, WhatIsRaisedOnTheWayToTheLogIsDroppedAndTheExceptionRaisedUnlogged) {
  platform.RaiseOnce("reason", MakeException());
  RaiseIt();
  EXPECT_EQ(Log().Count(EventKind::kCall, "NSLog"), 0);
  EXPECT_EQ(Sends("name"), 1);
  ASSERT_THAT(host.raised, SizeIs(1));
  EXPECT_EQ(host.raised[0].native, exception);
}

TEST_F(RaisingNative, GivesTheObjectBackWhenTheHostThrows) {
  host.before["RuntimeRaiseException"] = [] { throw std::bad_alloc(); };
  EXPECT_THROW(RaiseIt(), std::bad_alloc);
  EXPECT_EQ(Calls("REALUnlockObject"), 1);
}

TEST_F(RaisingNative, LogsAnExceptionWithoutNameReasonAndInfo) {
  for (const char* selector : {"name", "reason", "userInfo"}) platform.Answer(selector, nullptr);
  RaiseIt();
  EXPECT_THAT(Log().Calls(), Contains("NSLog(@\"A %@: %@, Info: %@\\x0A\", nil, nil, nil)"));
  EXPECT_THAT(host.raised, SizeIs(1));
}

}  // namespace
}  // namespace unit
