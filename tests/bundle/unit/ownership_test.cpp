// tests/bundle/unit/ownership_test.cpp - a host service raises a platform exception while the bundle has
// something in hand: all of it is given back.
#include <functional>
#include <new>

#include "bundle/bridge/guard.h"
#include "tests/bundle/unit/bridge.h"

namespace unit {
namespace {

constexpr const char* kOutOfRange =
    "colorWithColorSpace(ColorSpace as NSColorSpaceQVX, components() as double) as NSColorQVX";

// What is in hand is in balance at the end of every test; memory is looked at as well.
template <typename Start>
class InHand : public Start {
 protected:
  void TearDown() override {
    EXPECT_EQ(LiveBundleBlocks(), 0);
    Start::TearDown();
  }
  static void Raise(const char* service) { Start::host.raising[service] = MakeException(); }
  // The exception of the service came out as any other.
  static void ExpectRaised() {
    ASSERT_THAT(Start::host.raised, SizeIs(1));
    EXPECT_EQ(Start::host.raised[0].className, "NSExceptionQVX");
    EXPECT_THAT(Start::host.raising, IsEmpty());
  }
  // Runs a body of the test's under the bundle's guard.
  static void Guard(const std::function<void(qvx::Holdings&)>& body) {
    Call(
        +[](const std::function<void(qvx::Holdings&)>* inner) {
          qvx::Guarded([inner](qvx::Holdings& holdings) { (*inner)(holdings); });
        },
        &body);
  }
  static void RaiseWithTwoStringsInHand() {
    const auto first = Start::host.NewString("first");
    const auto second = Start::host.NewString("second");
    Raise("REALGetStringEncoding");
    Guard([&](qvx::Holdings& holdings) {
      for (const auto string : {first, second}) {
        ++Start::host.String(string).references;
        holdings.Hold(string);
      }
      qvx::REALGetStringEncoding(first);
    });
  }
  static void BuildUnder(std::string_view bytes, std::uint32_t encoding) {
    Guard([&](qvx::Holdings& holdings) {
      qvx::REALBuildUnicodeString(bytes.data(), static_cast<std::int64_t>(bytes.size()), encoding, holdings);
    });
  }
};

using OwnershipOnNewHost = InHand<NewHost>;
using OwnershipOnOldHost = InHand<OldHost>;

TEST_F(OwnershipOnNewHost, TheNewStringWhileItIsTagged) {
  platform.Answer("localizedName", MakeText("a space"));
  Raise("REALSetStringEncoding");
  EXPECT_THAT(
      CallMethod<void*>(kSpace, "localizedName as string", host.Wrap(kSpace, MakeNative("NSColorSpace"))),
      IsNull());
  EXPECT_EQ(Calls("REALUnlockString"), 1);
  ExpectRaised();
}

TEST_F(OwnershipOnNewHost, TheTemporaryStringWhileItIsConverted) {
  Raise("REALConvertString");
  BuildUnder({"a\0", 2}, qvx::kEncodingUTF16);
  EXPECT_EQ(Calls("REALUnlockString"), 1);
  ExpectRaised();
}

TEST_F(OwnershipOnNewHost, TheConvertedStringWhileTheTemporaryIsUnlocked) {
  Raise("REALUnlockString");
  BuildUnder({"a\0", 2}, qvx::kEncodingUTF16);
  EXPECT_EQ(Calls("REALUnlockString"), 1);
  ExpectRaised();
  for (HostString* const each : host.Strings())
    each->references = 0;  // the temporary's unlock was the one that raised
}

TEST_F(OwnershipOnOldHost, TheTemporaryStringWhileItIsTagged) {
  Raise("REALSetStringEncoding");
  BuildUnder({"a\0", 2}, qvx::kEncodingUTF16);
  EXPECT_EQ(Calls("REALUnlockString"), 1);
  ExpectRaised();
}

TEST_F(OwnershipOnOldHost, TheNarrowedTextAndItsTemporaryString) {
  std::string bytes;
  for (int i = 0; i < 200; ++i) bytes += std::string("a\0\0\0", 4);
  for (const char* const service : {"REALBuildString", "REALSetStringEncoding", "REALConvertString"}) {
    host.raised.clear();
    Raise(service);
    BuildUnder(bytes, qvx::kEncodingUTF32);
    ExpectRaised();
    EXPECT_EQ(LiveBundleBlocks(), 0) << service;
    EXPECT_THAT(Imbalances(), IsEmpty()) << service;
    host.Unlock(host.raised[0].object);
  }
  host.raised.clear();
}

TEST_F(OwnershipOnOldHost, TheNarrowedTextIsNotLeftToTheGuard) {
  const std::string bytes(800, 'a');
  Guard([&](qvx::Holdings& holdings) {
    void* const string = qvx::REALBuildUnicodeString(bytes.data(), static_cast<std::int64_t>(bytes.size()),
                                                     qvx::kEncodingUTF32, holdings);
    ++host.String(string).owned;  // by this test
    EXPECT_EQ(holdings.Count(), 0U);
    host.UnlockString(string);
  });
}

TEST_F(OwnershipOnNewHost, TheTextOfAnOutOfBoundsExceptionIsNotLeftToTheGuard) {
  Guard([](qvx::Holdings& holdings) {
    qvx::RaiseOutOfBoundsException(5, 0, 3, "index", "colorAtIndex", holdings);
    EXPECT_EQ(holdings.Count(), 0U);
  });
  ASSERT_THAT(host.raised, SizeIs(1));
  host.Unlock(host.raised[0].object);
  host.raised.clear();
}

TEST_F(OwnershipOnNewHost, TheConvertedStringWhileItsBytesAreRead) {
  for (const char* const service : {"LenB", "StringGetCString"}) {
    host.missing = {"PluginGetStringData"};
    host.raised.clear();
    const auto string = host.NewString("abc", qvx::kEncodingUTF8);
    Raise(service);
    Guard([&](qvx::Holdings& holdings) {
      qvx::REALstringData data{};
      qvx::REALGetStringData(string, qvx::kEncodingUTF16, &data, holdings);
    });
    ExpectRaised();
    EXPECT_THAT(Imbalances(), IsEmpty()) << service;
    host.Unlock(host.raised[0].object);
  }
  host.raised.clear();
}

TEST_F(OwnershipOnNewHost, TheCopiedBytesWhileTheConvertedStringIsUnlocked) {
  host.missing = {"PluginGetStringData"};
  const auto string = host.NewString("abc", qvx::kEncodingUTF8);
  Raise("REALUnlockString");
  Guard([&](qvx::Holdings& holdings) {
    qvx::REALstringData data{};
    qvx::REALGetStringData(string, qvx::kEncodingUTF16, &data, holdings);
  });
  ExpectRaised();
  host.Strings().back()->references = 0;  // its unlock was the one that raised
}

TEST_F(OwnershipOnNewHost, TheNewBlockWhileItsPointerIsAskedFor) {
  platform.Answer("ICCProfileData", MakeData({1, 2, 3}));
  Raise("memoryBlockGetPtr");
  EXPECT_THAT(CallMethod<void*>(kSpace, "ICCProfileData as Memoryblock",
                                host.Wrap(kSpace, MakeNative("NSColorSpace"))),
              IsNull());
  EXPECT_EQ(Calls("newMemoryBlock"), 1);
  EXPECT_EQ(Calls("REALUnlockObject"), 1 + 1);  // the block and the host exception
  ExpectRaised();
}

TEST_F(OwnershipOnNewHost, TheBlockThatIsReadWhileItIsLocked) {
  HostObject& block = host.NewBlock({1});
  ++block.references;  // the lock that raised is given back all the same
  Raise("REALLockObject");
  CallShared<void*>(kSpace, "ColorSpaceWithICCProfileData(ICCProfileData as Memoryblock) as NSColorSpaceQVX",
                    block);
  EXPECT_EQ(block.unlocks, 1);
  ExpectRaised();
}

// The message's buffer and text, and the exception object.
TEST_F(OwnershipOnNewHost, WhatAHostExceptionIsMadeOf) {
  HostObject& space = host.Wrap(kSpace, MakeNative("NSColorSpace"));
  for (const char* const service : {"PluginNewInstance", "REALSetPropValueString", "REALSetPropValueInt",
                                    "RuntimeRaiseException", "REALSetStringEncoding"}) {
    host.raised.clear();
    Raise(service);
    EXPECT_THAT(CallShared<void*>(kColor, kOutOfRange, space, host.NewNumbers({1})), IsNull());
    ExpectRaised();
    EXPECT_EQ(LiveBundleBlocks(), 0) << service;
    EXPECT_THAT(Imbalances(), IsEmpty()) << service;
    host.Unlock(host.raised[0].object);
  }
  host.raised.clear();
}

TEST_F(OwnershipOnNewHost, TheHostExceptionOfAPlatformExceptionWhileItIsRaised) {
  platform.RaiseOnce("numberOfComponents", MakeException());
  Raise("RuntimeRaiseException");
  EXPECT_EQ(GetProperty<std::int32_t>(kColor, "numberOfComponents", host.Wrap(kColor, MakeNative("NSColor"))),
            0);
  EXPECT_THAT(host.raised, IsEmpty());
  EXPECT_EQ(Calls("REALUnlockObject"), 1);
}

// Any other object goes on, and nothing stays behind, the prepared result included.
TEST_F(OwnershipOnNewHost, WhatIsPassedOnWhileAHostExceptionIsRaised) {
  platform.RaiseOnce("numberOfComponents", MakeException());
  NativeObject* const other = MakeNative("OtherThrowable");
  host.raising["RuntimeRaiseException"] = other;
  HostObject& color = host.Wrap(kColor, MakeNative("NSColor"));
  EXPECT_EQ(PassedOn([&] { CallMethod<void*>(kColor, "Components as double()", color); }), other);
  EXPECT_EQ(Calls("REALUnlockObject"), 2);
}

TEST_F(OwnershipOnNewHost, WhatIsRaisedWhileItIsGivenBackIsDroppedAndTheRestGivenBack) {
  Raise("REALUnlockString");
  RaiseWithTwoStringsInHand();
  ExpectRaised();
  EXPECT_THAT(Log().Services(), Contains("REALUnlockString(\"first\")"));
  host.Strings()[1]->references = 1;  // its unlock was the one that raised
}

TEST_F(OwnershipOnNewHost, WhatIsThrownWhileItIsGivenBackGoesOnAndTheRestIsGivenBack) {
  bool first = true;
  host.before["REALUnlockString"] = [&first] {
    if (std::exchange(first, false)) throw std::bad_alloc();
  };
  EXPECT_THROW(RaiseWithTwoStringsInHand(), std::bad_alloc);
  EXPECT_THAT(host.raised, IsEmpty());
  EXPECT_THAT(Log().Services(), Contains("REALUnlockString(\"first\")"));
  host.Strings()[1]->references = 1;  // its unlock was the one that threw
}

TEST_F(OwnershipOnNewHost, AnOutOfMemoryReportThatIsCutShortSilencesNoLaterOne) {
  platform.Answer("localizedName", MakeText("a space"));
  HostObject& space = host.Wrap(kSpace, MakeNative("NSColorSpace"));
  host.before["REALSetStringEncoding"] = [] { throw std::bad_alloc(); };
  Raise("PluginNewInstance");
  CallMethod<void*>(kSpace, "localizedName as string", space);
  ExpectRaised();
  CallMethod<void*>(kSpace, "localizedName as string", space);
  ASSERT_THAT(host.raised, SizeIs(2));
  EXPECT_EQ(host.raised[1].className, "OutOfMemoryException");
}

}  // namespace
}  // namespace unit
