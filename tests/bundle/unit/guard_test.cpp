// tests/bundle/unit/guard_test.cpp - the native-exception guard, on every function that has one.
#include <algorithm>
#include <new>
#include <set>

#include "bundle/bridge/instances.h"
#include "tests/bundle/unit/guarded_functions.h"

namespace unit {
namespace {

std::string NameOf(const testing::TestParamInfo<GuardedFunction>& each) {
  return each.param.name;
}

// The guarded functions that the predicate takes.
template <typename Predicate>
auto Functions(Predicate predicate) {
  std::vector<GuardedFunction> taken;
  for (GuardedFunction& each : GuardedFunctions()) {
    if (predicate(each)) taken.push_back(std::move(each));
  }
  return testing::ValuesIn(taken);
}

class Guard : public NewHost, public testing::WithParamInterface<GuardedFunction> {
 protected:
  void SetUp() override {
    NewHost::SetUp();
    self = MakeSelf(GetParam());
    Log().Clear();
  }
  bool CallIsNeutral() { return GetParam().isNeutral(self); }
  // Makes the function's message raise; twice where the first one is caught by an inner frame.
  static void RaiseFromMessage(NativeObject* exception) {
    platform.RaiseOnce(GetParam().selector, exception);
    if (!GetParam().oneFrame) platform.RaiseOnce(GetParam().selector, exception);
  }

