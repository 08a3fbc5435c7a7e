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
  const auto object = [](const std::string& declaration) {
    return [declaration](void* self) { return CallMethod<void*>(kColor, declaration, self) == nullptr; };
  };
  add(
      "colorValue", "getRed:green:blue:alpha:",
      [](void* self) { return GetProperty<std::uint32_t>(kColor, "colorValue", self) == 0; }, false);
  add("numberOfComponents", "numberOfComponents",
      [](void* self) { return GetProperty<std::int32_t>(kColor, "numberOfComponents", self) == 0; });
  add("CGColorHandle", "CGColor",
      [](void* self) { return CallMethod<std::int32_t>(kColor, "CGColorHandle", self) == 0; });
  add("Components", "numberOfComponents", [](void* self) {
    void* const array = CallMethod<void*>(kColor, "Components", self);
    return array != nullptr && TheHost().Object(array).numbers.empty();
  });
  add("getCMYK", "getCyan:magenta:yellow:black:alpha:", [](void* self) {
    return OutputsAreZero(
        "getCMYK(byref cyan as double, byref magenta as double, byref yellow as double, byref black as "
        "double)",
        self, 9.0, 9.0, 9.0, 9.0);
  });
  add("getWhite", "getWhite:alpha:", [](void* self) {
    return OutputsAreZero("getWhite(byref white as double)", self, 9.0);
  });
  add("getHSV", "getHue:saturation:brightness:alpha:", [](void* self) {
    return OutputsAreZero(
        "getHSV(byref hue as double, byref saturation as double, byref brightness as double)", self, 9.0, 9.0,
        9.0);
  });
  add("getRGB", "getRed:green:blue:alpha:", [](void* self) {
    return OutputsAreZero("getRGB(byref red as double, byref green as double, byref blue as double)", self,
                          9.0, 9.0, 9.0);
  });
  add("getCMYKA", "getCyan:magenta:yellow:black:alpha:", [](void* self) {
    return OutputsAreZero(
        "getCMYK(byref cyan as double, byref magenta as double, byref yellow as double, byref black as "
        "double, byref alpha as double)",
        self, 9.0, 9.0, 9.0, 9.0, 9.0);
  });
  add("getWhiteA", "getWhite:alpha:", [](void* self) {
    return OutputsAreZero("getWhite(byref white as double, byref alpha as double)", self, 9.0, 9.0);
  });
  add(
      "getHSVA", "getRed:green:blue:alpha:",
      [](void* self) {
        return OutputsAreZero(
            "getHSV(byref hue as double, byref saturation as double, byref brightness as double, byref alpha "
            "as double)",
            self, 9.0, 9.0, 9.0, 9.0);
      },
      false);
  add(
      "getRGBA", "getRed:green:blue:alpha:",
      [](void* self) {
        return OutputsAreZero(
            "getRGB(byref red as double, byref green as double, byref blue as double, byref alpha as double)",
            self, 9.0, 9.0, 9.0, 9.0);
      },
      false);
  add("blendedColorWithFraction", "blendedColorWithFraction:ofColor:", [](void* self) {
    return CallMethod<void*>(kColor, "blendedColorWithFraction", self, 0.5, nullptr) == nullptr;
  });
  add("colorWithAlphaComponent", "colorWithAlphaComponent:", [](void* self) {
    return CallMethod<void*>(kColor, "colorWithAlphaComponent", self, 0.5) == nullptr;
  });
  add("colorUsingColorSpaceName", "colorUsingColorSpaceName:", [](void* self) {
    return CallMethod<void*>(kColor, "colorUsingColorSpaceName", self, nullptr) == nullptr;
  });
  add("colorUsingColorSpace", "colorUsingColorSpace:", [](void* self) {
    return CallMethod<void*>(kColor, "colorUsingColorSpace", self, nullptr) == nullptr;
  });
  add("shadowWithLevel", "shadowWithLevel:", [](void* self) {
    return CallMethod<void*>(kColor, "shadowWithLevel", self, 0.5) == nullptr;
  });
  add("highlightWithLevel", "highlightWithLevel:", [](void* self) {
    return CallMethod<void*>(kColor, "highlightWithLevel", self, 0.5) == nullptr;
  });
  add("colorSpace", "colorSpace", object("colorSpace"));
  add("patternImage", "patternImage", object("patternImage"));
  add("writeToPasteboard", "writeToPasteboard:", [](void* self) {
    CallMethod<void>(kColor, "writeToPasteboard", self);
    return true;
  });
}

