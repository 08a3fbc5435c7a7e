// tests/bundle/unit/color_methods_test.cpp - the instance methods of NSColorQVX.
#include <algorithm>
#include <new>

#include "tests/bundle/unit/declarations.h"
#include "tests/bundle/unit/fixture.h"

namespace unit {
namespace {

class ColorMethod : public NewHost {
 protected:
  void SetUp() override {
    NewHost::SetUp();
    native = MakeNative("NSColor", "color");
    self = host.Wrap(kColor, native).Handle();
    Log().Clear();
  }
  NativeObject* native = nullptr;
  void* self = nullptr;
};

TEST_F(ColorMethod, TheExceptionDummyAnswersNilAndTouchesNothing) {
  EXPECT_THAT(CallMethod<void*>(kColor, "_exception", self), IsNull());
  EXPECT_THAT(CallMethod<void*>(kColor, "_exception", nullptr), IsNull());
  EXPECT_THAT(Log().Lines(), IsEmpty());
}

TEST_F(ColorMethod, TheConstructorDummyTouchesNothing) {
  void* const empty = host.Construct(kColor).Handle();
  Log().Clear();
  CallMethod<void>(kColor, "Constructor", empty);
  EXPECT_THAT(Log().Lines(), IsEmpty());
  EXPECT_THAT(host.Object(empty).Native(), IsNull());
}

TEST_F(ColorMethod, TheHandleIsThePointersValueAndNotRetained) {
  platform.integers["CGColor"] = static_cast<std::int32_t>(0x89ABCDEF);
  EXPECT_EQ(static_cast<std::uint32_t>(CallMethod<std::int32_t>(kColor, "CGColorHandle as Integer", self)),
            0x89ABCDEFU);
  EXPECT_THAT(Log().Messages(), ElementsAre("[color CGColor]"));
}

class Components : public ColorMethod {
 protected:
  void* Get() const { return CallMethod<void*>(kColor, "Components as double()", self); }
  std::vector<double> Numbers() const { return host.Object(Get()).numbers; }
};

TEST_F(Components, CreatesTheArrayOfDoublesBeforeTheFrameIsEntered) {
  Get();
  const Lines lines = Log().Lines({EventKind::kService, EventKind::kFrame, EventKind::kMessage});
  ASSERT_GE(lines.size(), 4U);
  EXPECT_EQ(lines[0], "RuntimeArrayCreateSingleDimBoundedArray(2, -1)");
  EXPECT_EQ(lines[1], "enter");
  EXPECT_EQ(lines[2], "[color numberOfComponents]");
  EXPECT_EQ(lines[3], "[color getComponents:out]");
}

TEST_F(Components, InsertsEachComponentAtItsIndex) {
  platform.components = {0.1F, 0.2F, 0.3F, 1.0F};
  EXPECT_THAT(Numbers(), ElementsAre(double{0.1F}, double{0.2F}, double{0.3F}, 1.0));
  EXPECT_THAT(Log().Services(), Contains("insert(array#1, 3, 1)"));
}

TEST_F(Components, TheArrayHasOneReferenceForTheCaller) {
  EXPECT_EQ(host.Object(Get()).references, 1);
}

TEST_F(Components, TakesAtMost32) {
  platform.components.assign(32, 0.25F);
  platform.integers["numberOfComponents"] = 40;
  EXPECT_THAT(Numbers(), SizeIs(32));
}

TEST_F(Components, WhatThePlatformCountsButDoesNotWriteIsZero) {
  platform.components = {0.25F, 0.5F};
  platform.integers["numberOfComponents"] = 32;
  std::vector<double> expected(32, 0.0);
  expected[0] = 0.25;
  expected[1] = 0.5;
  EXPECT_EQ(Numbers(), expected);
}

TEST_F(Components, TakesNoneForACountBelowOne) {
  for (const std::int32_t count : {0, -1, static_cast<std::int32_t>(0x80000000)}) {
    platform.integers["numberOfComponents"] = count;
    EXPECT_THAT(Numbers(), IsEmpty());
  }
}

TEST_F(Components, OfAnEmptyInstanceAreAnEmptyArray) {
  self = host.Construct(kColor).Handle();
  Log().Clear();
  EXPECT_THAT(Numbers(), IsEmpty());
  EXPECT_THAT(Log().Messages(), IsEmpty());
}

TEST_F(Components, SkipsElementsOnAHostThatInsertsNone) {
  host.missing = {"RuntimeArrayDirectGetInsertProc"};
  EXPECT_THAT(Numbers(), IsEmpty());
  EXPECT_EQ(Asked("RuntimeArrayDirectGetInsertProc"), 4);
}

TEST_F(Components, GiveTheArrayBackWhenTheHostThrows) {
  host.before["RuntimeArrayDirectGetInsertProc"] = [] { throw std::bad_alloc(); };
  EXPECT_THROW(Get(), std::bad_alloc);
  EXPECT_EQ(Calls("REALUnlockObject"), 1);
}

TEST_F(Components, GiveTheArrayBackWhenTheHostThrowsOverAnException) {
  platform.RaiseOnce("getComponents:", MakeException());
  host.before["RuntimeRaiseException"] = [] { throw std::bad_alloc(); };
  EXPECT_THROW(Get(), std::bad_alloc);
  EXPECT_EQ(Calls("REALUnlockObject"), 2);  // the host exception and the array
}

TEST_F(Components, GivesTheArrayFromBeforeAnException) {
  for (const char* selector : {"numberOfComponents", "getComponents:"}) {
    platform.RaiseOnce(selector, MakeException());
    void* const array = Get();
    ASSERT_THAT(array, NotNull()) << selector;
    EXPECT_THAT(host.Object(array).numbers, IsEmpty());
  }
  EXPECT_THAT(host.raised, SizeIs(2));
}

// The families that write into byref doubles.
struct Family {
  std::string name;
  std::string declaration;
  std::string message;  // as the log writes it
  std::string selector;
  std::size_t outputs;
  bool retries;
};

std::vector<Family> Families() {
  return {{"getCMYK",
           "getCMYK(byref cyan as double, byref magenta as double, byref yellow as double, byref black as "
           "double)",
           "[color getCyan:out magenta:out yellow:out black:out alpha:null]",
           "getCyan:magenta:yellow:black:alpha:", 4, false},
          {"getWhite", "getWhite(byref white as double)", "[color getWhite:out alpha:null]",
           "getWhite:alpha:", 1, false},
          {"getHSV", "getHSV(byref hue as double, byref saturation as double, byref brightness as double)",
           "[color getHue:out saturation:out brightness:out alpha:null]",
           "getHue:saturation:brightness:alpha:", 3, false},
          {"getRGB", "getRGB(byref red as double, byref green as double, byref blue as double)",
           "[color getRed:out green:out blue:out alpha:null]", "getRed:green:blue:alpha:", 3, false},
          {"getCMYKA",
           "getCMYK(byref cyan as double, byref magenta as double, byref yellow as double, byref black as "
           "double, byref alpha as double)",
           "[color getCyan:out magenta:out yellow:out black:out alpha:out]",
           "getCyan:magenta:yellow:black:alpha:", 5, false},
          {"getWhiteA", "getWhite(byref white as double, byref alpha as double)",
           "[color getWhite:out alpha:out]", "getWhite:alpha:", 2, false},
          {"getHSVA",
           "getHSV(byref hue as double, byref saturation as double, byref brightness as double, byref alpha "
           "as double)",
           "[color getRed:out green:out blue:out alpha:out]", "getRed:green:blue:alpha:", 4, true},
          {"getRGBA",
           "getRGB(byref red as double, byref green as double, byref blue as double, byref alpha as double)",
           "[color getRed:out green:out blue:out alpha:out]", "getRed:green:blue:alpha:", 4, true}};
}

class ComponentFamily : public ColorMethod, public testing::WithParamInterface<Family> {
 protected:
  std::vector<double> Get() { return GetOf(self); }
  std::vector<double> GetOf(void* object) {
    std::ranges::fill(outputs_, 9);
    const std::string& declaration = GetParam().declaration;
    switch (GetParam().outputs) {
      case 1:
        CallMethod<void>(kColor, declaration, object, &outputs_[0]);
        break;
      case 2:
        CallMethod<void>(kColor, declaration, object, &outputs_[0], &outputs_[1]);
        break;
      case 3:
        CallMethod<void>(kColor, declaration, object, &outputs_[0], &outputs_[1], &outputs_[2]);
        break;
      case 4:
        CallMethod<void>(kColor, declaration, object, &outputs_[0], &outputs_[1], &outputs_[2], &outputs_[3]);
        break;
      default:
        CallMethod<void>(kColor, declaration, object, &outputs_[0], &outputs_[1], &outputs_[2], &outputs_[3],
                         &outputs_[4]);
        break;
    }
    return Written();
  }
  // What the outputs hold, also while the call runs.
  std::vector<double> Written() const { return {outputs_, outputs_ + GetParam().outputs}; }
  static std::vector<double> Zeros() {
    std::vector<double> zeros(GetParam().outputs, 0.0);
    return zeros;
  }

