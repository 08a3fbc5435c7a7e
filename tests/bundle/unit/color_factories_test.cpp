// tests/bundle/unit/color_factories_test.cpp - the shared methods of NSColorQVX.
#include "tests/bundle/unit/declarations.h"
#include "tests/bundle/unit/fixture.h"

namespace unit {
namespace {

struct Factory {
  std::string name;
  std::string message;
  std::function<void*()> make;
};
void PrintTo(const Factory& each, std::ostream* out) {
  *out << each.name;
}

std::vector<Factory> Factories() {
  const auto shared = [](const char* method, auto... arguments) {
    return [method, arguments...] { return CallShared<void*>(kColor, method, arguments...); };
  };
  // 0.1 has no exact double and its single precision is another number: narrowing shows.
  std::vector<Factory> all = {
      {"colorWithGenericGamma22White", "[NSColor colorWithGenericGamma22White:0.100000001 alpha:0.5]",
       shared("colorWithGenericGamma22White", 0.1, 0.5)},
      {"colorWithCGColor", "[NSColor colorWithCGColor:0x4d]", shared("colorWithCGColor", std::int32_t{77})},
      {"colorWithZeroCGColor", "[NSColor colorWithCGColor:0x0]", shared("colorWithCGColor", std::int32_t{0})},
      {"colorWithHighCGColor", "[NSColor colorWithCGColor:0xfffffffe]",
       shared("colorWithCGColor", std::int32_t{-2})},
      {"colorWithDeviceCMYK",
       "[NSColor colorWithDeviceCyan:0.100000001 magenta:0.200000003 yellow:0.25 black:0.5 alpha:0.75]",
       shared("colorWithDeviceCMYK", 0.1, 0.2, 0.25, 0.5, 0.75)},
      {"colorWithDeviceRGB", "[NSColor colorWithDeviceRed:0.100000001 green:0.25 blue:0.5 alpha:0.75]",
       shared("colorWithDeviceRGB", 0.1, 0.25, 0.5, 0.75)},
      {"colorWithDeviceHSV",
       "[NSColor colorWithDeviceHue:0.100000001 saturation:0.25 brightness:0.5 alpha:0.75]",
       shared("colorWithDeviceHSV", 0.1, 0.25, 0.5, 0.75)},
      {"colorWithDeviceWhite", "[NSColor colorWithDeviceWhite:0.100000001 alpha:0.5]",
       shared("colorWithDeviceWhite", 0.1, 0.5)},
      {"colorWithSRGB", "[NSColor colorWithSRGBRed:0.100000001 green:0.25 blue:0.5 alpha:0.75]",
       shared("colorWithSRGB", 0.1, 0.25, 0.5, 0.75)},
      {"colorWithCalibratedRGB",
       "[NSColor colorWithCalibratedRed:0.100000001 green:0.25 blue:0.5 alpha:0.75]",
       shared("colorWithCalibratedRGB", 0.1, 0.25, 0.5, 0.75)},
      {"colorWithCalibratedHSV",
       "[NSColor colorWithCalibratedHue:0.100000001 saturation:0.25 brightness:0.5 alpha:0.75]",
       shared("colorWithCalibratedHSV", 0.1, 0.25, 0.5, 0.75)},
      {"colorWithCalibratedWhite", "[NSColor colorWithCalibratedWhite:0.100000001 alpha:0.5]",
       shared("colorWithCalibratedWhite", 0.1, 0.5)},
      {"extendedRange", "[NSColor colorWithDeviceRed:1.5 green:-2 blue:1024 alpha:inf]",
       shared("colorWithDeviceRGB", 1.5, -2.0, 1024.0, 1e300)},
  };
  for (const std::string& name : kPredefinedColors) {
    all.push_back({name, "[NSColor " + name + "]",
                   [name] { return CallShared<void*>(kColor, name + " as NSColorQVX"); }});
  }
  return all;
}

class ColorFactory : public NewHost, public testing::WithParamInterface<Factory> {};

INSTANTIATE_TEST_SUITE_P(Methods, ColorFactory, testing::ValuesIn(Factories()),
                         [](const auto& each) { return each.param.name; });

TEST_P(ColorFactory, SendsItsMessageWithNarrowedArgumentsAndWrapsTheAnswer) {
  Prepare();
  void* const color = GetParam().make();
  ASSERT_THAT(color, NotNull());
  const NativeObject* const native = host.Object(color).Native();
  EXPECT_THAT(Log().Lines({EventKind::kMessage, EventKind::kFrame, EventKind::kService}),
              ElementsAre("enter", GetParam().message, "PluginNewInstance(\"NSColorQVX\")",
                          "[" + native->name + " retain]", "leave"));
  EXPECT_EQ(host.Object(color).references, 1);
}

TEST_P(ColorFactory, PreparesOnEveryCallBeforeAnythingElse) {
  platform.ForgetSibling();
  for (int i = 0; i < 2; ++i) {
    Log().Clear();
    GetParam().make();
    const Lines lines = Log().Lines({EventKind::kMessage, EventKind::kFrame});
    ASSERT_GE(lines.size(), 3U);
    EXPECT_EQ(lines[0], "[NSException respondsToSelector:@selector(GetInstancesDictionaryQVX)]");
    EXPECT_EQ(lines[1], "[NSException respondsToSelector:@selector(PrepareNSExceptionQVX)]");
    EXPECT_EQ(lines[2], "enter");
  }
}

class PredefinedColor : public NewHost, public testing::WithParamInterface<std::string> {};

INSTANTIATE_TEST_SUITE_P(Names, PredefinedColor, testing::ValuesIn(kPredefinedColors),
                         [](const auto& each) { return each.param; });

TEST_P(PredefinedColor, TwiceIsTheSameHostObjectWhileTheFirstIsHeld) {
  const std::string declaration = GetParam() + " as NSColorQVX";
  void* const first = CallShared<void*>(kColor, declaration);
  EXPECT_EQ(CallShared<void*>(kColor, declaration), first);
  EXPECT_EQ(host.Object(first).references, 2);
  EXPECT_EQ(host.Object(first).Native()->name, GetParam());
}

// Two declarations of one function.
constexpr const char* kOfValues =
    "colorWithColorSpace(ColorSpace as NSColorSpaceQVX, paramarray components as double) as NSColorQVX";
constexpr const char* kOfArray =
    "colorWithColorSpace(ColorSpace as NSColorSpaceQVX, components() as double) as NSColorQVX";

class ColorSpaceTest : public FreshBundle {
 protected:
  void StartAs(long double version) {
    Start(version);
    space = MakeNative("NSColorSpace", "space");
    wrapper = &host.Wrap(kSpace, space);
    Log().Clear();
  }
  void* Make(void* colorSpace, void* components) const {
    return CallShared<void*>(kColor, form, colorSpace, components);
  }
  void* MakeOf(std::vector<double> components) const {
    return Make(wrapper->Handle(), host.NewNumbers(std::move(components)).Handle());
  }
  // What the platform got.
  static void Record(std::vector<float>* values, std::uint32_t* count) {
    platform.On("colorWithColorSpace:components:count:", [values, count](Send& send) {
      *count = send.Word(2);
      const auto* const from = static_cast<const float*>(send.Pointer(1));
      values->assign(from, from + *count);
      send.Answer(MakeNative("NSColor"));
    });
  }
  static void ExpectOutOfBounds(const std::string& problem, int value) {
    ASSERT_THAT(host.raised, SizeIs(1));
    EXPECT_EQ(host.raised[0].className, "OutOfBoundsException");
    EXPECT_EQ(host.raised[0].message, "Parameter values ubound to method colorWithColorSpace is too " +
                                          problem + ". Range is 1 to 19, but value is " +
                                          std::to_string(value) + ".");
    EXPECT_EQ(Sends("colorWithColorSpace:components:count:"), 0);
  }