inline void AddColorFactories(std::vector<GuardedFunction>& all) {
  const auto add = [&](const std::string& name, std::string selector, std::function<bool()> call) {
    all.push_back({"shared_" + name, nullptr, std::move(selector),
                   [call = std::move(call)](void*) { return call(); }, true});
  };
  const auto two = [](const std::string& declaration) {
    return [declaration] { return CallShared<void*>(kColor, declaration, 0.5, 1.0) == nullptr; };
  };
  const auto four = [](const std::string& declaration) {
    return [declaration] { return CallShared<void*>(kColor, declaration, 0.5, 0.5, 0.5, 1.0) == nullptr; };
  };
  add("colorWithColorSpace", "colorWithColorSpace:components:count:", [] {
    HostObject& space = TheHost().Wrap(kSpace, MakeNative("NSColorSpace"));
    return CallShared<void*>(kColor,
                             "colorWithColorSpace(ColorSpace as NSColorSpaceQVX, paramarray components as "
                             "double) as NSColorQVX",
                             space, TheHost().NewNumbers({0.5, 1.0})) == nullptr;
  });
  add("colorWithGenericGamma22White",
      "colorWithGenericGamma22White:alpha:", two("colorWithGenericGamma22White"));
  add("colorWithCGColor", "colorWithCGColor:", [] {
    return CallShared<void*>(kColor, "colorWithCGColor", std::int32_t{77}) == nullptr;
  });
  add("colorWithDeviceCMYK", "colorWithDeviceCyan:magenta:yellow:black:alpha:", [] {
    return CallShared<void*>(kColor, "colorWithDeviceCMYK", 0.5, 0.5, 0.5, 0.5, 1.0) == nullptr;
  });
  add("colorWithDeviceRGB", "colorWithDeviceRed:green:blue:alpha:", four("colorWithDeviceRGB"));
  add("colorWithDeviceHSV", "colorWithDeviceHue:saturation:brightness:alpha:", four("colorWithDeviceHSV"));
  add("colorWithDeviceWhite", "colorWithDeviceWhite:alpha:", two("colorWithDeviceWhite"));
  add("colorWithSRGB", "colorWithSRGBRed:green:blue:alpha:", four("colorWithSRGB"));
  add("colorWithCalibratedRGB", "colorWithCalibratedRed:green:blue:alpha:", four("colorWithCalibratedRGB"));
  add("colorWithCalibratedHSV",
      "colorWithCalibratedHue:saturation:brightness:alpha:", four("colorWithCalibratedHSV"));
  add("colorWithCalibratedWhite", "colorWithCalibratedWhite:alpha:", two("colorWithCalibratedWhite"));
  add("colorFromPasteboard",
      "colorFromPasteboard:", [] { return CallShared<void*>(kColor, "colorFromPasteboard") == nullptr; });
  add("colorWithPatternImage", "colorWithPatternImage:", [] {
    HostObject& image = TheHost().NewObject("NSImageQVX");
    image.foreign = true;
    image.SetNative(MakeNative("NSImage"));
    return CallShared<void*>(kColor, "colorWithPatternImage", image) == nullptr;
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
    CallMethod<void>(kList, "insertColor", self, nullptr, text(), 0);
    return true;
  });
  add("setColor", "setColor:forKey:", [text](void* self) {
    CallMethod<void>(kList, "setColor", self, nullptr, text());
    return true;
  });
  add("colorWithKey", "colorWithKey:", [text](void* self) {
    return CallMethod<void*>(kList, "colorWithKey", self, text()) == nullptr;
  });
  add("removeColorWithKey", "removeColorWithKey:", [text](void* self) {
    CallMethod<void>(kList, "removeColorWithKey", self, text());
    return true;
  });
  add("writeToFile", "writeToFile:", [text](void* self) {
    return CallMethod<std::uint8_t>(kList, "writeToFile", self, text()) == 0;
  });
  add("removeFile", "removeFile", [](void* self) {
    CallMethod<void>(kList, "removeFile", self);
    return true;
  });
  add("isEditable", "isEditable",
      [](void* self) { return CallMethod<std::uint8_t>(kList, "isEditable", self) == 0; });
  add("name", "name", [](void* self) { return CallMethod<void*>(kList, "name", self) == nullptr; });
  add("Create1", "initWithName:", [text](void* self) {
    return CallMethod<std::uint8_t>(kList, "Create(name as string) as boolean", self, text()) == 0;
  });
  add("Load", "colorListNamed:", [text](void* self) {
    return CallMethod<std::uint8_t>(kList, "Load", self, text()) == 0;
  });
  add("Create2", "initWithName:fromFile:", [text](void* self) {
    return CallMethod<std::uint8_t>(kList, "Create(name as string, path as string) as boolean", self, text(),
                                    text()) == 0;
  });
}

