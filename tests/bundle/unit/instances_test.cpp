// tests/bundle/unit/instances_test.cpp - constructors, destructors, preparation, conversion, the cache.
#include "bundle/bridge/instances.h"

#include "tests/bundle/unit/bridge.h"

namespace unit {
namespace {

const Lines kPreparation = {"[NSException respondsToSelector:@selector(GetInstancesDictionaryQVX)]",
                            "[NSException GetInstancesDictionaryQVX]",
                            "[NSException respondsToSelector:@selector(PrepareNSExceptionQVX)]",
                            "[NSException PrepareNSExceptionQVX]"};

class Preparation : public NewHost {
 protected:
  static void Prepare() { Call(&qvx::CocoaInit); }
};

TEST_F(Preparation, FetchesTheCacheAndPreparesExceptionsInThisOrder) {
  Prepare();
  EXPECT_THAT(Log().Lines(), ElementsAreArray(kPreparation));
  EXPECT_EQ(reinterpret_cast<NativeObject*>(qvx::instances), platform.instances);
  EXPECT_TRUE(qvx::ExceptionsInitialized);
}

TEST_F(Preparation, HappensOnce) {
  Prepare();
  Log().Clear();
  Prepare();
  EXPECT_THAT(Log().Lines(), IsEmpty());
}

TEST_F(Preparation, IsTriedAgainWhileThereIsNoSiblingPart) {
  platform.ForgetSibling();
  Prepare();
  Prepare();
  EXPECT_THAT(Log().Messages(),
              ElementsAre(kPreparation[0], kPreparation[2], kPreparation[0], kPreparation[2]));
  EXPECT_EQ(qvx::instances, nullptr);
  EXPECT_FALSE(qvx::ExceptionsInitialized);
}

TEST_F(Preparation, RetriesOnlyTheCacheWhenExceptionsAreReady) {
  platform.Forget("GetInstancesDictionaryQVX");
  Prepare();
  Log().Clear();
  Prepare();
  EXPECT_THAT(Log().Messages(), ElementsAre(kPreparation[0]));
  platform.Learn("GetInstancesDictionaryQVX");
  Prepare();
  EXPECT_NE(qvx::instances, nullptr);
  EXPECT_EQ(Sends("PrepareNSExceptionQVX"), 0);
}

TEST_F(Preparation, RetriesOnlyTheExceptionsWhenTheCacheIsThere) {
  platform.Forget("PrepareNSExceptionQVX");
  Prepare();
  Log().Clear();
  Prepare();
  EXPECT_THAT(Log().Messages(), ElementsAre(kPreparation[2]));
  platform.Learn("PrepareNSExceptionQVX");
  Prepare();
  EXPECT_EQ(Sends("PrepareNSExceptionQVX"), 1);
  EXPECT_TRUE(qvx::ExceptionsInitialized);
}

TEST_F(Preparation, AsksForTheCacheAgainWhenTheAnswerWasNil) {
  platform.AnswerOnce("GetInstancesDictionaryQVX", nullptr);
  Prepare();
  EXPECT_EQ(qvx::instances, nullptr);
  Prepare();
  EXPECT_EQ(Sends("GetInstancesDictionaryQVX"), 2);
  EXPECT_NE(qvx::instances, nullptr);
}

TEST_F(Preparation, ReadsTheOneByteAnswerOfRespondsToSelectorAlone) {
  // The upper bits of the register are set although the answer is NO.
  platform.Answer("respondsToSelector:", false);
  Prepare();
  EXPECT_EQ(Sends("GetInstancesDictionaryQVX"), 0);
  EXPECT_EQ(Sends("PrepareNSExceptionQVX"), 0);
}

TEST_F(Preparation, DoesNothingOnAPlatformWithoutNSException) {
  HideClass("NSException");
  Prepare();
  EXPECT_EQ(qvx::instances, nullptr);
  EXPECT_FALSE(qvx::ExceptionsInitialized);
}

TEST_F(Preparation, DoesNothingWhereNoSelectorCanBeRegistered) {
  Log().SetHook(
      [](const Event& event) { return event.kind == EventKind::kLookup ? Fault::kNull : Fault::kNone; });
  Prepare();
  EXPECT_THAT(Log().Messages(), IsEmpty());
  EXPECT_EQ(qvx::instances, nullptr);
  EXPECT_FALSE(qvx::ExceptionsInitialized);
}

TEST_F(Preparation, DoesNothingWhereItsSelectorsAloneCannotBeRegistered) {
  Log().SetHook([](const Event& event) {
    return event.name == "sel_registerName" && event.text.find("QVX") != std::string::npos ? Fault::kNull
                                                                                           : Fault::kNone;
  });
  Prepare();
  EXPECT_THAT(Log().Messages(), IsEmpty());
  EXPECT_EQ(qvx::instances, nullptr);
  EXPECT_FALSE(qvx::ExceptionsInitialized);
}

TEST_F(Preparation, WithoutTheSelectorOfTheQuestionNobodyIsAsked) {
  Log().SetHook([](const Event& event) {
    return event.text == "sel_registerName(\"respondsToSelector:\")" ? Fault::kNull : Fault::kNone;
  });
  Prepare();
  EXPECT_THAT(Log().Messages(), IsEmpty());
  EXPECT_FALSE(qvx::ExceptionsInitialized);
}

class Instance : public NewHost, public testing::WithParamInterface<const char*> {
 protected:
  static NativeObject* MakeWrapped() {
    const std::string wrapper = GetParam();
    return MakeNative(wrapper.substr(0, wrapper.size() - 3));
  }
};

INSTANTIATE_TEST_SUITE_P(Classes, Instance, testing::Values(kColor, kList, kSpace),
                         [](const auto& each) { return std::string(each.param); });

TEST_P(Instance, ItsConstructorPreparesAndDoesNothingElse) {
  HostObject& object = host.Construct(GetParam());
  EXPECT_THAT(Log().Lines(), ElementsAreArray(kPreparation));
  EXPECT_THAT(object.Native(), IsNull());
}

TEST_P(Instance, ItsConstructorDoesNotWriteTheClassData) {
  HostObject& object = host.NewObject(GetParam());
  NativeObject* const native = MakeWrapped();
  object.SetNative(native);
  TakeReference(native);
  const RegisteredClass& registered = host.Class(GetParam());
  Call(registered.live->constructor, static_cast<qvx::REALobject>(object.Handle()));
  EXPECT_EQ(object.Native(), native);
}

TEST_P(Instance, ItsDestructorLeavesTheCacheReleasesAndClearsInThisOrder) {
  NativeObject* const native = MakeWrapped();
  HostObject& object = host.Wrap(GetParam(), native);
  platform.instances->entries[native] = object.Handle();
  Log().Clear();
  host.Unlock(object.Handle());
  EXPECT_THAT(Log().Lines(), ElementsAre("enter", "CFDictionaryRemoveValue(instances, " + native->name + ")",
                                         "[" + native->name + " release]", "leave"));
  EXPECT_THAT(object.Native(), IsNull());
  EXPECT_THAT(platform.instances->entries, IsEmpty());
  EXPECT_EQ(native->releases, 1);
}

TEST_P(Instance, ItsDestructorPreparesBeforeTheFrameIsEntered) {
  HostObject& object = host.NewObject(GetParam());
  host.Unlock(object.Handle());
  Lines expected = kPreparation;
  expected.insert(expected.end(), {"enter", "leave"});
  EXPECT_THAT(Log().Lines(), ElementsAreArray(expected));
}

TEST_P(Instance, ItsDestructorTouchesNothingWhenNothingIsWrapped) {
  HostObject& object = host.Construct(GetParam());
  Log().Clear();
  host.Unlock(object.Handle());
  EXPECT_THAT(Log().Messages(), IsEmpty());
  EXPECT_THAT(Log().Calls(), IsEmpty());
  EXPECT_THAT(Log().Services(), ElementsAre());
}

TEST_P(Instance, ItsDestructorReleasesWithoutACacheToo) {
  platform.ForgetSibling();
  NativeObject* const native = MakeWrapped();
  HostObject& object = host.Wrap(GetParam(), native);
  Log().Clear();
  host.Unlock(object.Handle());
  EXPECT_EQ(native->releases, 1);
  EXPECT_THAT(Log().Calls(), IsEmpty());
}

TEST_P(Instance, AnExceptionInItsDestructorBecomesAHostException) {
  NativeObject* const native = MakeWrapped();
  NativeObject* const exception = MakeException();
  platform.RaiseOnce("release", exception);
  HostObject& object = host.Wrap(GetParam(), native);
  host.Unlock(object.Handle());
  ASSERT_THAT(host.raised, SizeIs(1));
  EXPECT_EQ(host.raised[0].className, "NSExceptionQVX");
  EXPECT_EQ(host.raised[0].native, exception);
  native->held = 0;  // the release was never carried out
}

TEST_P(Instance, AForeignExceptionInItsDestructorIsPassedOn) {
  NativeObject* const native = MakeWrapped();
  NativeObject* const thrown = MakeNative("OtherThrowable");
  platform.RaiseOnce("release", thrown);
  HostObject& object = host.Wrap(GetParam(), native);
  EXPECT_EQ(PassedOn([&] { host.Unlock(object.Handle()); }), thrown);
  EXPECT_THAT(host.raised, IsEmpty());
  object.freed = true;
  object.references = object.owned = 0;
  native->held = 0;
}

TEST_P(Instance, ItsDestructorFindsNoFaultWithNull) {
  Call(host.Class(GetParam()).live->destructor, static_cast<qvx::REALobject>(nullptr));
  EXPECT_EQ(Sends("release"), 0);
}

struct Conversion {
  const char* className;
  const char* native;
  void* (*convert)(NativeObject*);
};

class Conversions : public NewHost, public testing::WithParamInterface<Conversion> {
 protected:
  static NativeObject* MakeWrapped() { return MakeNative(GetParam().native); }
  static void* ToHost(NativeObject* native) { return GetParam().convert(native); }
};

INSTANTIATE_TEST_SUITE_P(Classes, Conversions,
                         testing::Values(Conversion{kColor, "NSColor", &NewColor},
                                         Conversion{kSpace, "NSColorSpace", &NewSpace}),
                         [](const auto& each) { return std::string(each.param.className); });

TEST_P(Conversions, NilGivesNullAndMakesNothing) {
  Prepare();
  EXPECT_THAT(ToHost(nullptr), IsNull());
  EXPECT_THAT(Log().Lines(), IsEmpty());
}

TEST_P(Conversions, LooksMakesRetainsAndEntersInThisOrder) {
  Prepare();
  NativeObject* const native = MakeWrapped();
  void* const object = ToHost(native);
  const std::string name = host.Object(object).name;
  EXPECT_THAT(
      Log().Lines(),
      ElementsAre("CFDictionaryGetValue(instances, " + native->name + ")", "resolve PluginNewInstance",
                  "PluginNewInstance(\"" + std::string(GetParam().className) + "\")",
                  "[" + native->name + " retain]",
                  "CFDictionarySetValue(instances, " + native->name + ", " + name + ")"));
  EXPECT_EQ(host.Object(object).Native(), native);
  EXPECT_EQ(host.Object(object).references, 1);
  EXPECT_EQ(host.Object(object).locks, 0);
  EXPECT_EQ(native->retains, 1);
}

TEST_P(Conversions, TheSameNativeObjectTwiceIsTheSameHostObjectLockedOnceMore) {
  Prepare();
  NativeObject* const native = MakeWrapped();
  void* const first = ToHost(native);
  Log().Clear();
  void* const second = ToHost(native);
  EXPECT_EQ(second, first);
  EXPECT_EQ(host.Object(first).locks, 1);
  EXPECT_EQ(host.Object(first).references, 2);
  EXPECT_EQ(native->retains, 1);
  EXPECT_EQ(Calls("PluginNewInstance"), 0);
}

TEST_P(Conversions, ACachedObjectIsAnsweredUnlockedByAHostThatCannotLock) {
  Prepare();
  NativeObject* const native = MakeWrapped();
  void* const first = ToHost(native);
  host.missing = {"REALLockObject"};
  EXPECT_EQ(ToHost(native), first);
  EXPECT_EQ(host.Object(first).references, 1);
  host.Object(first).owned = 1;
}

TEST_P(Conversions, AfterTheHostObjectIsGoneTheNextConversionMakesANewOne) {
  Prepare();
  NativeObject* const native = MakeWrapped();
  void* const first = ToHost(native);
  host.Unlock(first);
  EXPECT_EQ(native->held, 0);
  void* const second = ToHost(native);
  EXPECT_NE(second, first);
  EXPECT_EQ(native->retains, 2);
}

TEST_P(Conversions, WithoutACacheEveryConversionMakesANewObject) {
  platform.ForgetSibling();
  Prepare();
  NativeObject* const native = MakeWrapped();
  EXPECT_NE(ToHost(native), ToHost(native));
  EXPECT_EQ(native->retains, 2);
  EXPECT_THAT(Log().Calls(), IsEmpty());
}

TEST_P(Conversions, StoresWhatRetainAnswered) {
  Prepare();
  NativeObject* const native = MakeWrapped();
  NativeObject* const other = MakeWrapped();
  platform.Once("retain", [other](Send& send) {
    TakeReference(other);
    send.Answer(other);
  });
  EXPECT_EQ(host.Object(ToHost(native)).Native(), other);
}

TEST_P(Conversions, AnInstanceThatCouldRetainNothingIsEmptyAndEntersNoCache) {
  Prepare();
  platform.AnswerOnce("retain", nullptr);
  void* const object = ToHost(MakeWrapped());
  EXPECT_THAT(host.Object(object).Native(), IsNull());
  EXPECT_THAT(platform.instances->entries, IsEmpty());
}

TEST_P(Conversions, GivesNullOnAHostThatMakesNoInstances) {
  Prepare();
  host.missing = {"PluginNewInstance"};
  NativeObject* const native = MakeWrapped();
  EXPECT_THAT(ToHost(native), IsNull());
  EXPECT_EQ(native->retains, 0);
  EXPECT_THAT(platform.instances->entries, IsEmpty());
}

TEST_P(Conversions, GivesNullWhenTheHostLacksTheClass) {
  Prepare();
  host.missingClasses = {GetParam().className};
  NativeObject* const native = MakeWrapped();
  EXPECT_THAT(ToHost(native), IsNull());
  EXPECT_EQ(native->retains, 0);
  EXPECT_EQ(Calls("PluginNewInstance"), 1);
}

}  // namespace
}  // namespace unit