 private:
  double outputs_[5] = {};
};

INSTANTIATE_TEST_SUITE_P(Methods, ComponentFamily, testing::ValuesIn(Families()),
                         [](const auto& each) { return each.param.name; });

// Those that try calibrated RGB after a failure.
using RetryingFamily = ComponentFamily;
INSTANTIATE_TEST_SUITE_P(Methods, RetryingFamily, testing::ValuesIn([] {
                           std::vector<Family> retrying = Families();
                           std::erase_if(retrying, [](const Family& each) { return !each.retries; });
                           return retrying;
                         }()),
                         [](const auto& each) { return each.param.name; });

TEST_P(ComponentFamily, SendsOneMessageToTheColorAsItIs) {
  Get();
  EXPECT_THAT(Log().Messages(), ElementsAre(GetParam().message));
}

TEST_P(ComponentFamily, WritesWhatThePlatformWroteWidened) {
  platform.components = {0.1F, 0.2F, 0.3F, 0.4F, 0.5F};
  std::vector<double> expected(platform.components.begin(), platform.components.end());
  expected.resize(GetParam().outputs);
  EXPECT_EQ(Get(), expected);
}

TEST_P(ComponentFamily, OutputsAreZeroWhenThePlatformWritesNothing) {
  platform.On(GetParam().selector, [](Send&) {});
  EXPECT_EQ(Get(), Zeros());
}

TEST_P(ComponentFamily, OutputsAreZeroedBeforeTheFrameIsEntered) {
  std::vector<double> onEntering;
  Log().SetHook([&](const Event& event) {
    if (event.name == "enter" && onEntering.empty()) onEntering = Written();
    return Fault::kNone;
  });
  Get();
  EXPECT_EQ(onEntering, Zeros());
}

TEST_P(ComponentFamily, AnotherColorSpaceIsAHostExceptionOrARetryThroughCalibratedRGB) {
  platform.components = {0.25F, 0.5F, 0.75F, 1};
  platform.RaiseOnce(GetParam().selector, MakeException());
  const std::vector<double> values = Get();
  if (GetParam().retries) {
    EXPECT_THAT(values, ElementsAre(0.25, 0.5, 0.75, 1));
    EXPECT_THAT(host.raised, IsEmpty());
    EXPECT_THAT(
        Log().Messages(),
        ElementsAre(GetParam().message, "[color colorUsingColorSpaceName:@\"NSCalibratedRGBColorSpace\"]",
                    "[NSColor#1 getRed:out green:out blue:out alpha:out]"));
  } else {
    EXPECT_EQ(values, Zeros());
    EXPECT_THAT(host.raised, SizeIs(1));
    EXPECT_EQ(Sends("colorUsingColorSpaceName:"), 0);
  }
}

TEST_P(RetryingFamily, AFailedConversionLeavesZeros) {
  platform.Once(GetParam().selector, [](Send& send) {
    send.Output(0, 0.7F);
    send.Raise(MakeException());
  });
  platform.Answer("colorUsingColorSpaceName:", nullptr);
  EXPECT_EQ(Get(), Zeros());
  EXPECT_THAT(host.raised, IsEmpty());
}

TEST_P(ComponentFamily, WhatThePlatformWroteBeforeItRaisedIsNotHandedOut) {
  platform.On(GetParam().selector, [](Send& send) {
    send.Output(0, 0.7F);
    send.Raise(MakeException());
  });
  EXPECT_EQ(Get(), Zeros());
}

TEST_F(ColorMethod, HSVWithAlphaOfPureRedIsRedGreenBlueAlpha) {
  platform.components = {1, 0, 0, 1};
  double h = 9;
  double s = 9;
  double b = 9;
  double a = 9;
  CallMethod<void>(kColor,
                   "getHSV(byref hue as double, byref saturation as double, byref brightness as double, "
                   "byref alpha as double)",
                   self, &h, &s, &b, &a);
  EXPECT_EQ(h, 1);
  EXPECT_EQ(s, 0);
  EXPECT_EQ(b, 0);
  EXPECT_EQ(a, 1);
  EXPECT_EQ(Sends("getHue:saturation:brightness:alpha:"), 0);
}

// The methods that derive a colour.
struct Derived {
  std::string name;
  std::string message;
  std::function<void*(void* self)> call;
};

std::vector<Derived> DerivedColors() {
  const auto number = [](const char* method, double value) {
    return [method, value](void* self) { return CallMethod<void*>(kColor, method, self, value); };
  };
  return {
      {"blendedColorWithFraction", "[color blendedColorWithFraction:0.100000001 ofColor:other]",
       [](void* self) {
         HostObject& other = TheHost().Wrap(kColor, MakeNative("NSColor", "other"));
         return CallMethod<void*>(kColor, "blendedColorWithFraction", self, 0.1, other);
       }},
      {"blendedWithNil", "[color blendedColorWithFraction:0.5 ofColor:nil]",
       [](void* self) { return CallMethod<void*>(kColor, "blendedColorWithFraction", self, 0.5, nullptr); }},
      {"blendedWithEmpty", "[color blendedColorWithFraction:0.5 ofColor:nil]",
       [](void* self) {
         return CallMethod<void*>(kColor, "blendedColorWithFraction", self, 0.5, TheHost().Construct(kColor));
       }},
      {"colorWithAlphaComponent", "[color colorWithAlphaComponent:0.100000001]",
       number("colorWithAlphaComponent", 0.1)},
      {"colorUsingColorSpaceName", "[color colorUsingColorSpaceName:@\"name\"]",
       [](void* self) {
         return CallMethod<void*>(kColor, "colorUsingColorSpaceName", self, TheHost().NewString("name"));
       }},
      {"colorUsingNilColorSpaceName", "[color colorUsingColorSpaceName:nil]",
       [](void* self) { return CallMethod<void*>(kColor, "colorUsingColorSpaceName", self, nullptr); }},
      {"colorUsingColorSpace", "[color colorUsingColorSpace:space]",
       [](void* self) {
         HostObject& space = TheHost().Wrap(kSpace, MakeNative("NSColorSpace", "space"));
         return CallMethod<void*>(kColor, "colorUsingColorSpace", self, space);
       }},
      {"colorUsingNilColorSpace", "[color colorUsingColorSpace:nil]",
       [](void* self) { return CallMethod<void*>(kColor, "colorUsingColorSpace", self, nullptr); }},
      {"shadowWithLevel", "[color shadowWithLevel:0.100000001]", number("shadowWithLevel", 0.1)},
      {"highlightWithLevel", "[color highlightWithLevel:0.100000001]", number("highlightWithLevel", 0.1)}};
}

class DerivedColor : public ColorMethod, public testing::WithParamInterface<Derived> {};

INSTANTIATE_TEST_SUITE_P(Methods, DerivedColor, testing::ValuesIn(DerivedColors()),
                         [](const auto& each) { return each.param.name; });

TEST_P(DerivedColor, SendsItsMessageWithItsArgumentsAndWrapsTheAnswer) {
  void* const derived = GetParam().call(self);
  EXPECT_THAT(Messages(), Contains(GetParam().message));
  ASSERT_THAT(derived, NotNull());
  EXPECT_EQ(host.Object(derived).className, kColor);
  EXPECT_EQ(host.Object(derived).references, 1);
  EXPECT_EQ(host.Object(derived).Native()->retains, 1);
}

TEST_F(ColorMethod, TheColorSpaceIsWrappedThroughTheCache) {
  void* const first = CallMethod<void*>(kColor, "colorSpace as NSColorSpaceQVX", self);
  EXPECT_EQ(host.Object(first).className, kSpace);
  EXPECT_EQ(CallMethod<void*>(kColor, "colorSpace as NSColorSpaceQVX", self), first);
  EXPECT_EQ(host.Object(first).references, 2);
}

TEST_F(ColorMethod, ADerivedColorThatIsTheColorItselfIsTheSameHostObject) {
  platform.instances->entries[native] = self;
  platform.Answer("colorWithAlphaComponent:", native);
  EXPECT_EQ(CallMethod<void*>(kColor, "colorWithAlphaComponent", self, 1.0), self);
}

class PatternImage : public ColorMethod {
 protected:
  void* Get() const { return CallMethod<void*>(kColor, "patternImage as variant", self); }
};

TEST_F(PatternImage, LooksMakesRetainsAndEnters) {
  void* const image = Get();
  EXPECT_THAT(Log().Lines({EventKind::kService, EventKind::kMessage, EventKind::kCall}),
              ElementsAre("[color patternImage]", "CFDictionaryGetValue(instances, color.patternImage)",
                          "PluginNewInstance(\"NSImageQVX\")", "[color.patternImage retain]",
                          "CFDictionarySetValue(instances, color.patternImage, NSImageQVX#1)"));
  EXPECT_EQ(host.Object(image).Native()->name, "color.patternImage");
}

TEST_F(PatternImage, TwiceIsTheSameObjectLockedOnceMore) {
  void* const first = Get();
  EXPECT_EQ(Get(), first);
  EXPECT_EQ(host.Object(first).locks, 1);
}

TEST_F(ColorMethod, WritingToThePasteboardUsesTheGeneralOne) {
  CallMethod<void>(kColor, "writeToPasteboard", self);
  EXPECT_THAT(Log().Messages(),
              ElementsAre("[NSPasteboard generalPasteboard]", "[color writeToPasteboard:generalPasteboard]"));
}

}  // namespace
}  // namespace unit
