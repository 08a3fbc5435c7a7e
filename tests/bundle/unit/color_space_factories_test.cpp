// tests/bundle/unit/color_space_factories_test.cpp - the shared methods of NSColorSpaceQVX.
#include <new>

#include "bundle/bridge/instances.h"
#include "tests/bundle/unit/declarations.h"
#include "tests/bundle/unit/fixture.h"

namespace unit {
namespace {

class SpaceFactory : public NewHost {
 protected:
  void SetUp() override {
    NewHost::SetUp();
    Prepare();
  }
  template <typename... Arguments>
  static void* Make(const char* method, Arguments&&... arguments) {
    return CallShared<void*>(kSpace, method, arguments...);
  }
  static Lines PlatformLines() { return Log().Lines({EventKind::kCall, EventKind::kMessage}); }
  static void ExpectNothing(void* result) {
    EXPECT_THAT(result, IsNull());
    EXPECT_THAT(host.raised, IsEmpty());
  }
};

// ---- From a file ----

class ProfileFile : public SpaceFactory {
 protected:
  void SetUp() override {
    SpaceFactory::SetUp();
    platform.files["/profile"] = {1, 2, 3};
    platform.files["/folder/leaf"] = {4, 5, 6};
  }
  static HostObject& Existing() { return host.NewItem("/profile", "/", u"profile"); }
  static HostObject& ThroughParent(std::u16string_view leaf = u"leaf") {
    return host.NewItem("", "/folder", leaf);
  }
  static void* MakeFrom(HostObject& item) {
    return Make("ColorSpaceWithICCProfileData(File as Folderitem) as NSColorSpaceQVX", item);
  }
};

TEST_F(ProfileFile, AnExistingItemIsReadThroughItsOwnReference) {
  void* const space = MakeFrom(Existing());
  ASSERT_THAT(space, NotNull());
  EXPECT_THAT(
      Log().Lines({EventKind::kCall, EventKind::kMessage, EventKind::kService, EventKind::kFrame}),
      ElementsAre("enter", "REALFSRefFromFolderItem(item#1, no name)", "CFURLCreateFromFSRef(\"/profile\")",
                  "[NSURL#1 autorelease]", "CFURLCopyFileSystemPath(NSURL#1, 0)",
                  "[@\"/profile\" autorelease]", "[NSData dataWithContentsOfFile:@\"/profile\"]",
                  "[NSColorSpace alloc]", "[NSColorSpace#1 initWithICCProfileData:NSData#1]",
                  "CFDictionaryGetValue(instances, NSColorSpace#1)", "PluginNewInstance(\"NSColorSpaceQVX\")",
                  "[NSColorSpace#1 retain]",
                  "CFDictionarySetValue(instances, NSColorSpace#1, NSColorSpaceQVX#1)",
                  "[NSColorSpace#1 release]", "leave"));
  EXPECT_EQ(host.Object(space).Native()->held, 1);
}

TEST_F(ProfileFile, AnotherItemIsReadThroughItsParentAndLeafName) {
  EXPECT_THAT(MakeFrom(ThroughParent()), NotNull());
  const Lines lines = Log().Lines({EventKind::kCall, EventKind::kService});
  const Lines expected = {"REALFSRefFromFolderItem(item#1, no name)",
                          "REALFSRefFromFolderItem(item#1, name)",
                          "CFURLCreateFromFSRef(\"/folder\")",
                          "CFStringCreateWithCharacters(\"leaf\", 4)",
                          "CFStringCreateMutableCopy(0, @\"leaf\")",
                          "CFStringNormalize(@\"leaf\", 0)",
                          "CFRelease(@\"leaf\")",
                          "CFURLCreateCopyAppendingPathComponent(NSURL#1, @\"leaf\", file)",
                          "CFRelease(NSURL#1)",
                          "CFRelease(@\"leaf\")",
                          "CFURLCopyFileSystemPath(NSURL#2, 0)"};
  ASSERT_GE(lines.size(), expected.size());
  EXPECT_THAT(Lines(lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(expected.size())),
              ElementsAreArray(expected));
}

TEST_F(ProfileFile, ALeafNameIsAppendedDecomposed) {
  platform.files["/folder/e\xCC\x81"] = {1};
  EXPECT_THAT(MakeFrom(ThroughParent(u"\u00E9")), NotNull());
  EXPECT_THAT(Log().Messages(), Contains("[NSData dataWithContentsOfFile:@\"/folder/e\\xCC\\x81\"]"));
}

TEST_F(ProfileFile, ALeafNameOf255UnitsIsTakenWhole) {
  const std::u16string leaf(255, u'x');
  platform.files["/folder/" + std::string(255, 'x')] = {1};
  EXPECT_THAT(MakeFrom(ThroughParent(leaf)), NotNull());
}

TEST_F(ProfileFile, ANameThatCannotBeCopiedIsAppendedAsItIs) {
  platform.failMutableCopy = true;
  EXPECT_THAT(MakeFrom(ThroughParent()), NotNull());
  EXPECT_EQ(Log().Count(EventKind::kCall, "CFStringNormalize"), 0);
  EXPECT_EQ(Log().Count(EventKind::kCall, "CFRelease"), 2);
}

TEST_F(ProfileFile, AFirstReferenceWithoutAURLIsFollowedByTheSecondTry) {
  bool first = true;
  Log().SetHook([&first](const Event& event) {
    return event.name == "CFURLCreateFromFSRef" && std::exchange(first, false) ? Fault::kNull : Fault::kNone;
  });
  EXPECT_THAT(MakeFrom(host.NewItem("/profile", "/folder", u"leaf")), NotNull());
  EXPECT_EQ(Calls("REALFSRefFromFolderItem"), 2);
  EXPECT_THAT(Log().Messages(), Contains("[NSData dataWithContentsOfFile:@\"/folder/leaf\"]"));
}

TEST_F(ProfileFile, NoItemGivesNilWithoutAMessage) {
  ExpectNothing(Make("ColorSpaceWithICCProfileData(File as Folderitem) as NSColorSpaceQVX", nullptr));
  EXPECT_THAT(PlatformLines(), IsEmpty());
  EXPECT_THAT(Log().Services(), IsEmpty());
}

TEST_F(ProfileFile, AnItemWithoutAnyReferenceGivesNil) {
  ExpectNothing(MakeFrom(host.NewItem("", "", u"leaf")));
  EXPECT_EQ(Calls("REALFSRefFromFolderItem"), 2);
  EXPECT_THAT(PlatformLines(), Not(Contains(HasSubstr("CFURL"))));
}

TEST_F(ProfileFile, AnEmptyLeafNameGivesNilAndReleasesTheParent) {
  ExpectNothing(MakeFrom(ThroughParent(u"")));
  EXPECT_THAT(Log().Lines({EventKind::kCall, EventKind::kFrame}),
              ElementsAre("enter", "CFURLCreateFromFSRef(\"/folder\")", "CFRelease(NSURL#1)", "leave"));
}

TEST_F(ProfileFile, AFileThatDoesNotExistYetGivesNil) {
  ExpectNothing(MakeFrom(ThroughParent(u"missing")));
  EXPECT_EQ(Sends("dataWithContentsOfFile:"), 1);
  EXPECT_EQ(Sends("alloc"), 0);
}

// ---- From bytes and handles ----

TEST_F(SpaceFactory, ABlockIsConvertedWrappedAndTheAllocBalanced) {
  void* const space = Make("ColorSpaceWithICCProfileData(ICCProfileData as Memoryblock) as NSColorSpaceQVX",
                           host.NewBlock({1, 2}));
  ASSERT_THAT(space, NotNull());
  EXPECT_THAT(Log().Messages(), ElementsAre("[NSData dataWithBytes:bytes length:2]", "[NSColorSpace alloc]",
                                            "[NSColorSpace#1 initWithICCProfileData:NSData#1]",
                                            "[NSColorSpace#1 retain]", "[NSColorSpace#1 release]"));
  EXPECT_EQ(host.Object(space).Native()->held, 1);
}

TEST_F(SpaceFactory, NoBytesGiveNilWithoutAMessage) {
  ExpectNothing(Make("ColorSpaceWithICCProfileData(ICCProfileData as Memoryblock) as NSColorSpaceQVX",
                     host.NewBlock({})));
  ExpectNothing(
      Make("ColorSpaceWithICCProfileData(ICCProfileData as Memoryblock) as NSColorSpaceQVX", nullptr));
  EXPECT_THAT(Log().Messages(), IsEmpty());
}

TEST_F(SpaceFactory, ZeroHandlesGiveNilWithoutAMessage) {
  ExpectNothing(Make("ColorSpaceWithColorSyncProfile", std::int32_t{0}));
  ExpectNothing(Make("ColorSpaceWithCGColorSpace", std::int32_t{0}));
  EXPECT_THAT(Log().Messages(), IsEmpty());
}

TEST_F(SpaceFactory, HandlesAreHandedOnUnchanged) {
  EXPECT_THAT(Make("ColorSpaceWithColorSyncProfile", std::int32_t{-2}), NotNull());
  EXPECT_THAT(Make("ColorSpaceWithCGColorSpace", std::int32_t{5}), NotNull());
  EXPECT_THAT(Log().Messages(),
              ElementsAre("[NSColorSpace alloc]", "[NSColorSpace#1 initWithColorSyncProfile:0xfffffffe]",
                          "[NSColorSpace#1 retain]", "[NSColorSpace#1 release]", "[NSColorSpace alloc]",
                          "[NSColorSpace#2 initWithCGColorSpace:0x5]", "[NSColorSpace#2 retain]",
                          "[NSColorSpace#2 release]"));
}

// ---- Available spaces ----

class AvailableSpaces : public SpaceFactory {
 protected:
  void SetUp() override {
    SpaceFactory::SetUp();
    spaces = MakeNative("NSArray", "spaces");
    for (const char* name : {"first", "second", "third"})
      spaces->items.push_back(MakeNative("NSColorSpace", name));
    platform.Answer("availableColorSpacesWithModel:", spaces);
  }
  static void* Get(std::int32_t model = 1) { return Make("availableColorSpacesWithModel", model); }
  static Lines Names(void* array) {
    Lines names;
    for (void* const object : host.Object(array).objects) {
      names.push_back(object == nullptr ? "null" : host.Object(object).Native()->name);
    }
    return names;
  }
  NativeObject* spaces = nullptr;
};

TEST_F(AvailableSpaces, AreInThePlatformsOrder) {
  void* const array = Get(-1);
  EXPECT_THAT(Names(array), ElementsAre("first", "second", "third"));
  EXPECT_EQ(host.Object(array).references, 1);
  EXPECT_THAT(Log().Messages(), Contains("[NSColorSpace availableColorSpacesWithModel:-1]"));
}

TEST_F(AvailableSpaces, CreateTheArrayOfObjectsBeforeAnythingElse) {
  Get();
  EXPECT_EQ(Log().Lines({EventKind::kService, EventKind::kMessage, EventKind::kFrame})[0],
            "RuntimeArrayCreateSingleDimBoundedArray(4, -1)");
}

TEST_F(AvailableSpaces, AreUnlockedOnceTheyAreInserted) {
  Get();
  const Lines services = Log().Services();
  const Lines expected = {"RuntimeArrayDirectGetInsertProc(array#1)", "insert(array#1, 0, NSColorSpaceQVX#1)",
                          "REALUnlockObject(NSColorSpaceQVX#1)"};
  EXPECT_NE(std::search(services.begin(), services.end(), expected.begin(), expected.end()), services.end());
  EXPECT_EQ(Calls("REALUnlockObject"), 3);
}

TEST_F(AvailableSpaces, NoneAreAnEmptyArray) {
  spaces->items.clear();
  void* const array = Get();
  ASSERT_THAT(array, NotNull());
  EXPECT_THAT(Names(array), IsEmpty());
}

TEST_F(AvailableSpaces, ANilAnswerIsAnEmptyArray) {
  platform.Answer("availableColorSpacesWithModel:", nullptr);
  void* const array = Get();
  ASSERT_THAT(array, NotNull());
  EXPECT_THAT(Names(array), IsEmpty());
  EXPECT_EQ(Sends("objectEnumerator"), 0);
}

TEST_F(AvailableSpaces, AreSkippedButUnlockedOnAHostThatInsertsNone) {
  host.missing = {"RuntimeArrayDirectGetInsertProc"};
  EXPECT_THAT(Names(Get()), IsEmpty());
  EXPECT_EQ(Calls("REALUnlockObject"), 3);
}

TEST_F(AvailableSpaces, OnAHostWithoutArraysAreWalkedButNoProcedureOfANullArrayIsAskedFor) {
  host.missing = {"RuntimeArrayCreateSingleDimBoundedArray"};
  EXPECT_THAT(Get(), IsNull());
  EXPECT_EQ(Calls("RuntimeArrayDirectGetInsertProc"), 0);
  EXPECT_EQ(Calls("REALUnlockObject"), 3);
}

TEST_F(AvailableSpaces, ASpaceTheHostMakesNoObjectForIsInsertedAsNilAndTheIndexAdvances) {
  host.missing = {"PluginNewInstance"};
  Get();
  EXPECT_THAT(Log().Services(), Contains("insert(array#1, 0, null)"));
  EXPECT_THAT(Log().Services(), Contains("insert(array#1, 2, null)"));
  EXPECT_EQ(Calls("REALUnlockObject"), 0);
}

TEST_F(AvailableSpaces, AnExceptionOnTheWayGivesTheArrayAsFilledSoFar) {
  int walked = 0;
  platform.On("nextObject", [&walked, this](Send& send) {
    if (++walked == 3) {
      send.Raise(MakeException());
    } else {
      send.Answer(spaces->items[static_cast<std::size_t>(walked - 1)]);
    }
  });
  void* const array = Get();
  EXPECT_THAT(Names(array), ElementsAre("first", "second"));
  EXPECT_THAT(host.raised, SizeIs(1));
}

TEST_F(AvailableSpaces, AreGivenBackWithTheirArrayWhenTheHostThrows) {
  host.before["RuntimeArrayDirectGetInsertProc"] = [] { throw std::bad_alloc(); };
  EXPECT_THROW(Get(), std::bad_alloc);
  EXPECT_EQ(Calls("REALUnlockObject"), 2);
}

// ---- Predefined spaces ----

class PredefinedSpace : public SpaceFactory, public testing::WithParamInterface<std::string> {
 protected:
  static void* Get() { return CallShared<void*>(kSpace, GetParam() + " as NSColorSpaceQVX"); }
};

INSTANTIATE_TEST_SUITE_P(Names, PredefinedSpace, testing::ValuesIn(kPredefinedSpaces),
                         [](const auto& each) { return each.param; });

TEST_P(PredefinedSpace, SendsTheMessageOfItsNameWithoutAFrame) {
  void* const space = Get();
  EXPECT_EQ(host.Object(space).Native()->name, GetParam());
  EXPECT_THAT(Log().Messages(),
              ElementsAre("[NSColorSpace " + GetParam() + "]", "[" + GetParam() + " retain]"));
  EXPECT_THAT(Log().Frames(), IsEmpty());
}

TEST_P(PredefinedSpace, LooksTheClassUpOnEveryCall) {
  for (int i = 0; i < 3; ++i) {
    Log().Clear();
    Get();
    EXPECT_THAT(Log().Lookups(), Contains("objc_getClass(\"NSColorSpace\")"));
  }
}

TEST_P(PredefinedSpace, TwiceIsTheSameHostObject) {
  void* const first = Get();
  EXPECT_EQ(Get(), first);
  EXPECT_EQ(host.Object(first).references, 2);
}

TEST_P(PredefinedSpace, WithoutTheClassSendsNothing) {
  HideClass("NSColorSpace");
  ExpectNothing(Get());
  EXPECT_THAT(Log().Messages(), IsEmpty());
}

TEST_P(PredefinedSpace, PreparesFirst) {
  qvx::instances = nullptr;
  qvx::ExceptionsInitialized = false;
  Get();
  EXPECT_THAT(Log().Messages()[0], HasSubstr("respondsToSelector:"));
  EXPECT_EQ(Log().Messages()[3], "[NSException PrepareNSExceptionQVX]");
  EXPECT_EQ(Log().Messages()[4], "[NSColorSpace " + GetParam() + "]");
}

// ---- By name ----

TEST_F(SpaceFactory, ANameIsConvertedAndTheAnswerWrappedButNotReleased) {
  void* const space = Make("colorSpaceForColorSpaceName", host.NewString("name"));
  ASSERT_THAT(space, NotNull());
  EXPECT_THAT(Log().Messages(),
              ElementsAre("[@\"name\" autorelease]", "[NSColorSpace colorSpaceForColorSpaceName:@\"name\"]",
                          "[NSColorSpace#1 retain]"));
}

TEST_F(SpaceFactory, ANullNameIsHandedOnAsNil) {
  platform.Answer("colorSpaceForColorSpaceName:", nullptr);
  ExpectNothing(Make("colorSpaceForColorSpaceName", nullptr));
  EXPECT_THAT(Log().Messages(), ElementsAre("[NSColorSpace colorSpaceForColorSpaceName:nil]"));
}

}  // namespace
}  // namespace unit
