// tests/whole/soak/diet.cpp - texts, lists, profiles, spaces, exceptions and owners, as programs make them.
#include "tests/whole/soak/diet.h"

#include <string>

#include "hostrun/host/arrays.h"
#include "hostrun/host/host.h"
#include "hostrun/host/strings.h"
#include "tests/whole/real/real_host.h"

namespace soak {
namespace {

using hostrun::ArgumentWords;
using hostrun::Value;

constexpr const char* kColor = "NSColorQVX";
constexpr const char* kList = "NSColorListQVX";
constexpr const char* kSpace = "NSColorSpaceQVX";

Value New(const char* className) {
  return Value::Adopt(hostrun::NewObject(*hostrun::TheRegistry().FindClass(className)));
}

template <typename... Arguments>
Value Ask(const char* className, const char* declaration, const Arguments&... arguments) {
  ArgumentWords words;
  (words.PushHandle(arguments), ...);
  return real::Call(real::MethodOf(className, declaration), words);
}

Value Colour(int index) {
  ArgumentWords words;
  for (const int part : {index % 256, index / 256 % 256, index / 65536 % 256}) words.PushDouble(part / 255.0);
  words.PushDouble(1);
  return real::Call(real::MethodOf(kColor, "colorWithCalibratedRGB("), words);
}

Value NamedList(const Value& name) {
  Value list = New(kList);
  Ask(kList, "Create(name as string) as boolean", list, name);
  return list;
}

void Insert(const Value& list, const Value& colour, const Value& key, std::uint32_t index) {
  ArgumentWords words;
  for (const Value& each : {list, colour, key}) words.PushHandle(each);
  words.PushWord(index);
  real::Call(real::MethodOf(kList, "insertColor("), words);
}

// One text as a key, and read back as a name.
void KeepUnder(const Value& text) {
  const Value list = NamedList(text);
  Ask(kList, "setColor(", list, Colour(1), text);
  Ask(kList, "colorWithKey(", list, text);
  Ask(kList, "name as", list);
  Ask(kList, "removeColorWithKey(", list, text);
}

void PlainText(int index) {
  KeepUnder(Value::Text("plain " + std::to_string(index)));
}

// The platform may bring these into another form of the same characters.
void ComposedAndDecomposedText(int index) {
  KeepUnder(Value::Text("\u00E9\uAC01 " + std::to_string(index)));
  KeepUnder(Value::Text("e\u0301\u1100\u1161\u11A8 " + std::to_string(index)));
}

void TextInEachEncoding(int index) {
  const Value text = Value::Text("\u00E9\u20AC " + std::to_string(index));
  for (const std::uint32_t encoding :
       {qvx::kEncodingUTF16, qvx::kEncodingUTF32, qvx::kEncodingMacRoman, qvx::kEncodingWindowsLatin1}) {
    KeepUnder(Value::Adopt(hostrun::ConvertString(text.string(), encoding)));
  }
}

void FilledList(int index) {
  const Value list = NamedList(Value::Text("list " + std::to_string(index)));
  for (std::uint32_t i = 0; i < 8; ++i)
    Insert(list, Colour(index + static_cast<int>(i)), Value::Text("key " + std::to_string(i)), i);
  Ask(kList, "colorWithKey(", list, Value::Text("key 3"));
  Ask(kList, "colorWithKey(", list, Value::Text("no key"));
}

Value Profile() {
  return Ask(kSpace, "ICCProfileData as", Ask(kSpace, "sRGBColorSpace"));
}

// A space that only this profile describes, and a colour taken into it.
void SpaceOfAProfile(int index) {
  const Value profile = Profile();
  const Value space = Ask(kSpace, "ColorSpaceWithICCProfileData(ICCProfileData as", profile);
  const Value converted =
      Ask(kColor, "colorUsingColorSpace(colorSpace as NSColorSpaceQVX)", Colour(index), space);
  Ask(kColor, "Components as", converted);
  Ask(kColor, "colorSpace as", converted);
  Ask(kSpace, "ICCProfileData as", space);
}

void NSException(int index) {
  const Value list = NamedList(Value::Text("few"));
  Insert(list, Colour(index), Value::Text("key"), 9);
}

void UnsupportedOperationException(int) {
  const Value profile = Profile();
  const Value space = New(kSpace);
  Ask(kSpace, "Constructor(ICCProfileData", space, profile);
  Ask(kSpace, "Constructor(ICCProfileData", space, profile);
}

Value ColourIn(const Value& space, std::int32_t upperBound) {
  const Value components =
      Value::Adopt(hostrun::NewArray(*hostrun::TypeOf(hostrun::Kind::Double), upperBound));
  return Ask(kColor, "colorWithColorSpace(ColorSpace as NSColorSpaceQVX, components()", space, components);
}

void NilObjectException(int) {
  ColourIn(Value::Nil(), 3);
}

void OutOfBoundsException(int) {
  ColourIn(Ask(kSpace, "sRGBColorSpace"), 0);
}

// Owners of owners, deeper than any that are freed by a call each.
void ChainOfOwners(int index) {
  Value chain = Colour(index);
  for (int i = 0; i < 100; ++i) {
    Value owner = Value::Adopt(hostrun::NewArray(*hostrun::TypeOf(hostrun::Kind::Variant), 0));
    hostrun::ArrayDataOf(owner.object()).items[0] = std::move(chain);
    chain = std::move(owner);
  }
}

constexpr Kind kDiet[] = {
    {"plain texts", &PlainText, false},
    {"composed and decomposed texts", &ComposedAndDecomposedText, false},
    {"texts in each encoding", &TextInEachEncoding, false},
    {"filled lists", &FilledList, false},
    {"spaces of profiles", &SpaceOfAProfile, false},
    {"platform exceptions", &NSException, true},
    {"exceptions for a second filling", &UnsupportedOperationException, true},
    {"exceptions for nil", &NilObjectException, true},
    {"exceptions for too few components", &OutOfBoundsException, true},
    {"chains of owners", &ChainOfOwners, false},
};

}  // namespace

std::span<const Kind> Diet() {
  return kDiet;
}

}  // namespace soak