  void* self = nullptr;
};

INSTANTIATE_TEST_SUITE_P(Functions, Guard, testing::ValuesIn(GuardedFunctions()), &NameOf);

// Those whose guard is their only frame; the inner frame of the others is asserted where the function is.
using GuardOfOneFrame = Guard;
INSTANTIATE_TEST_SUITE_P(Functions, GuardOfOneFrame,
                         Functions([](const auto& each) { return each.oneFrame; }), &NameOf);

// Those that have an instance.
using GuardOfInstance = Guard;
INSTANTIATE_TEST_SUITE_P(Functions, GuardOfInstance,
                         Functions([](const auto& each) { return each.className != nullptr; }), &NameOf);

// Those that need a filled instance.
using GuardOfFilledInstance = Guard;
INSTANTIATE_TEST_SUITE_P(Functions, GuardOfFilledInstance, Functions([](const auto& each) {
                           const bool fillsEmptyList = each.name == "list_Create1" ||
                                                       each.name == "list_Create2" ||
                                                       each.name == "list_Load";
                           return each.className != nullptr && !each.fills && !fillsEmptyList;
                         }),
                         &NameOf);

// Those that call a service of the host inside the frame.
using GuardOfServiceCaller = Guard;
INSTANTIATE_TEST_SUITE_P(
    Functions, GuardOfServiceCaller, Functions([](const auto& each) {
      static const std::set<std::string> kCallNone = {
          "color_colorValue",
          "color_numberOfComponents",
          "color_CGColorHandle",
          "color_getCMYK",
          "color_getWhite",
          "color_getHSV",
          "color_getRGB",
          "color_getCMYKA",
          "color_getWhiteA",
          "color_getHSVA",
          "color_getRGBA",
          "color_writeToPasteboard",
          "list_removeFile",
          "list_isEditable",
          "space_initWithColorSyncProfile",
          "space_colorSpaceModel",
          "space_numberOfColorComponents",
          "space_initWithCGColorSpace",
          "space_CGColorSpaceHandle",
          "space_colorSyncProfileHandle",
          "shared_availableColorSpacesWithModel"};  // only where there are spaces: told where it is tested
      return !kCallNone.contains(each.name);
    }),
    &NameOf);

TEST(GuardedFunctionTable, CoversEveryFunctionOnce) {
  EXPECT_EQ(GuardedFunctions().size(), 2U + 19 + 59 + 11 + 11 + 6);
}

TEST_P(GuardOfOneFrame, IsEnteredAndLeftOnce) {
  CallIsNeutral();
  EXPECT_THAT(Log().Frames(), ElementsAre("enter", "leave"));
}

TEST_P(Guard, SendsItsMessageInsideTheFrameAndNoneAfterIt) {
  CallIsNeutral();
  EXPECT_GE(Sends(GetParam().selector.c_str()), 1);
  int depth = 0;
  for (const Event& event : Log().Events()) {
    if (event.name == "enter") ++depth;
    if (event.name == "leave") --depth;
    if (event.name == GetParam().selector) {
      EXPECT_GT(depth, 0) << event.text;
    }
  }
}

TEST_P(Guard, PreparesOnlyWhereItShouldAndBeforeTheFrame) {
  // The construction of self has prepared already: that is undone. And no instance may be made, whose
  // constructor would prepare.
  host.missing = {"PluginNewInstance"};
  qvx::instances = nullptr;
  qvx::ExceptionsInitialized = false;
  CallIsNeutral();
  const Lines lines = Log().Lines();
  const auto enter = std::ranges::find(lines, "enter");
  const auto ask = std::ranges::find_if(
      lines, [](const std::string& line) { return line.find("respondsToSelector:") != std::string::npos; });
  if (!GetParam().preparesFirst) {
    EXPECT_EQ(ask, lines.end());
  } else {
    ASSERT_NE(ask, lines.end());
    EXPECT_LT(ask, enter);
    EXPECT_EQ(std::find_if(enter, lines.end(),
                           [](const std::string& line) {
                             return line.find("respondsToSelector:") != std::string::npos;
                           }),
              lines.end());
  }
}

TEST_P(Guard, TurnsAnNSExceptionIntoAHostExceptionAndGivesTheNeutralResult) {
  NativeObject* const exception = MakeException();
  RaiseFromMessage(exception);
  EXPECT_TRUE(CallIsNeutral());
  ASSERT_THAT(host.raised, SizeIs(1));
  EXPECT_EQ(host.raised[0].className, "NSExceptionQVX");
  EXPECT_EQ(host.raised[0].native, exception);
  EXPECT_EQ(Log().Count(EventKind::kCall, "NSLog"), 1);
}

TEST_P(Guard, ReadsTheExceptionOfItsFrameAndMatchesIt) {
  NativeObject* const exception = MakeException();
  RaiseFromMessage(exception);
  CallIsNeutral();
  const Lines frames = Log().Frames();
  const Lines expected = {"deliver " + exception->name, "extract", "match NSException " + exception->name};
  EXPECT_NE(std::search(frames.begin(), frames.end(), expected.begin(), expected.end()), frames.end());
}

TEST_P(Guard, PassesOnWhatIsNoNSException) {
  NativeObject* const thrown = MakeNative("OtherThrowable");
  RaiseFromMessage(thrown);
  EXPECT_EQ(PassedOn([&] { CallIsNeutral(); }), thrown);
  EXPECT_THAT(host.raised, IsEmpty());
  EXPECT_EQ(Log().Count(EventKind::kCall, "NSLog"), 0);
  EXPECT_THAT(Log().Frames(), Contains("throw " + thrown->name));
}

TEST_P(GuardOfOneFrame, TakesTheDeliveryOfNilForNoException) {
  platform.Once(GetParam().selector, [](Send& send) { send.RaiseNil(); });
  bool returned = false;
  PassedOn([&] {
    EXPECT_TRUE(CallIsNeutral());
    returned = true;
  });
  EXPECT_TRUE(returned);
  EXPECT_THAT(host.raised, IsEmpty());
  EXPECT_EQ(Log().Count(EventKind::kCall, "NSLog"), 0);
  EXPECT_EQ(Frames().delivered, 1);
}

TEST_P(Guard, LogsButRaisesNothingWhenTheSiblingMakesNoException) {
  RaiseFromMessage(MakeException());
  platform.Answer("NewNSExceptionQVX:", nullptr);
  EXPECT_TRUE(CallIsNeutral());
  EXPECT_THAT(host.raised, IsEmpty());
  EXPECT_EQ(Log().Count(EventKind::kCall, "NSLog"), 1);
  EXPECT_EQ(Calls("RuntimeRaiseException"), 0);
}

TEST_P(GuardOfInstance, ANullSelfGivesTheNeutralResultWithoutAMessage) {
  self = nullptr;
  EXPECT_TRUE(CallIsNeutral());
  EXPECT_THAT(Log().Messages(), IsEmpty());
  EXPECT_THAT(host.raised, IsEmpty());
}

TEST_P(GuardOfFilledInstance, AnEmptyInstanceGivesTheNeutralResultAndRaisesNothing) {
  self = host.Construct(GetParam().className).Handle();
  EXPECT_TRUE(CallIsNeutral());
  EXPECT_THAT(host.raised, IsEmpty());
}

TEST_P(GuardOfServiceCaller, LeavesItsFrameWhenAHostServiceThrows) {
  // Whatever service comes first inside the frame throws. A lock is left out: it is given back even where it
  // threw.
  int depth = 0;
  bool thrown = false;
  Log().SetHook([&](const Event& event) {
    if (event.name == "enter") ++depth;
    if (event.name == "leave") --depth;
    const bool now =
        depth > 0 && !thrown && event.kind == EventKind::kService && event.name != "REALLockObject";
    thrown |= now;
    return now ? Fault::kBadAlloc : Fault::kNone;
  });
  bool passedOn = false;
  try {
    CallIsNeutral();
  } catch (const std::bad_alloc&) {
    passedOn = true;
  }
  Log().SetHook({});
  EXPECT_TRUE(thrown);
  EXPECT_EQ(depth, 0);
  // Making a string or a block tells it itself; everything else lets it go on.
  if (passedOn) {
    EXPECT_THAT(host.raised, IsEmpty());
  } else {
    ASSERT_THAT(host.raised, SizeIs(1));
    EXPECT_EQ(host.raised[0].className, "OutOfMemoryException");
  }
}

// The getters that swallow.
struct SwallowingGetter {
  std::string name;
  bool text;
};
void PrintTo(const SwallowingGetter& each, std::ostream* out) {
  *out << each.name;
}

std::vector<SwallowingGetter> SwallowingGetters() {
  std::vector<SwallowingGetter> all;
  for (const PropertyDeclaration& each : kColorProperties) {
    if (each.type == "double" || each.type == "string")
      all.push_back({std::string(each.name), each.type == "string"});
  }
  return all;
}

class SwallowingGuard : public NewHost, public testing::WithParamInterface<SwallowingGetter> {
 protected:
  void SetUp() override {
    NewHost::SetUp();
    self = host.Wrap(kColor, MakeNative("NSColor")).Handle();
    Log().Clear();
  }
  bool GetIsNeutral() const {
    if (GetParam().text) return GetProperty<void*>(kColor, GetParam().name, self) == nullptr;
    return GetProperty<double>(kColor, GetParam().name, self) == 0.0;
  }
  void* self = nullptr;
};

INSTANTIATE_TEST_SUITE_P(Getters, SwallowingGuard, testing::ValuesIn(SwallowingGetters()),
                         [](const auto& each) { return each.param.name; });

TEST(SwallowingGetterTable, HasEighteen) {
  EXPECT_EQ(SwallowingGetters().size(), 18U);
}

TEST_P(SwallowingGuard, SwallowsAnNSExceptionSilently) {
  NativeObject* const exception = MakeException();
  platform.Raise(GetParam().name, exception);
  EXPECT_TRUE(GetIsNeutral());
  EXPECT_THAT(host.raised, IsEmpty());
  EXPECT_EQ(Log().Count(EventKind::kCall, "NSLog"), 0);
  EXPECT_EQ(Sends("NewNSExceptionQVX:"), 0);
  EXPECT_THAT(Log().Frames(), ElementsAre("enter", "deliver " + exception->name, "extract",
                                          "match NSException " + exception->name));
}

TEST_P(SwallowingGuard, PassesOnWhatIsNoNSException) {
  NativeObject* const thrown = MakeNative("OtherThrowable");
  platform.Raise(GetParam().name, thrown);
  EXPECT_EQ(PassedOn([&] { GetIsNeutral(); }), thrown);
}

TEST_P(SwallowingGuard, EntersOneFrameAndLeavesIt) {
  EXPECT_FALSE(GetIsNeutral());
  EXPECT_THAT(Log().Frames(), ElementsAre("enter", "leave"));
}

TEST_P(SwallowingGuard, ANullSelfGivesTheNeutralResultWithoutAMessage) {
  self = nullptr;
  EXPECT_TRUE(GetIsNeutral());
  EXPECT_THAT(Log().Messages(), IsEmpty());
}

TEST_P(SwallowingGuard, AnEmptyInstanceGivesTheNeutralResult) {
  self = host.Construct(kColor).Handle();
  EXPECT_TRUE(GetIsNeutral());
  EXPECT_THAT(host.raised, IsEmpty());
}

TEST_P(SwallowingGuard, DoesNotPrepare) {
  qvx::instances = nullptr;
  qvx::ExceptionsInitialized = false;
  GetIsNeutral();
  EXPECT_EQ(Sends("respondsToSelector:"), 0);
}

using GuardAtThrow = NewHost;

TEST_F(GuardAtThrow, LeavesTheFrameFirstAndLetsBadAllocGoOn) {
  Prepare();
  host.before["PluginNewInstance"] = [] { throw std::bad_alloc(); };
  EXPECT_THROW(CallShared<void*>(kColor, "blackColor as NSColorQVX"), std::bad_alloc);
  EXPECT_THAT(Log().Frames(), ElementsAre("enter", "leave"));
}

TEST_F(GuardAtThrow, WithoutTheClassNSExceptionNothingMatches) {
  HideClass("NSException");
  NativeObject* const exception = MakeException();
  platform.Raise("numberOfComponents", exception);
  HostObject& color = host.Wrap(kColor, MakeNative("NSColor"));
  EXPECT_EQ(PassedOn([&] { GetProperty<std::int32_t>(kColor, "numberOfComponents", color); }), exception);
  EXPECT_THAT(host.raised, IsEmpty());
}

TEST_F(GuardAtThrow, GivesTheNewWrapperBackBeforeAnotherObjectGoesOn) {
  NativeObject* const thrown = MakeNative("OtherThrowable");
  platform.RaiseOnce("retain", thrown);
  Log().Clear();
  EXPECT_EQ(PassedOn([] { CallShared<void*>(kColor, "redColor as NSColorQVX"); }), thrown);
  EXPECT_EQ(Calls("PluginNewInstance"), 1);
  EXPECT_EQ(Calls("REALUnlockObject"), 1);
  EXPECT_TRUE(platform.instances->entries.empty());
}

}  // namespace
}  // namespace unit