  std::string form = kOfValues;
  NativeObject* space = nullptr;
  HostObject* wrapper = nullptr;
};

class WithColorSpace : public ColorSpaceTest, public testing::WithParamInterface<std::string> {
 protected:
  void SetUp() override {
    form = GetParam();
    StartAs(2015.0L);
  }
};

INSTANTIATE_TEST_SUITE_P(Forms, WithColorSpace, testing::Values(kOfValues, kOfArray), [](const auto& each) {
  return each.param == kOfValues ? std::string("paramarray") : std::string("array");
});

TEST_P(WithColorSpace, ANilSpaceRaisesBeforeTheArrayIsLookedAt) {
  for (void* const nothing : {static_cast<void*>(nullptr), host.Construct(kSpace).Handle()}) {
    host.raised.clear();
    Log().Clear();
    EXPECT_THAT(Make(nothing, host.NewNumbers({0.5}).Handle()), IsNull());
    ASSERT_THAT(host.raised, SizeIs(1));
    EXPECT_EQ(host.raised[0].className, "NilObjectException");
    EXPECT_EQ(host.raised[0].message, "Colorspace is nil!");
    EXPECT_EQ(Calls("RuntimeUBound"), 0);
    EXPECT_EQ(Messages(), Lines());
  }
}

TEST_P(WithColorSpace, RaisesInsideTheFrame) {
  Make(nullptr, nullptr);
  const Lines lines = Log().Lines({EventKind::kFrame, EventKind::kService});
  EXPECT_EQ(lines.front(), "enter");
  EXPECT_EQ(lines.back(), "leave");
}

TEST_P(WithColorSpace, RefusesOneComponent) {
  EXPECT_THAT(MakeOf({0.5}), IsNull());
  ExpectOutOfBounds("small", 0);
}

TEST_P(WithColorSpace, RefusesAnEmptyArray) {
  EXPECT_THAT(MakeOf({}), IsNull());
  ExpectOutOfBounds("small", -1);
}

TEST_P(WithColorSpace, RefusesTwentyOneComponents) {
  EXPECT_THAT(MakeOf(std::vector<double>(21, 0.5)), IsNull());
  ExpectOutOfBounds("big", 20);
}

TEST_P(WithColorSpace, TakesAHostWithoutTheServiceForAnUpperBoundOfZero) {
  host.missing = {"RuntimeUBound"};
  EXPECT_THAT(MakeOf({0.5, 1}), IsNull());
  ExpectOutOfBounds("small", 0);
}

TEST_P(WithColorSpace, AcceptsTwoAndTwentyComponents) {
  for (const std::size_t size : {2U, 20U}) {
    std::vector<float> values;
    std::uint32_t count = 0;
    Record(&values, &count);
    EXPECT_THAT(MakeOf(std::vector<double>(size, 0.5)), NotNull());
    EXPECT_EQ(count, size);
    EXPECT_EQ(values, std::vector<float>(size, 0.5F));
  }
  EXPECT_THAT(host.raised, IsEmpty());
}

class ArrayElements : public ColorSpaceTest, public testing::WithParamInterface<long double> {
 protected:
  void SetUp() override { StartAs(GetParam()); }
  std::vector<float> values;
  std::uint32_t count = 0;
};

using ArrayElementsOnOldHost = ArrayElements;
using ArrayElementsOnNewHost = ArrayElements;

std::string NameOfVersion(const testing::TestParamInfo<long double>& each) {
  return Readable(Number(static_cast<double>(each.param)));
}

INSTANTIATE_TEST_SUITE_P(UpTo2015_011, ArrayElementsOnOldHost,
                         testing::Values(2011.0L, 2012.0L, 2015.0L, 2015.011L), NameOfVersion);
INSTANTIATE_TEST_SUITE_P(Above2015_011, ArrayElementsOnNewHost,
                         testing::Values(2015.0111L, 2015.02L, 2019.0L), NameOfVersion);

TEST_P(ArrayElementsOnOldHost, AreReadInOrderAndNarrowed) {
  Record(&values, &count);
  EXPECT_THAT(MakeOf({0.1, 0.2, 0.3, 1.0}), NotNull());
  EXPECT_EQ(values, (std::vector<float>{0.1F, 0.2F, 0.3F, 1.0F}));
  EXPECT_EQ(Calls("read"), 4);
}

TEST_P(ArrayElementsOnNewHost, CountAsZeroAndTheReadingServiceIsNotAskedFor) {
  Record(&values, &count);
  EXPECT_THAT(MakeOf({0.1, 0.2, 1.0}), NotNull());
  EXPECT_EQ(values, (std::vector<float>{0, 0, 0}));
  EXPECT_EQ(Asked("RuntimeArrayDirectGetGetProc"), 0);
}

TEST_P(WithColorSpace, ElementsCountAsZeroWithoutTheReadingService) {
  host.missing = {"RuntimeArrayDirectGetGetProc"};
  std::vector<float> values;
  std::uint32_t count = 0;
  Record(&values, &count);
  EXPECT_THAT(MakeOf({0.5, 1}), NotNull());
  EXPECT_EQ(values, (std::vector<float>{0, 0}));
}

TEST_P(WithColorSpace, ElementsCountAsZeroWithoutAReadingProcedure) {
  Log().SetHook([](const Event& event) {
    return event.kind == EventKind::kService && event.name == "RuntimeArrayDirectGetGetProc" ? Fault::kNull
                                                                                             : Fault::kNone;
  });
  std::vector<float> values;
  std::uint32_t count = 0;
  Record(&values, &count);
  EXPECT_THAT(MakeOf({0.5, 1}), NotNull());
  EXPECT_EQ(values, (std::vector<float>{0, 0}));
}

TEST_P(WithColorSpace, AskedInThisOrder) {
  Prepare();
  MakeOf({0.5, 1});
  EXPECT_THAT(Log().Lines({EventKind::kFrame, EventKind::kService, EventKind::kMessage}),
              ElementsAre("enter", "RuntimeUBound(array#1)", "RuntimeArrayDirectGetGetProc(array#1)",
                          "read(array#1, 0)", "RuntimeArrayDirectGetGetProc(array#1)", "read(array#1, 1)",
                          "[NSColor colorWithColorSpace:space components:out count:2]",
                          "PluginNewInstance(\"NSColorQVX\")", "[NSColor#1 retain]", "leave"));
}

TEST_P(WithColorSpace, DoesNotCompareTheCountWithTheSpace) {
  platform.integers["numberOfColorComponents"] = 1;
  EXPECT_THAT(MakeOf({0.5, 0.5, 0.5, 1}), NotNull());
  EXPECT_EQ(Sends("numberOfColorComponents"), 0);
}

TEST_P(WithColorSpace, AllocatesNothing) {
  MakeOf(std::vector<double>(20, 0.5));
  EXPECT_THAT(Log().Allocations(), IsEmpty());
}

TEST_P(WithColorSpace, ANilArrayCountsAsTheHostMeasuresIt) {
  EXPECT_THAT(Make(wrapper->Handle(), nullptr), IsNull());
  ExpectOutOfBounds("small", -1);
}

TEST_P(WithColorSpace, ElementsOfANilArrayCountAsZero) {
  host.upperBoundOfNull = 2;
  std::vector<float> values;
  std::uint32_t count = 0;
  Record(&values, &count);
  EXPECT_THAT(Make(wrapper->Handle(), nullptr), NotNull());
  EXPECT_EQ(values, (std::vector<float>{0, 0, 0}));
  EXPECT_EQ(Calls("read"), 0);
}

using ColorFromElsewhere = NewHost;

TEST_F(ColorFromElsewhere, ThePasteboardIsTheGeneralOne) {
  Prepare();
  EXPECT_THAT(CallShared<void*>(kColor, "colorFromPasteboard as NSColorQVX"), NotNull());
  EXPECT_THAT(Log().Messages(),
              ElementsAre("[NSPasteboard generalPasteboard]",
                          "[NSColor colorFromPasteboard:generalPasteboard]", "[NSColor#1 retain]"));
}

TEST_F(ColorFromElsewhere, APatternTakesTheNativeImageOfAnyWrapper) {
  Prepare();
  for (const char* className : {"NSImageQVX", "SomethingElse"}) {
    HostObject& image = host.NewObject(className);
    image.foreign = true;
    image.SetNative(MakeNative("NSImage", "image"));
    EXPECT_THAT(CallShared<void*>(kColor, "colorWithPatternImage(image as variant) as NSColorQVX", image),
                NotNull());
  }
  EXPECT_EQ(Messages()[0], "[NSColor colorWithPatternImage:image]");
  EXPECT_EQ(Sends("colorWithPatternImage:"), 2);
}

TEST_F(ColorFromElsewhere, NoPatternGivesNilWithoutMessageOrException) {
  Prepare();
  HostObject& empty = host.NewObject("NSImageQVX");
  EXPECT_THAT(CallShared<void*>(kColor, "colorWithPatternImage(image as variant) as NSColorQVX", nullptr),
              IsNull());
  EXPECT_THAT(CallShared<void*>(kColor, "colorWithPatternImage(image as variant) as NSColorQVX", empty),
              IsNull());
  EXPECT_THAT(Log().Messages(), IsEmpty());
  EXPECT_THAT(host.raised, IsEmpty());
}

}  // namespace
}  // namespace unit
