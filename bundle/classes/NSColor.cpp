// bundle/classes/NSColor.cpp - the host class NSColorQVX: properties, methods and shared factories of one
// NSColor.
#include <xmmintrin.h>

#include <algorithm>

#include "bundle/bridge/exceptions.h"
#include "bundle/bridge/guard.h"
#include "bundle/bridge/instances.h"
#include "bundle/bridge/strings.h"
#include "bundle/classes/classes.h"
#include "bundle/classes/tables.h"
#include "bundle/classes/text_getters.h"
#include "bundle/host/services.h"
#include "bundle/platform/messages.h"

namespace qvx {

// Outside of the unnamed namespace, so that its guard keeps the platform's calling convention and the result
// stays in the register that the host expects it in.
inline double ComponentOf(REALobject self, Selector& selector) {
  return Guarded<OnNSException::kDrop>(
      [self, &selector] { return self != nullptr ? double{Send<CGFloat>(ClassData(self), selector)} : 0.0; });
}

namespace {

void Constructor(REALobject /*self*/) {
  CocoaInit();
}

void Destructor(REALobject self) {
  DestroyInstance(self, kClassDataOffset);
}

id NSColorClass() {
  return PlatformClass<"NSColor">();
}

CGFloat ToCGFloat(double value) {
  return static_cast<CGFloat>(value);
}

struct RGBA {
  CGFloat red;
  CGFloat green;
  CGFloat blue;
  CGFloat alpha;
};

// The colour's own RGB components or, if it has none, those it has in calibrated RGB; zeros if it can't be
// converted. An NSException of the conversion is the caller's.
[[gnu::always_inline]] inline RGBA RGBAOf(id color) {
  RGBA rgba = {};
  const bool answered = Guarded<OnNSException::kDrop>([color, &rgba] {
    msg::getRed(color, &rgba.red, &rgba.green, &rgba.blue, &rgba.alpha);
    return true;
  });
  if (!answered) {
    rgba = {};  // whatever the first try wrote must not pass for a colour that can't be converted
    msg::getRed(msg::colorUsingColorSpaceName(color, NSCalibratedRGBColorSpace), &rgba.red, &rgba.green,
                &rgba.blue, &rgba.alpha);
  }
  return rgba;
}

// ---- Properties ----

// A component as a field of a host colour: times 255, truncated toward zero, neither clamped nor masked. A
// value out of the integer's range, or NaN, gives 0x80000000, as the processor's conversion does.
REALcolor ColorField(CGFloat component) {
  return static_cast<REALcolor>(_mm_cvttss_si32(_mm_set_ss(component * 255.0F)));
}

// 0x00RRGGBB. Components outside of 0..1 spill into the neighbouring fields; alpha is left out. Both
// deliberate.
REALcolor colorValue(REALobject self, std::int32_t /*parameter*/) {
  return Guarded([self]() -> REALcolor {
    const id color = NativeOf(self);
    if (color == nullptr) return 0;
    const RGBA rgba = RGBAOf(color);
    return (ColorField(rgba.red) << 16) | (ColorField(rgba.green) << 8) | ColorField(rgba.blue);
  });
}

// One component, the getter of its name; an empty instance is a message to nil. A colour of another kind
// gives 0.0 and raises nothing: its NSException is dropped.
template <FixedString Name>
double Component(REALobject self, std::int32_t /*parameter*/) {
  return ComponentOf(self, kSelector<Name>);
}

// One descriptive string. An NSException is dropped here too, and gives the null string.
template <FixedString Name>
REALstring Text(REALobject self, std::int32_t /*parameter*/) {
  return TextOf<OnNSException::kDrop>(self != nullptr ? &ClassData(self) : nullptr, kSelector<Name>);
}

std::int32_t numberOfComponents(REALobject self, std::int32_t /*parameter*/) {
  return Guarded(
      [self] { return self != nullptr ? std::int32_t{msg::numberOfComponents(ClassData(self))} : 0; });
}

template <FixedString... Names>
constexpr auto ComponentProperties() {
  return Rows(Property(&Component<Names>, Names.text, "double")...);
}

template <FixedString... Names>
constexpr auto TextProperties() {
  return Rows(Property(&Text<Names>, Names.text, "string")...);
}

// ---- Methods ----

// Names the class NSExceptionQVX in this one's interface, so that the host links it into every program that
// uses colours. Not meant to be called.
REALobject DummyException(REALobject /*self*/) {
  return nullptr;
}

// `New NSColorQVX` gives an instance without a colour.
void DummyConstructor(REALobject /*self*/) {}

std::int32_t getCGColor(REALobject self) {
  return Guarded([self] {
    const id color = NativeOf(self);
    return color != nullptr ? std::int32_t{msg::CGColor(color)} : 0;
  });
}

// The array is there before anything can fail, and is what the caller gets, as far as it is filled.
[[gnu::force_align_arg_pointer]] REALarray getComponents(REALobject self) {
  const REALarray array = REALCreateArray(REALArrayType::kDouble, -1);
  return GuardedFill(array, [self](REALarray& result, Holdings& /*none*/) {
    constexpr NSInteger kMostComponents = 32;
    // The platform writes as many components as it counts: room for more than any space has.
    constexpr std::size_t kRoom = 256;
    const id color = NativeOf(self);
    if (color == nullptr) return;
    const NSInteger count = msg::numberOfComponents(color);
    CGFloat components[kRoom];
    std::fill_n(components, kMostComponents, 0.0F);
    msg::getComponents(color, components);
    for (NSInteger i = 0; i < count && i < kMostComponents; ++i) {
      if (result != nullptr) REALInsertArrayValueDouble(result, i, double{components[i]});
    }
  });
}

// Guards every method that reads components by reference: the outputs are 0.0 before anything else, and are
// written once `read` has filled as many values.
template <typename Read, typename... Outputs>
void ReadComponents(REALobject self, Read /*read*/, Outputs*... outputs) {
  ((*outputs = 0.0), ...);
  Guarded([=] {
    const id color = NativeOf(self);
    if (color == nullptr) return;
    CGFloat values[sizeof...(outputs)] = {};
    Read()(color, values);
    const CGFloat* value = values;
    ((*outputs = double{*value++}), ...);
  });
}

void getCyan(REALobject self, double* cyan, double* magenta, double* yellow, double* black) {
  constexpr auto read = [](id color, CGFloat* values) {
    msg::getCyan(color, &values[0], &values[1], &values[2], &values[3], nullptr);
  };
  ReadComponents(self, read, cyan, magenta, yellow, black);
}

void getWhite(REALobject self, double* white) {
  constexpr auto read = [](id color, CGFloat* values) { msg::getWhite(color, &values[0], nullptr); };
  ReadComponents(self, read, white);
}

void getHue(REALobject self, double* hue, double* saturation, double* brightness) {
  constexpr auto read = [](id color, CGFloat* values) {
    msg::getHue(color, &values[0], &values[1], &values[2], nullptr);
  };
  ReadComponents(self, read, hue, saturation, brightness);
}

void getRed(REALobject self, double* red, double* green, double* blue) {
  constexpr auto read = [](id color, CGFloat* values) {
    msg::getRed(color, &values[0], &values[1], &values[2], nullptr);
  };
  ReadComponents(self, read, red, green, blue);
}

void getCyanA(REALobject self, double* cyan, double* magenta, double* yellow, double* black, double* alpha) {
  constexpr auto read = [](id color, CGFloat* values) {
    msg::getCyan(color, &values[0], &values[1], &values[2], &values[3], &values[4]);
  };
  ReadComponents(self, read, cyan, magenta, yellow, black, alpha);
}

void getWhiteA(REALobject self, double* white, double* alpha) {
  constexpr auto read = [](id color, CGFloat* values) { msg::getWhite(color, &values[0], &values[1]); };
  ReadComponents(self, read, white, alpha);
}

void getRedA(REALobject self, double* red, double* green, double* blue, double* alpha) {
  constexpr auto read = [](id color, CGFloat* values) {
    const RGBA rgba = RGBAOf(color);
    values[0] = rgba.red;
    values[1] = rgba.green;
    values[2] = rgba.blue;
    values[3] = rgba.alpha;
  };
  ReadComponents(self, read, red, green, blue, alpha);
}

// Deliberate: this "getHSV" answers red, green, blue and alpha.
void getHueA(REALobject self, double* hue, double* saturation, double* brightness, double* alpha) {
  getRedA(self, hue, saturation, brightness, alpha);
}

// Guards every method that derives a colour from this one: the colour that `derive` answers, as a host
// object.
template <typename Derive>
REALobject DerivedColor(REALobject self, Derive derive) {
  return Guarded([self, derive](Holdings& holdings) {
    const id color = NativeOf(self);
    return color != nullptr ? NewNSColorQVX(derive(color, holdings), holdings) : nullptr;
  });
}

REALobject blendedColorWithFraction(REALobject self, double fraction, REALobject other) {
  return DerivedColor(self, [part = ToCGFloat(fraction), other](id color, Holdings&) {
    return msg::blendedColorWithFraction(color, part, NativeOf(other));
  });
}

REALobject colorWithAlphaComponent(REALobject self, double alpha) {
  return DerivedColor(self, [component = ToCGFloat(alpha)](id color, Holdings&) {
    return msg::colorWithAlphaComponent(color, component);
  });
}

REALobject colorUsingColorSpaceName(REALobject self, REALstring name) {
  return DerivedColor(self, [name](id color, Holdings& holdings) {
    return msg::colorUsingColorSpaceName(color, NewNSString(name, holdings));
  });
}

REALobject colorUsingColorSpace(REALobject self, REALobject space) {
  return DerivedColor(
      self, [space](id color, Holdings&) { return msg::colorUsingColorSpace(color, NativeOf(space)); });
}

REALobject shadowWithLevel(REALobject self, double level) {
  return DerivedColor(
      self, [part = ToCGFloat(level)](id color, Holdings&) { return msg::shadowWithLevel(color, part); });
}

REALobject highlightWithLevel(REALobject self, double level) {
  return DerivedColor(
      self, [part = ToCGFloat(level)](id color, Holdings&) { return msg::highlightWithLevel(color, part); });
}

REALobject colorSpace(REALobject self) {
  return Guarded([self](Holdings& holdings) {
    const id color = NativeOf(self);
    return color != nullptr ? NewNSColorSpaceQVX(msg::colorSpace(color), holdings) : nullptr;
  });
}

REALobject patternImage(REALobject self) {
  return Guarded([self](Holdings& holdings) {
    const id color = NativeOf(self);
    return color != nullptr ? NewNSImageQVX(msg::patternImage(color), holdings) : nullptr;
  });
}

void writeToPasteboard(REALobject self) {
  Guarded([self] {
    const id color = NativeOf(self);
    if (color == nullptr) return;
    msg::writeToPasteboard(color, msg::generalPasteboard(PlatformClass<"NSPasteboard">()));
  });
}

// ---- Shared factories ----

// Guards every factory: the colour that `make` answers, as a host object; nil gives null.
template <typename Make>
REALobject Factory(Make make) {
  return Guarded<OnNSException::kRaise, &CocoaInit>(
      [make](Holdings& holdings) { return NewNSColorQVX(make(holdings), holdings); });
}

// The service that reads the elements of an array exists up to this version; newer hosts have none and are
// not asked. If one gains another, call it in ReadElements.
constexpr double kNewestHostWithElements = 2015.011;

// The elements up to `upperBound` of a host array of doubles, 0.0 where they can't be read.
void ReadElements(REALarray array, std::int32_t upperBound, CGFloat* values) {
  const bool readable = array != nullptr && rbversion <= kNewestHostWithElements;
  for (std::int32_t i = 0; i <= upperBound; ++i) {
    double element = 0.0;
    if (readable) REALGetArrayValueDouble(array, i, &element);
    values[i] = ToCGFloat(element);
  }
}

// The count of components is not compared with the space's own: the platform decides what a mismatch gives.
REALobject colorWithColorSpace(REALobject space, REALarray components) {
  constexpr std::int32_t kMostComponents = 20;
  constexpr std::int32_t kSmallestUpperBound = 1;
  constexpr std::int32_t kLargestUpperBound = kMostComponents - 1;
  return Factory([space, components](Holdings& holdings) -> id {
    const id nativeSpace = NativeOf(space);
    if (nativeSpace == nullptr) {
      RaiseException("NilObjectException", "Colorspace is nil!", holdings);
      return nullptr;
    }
    const std::int32_t upperBound = REALGetArrayUBound(components);
    if (upperBound < kSmallestUpperBound || upperBound > kLargestUpperBound) {
      RaiseOutOfBoundsException(upperBound, kSmallestUpperBound, kLargestUpperBound, "values ubound",
                                "colorWithColorSpace", holdings);
      return nullptr;
    }
    CGFloat values[kMostComponents];
    ReadElements(components, upperBound, values);
    return msg::colorWithColorSpace(NSColorClass(), nativeSpace, values, upperBound + 1);
  });
}

REALobject colorWithCGColor(std::int32_t handle) {
  return Factory(
      [handle](Holdings&) { return msg::colorWithCGColor(NSColorClass(), reinterpret_cast<void*>(handle)); });
}

REALobject colorWithDeviceCyan(double cyan, double magenta, double yellow, double black, double alpha) {
  return Factory(
      [c = ToCGFloat(cyan), m = ToCGFloat(magenta), y = ToCGFloat(yellow), k = ToCGFloat(black),
       a = ToCGFloat(alpha)](Holdings&) { return msg::colorWithDeviceCyan(NSColorClass(), c, m, y, k, a); });
}

// The family of three components and alpha; the message names the space and the kind of components.
[[gnu::noinline]] REALobject FromThreeComponents(Selector& selector, CGFloat first, CGFloat second,
                                                 CGFloat third, CGFloat alpha) {
  return Factory(
      [=, &selector](Holdings&) { return Send<id>(NSColorClass(), selector, first, second, third, alpha); });
}

template <FixedString Name>
REALobject ThreeComponents(double first, double second, double third, double alpha) {
  return FromThreeComponents(kSelector<Name>, ToCGFloat(first), ToCGFloat(second), ToCGFloat(third),
                             ToCGFloat(alpha));
}
constexpr auto& colorWithDeviceRed = ThreeComponents<"colorWithDeviceRed:green:blue:alpha:">;
constexpr auto& colorWithDeviceHue = ThreeComponents<"colorWithDeviceHue:saturation:brightness:alpha:">;
constexpr auto& colorWithSRGBRed = ThreeComponents<"colorWithSRGBRed:green:blue:alpha:">;
constexpr auto& colorWithCalibratedRed = ThreeComponents<"colorWithCalibratedRed:green:blue:alpha:">;
constexpr auto& colorWithCalibratedHue =
    ThreeComponents<"colorWithCalibratedHue:saturation:brightness:alpha:">;

// The family of white and alpha.
[[gnu::noinline]] REALobject FromWhite(Selector& selector, CGFloat white, CGFloat alpha) {
  return Factory([=, &selector](Holdings&) { return Send<id>(NSColorClass(), selector, white, alpha); });
}

template <FixedString Name>
REALobject White(double white, double alpha) {
  return FromWhite(kSelector<Name>, ToCGFloat(white), ToCGFloat(alpha));
}
constexpr auto& colorWithGenericGamma22White = White<"colorWithGenericGamma22White:alpha:">;
constexpr auto& colorWithDeviceWhite = White<"colorWithDeviceWhite:alpha:">;
constexpr auto& colorWithCalibratedWhite = White<"colorWithCalibratedWhite:alpha:">;

REALobject colorFromPasteboard() {
  return Factory([](Holdings&) {
    const id pasteboard = msg::generalPasteboard(PlatformClass<"NSPasteboard">());
    return msg::colorFromPasteboard(NSColorClass(), pasteboard);
  });
}

// Takes any wrapper instance: its native object is taken to be an image, untested.
REALobject colorWithPatternImage(REALobject image) {
  return Factory([image](Holdings&) -> id {
    const id nativeImage = NativeOf(image);
    if (nativeImage == nullptr) return nullptr;
    return msg::colorWithPatternImage(NSColorClass(), nativeImage);
  });
}

// The getters of the predefined colours, one per name (getblackColor and so on).
[[gnu::noinline]] REALobject PredefinedColorOf(Selector& selector) {
  return Factory([&selector](Holdings&) { return Send<id>(NSColorClass(), selector); });
}

template <FixedString Name>
REALobject PredefinedColor() {
  return PredefinedColorOf(kSelector<Name>);
}

template <FixedString... Names>
constexpr auto PredefinedColors() {
  return Rows(Method(&PredefinedColor<Names>, kJoined<Names, " as NSColorQVX">.text)...);
}

// ---- Tables ----

// One row per line.
// clang-format off
constinit auto NSColorProperties = MakeTable<REALproperty>(
    Property(&colorValue, "colorValue", "Color"),
    ComponentProperties<
        "blackComponent",
        "yellowComponent",
        "magentaComponent",
        "cyanComponent",
        "redComponent",
        "greenComponent",
        "blueComponent",
        "whiteComponent",
        "hueComponent",
        "saturationComponent",
        "brightnessComponent",
        "alphaComponent">(),
    TextProperties<
        "colorSpaceName",
        "description",
        "catalogNameComponent",
        "colorNameComponent",
        "localizedCatalogNameComponent",
        "localizedColorNameComponent">(),
    Property(&numberOfComponents, "numberOfComponents", "integer"));
static_assert(NSColorProperties.kCount == 20);

constinit auto NSColorMethods = MakeTable<REALmethodDefinition>(
    Method(&DummyException, "_exception as NSExceptionQVX"),
    Method(&DummyConstructor, "Constructor", kConstructorFlags),
    Method(&getCGColor, "CGColorHandle as Integer"),
    Method(&getComponents, "Components as double()"),
    Method(&getCyan, "getCMYK(byref cyan as double, byref magenta as double, byref yellow as double, byref black as double)"),
    Method(&getWhite, "getWhite(byref white as double)"),
    Method(&getHue, "getHSV(byref hue as double, byref saturation as double, byref brightness as double)"),
    Method(&getRed, "getRGB(byref red as double, byref green as double, byref blue as double)"),
    Method(&getCyanA, "getCMYK(byref cyan as double, byref magenta as double, byref yellow as double, byref black as double, byref alpha as double)"),
    Method(&getWhiteA, "getWhite(byref white as double, byref alpha as double)"),
    Method(&getHueA, "getHSV(byref hue as double, byref saturation as double, byref brightness as double, byref alpha as double)"),
    Method(&getRedA, "getRGB(byref red as double, byref green as double, byref blue as double, byref alpha as double)"),
    Method(&blendedColorWithFraction, "blendedColorWithFraction(alpha as double, c as NSColorQVX) as NSColorQVX"),
    Method(&colorWithAlphaComponent, "colorWithAlphaComponent(alpha as double) as NSColorQVX"),
    Method(&colorUsingColorSpaceName, "colorUsingColorSpaceName(colorSpace as string) as NSColorQVX"),
    Method(&colorUsingColorSpace, "colorUsingColorSpace(colorSpace as NSColorSpaceQVX) as NSColorQVX"),
    Method(&shadowWithLevel, "shadowWithLevel(level as double) as NSColorQVX"),
    Method(&highlightWithLevel, "highlightWithLevel(level as double) as NSColorQVX"),
    Method(&colorSpace, "colorSpace as NSColorSpaceQVX"),
    Method(&patternImage, "patternImage as variant"),
    Method(&writeToPasteboard, "writeToPasteboard"));
static_assert(NSColorMethods.kCount == 21);

constinit auto NSColorSharedMethods = MakeTable<REALmethodDefinition>(
    Method(&colorWithColorSpace, "colorWithColorSpace(ColorSpace as NSColorSpaceQVX, paramarray components as double) as NSColorQVX"),
    Method(&colorWithColorSpace, "colorWithColorSpace(ColorSpace as NSColorSpaceQVX, components() as double) as NSColorQVX"),
    Method(&colorWithGenericGamma22White, "colorWithGenericGamma22White(white as double, alpha as double=1.0) as NSColorQVX"),
    Method(&colorWithCGColor, "colorWithCGColor(CGColorHandle as Integer) as NSColorQVX"),
    Method(&colorWithDeviceCyan, "colorWithDeviceCMYK(cyan as double, magenta as double, yellow as double, black as double, alpha as double=1.0) as NSColorQVX"),
    Method(&colorWithDeviceRed, "colorWithDeviceRGB(red as double, green as double, blue as double, alpha as double=1.0) as NSColorQVX"),
    Method(&colorWithDeviceHue, "colorWithDeviceHSV(hue as double, saturation as double, brightness as double, alpha as double=1.0) as NSColorQVX"),
    Method(&colorWithDeviceWhite, "colorWithDeviceWhite(white as double, alpha as double=1.0) as NSColorQVX"),
    Method(&colorWithSRGBRed, "colorWithSRGB(red as double, green as double, blue as double, alpha as double=1.0) as NSColorQVX"),
    Method(&colorWithCalibratedRed, "colorWithCalibratedRGB(red as double, green as double, blue as double, alpha as double=1.0) as NSColorQVX"),
    Method(&colorWithCalibratedHue, "colorWithCalibratedHSV(hue as double, saturation as double, brightness as double, alpha as double=1.0) as NSColorQVX"),
    Method(&colorWithCalibratedWhite, "colorWithCalibratedWhite(white as double, alpha as double=1.0) as NSColorQVX"),
    Method(&colorFromPasteboard, "colorFromPasteboard as NSColorQVX"),
    Method(&colorWithPatternImage, "colorWithPatternImage(image as variant) as NSColorQVX"),
    PredefinedColors<
        "blackColor",
        "darkGrayColor",
        "lightGrayColor",
        "whiteColor",
        "grayColor",
        "redColor",
        "greenColor",
        "blueColor",
        "cyanColor",
        "yellowColor",
        "magentaColor",
        "orangeColor",
        "purpleColor",
        "brownColor",
        "clearColor",
        "controlShadowColor",
        "controlDarkShadowColor",
        "controlColor",
        "controlHighlightColor",
        "controlLightHighlightColor",
        "controlTextColor",
        "controlBackgroundColor",
        "selectedControlColor",
        "secondarySelectedControlColor",
        "selectedControlTextColor",
        "disabledControlTextColor",
        "textColor",
        "textBackgroundColor",
        "selectedTextColor",
        "selectedTextBackgroundColor",
        "gridColor",
        "keyboardFocusIndicatorColor",
        "windowBackgroundColor",
        "scrollBarColor",
        "knobColor",
        "selectedKnobColor",
        "windowFrameColor",
        "windowFrameTextColor",
        "selectedMenuItemColor",
        "selectedMenuItemTextColor",
        "highlightColor",
        "shadowColor",
        "headerColor",
        "headerTextColor",
        "alternateSelectedControlColor",
        "alternateSelectedControlTextColor">());
static_assert(NSColorSharedMethods.kCount == 60);
// clang-format on

}  // namespace

constinit REALclassDefinition NSColorDefinition = {
    .version = kCurrentLayout,
    .name = "NSColorQVX",
    .dataSize = sizeof(id),
    .constructor = &Constructor,
    .destructor = &Destructor,
    .properties = NSColorProperties.records,
    .propertyCount = NSColorProperties.kCount,
    .methods = NSColorMethods.records,
    .methodCount = NSColorMethods.kCount,
    .flags = kClassFlags,
    .sharedMethods = NSColorSharedMethods.records,
    .sharedMethodCount = NSColorSharedMethods.kCount,
};

}  // namespace qvx
