// tests/bundle/unit/color_properties_test.cpp - the properties of NSColorQVX.
#include <cmath>
#include <limits>

#include "tests/bundle/unit/declarations.h"
#include "tests/bundle/unit/fixture.h"

namespace unit {
namespace {

class ColorProperty : public NewHost {
 protected:
  void SetUp() override {
    NewHost::SetUp();
    native = MakeNative("NSColor", "color");
    self = host.Wrap(kColor, native).Handle();
    Log().Clear();
  }
  std::uint32_t ColorValue() const { return GetProperty<std::uint32_t>(kColor, "colorValue", self); }
  std::uint32_t ColorValueOf(float red, float green, float blue, float alpha = 1) const {
    platform.components = {red, green, blue, alpha};
    return ColorValue();
  }

  NativeObject* native = nullptr;
  void* self = nullptr;
};

TEST_F(ColorProperty, ColorValueAsksTheColorItselfFirst) {
  ColorValue();
  EXPECT_THAT(
      Log().Lines({EventKind::kMessage, EventKind::kFrame}),
      ElementsAre("enter", "enter", "[color getRed:out green:out blue:out alpha:out]", "leave", "leave"));
}

TEST_F(ColorProperty, ColorValueTruncatesEachComponentTimes255) {
  EXPECT_EQ(ColorValueOf(1, 0.5F, 0), 0xFF7F00U);
  EXPECT_EQ(ColorValueOf(0, 0, 0), 0U);
  EXPECT_EQ(ColorValueOf(1, 1, 1), 0xFFFFFFU);
  EXPECT_EQ(ColorValueOf(0.999F, 0.0039F, 0.004F), 0xFE0001U);
}

TEST_F(ColorProperty, ColorValueMultipliesInSinglePrecision) {
  // The volatile product is rounded to single precision before it is truncated.
  for (int i = 0; i <= 1000; ++i) {
    const float component = static_cast<float>(i) / 1000.0F;
    const volatile float product = component * 255.0F;
    EXPECT_EQ(ColorValueOf(0, 0, component), static_cast<std::uint32_t>(product)) << component;
  }
}

TEST_F(ColorProperty, ColorValueIgnoresAlpha) {
  EXPECT_EQ(ColorValueOf(1, 1, 1, 0), 0xFFFFFFU);
  EXPECT_EQ(ColorValueOf(0, 0, 0, 7), 0U);
}

TEST_F(ColorProperty, ColorValueSpillsWhatIsAboveOne) {
  EXPECT_EQ(ColorValueOf(1.5F, 0, 0), 382U << 16U);
  EXPECT_EQ(ColorValueOf(0, 1.5F, 0), 382U << 8U);
  EXPECT_EQ(ColorValueOf(0, 0, 1.5F), 382U);
  EXPECT_EQ(ColorValueOf(0, 1, 2), 0xFFFEU | 0xFF00U);
}

TEST_F(ColorProperty, ColorValueSpillsWhatIsBelowZero) {
  EXPECT_EQ(ColorValueOf(0, 0, -1), static_cast<std::uint32_t>(-255));
  EXPECT_EQ(ColorValueOf(0, -1, 0), static_cast<std::uint32_t>(-255) << 8U);
  EXPECT_EQ(ColorValueOf(-1, 0, 0), static_cast<std::uint32_t>(-255) << 16U);
  EXPECT_EQ(ColorValueOf(0, 0, -0.001F), 0U);
}

TEST_F(ColorProperty, ColorValueOfNumbersThatFitNoIntegerIsTheProcessorsAnswer) {
  const float infinity = std::numeric_limits<float>::infinity();
  for (const float value : {infinity, -infinity, std::nanf(""), 1e30F, -1e30F, 9e6F}) {
    EXPECT_EQ(ColorValueOf(0, 0, value), 0x80000000U) << value;
    EXPECT_EQ(ColorValueOf(value, 0, 0), 0U) << value;  // shifted out
    EXPECT_EQ(ColorValueOf(0, value, 0), 0U) << value;
    EXPECT_EQ(ColorValueOf(0, 0, 1), 255U);
  }
}

TEST_F(ColorProperty, ColorValueConvertsToCalibratedRGBWhenTheColorHasNone) {
  platform.components = {1, 1, 1, 1};
  NativeObject* const exception = MakeException();
  platform.RaiseOnce("getRed:green:blue:alpha:", exception);
  EXPECT_EQ(ColorValue(), 0xFFFFFFU);
  EXPECT_THAT(Log().Messages(), ElementsAre("[color getRed:out green:out blue:out alpha:out]",
                                            "[color colorUsingColorSpaceName:@\"NSCalibratedRGBColorSpace\"]",
                                            "[NSColor#1 getRed:out green:out blue:out alpha:out]"));
  EXPECT_THAT(host.raised, IsEmpty());
  EXPECT_EQ(Log().Count(EventKind::kCall, "NSLog"), 0);
}

TEST_F(ColorProperty, ColorValueHandsOverTheConstantItself) {
  platform.RaiseOnce("getRed:green:blue:alpha:", MakeException());
  const void* name = nullptr;
  platform.Once("colorUsingColorSpaceName:", [&name](Send& send) { name = send.Pointer(0); });
  ColorValue();
  EXPECT_EQ(name, NSCalibratedRGBColorSpace);
}

TEST_F(ColorProperty, ColorValueConvertsInTheOuterFrameOnly) {
  NativeObject* const exception = MakeException();
  platform.RaiseOnce("getRed:green:blue:alpha:", exception);
  ColorValue();
  EXPECT_THAT(Log().Frames(), ElementsAre("enter", "enter", "deliver " + exception->name, "extract",
                                          "match NSException " + exception->name, "leave"));
}

TEST_F(ColorProperty, ColorValueIsBlackWhenTheConversionFails) {
  platform.RaiseOnce("getRed:green:blue:alpha:", MakeException());
  platform.Answer("colorUsingColorSpaceName:", nullptr);
  EXPECT_EQ(ColorValue(), 0U);
  EXPECT_THAT(host.raised, IsEmpty());
}

TEST_F(ColorProperty, ColorValuePassesAForeignExceptionOnWithoutConverting) {
  NativeObject* const thrown = MakeNative("OtherThrowable");
  platform.RaiseOnce("getRed:green:blue:alpha:", thrown);
  EXPECT_EQ(PassedOn([&] { ColorValue(); }), thrown);
  EXPECT_EQ(Sends("colorUsingColorSpaceName:"), 0);
}

TEST_F(ColorProperty, NumberOfComponentsIsThePlatformsNumber) {
  platform.integers["numberOfComponents"] = 5;
  EXPECT_EQ(GetProperty<std::int32_t>(kColor, "numberOfComponents", self), 5);
  EXPECT_THAT(Log().Messages(), ElementsAre("[color numberOfComponents]"));
}

class ColorComponent : public ColorProperty, public testing::WithParamInterface<std::string> {
 protected:
  double Get() const { return GetProperty<double>(kColor, GetParam(), self); }
};

Lines PropertiesOfType(std::string_view type) {
  Lines names;
  for (const PropertyDeclaration& each : kColorProperties) {
    if (each.type == type) names.emplace_back(each.name);
  }
  return names;
}

INSTANTIATE_TEST_SUITE_P(Names, ColorComponent, testing::ValuesIn(PropertiesOfType("double")),
                         [](const auto& each) { return each.param; });

TEST_P(ColorComponent, SendsTheMessageOfItsNameAndNothingElse) {
  Get();
  EXPECT_THAT(Log().Lines(), ElementsAre("enter", "[color " + GetParam() + "]", "leave"));
}

TEST_P(ColorComponent, WidensThePlatformsSinglePrecisionExactly) {
  for (const float value : {0.1F, 1.0F, -0.5F, 1e-40F, 3.4e38F}) {
    platform.Answer(GetParam(), value);
    EXPECT_EQ(Get(), static_cast<double>(value));
  }
}

TEST_P(ColorComponent, TakesTheDeliveryOfNilForNoException) {
  platform.Once(GetParam(), [](Send& send) { send.RaiseNil(); });
  bool returned = false;
  PassedOn([&] {
    EXPECT_EQ(Get(), 0.0);
    returned = true;
  });
  EXPECT_TRUE(returned);
  EXPECT_EQ(Frames().delivered, 1);
}

TEST_P(ColorComponent, CostsNoAllocationAndNoHostService) {
  Get();
  Log().Clear();
  Get();
  EXPECT_THAT(Log().Allocations(), IsEmpty());
  EXPECT_THAT(Log().Services(), IsEmpty());
  EXPECT_THAT(Log().Resolved(), IsEmpty());
  EXPECT_THAT(Log().Lookups(), IsEmpty());
}

class ColorText : public ColorProperty, public testing::WithParamInterface<std::string> {
 protected:
  void* Get() const { return GetProperty<void*>(kColor, GetParam(), self); }
};

INSTANTIATE_TEST_SUITE_P(Names, ColorText, testing::ValuesIn(PropertiesOfType("string")),
                         [](const auto& each) { return each.param; });

TEST_P(ColorText, SendsTheMessageOfItsNameAndConvertsTheAnswer) {
  void* const text = Get();
  EXPECT_THAT(Log().Messages(), ElementsAre("[color " + GetParam() + "]"));
  EXPECT_EQ(host.Text(text), GetParam());
  EXPECT_EQ(host.String(text).encoding, qvx::kEncodingUTF8);
  EXPECT_EQ(host.String(text).references, 1);
}

TEST_P(ColorText, AnEmptyTextIsTheNullString) {
  platform.Answer(GetParam(), MakeText(""));
  EXPECT_THAT(Get(), IsNull());
}

TEST_P(ColorText, UpTo99UnitsNothingIsAllocated) {
  platform.Answer(GetParam(), MakeText(std::string(99, 'x')));
  EXPECT_EQ(host.Text(Get()), std::string(99, 'x'));
  EXPECT_THAT(Log().Allocations(), IsEmpty());
}

}  // namespace
}  // namespace unit