inline void AddSpaceFunctions(std::vector<GuardedFunction>& all) {
  const auto add = [&](const std::string& name, std::string selector, std::function<bool(void*)> call,
                       bool fills = false) {
    all.push_back({"space_" + name, kSpace, std::move(selector), std::move(call), fills, true, fills});
  };
  const auto object = [](const std::string& declaration) {
    return [declaration](void* self) { return CallMethod<void*>(kSpace, declaration, self) == nullptr; };
  };
  const auto number = [](const std::string& declaration) {
    return [declaration](void* self) { return CallMethod<std::int32_t>(kSpace, declaration, self) == 0; };
  };
  const auto handle = [](const std::string& declaration) {
    return [declaration](void* self) {
      CallMethod<void>(kSpace, declaration, self, std::int32_t{77});
      return self == nullptr || TheHost().Object(self).Native() == nullptr;
    };
  };
  add(
      "Constructor", "initWithICCProfileData:",
      [](void* self) {
        CallMethod<void>(kSpace, "Constructor", self, TheHost().NewBlock({1, 2, 3}));
        return self == nullptr || TheHost().Object(self).Native() == nullptr;
      },
      true);
  add("initWithColorSyncProfile", "initWithColorSyncProfile:", handle("initWithColorSyncProfile"), true);
  add("initWithCGColorSpace", "initWithCGColorSpace:", handle("initWithCGColorSpace"), true);
  add("ICCProfileData", "ICCProfileData", object("ICCProfileData"));
  add("localizedName", "localizedName", object("localizedName"));
  add("colorSpaceName", "colorSpaceName", object("colorSpaceName"));
  add("description", "description", object("description"));
  add("colorSpaceModel", "colorSpaceModel", number("colorSpaceModel"));
  add("numberOfColorComponents", "numberOfColorComponents", number("numberOfColorComponents"));
  add("colorSyncProfileHandle", "colorSyncProfile", number("colorSyncProfileHandle"));
  add("CGColorSpaceHandle", "CGColorSpace", number("CGColorSpaceHandle"));

  const auto shared = [&](const std::string& name, std::string selector, std::function<bool()> call) {
    all.push_back({"shared_" + name, nullptr, std::move(selector),
                   [call = std::move(call)](void*) { return call(); }, true});
  };
  shared("ColorSpaceWithICCProfileFile", "initWithICCProfileData:", [] {
    ThePlatform().files["/profile"] = {1, 2, 3};
    return CallShared<void*>(kSpace, "ColorSpaceWithICCProfileData(File as Folderitem) as NSColorSpaceQVX",
                             TheHost().NewItem("/profile", "", u"")) == nullptr;
  });
  shared("ColorSpaceWithICCProfileData", "initWithICCProfileData:", [] {
    return CallShared<void*>(kSpace,
                             "ColorSpaceWithICCProfileData(ICCProfileData as Memoryblock) as NSColorSpaceQVX",
                             TheHost().NewBlock({1, 2, 3})) == nullptr;
  });
  shared("ColorSpaceWithColorSyncProfile", "initWithColorSyncProfile:", [] {
    return CallShared<void*>(kSpace, "ColorSpaceWithColorSyncProfile", std::int32_t{77}) == nullptr;
  });
  shared("ColorSpaceWithCGColorSpace", "initWithCGColorSpace:", [] {
    return CallShared<void*>(kSpace, "ColorSpaceWithCGColorSpace", std::int32_t{77}) == nullptr;
  });
  shared("availableColorSpacesWithModel", "availableColorSpacesWithModel:", [] {
    void* const array = CallShared<void*>(kSpace, "availableColorSpacesWithModel", std::int32_t{1});
    return array != nullptr && TheHost().Object(array).objects.empty();
  });
  shared("colorSpaceForColorSpaceName", "colorSpaceForColorSpaceName:", [] {
    return CallShared<void*>(kSpace, "colorSpaceForColorSpaceName", TheHost().NewString("text")) == nullptr;
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
