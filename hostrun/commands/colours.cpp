// hostrun/commands/colours.cpp - reads colours as a program would: through the bundle's registered members.
#include "hostrun/commands/colours.h"

#include <array>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <stdexcept>

#include "hostrun/host/arrays.h"
#include "hostrun/host/call.h"
#include "hostrun/host/registry.h"
#include "hostrun/host/text.h"
#include "hostrun/sibling/platform_objects.h"

namespace hostrun {
namespace {

constexpr std::uint32_t kOpaqueMask = 0xFFFFFF;
constexpr const char* kNamedSpace = "NSNamedColorSpace";
constexpr const char* kPatternSpace = "NSPatternColorSpace";
constexpr const char* kCustomSpace = "NSCustomColorSpace";
constexpr const char* kFromPasteboard =
    "colorFromPasteboard";  // takes nothing either, but is no predefined colour

Class& Wanted(const char* name) {
  Class* const cls = TheRegistry().FindClass(name);
  if (cls == nullptr) {
    throw std::runtime_error("wanted the class " + std::string(name) +
                             ", found none in this bundle; name another with --bundle");
  }
  return *cls;
}

const Method& WantedMethod(const Class& cls, const char* name, std::size_t parameters) {
  for (const Method* const method : cls.MethodsNamed(name, false)) {
    if (method->signature.parameters.size() == parameters) return *method;
  }
  throw std::runtime_error("wanted " + cls.name + "." + name + " with " + std::to_string(parameters) +
                           " parameters, found none in this bundle; name another with --bundle");
}

Value Read(Object* object, const char* name) {
  const Property* const property = object->cls->PropertyNamed(name, false);
  if (property == nullptr) {
    throw std::runtime_error("wanted the property " + object->cls->name + "." + name +
                             ", found none in this bundle; name another with --bundle");
  }
  return GetProperty(*property, object);
}

std::string ReadText(Object* object, const char* name) {
  return Utf8Of(Read(object, name).string());
}

std::string HexText(std::uint32_t value) {
  std::array<char, 16> text{};
  std::snprintf(text.data(), text.size(), value > kOpaqueMask ? "#%08X" : "#%06X", value);
  return text.data();
}

// "NSCalibratedRGBColorSpace" is "calibrated RGB".
std::string PlainSpaceName(std::string name) {
  constexpr std::string_view kPrefix = "NS";
  constexpr std::string_view kSuffix = "ColorSpace";
  if (name.starts_with(kPrefix)) name.erase(0, kPrefix.size());
  if (name.ends_with(kSuffix)) name.erase(name.size() - kSuffix.size());
  std::string plain;
  for (std::size_t i = 0; i < name.size(); ++i) {
    const bool upper = std::isupper(static_cast<unsigned char>(name[i])) != 0;
    const bool afterUpper = i > 0 && std::isupper(static_cast<unsigned char>(name[i - 1])) != 0;
    const bool startsWord =
        upper && i + 1 < name.size() && std::islower(static_cast<unsigned char>(name[i + 1])) != 0;
    if (upper && i > 0 && !afterUpper) plain += ' ';
    plain += startsWord ? static_cast<char>(std::tolower(static_cast<unsigned char>(name[i]))) : name[i];
  }
  return plain;
}

std::string SpaceOf(Object* colour) {
  const std::string name = ReadText(colour, "colorSpaceName");
  if (name == kNamedSpace) {
    return ReadText(colour, "catalogNameComponent") + " " + ReadText(colour, "colorNameComponent");
  }
  if (name != kCustomSpace) return PlainSpaceName(name);
  const Value space = Invoke(WantedMethod(*colour->cls, "colorSpace", 0), colour, {});
  if (space.IsNil()) return "custom";
  const Method& localizedName = WantedMethod(*space.object()->cls, "localizedName", 0);
  return Utf8Of(Invoke(localizedName, space.object(), {}).string());
}

// Named and pattern colours hold none; asked for them, they raise.
std::string ComponentsOf(Object* colour) {
  const std::string space = ReadText(colour, "colorSpaceName");
  if (space == kNamedSpace || space == kPatternSpace) return {};
  const Value array = Invoke(WantedMethod(*colour->cls, "Components", 0), colour, {});
  std::string text;
  if (array.IsNil()) return text;
  for (const Value& item : ArrayDataOf(array.object()).items) {
    text += (text.empty() ? "" : " ") + ComponentText(item.AsReal());
  }
  return text;
}

}  // namespace

Class& ColourClass() {
  return Wanted("NSColorQVX");
}

std::string ComponentText(double component) {
  constexpr double kDecimals = 1e4;
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%.6g", std::round(component * kDecimals) / kDecimals);
  return text.data();
}

ColourCard CardOf(const std::string& name, Object* colour) {
  ColourCard card;
  card.name = name;
  card.space = SpaceOf(colour);
  card.components = ComponentsOf(colour);
  card.hex = HexText(Read(colour, "colorValue").color());
  std::array<Value, 4> parts{Value::Double(0), Value::Double(0), Value::Double(0), Value::Double(0)};
  std::vector<Value> places;
  places.reserve(parts.size());
  for (Value& part : parts) places.push_back(Value::Reference(&part));
  Invoke(WantedMethod(*colour->cls, "getRGB", parts.size()), colour, places);
  card.red = parts[0].AsReal();
  card.green = parts[1].AsReal();
  card.blue = parts[2].AsReal();
  card.alpha = parts[3].AsReal();
  // A colour without an RGB form leaves the outputs at 0, as clear black does; only that one holds
  // components.
  card.drawable = card.alpha != 0 || !card.components.empty();
  return card;
}

ColourCard CardOf(const std::string& name, std::uint32_t hostColour) {
  constexpr double kLargest = 255;
  const auto field = [hostColour](unsigned shift) { return ((hostColour >> shift) & 0xFFU) / kLargest; };
  ColourCard card;
  card.name = name;
  card.space = "host colour";
  card.hex = HexText(hostColour);
  card.drawable = true;
  card.red = field(16);
  card.green = field(8);
  card.blue = field(0);
  card.alpha = 1;
  card.components =
      ComponentText(card.red) + " " + ComponentText(card.green) + " " + ComponentText(card.blue);
  return card;
}

std::vector<ColourCard> PredefinedColours() {
  const Class& cls = ColourClass();
  std::vector<ColourCard> cards;
  for (const Method& method : cls.sharedMethods) {
    const Signature& signature = method.signature;
    if (!signature.parameters.empty() || signature.result != ObjectType(const_cast<Class*>(&cls))) continue;
    if (signature.name == kFromPasteboard) continue;
    const Value colour = Invoke(method, nullptr, {});
    if (!colour.IsNil()) cards.push_back(CardOf(signature.name, colour.object()));
  }
  return cards;
}

// The class has no member that names its keys, so the keys are asked of the platform's list; each colour then
// comes through the bundle.
std::vector<ColourCard> ColoursOfListFile(const std::string& path) {
  std::error_code error;
  const std::filesystem::path file = std::filesystem::absolute(path, error);
  if (error || !std::filesystem::is_regular_file(file, error)) {
    throw std::runtime_error(
        path +
        ": wanted a colour-list file, found none; a program writes one with NSColorListQVX.writeToFile");
  }
  Class& cls = Wanted("NSColorListQVX");
  const ObjectRef list = ObjectRef::Adopt(NewObject(cls));
  const Value made = Invoke(WantedMethod(cls, "Create", 2), list.get(),
                            {Value::Text(file.stem().native()), Value::Text(file.native())});
  if (!made.boolean()) {
    throw std::runtime_error(
        path + ": wanted a colour-list file, found something that the platform can't read as one");
  }
  // The platform's array does not outlive the next call into the bundle.
  const auto array = Send<PlatformId>(NativePointerOf(list.get()), "allKeys");
  std::vector<StringRef> keys(Send<unsigned>(array, "count"));
  for (unsigned i = 0; i < keys.size(); ++i) {
    keys[i] = StringRef::Adopt(HostStringOf(Send<PlatformId>(array, "objectAtIndex:", i)));
  }
  const Method& colourWithKey = WantedMethod(cls, "colorWithKey", 1);
  std::vector<ColourCard> cards;
  for (const StringRef& key : keys) {
    const Value colour = Invoke(colourWithKey, list.get(), {Value::Share(key.get())});
    if (!colour.IsNil()) cards.push_back(CardOf(Utf8Of(key.get()), colour.object()));
  }
  if (cards.empty()) {
    throw std::runtime_error(path + ": wanted a colour-list file, found no colours in it");
  }
  return cards;
}

}  // namespace hostrun
