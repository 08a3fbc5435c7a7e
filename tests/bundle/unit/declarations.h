// tests/bundle/unit/declarations.h - what the three classes declare to the host, to the letter and in order.
//
// Written down independently of the bundle's own tables: this is what host programs were written against.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace unit {

struct PropertyDeclaration {
  std::string_view name;
  std::string_view type;
};

inline const std::vector<PropertyDeclaration> kColorProperties = {
    {"colorValue", "Color"},
    {"blackComponent", "double"},
    {"yellowComponent", "double"},
    {"magentaComponent", "double"},
    {"cyanComponent", "double"},
    {"redComponent", "double"},
    {"greenComponent", "double"},
    {"blueComponent", "double"},
    {"whiteComponent", "double"},
    {"hueComponent", "double"},
    {"saturationComponent", "double"},
    {"brightnessComponent", "double"},
    {"alphaComponent", "double"},
    {"colorSpaceName", "string"},
    {"description", "string"},
    {"catalogNameComponent", "string"},
    {"colorNameComponent", "string"},
    {"localizedCatalogNameComponent", "string"},
    {"localizedColorNameComponent", "string"},
    {"numberOfComponents", "integer"},
};

// A declaration stands on one line, as programs see it.
// clang-format off
inline const std::vector<std::string> kColorMethods = {
    "_exception as NSExceptionQVX",
    "Constructor",
    "CGColorHandle as Integer",
    "Components as double()",
    "getCMYK(byref cyan as double, byref magenta as double, byref yellow as double, byref black as double)",
    "getWhite(byref white as double)",
    "getHSV(byref hue as double, byref saturation as double, byref brightness as double)",
    "getRGB(byref red as double, byref green as double, byref blue as double)",
    "getCMYK(byref cyan as double, byref magenta as double, byref yellow as double, byref black as double, byref alpha as double)",
    "getWhite(byref white as double, byref alpha as double)",
    "getHSV(byref hue as double, byref saturation as double, byref brightness as double, byref alpha as double)",
    "getRGB(byref red as double, byref green as double, byref blue as double, byref alpha as double)",
    "blendedColorWithFraction(alpha as double, c as NSColorQVX) as NSColorQVX",
    "colorWithAlphaComponent(alpha as double) as NSColorQVX",
    "colorUsingColorSpaceName(colorSpace as string) as NSColorQVX",
    "colorUsingColorSpace(colorSpace as NSColorSpaceQVX) as NSColorQVX",
    "shadowWithLevel(level as double) as NSColorQVX",
    "highlightWithLevel(level as double) as NSColorQVX",
    "colorSpace as NSColorSpaceQVX",
    "patternImage as variant",
    "writeToPasteboard",
};

inline const std::vector<std::string> kPredefinedColors = {
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
    "alternateSelectedControlTextColor",
};

inline const std::vector<std::string> kColorFactories = {
    "colorWithColorSpace(ColorSpace as NSColorSpaceQVX, paramarray components as double) as NSColorQVX",
    "colorWithColorSpace(ColorSpace as NSColorSpaceQVX, components() as double) as NSColorQVX",
    "colorWithGenericGamma22White(white as double, alpha as double=1.0) as NSColorQVX",
    "colorWithCGColor(CGColorHandle as Integer) as NSColorQVX",
    "colorWithDeviceCMYK(cyan as double, magenta as double, yellow as double, black as double, alpha as double=1.0) as NSColorQVX",
    "colorWithDeviceRGB(red as double, green as double, blue as double, alpha as double=1.0) as NSColorQVX",
    "colorWithDeviceHSV(hue as double, saturation as double, brightness as double, alpha as double=1.0) as NSColorQVX",
    "colorWithDeviceWhite(white as double, alpha as double=1.0) as NSColorQVX",
    "colorWithSRGB(red as double, green as double, blue as double, alpha as double=1.0) as NSColorQVX",
    "colorWithCalibratedRGB(red as double, green as double, blue as double, alpha as double=1.0) as NSColorQVX",
    "colorWithCalibratedHSV(hue as double, saturation as double, brightness as double, alpha as double=1.0) as NSColorQVX",
    "colorWithCalibratedWhite(white as double, alpha as double=1.0) as NSColorQVX",
    "colorFromPasteboard as NSColorQVX",
    "colorWithPatternImage(image as variant) as NSColorQVX",
};

