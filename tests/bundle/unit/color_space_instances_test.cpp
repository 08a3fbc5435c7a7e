// tests/bundle/unit/color_space_instances_test.cpp - the instance methods of NSColorSpaceQVX.
#include "tests/bundle/unit/bridge.h"
#include "tests/bundle/unit/declarations.h"
#include "tests/bundle/unit/fixture.h"

namespace unit {
namespace {

constexpr const char* kTooOften = "Constructor called too often. Object is already initialized.";

struct Initialiser {
  std::string name;
  std::string message;
  std::string selector;
  bool enters;
  std::function<void(void* self)> call;
};
void PrintTo(const Initialiser& each, std::ostream* out) {
  *out << each.name;
}

std::vector<Initialiser> Initialisers() {
  return {{"Constructor", "[NSColorSpace#1 initWithICCProfileData:NSData#1]", "initWithICCProfileData:", true,
           [](void* self) {
             CallMethod<void>(kSpace, "Constructor", self, TheHost().NewBlock({1, 2, 3}));
           }},
          {"initWithColorSyncProfile", "[NSColorSpace#1 initWithColorSyncProfile:0xfffffffe]",
           "initWithColorSyncProfile:", true,
           [](void* self) { CallMethod<void>(kSpace, "initWithColorSyncProfile", self, std::int32_t{-2}); }},
          {"initWithCGColorSpace", "[NSColorSpace#1 initWithCGColorSpace:0xfffffffe]",
           "initWithCGColorSpace:", false,
           [](void* self) { CallMethod<void>(kSpace, "initWithCGColorSpace", self, std::int32_t{-2}); }}};
}

class Filling : public NewHost, public testing::WithParamInterface<Initialiser> {
 protected:
  void SetUp() override {
    NewHost::SetUp();
    self = &host.Construct(kSpace);
    Log().Clear();
  }
  void Fill() { GetParam().call(self->Handle()); }
  HostObject* self = nullptr;
};

INSTANTIATE_TEST_SUITE_P(Methods, Filling, testing::ValuesIn(Initialisers()),
                         [](const auto& each) { return each.param.name; });

TEST_P(Filling, AllocatesAndInitialisesAndKeepsTheOneReference) {
  Fill();
  ASSERT_THAT(self->Native(), NotNull());
  EXPECT_EQ(self->Native()->retains, 0);
  EXPECT_EQ(self->Native()->held, 1);
  EXPECT_THAT(Messages(), Contains("[NSColorSpace alloc]"));
  EXPECT_EQ(Messages().back(), GetParam().message);
}

TEST_P(Filling, EntersTheCacheOnlyWhereItShould) {
  Fill();
  EXPECT_EQ(platform.instances->entries.contains(self->Native()), GetParam().enters);
  EXPECT_EQ(Log().Count(EventKind::kCall, "CFDictionarySetValue"), GetParam().enters ? 1 : 0);
}

TEST_P(Filling, AConversionBackGivesTheSameObjectOnlyFromTheCache) {
  Fill();
  EXPECT_EQ(NewSpace(self->Native()) == self->Handle(), GetParam().enters);
}

TEST_P(Filling, PreparesBeforeTheFrameIsEntered) {
  qvx::instances = nullptr;
  qvx::ExceptionsInitialized = false;
  Fill();
  const Lines lines = Log().Lines({EventKind::kMessage, EventKind::kFrame});
  ASSERT_GE(lines.size(), 5U);
  EXPECT_EQ(lines[3], "[NSException PrepareNSExceptionQVX]");
  EXPECT_EQ(lines[4], "enter");
}

TEST_P(Filling, AFilledInstanceIsKeptAndTheHostExceptionRaised) {
  Fill();
  NativeObject* const first = self->Native();
  Log().Clear();
  Fill();
  EXPECT_EQ(self->Native(), first);
  ASSERT_THAT(host.raised, SizeIs(1));
  EXPECT_EQ(host.raised[0].className, "UnsupportedOperationException");
  EXPECT_EQ(host.raised[0].message, kTooOften);
  EXPECT_THAT(Log().Messages(), IsEmpty());
  EXPECT_THAT(Log().Frames(), IsEmpty());
}

TEST_P(Filling, TheTestForAFilledInstanceComesBeforeThePreparation) {
  Fill();
  qvx::instances = nullptr;
  qvx::ExceptionsInitialized = false;
  Log().Clear();
  Fill();
  EXPECT_EQ(Sends("respondsToSelector:"), 0);
  EXPECT_EQ(Calls("REALLockObject"), 0);  // the memory block is not even looked at
}

TEST_P(Filling, ANilAnswerLeavesTheInstanceEmptyAndItMayBeFilledLater) {
  platform.AnswerOnce(GetParam().selector, nullptr);
  Fill();
  EXPECT_THAT(self->Native(), IsNull());
  EXPECT_THAT(host.raised, IsEmpty());
  EXPECT_EQ(Log().Count(EventKind::kCall, "CFDictionarySetValue"), 0);
  Fill();
  EXPECT_THAT(self->Native(), NotNull());
}

TEST_P(Filling, AnExceptionLeavesTheInstanceEmptyAndItMayBeFilledLater) {
  platform.RaiseOnce(GetParam().selector, MakeException());
  Fill();
  EXPECT_THAT(self->Native(), IsNull());
  EXPECT_THAT(host.raised, SizeIs(1));
  Fill();
  EXPECT_THAT(self->Native(), NotNull());
}

TEST_P(Filling, WorksWithoutACache) {
  qvx::instances = nullptr;
  platform.ForgetSibling();
  Fill();
  EXPECT_THAT(self->Native(), NotNull());
  EXPECT_THAT(Log().Calls(), IsEmpty());
}

class ColorSpace : public NewHost {
 protected:
  void SetUp() override {
    NewHost::SetUp();
    self = &host.Wrap(kSpace, MakeNative("NSColorSpace", "space"));
    empty = &host.Construct(kSpace);
    Log().Clear();
  }
  HostObject* self = nullptr;
  HostObject* empty = nullptr;
};

TEST_F(ColorSpace, AnEmptyOrMissingBlockHandsNilDataToTheInitialiser) {
  platform.On("initWithICCProfileData:", [](Send& send) {
    EXPECT_EQ(send.Word(0), 0U);
    send.Answer(nullptr);
  });
  CallMethod<void>(kSpace, "Constructor", *empty, host.NewBlock({}));
  CallMethod<void>(kSpace, "Constructor", *empty, nullptr);
  EXPECT_EQ(Sends("initWithICCProfileData:"), 2);
  EXPECT_THAT(empty->Native(), IsNull());
  EXPECT_THAT(host.raised, IsEmpty());
}

TEST_F(ColorSpace, AZeroHandleIsHandedOnAsNil) {
  for (const std::string method : {"initWithColorSyncProfile", "initWithCGColorSpace"}) {
    platform.AnswerOnce(method + ":", nullptr);
    CallMethod<void>(kSpace, method, *empty, 0);
    EXPECT_THAT(empty->Native(), IsNull());
  }
  EXPECT_THAT(Messages(), Contains("[NSColorSpace#1 initWithColorSyncProfile:0x0]"));
  EXPECT_THAT(host.raised, IsEmpty());
}

TEST_F(ColorSpace, ASecondInitialiserOfAnotherKindIsRefusedToo) {
  CallMethod<void>(kSpace, "initWithCGColorSpace", *empty, 5);
  CallMethod<void>(kSpace, "initWithColorSyncProfile", *empty, 6);
  CallMethod<void>(kSpace, "Constructor", *empty, host.NewBlock({1}));
  EXPECT_THAT(host.raised, SizeIs(2));
  EXPECT_EQ(empty->Native()->name, "NSColorSpace#1");
}

TEST_F(ColorSpace, TheProfileIsANewBlock) {
  platform.Answer("ICCProfileData", MakeData({9, 8, 7}));
  void* const block = CallMethod<void*>(kSpace, "ICCProfileData", *self);
  EXPECT_THAT(host.Object(block).bytes, ElementsAre(9, 8, 7));
  EXPECT_EQ(host.Object(block).references, 1);
}

TEST_F(ColorSpace, AnEmptyProfileGivesNil) {
  platform.Answer("ICCProfileData", MakeData({}));
  EXPECT_THAT(CallMethod<void*>(kSpace, "ICCProfileData", *self), IsNull());
  EXPECT_THAT(host.raised, IsEmpty());
}

TEST_F(ColorSpace, AProfileThatCannotBeAllocatedIsOutOfMemory) {
  platform.Answer("ICCProfileData", MakeData(std::vector<std::uint8_t>(3144)));
  host.missing = {"newMemoryBlock"};
  EXPECT_THAT(CallMethod<void*>(kSpace, "ICCProfileData", *self), IsNull());
  ASSERT_THAT(host.raised, SizeIs(1));
  EXPECT_EQ(host.raised[0].message, "Failed to allocate a memoryblock with 3144 bytes in size.");
}

TEST_F(ColorSpace, NamesAndDescriptionAreConverted) {
  for (const std::string name : {"localizedName", "colorSpaceName", "description"}) {
    EXPECT_EQ(host.Text(CallMethod<void*>(kSpace, name, *self)), name);
    EXPECT_THAT(Log().Messages(), Contains("[space " + name + "]"));
  }
}

TEST_F(ColorSpace, NumbersAndHandlesComeBackUnchanged) {
  const std::pair<std::string, std::string> numbers[] = {
      {"colorSpaceModel", "colorSpaceModel"},
      {"numberOfColorComponents", "numberOfColorComponents"},
      {"colorSyncProfileHandle", "colorSyncProfile"},
      {"CGColorSpaceHandle", "CGColorSpace"}};
  for (const auto& [method, selector] : numbers) {
    for (const std::int32_t value : {-1, 0, 6, static_cast<std::int32_t>(0x89ABCDEF)}) {
      platform.integers[selector] = value;
      EXPECT_EQ(CallMethod<std::int32_t>(kSpace, method, *self), value);
    }
  }
  EXPECT_EQ(Sends("retain"), 0);
}

TEST_F(ColorSpace, TheQueriesDoNotPrepare) {
  qvx::instances = nullptr;
  qvx::ExceptionsInitialized = false;
  for (const std::string& declaration : kSpaceMethods) {
    if (const bool fills = declaration.find('(') != std::string::npos; fills) continue;
    CallMethod<void*>(kSpace, declaration, *self);
  }
  EXPECT_EQ(Sends("respondsToSelector:"), 0);
}

}  // namespace
}  // namespace unit
