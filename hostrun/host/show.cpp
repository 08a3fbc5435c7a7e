// hostrun/host/show.cpp - values as people read them.
#include "hostrun/host/show.h"

#include <array>
#include <cstdio>
#include <optional>

#include "hostrun/host/arrays.h"
#include "hostrun/host/call.h"
#include "hostrun/host/exceptions.h"
#include "hostrun/host/functions.h"
#include "hostrun/host/memory_blocks.h"
#include "hostrun/host/registry.h"

namespace hostrun {
namespace {

constexpr std::size_t kMostItems = 20;
constexpr int kDeepestShown = 4;  // arrays in arrays; one may hold itself
constexpr std::int32_t kMostBytes = 16;

std::string TextOf(const Value& value, bool trueColour, int depth);

std::string Block(std::uint32_t rgb, bool trueColour) {
  if (!trueColour) return {};
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), " \033[48;2;%u;%u;%um    \033[0m", rgb >> 16U & 0xFFU,
                rgb >> 8U & 0xFFU, rgb & 0xFFU);
  return text.data();
}

// A property, or a method without parameters, by its name; nothing when there is none or it raises.
std::optional<Value> Ask(Object* object, const char* member) {
  try {
    const Property* const property = object->cls->PropertyNamed(member, false);
    if (property != nullptr) return GetProperty(*property, object);
    for (const Method* const method : object->cls->MethodsNamed(member, false)) {
      if (method->signature.parameters.empty()) return Invoke(*method, object, {});
    }
  } catch (const HostException&) {
    // What can't be told is left out.
  }
  return std::nullopt;
}

std::string AskText(Object* object, const char* member) {
  const std::optional<Value> value = Ask(object, member);
  return value ? Utf8Of(value->string()) : std::string();
}

std::string ArrayText(const ArrayData& array, bool trueColour, int depth) {
  std::string text = "array of " + std::to_string(array.items.size());
  if (depth == kDeepestShown) return text;
  for (std::size_t i = 0; i < array.items.size() && i < kMostItems; ++i) {
    text += (i == 0 ? ": " : ", ") + TextOf(array.items[i], trueColour, depth + 1);
  }
  return array.items.size() > kMostItems ? text + ", ..." : text;
}

std::string BytesText(Object* block) {
  const std::int32_t size = MemoryBlockSize(block);
  const auto* const bytes = static_cast<const unsigned char*>(MemoryBlockBytes(block));
  std::string text = "MemoryBlock of " + std::to_string(size) + " bytes";
  for (std::int32_t i = 0; i < size && i < kMostBytes; ++i) {
    std::array<char, 4> hex{};
    std::snprintf(hex.data(), hex.size(), "%02X", bytes[i]);
    text += (i == 0 ? ": " : " ") + std::string(hex.data());
  }
  return size > kMostBytes ? text + " ..." : text;
}

// A colour: its space, its components, its block.
std::optional<std::string> ColourText(Object* object, bool trueColour) {
  if (object->cls->PropertyNamed("colorSpaceName", false) == nullptr ||
      object->cls->PropertyNamed("colorValue", false) == nullptr) {
    return std::nullopt;
  }
  if (NativePointerOf(object) == nullptr) return object->cls->name + ", empty";
  const std::string space = AskText(object, "colorSpaceName");
  std::string text = object->cls->name + " " + space;
  const std::string name = AskText(object, "localizedColorNameComponent");
  if (!name.empty()) text += " " + name;
  // These have no components to ask for.
  const bool named = space == "NSNamedColorSpace" || space == "NSPatternColorSpace";
  const std::optional<Value> components = named ? std::nullopt : Ask(object, "Components");
  if (components && components->object() != nullptr) {
    for (const Value& component : ArrayDataOf(components->object()).items)
      text += " " + DisplayText(component);
  }
  const std::optional<Value> rgb = Ask(object, "colorValue");
  return rgb ? text + Block(rgb->color(), trueColour) : text;
}

std::string ObjectText(Object* object, bool trueColour, int depth) {
  const Class& cls = *object->cls;
  if (&cls == &ArrayClass()) return ArrayText(ArrayDataOf(object), trueColour, depth);
  if (cls.name == "MemoryBlock") return BytesText(object);
  if (cls.IsA(TheRegistry().ClassNamed("RuntimeException"))) return DescribeException(object);
  std::optional<std::string> colour = ColourText(object, trueColour);
  if (colour) return *colour;
  std::string text = cls.name;
  for (const char* const member : {"localizedName", "name", "Path"}) {
    const std::string name = AskText(object, member);
    if (!name.empty()) return text.append(" \"").append(name).append("\"");
  }
  if (cls.origin != Origin::Host && NativePointerOf(object) == nullptr) text += ", empty";
  return text;
}

std::string TextOf(const Value& value, bool trueColour, int depth) {
  switch (value.kind()) {
    case Kind::Object:
      return ObjectText(value.object(), trueColour, depth);
    case Kind::Color:
      return DisplayText(value) + Block(value.color(), trueColour);
    default:
      return LiteralText(value);
  }
}

}  // namespace

std::string ReadableText(const Value& value, bool trueColour) {
  return TextOf(value, trueColour, 0);
}

}  // namespace hostrun