// The 14 factories and the 46 predefined colours.
inline std::vector<std::string> ColorSharedMethods() {
  std::vector<std::string> all = kColorFactories;
  for (const std::string& name : kPredefinedColors) all.push_back(name + " as NSColorQVX");
  return all;
}

inline const std::vector<std::string> kListMethods = {
    "insertColor(theColor as NSColorQVX, key as string, index as integer)",
    "setColor(theColor as NSColorQVX, key as string)",
    "colorWithKey(key as string) as NSColorQVX",
    "removeColorWithKey(key as string)",
    "writeToFile(path as string) as boolean",
    "removeFile",
    "isEditable as Boolean",
    "name as string",
    "Create(name as string) as boolean",
    "Load(name as string) as boolean",
    "Create(name as string, path as string) as boolean",
};

inline const std::vector<std::string> kSpaceMethods = {
    "Constructor(ICCProfileData as Memoryblock)",
    "initWithColorSyncProfile(ColorSyncProfileHandle as integer)",
    "initWithCGColorSpace(CGColorSpaceHandle as integer)",
    "ICCProfileData as Memoryblock",
    "localizedName as string",
    "colorSpaceName as string",
    "description as string",
    "colorSpaceModel as integer",
    "numberOfColorComponents as integer",
    "colorSyncProfileHandle as integer",
    "CGColorSpaceHandle as integer",
};

inline const std::vector<std::string> kPredefinedSpaces = {
    "genericRGBColorSpace", "genericGrayColorSpace",  "genericCMYKColorSpace",
    "deviceRGBColorSpace",  "deviceGrayColorSpace",   "deviceCMYKColorSpace",
    "sRGBColorSpace",       "adobeRGB1998ColorSpace", "genericGamma22GrayColorSpace",
};

inline std::vector<std::string> SpaceSharedMethods() {
  std::vector<std::string> all = {
      "ColorSpaceWithICCProfileData(File as Folderitem) as NSColorSpaceQVX",
      "ColorSpaceWithICCProfileData(ICCProfileData as Memoryblock) as NSColorSpaceQVX",
      "ColorSpaceWithColorSyncProfile(ColorSyncProfileHandle as integer) as NSColorSpaceQVX",
      "ColorSpaceWithCGColorSpace(CGColorSpaceHandle as integer) as NSColorSpaceQVX",
      "availableColorSpacesWithModel(Model as integer) as NSColorSpaceQVX()",
  };
  for (const std::string& name : kPredefinedSpaces) all.push_back(name + " as NSColorSpaceQVX");
  all.emplace_back("colorSpaceForColorSpaceName(name as string) as NSColorSpaceQVX");
  return all;
}

inline const std::vector<std::string> kSpaceConstants = {
    "NSUnknownColorSpaceModel=-1",
    "NSGrayColorSpaceModel=0",
    "NSRGBColorSpaceModel=1",
    "NSCMYKColorSpaceModel=2",
    "NSLABColorSpaceModel=3",
    "NSDeviceNColorSpaceModel=4",
    "NSIndexedColorSpaceModel=5",
    "NSPatternColorSpaceModel=6",
    "NSCalibratedWhiteColorSpace = \"NSCalibratedWhiteColorSpace\"",
    "NSCalibratedBlackColorSpace = \"NSCalibratedBlackColorSpace\"",
    "NSCalibratedRGBColorSpace = \"NSCalibratedRGBColorSpace\"",
    "NSDeviceWhiteColorSpace = \"NSDeviceWhiteColorSpace\"",
    "NSDeviceBlackColorSpace = \"NSDeviceBlackColorSpace\"",
    "NSDeviceRGBColorSpace = \"NSDeviceRGBColorSpace\"",
    "NSDeviceCMYKColorSpace = \"NSDeviceCMYKColorSpace\"",
    "NSNamedColorSpace = \"NSNamedColorSpace\"",
    "NSPatternColorSpace = \"NSPatternColorSpace\"",
    "NSCustomColorSpace = \"NSCustomColorSpace\"",
};
// clang-format on

// Properties, methods and shared methods of all three classes.
inline std::size_t DeclaredFunctions() {
  return kColorProperties.size() + kColorMethods.size() + ColorSharedMethods().size() + kListMethods.size() +
         kSpaceMethods.size() + SpaceSharedMethods().size();
}

}  // namespace unit
