// tests/bundle/unit/guarded_functions.h - one call of every guarded function of the three classes, through
// its record.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tests/bundle/unit/declarations.h"
#include "tests/bundle/unit/fixture.h"

namespace unit {

struct GuardedFunction {
  std::string name;
  const char* className;  // of self; null for a shared method
  std::string selector;   // the message that can raise
  // Calls it (self is null for a shared method) and tells whether result and outputs are neutral.
  std::function<bool(void* self)> isNeutral;
  bool preparesFirst = false;  // runs the once-only preparation
  bool oneFrame = true;        // false: an inner frame of its own comes first
  bool fills = false;          // an initialiser: works on an empty instance only
};

inline void PrintTo(const GuardedFunction& each, std::ostream* out) {
  *out << each.name;
}

// Calls a function with byref outputs that held something before.
template <typename... Outputs>
bool OutputsAreZero(const std::string& declaration, void* self, Outputs... outputs) {
  CallMethod<void>(kColor, declaration, self, &outputs...);
  return ((outputs == 0.0) && ...);
}

inline void AddColorMethods(std::vector<GuardedFunction>& all) {
  const auto add = [&](const std::string& name, std::string selector, std::function<bool(void*)> call,
                       bool oneFrame = true) {
    all.push_back({"color_" + name, kColor, std::move(selector), std::move(call), false, oneFrame, false});
  };
  const auto object = [](std::size_t row) {
    return [row](void* self) { return CallMethod<void*>(kColor, kColorMethods[row], self) == nullptr; };
  };
  add(
      "colorValue", "getRed:green:blue:alpha:",
      [](void* self) { return GetProperty<std::uint32_t>(kColor, "colorValue", self) == 0; }, false);
  add("numberOfComponents", "numberOfComponents",
      [](void* self) { return GetProperty<std::int32_t>(kColor, "numberOfComponents", self) == 0; });
  add("CGColorHandle", "CGColor",
      [](void* self) { return CallMethod<std::int32_t>(kColor, kColorMethods[2], self) == 0; });
  add("Components", "numberOfComponents", [](void* self) {
    void* const array = CallMethod<void*>(kColor, kColorMethods[3], self);
    return array != nullptr && TheHost().Object(array).numbers.empty();
  });
  add("getCMYK", "getCyan:magenta:yellow:black:alpha:", [](void* self) {
    return OutputsAreZero(kColorMethods[4], self, 9.0, 9.0, 9.0, 9.0);
  });
  add("getWhite", "getWhite:alpha:", [](void* self) { return OutputsAreZero(kColorMethods[5], self, 9.0); });
  add("getHSV", "getHue:saturation:brightness:alpha:", [](void* self) {
    return OutputsAreZero(kColorMethods[6], self, 9.0, 9.0, 9.0);
  });
  add("getRGB", "getRed:green:blue:alpha:", [](void* self) {
    return OutputsAreZero(kColorMethods[7], self, 9.0, 9.0, 9.0);
  });
  add("getCMYKA", "getCyan:magenta:yellow:black:alpha:", [](void* self) {
    return OutputsAreZero(kColorMethods[8], self, 9.0, 9.0, 9.0, 9.0, 9.0);
  });
  add("getWhiteA",
      "getWhite:alpha:", [](void* self) { return OutputsAreZero(kColorMethods[9], self, 9.0, 9.0); });
  add(
      "getHSVA", "getRed:green:blue:alpha:",
      [](void* self) { return OutputsAreZero(kColorMethods[10], self, 9.0, 9.0, 9.0, 9.0); }, false);
  add(
      "getRGBA", "getRed:green:blue:alpha:",
      [](void* self) { return OutputsAreZero(kColorMethods[11], self, 9.0, 9.0, 9.0, 9.0); }, false);
  add("blendedColorWithFraction", "blendedColorWithFraction:ofColor:", [](void* self) {
    return CallMethod<void*>(kColor, kColorMethods[12], self, 0.5, nullptr) == nullptr;
  });
  add("colorWithAlphaComponent", "colorWithAlphaComponent:", [](void* self) {
    return CallMethod<void*>(kColor, kColorMethods[13], self, 0.5) == nullptr;
  });
  add("colorUsingColorSpaceName", "colorUsingColorSpaceName:", [](void* self) {
    return CallMethod<void*>(kColor, kColorMethods[14], self, nullptr) == nullptr;
  });
  add("colorUsingColorSpace", "colorUsingColorSpace:", [](void* self) {
    return CallMethod<void*>(kColor, kColorMethods[15], self, nullptr) == nullptr;
  });
  add("shadowWithLevel", "shadowWithLevel:", [](void* self) {
    return CallMethod<void*>(kColor, kColorMethods[16], self, 0.5) == nullptr;
  });
  add("highlightWithLevel", "highlightWithLevel:", [](void* self) {
    return CallMethod<void*>(kColor, kColorMethods[17], self, 0.5) == nullptr;
  });
  add("colorSpace", "colorSpace", object(18));
  add("patternImage", "patternImage", object(19));
  add("writeToPasteboard", "writeToPasteboard:", [](void* self) {
    CallMethod<void>(kColor, kColorMethods[20], self);
    return true;
  });
}

inline void AddColorFactories(std::vector<GuardedFunction>& all) {
  const auto add = [&](const std::string& name, std::string selector, std::function<bool()> call) {
    all.push_back({"shared_" + name, nullptr, std::move(selector),
                   [call = std::move(call)](void*) { return call(); }, true});
  };
  const auto two = [](std::size_t row) {
    return [row] { return CallShared<void*>(kColor, kColorFactories[row], 0.5, 1.0) == nullptr; };
  };
  const auto four = [](std::size_t row) {
    return [row] { return CallShared<void*>(kColor, kColorFactories[row], 0.5, 0.5, 0.5, 1.0) == nullptr; };
  };
  add("colorWithColorSpace", "colorWithColorSpace:components:count:", [] {
    HostObject& space = TheHost().Wrap(kSpace, MakeNative("NSColorSpace"));
    return CallShared<void*>(kColor, kColorFactories[0], space, TheHost().NewNumbers({0.5, 1.0})) == nullptr;
  });
  add("colorWithGenericGamma22White", "colorWithGenericGamma22White:alpha:", two(2));
  add("colorWithCGColor", "colorWithCGColor:", [] {
    return CallShared<void*>(kColor, kColorFactories[3], std::int32_t{77}) == nullptr;
  });
  add("colorWithDeviceCMYK", "colorWithDeviceCyan:magenta:yellow:black:alpha:", [] {
    return CallShared<void*>(kColor, kColorFactories[4], 0.5, 0.5, 0.5, 0.5, 1.0) == nullptr;
  });
  add("colorWithDeviceRGB", "colorWithDeviceRed:green:blue:alpha:", four(5));
  add("colorWithDeviceHSV", "colorWithDeviceHue:saturation:brightness:alpha:", four(6));
  add("colorWithDeviceWhite", "colorWithDeviceWhite:alpha:", two(7));
  add("colorWithSRGB", "colorWithSRGBRed:green:blue:alpha:", four(8));
  add("colorWithCalibratedRGB", "colorWithCalibratedRed:green:blue:alpha:", four(9));
  add("colorWithCalibratedHSV", "colorWithCalibratedHue:saturation:brightness:alpha:", four(10));
  add("colorWithCalibratedWhite", "colorWithCalibratedWhite:alpha:", two(11));
  add("colorFromPasteboard",
      "colorFromPasteboard:", [] { return CallShared<void*>(kColor, kColorFactories[12]) == nullptr; });
  add("colorWithPatternImage", "colorWithPatternImage:", [] {
    HostObject& image = TheHost().NewObject("NSImageQVX");
    image.foreign = true;
    image.SetNative(MakeNative("NSImage"));
    return CallShared<void*>(kColor, kColorFactories[13], image) == nullptr;
  });
  for (const std::string& name : kPredefinedColors) {
    add(name, name, [name] { return CallShared<void*>(kColor, name + " as NSColorQVX") == nullptr; });
  }
}

inline void AddListMethods(std::vector<GuardedFunction>& all) {
  const auto add = [&](const std::string& name, std::string selector, std::function<bool(void*)> call) {
    all.push_back({"list_" + name, kList, std::move(selector), std::move(call)});
  };
  const auto text = [] { return TheHost().NewString("text"); };
  add("insertColor", "insertColor:key:atIndex:", [text](void* self) {
    CallMethod<void>(kList, kListMethods[0], self, nullptr, text(), 0);
    return true;
  });
  add("setColor", "setColor:forKey:", [text](void* self) {
    CallMethod<void>(kList, kListMethods[1], self, nullptr, text());
    return true;
  });
  add("colorWithKey", "colorWithKey:", [text](void* self) {
    return CallMethod<void*>(kList, kListMethods[2], self, text()) == nullptr;
  });
  add("removeColorWithKey", "removeColorWithKey:", [text](void* self) {
    CallMethod<void>(kList, kListMethods[3], self, text());
    return true;
  });
  add("writeToFile", "writeToFile:", [text](void* self) {
    return CallMethod<std::uint8_t>(kList, kListMethods[4], self, text()) == 0;
  });
  add("removeFile", "removeFile", [](void* self) {
    CallMethod<void>(kList, kListMethods[5], self);
    return true;
  });
  add("isEditable", "isEditable",
      [](void* self) { return CallMethod<std::uint8_t>(kList, kListMethods[6], self) == 0; });
  add("name", "name", [](void* self) { return CallMethod<void*>(kList, kListMethods[7], self) == nullptr; });
  add("Create1", "initWithName:", [text](void* self) {
    return CallMethod<std::uint8_t>(kList, kListMethods[8], self, text()) == 0;
  });
  add("Load", "colorListNamed:", [text](void* self) {
    return CallMethod<std::uint8_t>(kList, kListMethods[9], self, text()) == 0;
  });
  add("Create2", "initWithName:fromFile:", [text](void* self) {
    return CallMethod<std::uint8_t>(kList, kListMethods[10], self, text(), text()) == 0;
  });
}

inline void AddSpaceFunctions(std::vector<GuardedFunction>& all) {
  const auto add = [&](const std::string& name, std::string selector, std::function<bool(void*)> call,
                       bool fills = false) {
    all.push_back({"space_" + name, kSpace, std::move(selector), std::move(call), fills, true, fills});
  };
  const auto object = [](std::size_t row) {
    return [row](void* self) { return CallMethod<void*>(kSpace, kSpaceMethods[row], self) == nullptr; };
  };
  const auto number = [](std::size_t row) {
    return [row](void* self) { return CallMethod<std::int32_t>(kSpace, kSpaceMethods[row], self) == 0; };
  };
  const auto handle = [](std::size_t row) {
    return [row](void* self) {
      CallMethod<void>(kSpace, kSpaceMethods[row], self, std::int32_t{77});
      return self == nullptr || TheHost().Object(self).Native() == nullptr;
    };
  };
  add(
      "Constructor", "initWithICCProfileData:",
      [](void* self) {
        CallMethod<void>(kSpace, kSpaceMethods[0], self, TheHost().NewBlock({1, 2, 3}));
        return self == nullptr || TheHost().Object(self).Native() == nullptr;
      },
      true);
  add("initWithColorSyncProfile", "initWithColorSyncProfile:", handle(1), true);
  add("initWithCGColorSpace", "initWithCGColorSpace:", handle(2), true);
  add("ICCProfileData", "ICCProfileData", object(3));
  add("localizedName", "localizedName", object(4));
  add("colorSpaceName", "colorSpaceName", object(5));
  add("description", "description", object(6));
  add("colorSpaceModel", "colorSpaceModel", number(7));
  add("numberOfColorComponents", "numberOfColorComponents", number(8));
  add("colorSyncProfileHandle", "colorSyncProfile", number(9));
  add("CGColorSpaceHandle", "CGColorSpace", number(10));

  const auto shared = [&](const std::string& name, std::string selector, std::function<bool()> call) {
    all.push_back({"shared_" + name, nullptr, std::move(selector),
                   [call = std::move(call)](void*) { return call(); }, true});
  };
  const std::vector<std::string> rows = SpaceSharedMethods();
  shared("ColorSpaceWithICCProfileFile", "initWithICCProfileData:", [rows] {
    ThePlatform().files["/profile"] = {1, 2, 3};
    return CallShared<void*>(kSpace, rows[0], TheHost().NewItem("/profile", "", u"")) == nullptr;
  });
  shared("ColorSpaceWithICCProfileData", "initWithICCProfileData:", [rows] {
    return CallShared<void*>(kSpace, rows[1], TheHost().NewBlock({1, 2, 3})) == nullptr;
  });
  shared("ColorSpaceWithColorSyncProfile", "initWithColorSyncProfile:", [rows] {
    return CallShared<void*>(kSpace, rows[2], std::int32_t{77}) == nullptr;
  });
  shared("ColorSpaceWithCGColorSpace", "initWithCGColorSpace:", [rows] {
    return CallShared<void*>(kSpace, rows[3], std::int32_t{77}) == nullptr;
  });
  shared("availableColorSpacesWithModel", "availableColorSpacesWithModel:", [rows] {
    void* const array = CallShared<void*>(kSpace, rows[4], std::int32_t{1});
    return array != nullptr && TheHost().Object(array).objects.empty();
  });
  shared("colorSpaceForColorSpaceName", "colorSpaceForColorSpaceName:", [rows] {
    return CallShared<void*>(kSpace, rows[14], TheHost().NewString("text")) == nullptr;
  });
}

// Every guarded function but the destructors and the getters that swallow.
inline std::vector<GuardedFunction> GuardedFunctions() {
  std::vector<GuardedFunction> all;
  AddColorMethods(all);
  AddColorFactories(all);
  AddListMethods(all);
  AddSpaceFunctions(all);
  return all;
}

// A self for the function: an instance that wraps a native object, or an empty one for an initialiser.
inline void* MakeSelf(const GuardedFunction& function) {
  if (function.className == nullptr) return nullptr;
  if (function.fills) return TheHost().Construct(function.className).Handle();
  const std::string wrapper = function.className;
  return TheHost().Wrap(wrapper, MakeNative(wrapper.substr(0, wrapper.size() - 3))).Handle();
}

}  // namespace unit
