// tests/bundle/scripted/method_types.cpp - the declared methods of the platform's classes, with the types of
// their arguments.
#include "tests/bundle/scripted/platform.h"

namespace scripted {

const std::vector<MethodTypes>& DeclaredMethods() {
  static const auto* const methods = [] {
    auto* const all = new std::vector<MethodTypes>{
        {"NSObject", false, "retain", "@"},
        {"NSObject", false, "release", "v"},
        {"NSObject", false, "autorelease", "@"},
        {"NSObject", true, "respondsToSelector:", "c:"},

        {"NSException", true, "GetInstancesDictionaryQVX", "@"},
        {"NSException", true, "PrepareNSExceptionQVX", "v"},
        {"NSException", true, "NewNSExceptionQVX:", "h@"},
        {"NSException", false, "name", "@"},
        {"NSException", false, "reason", "@"},
        {"NSException", false, "userInfo", "@"},

        {"NSPasteboard", true, "generalPasteboard", "@"},

        {"NSData", true, "dataWithBytes:length:", "@*I"},
        {"NSData", true, "dataWithContentsOfFile:", "@@"},
        {"NSData", false, "bytes", "*"},
        {"NSData", false, "length", "I"},
        {"NSArray", false, "objectEnumerator", "@"},
        {"NSEnumerator", false, "nextObject", "@"},

        {"NSColor", false, "colorSpaceName", "@"},
        {"NSColor", false, "description", "@"},
        {"NSColor", false, "catalogNameComponent", "@"},
        {"NSColor", false, "colorNameComponent", "@"},
        {"NSColor", false, "localizedCatalogNameComponent", "@"},
        {"NSColor", false, "localizedColorNameComponent", "@"},
        {"NSColor", false, "numberOfComponents", "i"},
        {"NSColor", false, "getComponents:", "vp"},
        {"NSColor", false, "CGColor", "h"},
        {"NSColor", false, "getCyan:magenta:yellow:black:alpha:", "vppppp"},
        {"NSColor", false, "getWhite:alpha:", "vpp"},
        {"NSColor", false, "getHue:saturation:brightness:alpha:", "vpppp"},
        {"NSColor", false, "getRed:green:blue:alpha:", "vpppp"},
        {"NSColor", false, "blendedColorWithFraction:ofColor:", "@f@"},
        {"NSColor", false, "colorWithAlphaComponent:", "@f"},
        {"NSColor", false, "colorUsingColorSpaceName:", "@@"},
        {"NSColor", false, "colorUsingColorSpace:", "@@"},
        {"NSColor", false, "shadowWithLevel:", "@f"},
        {"NSColor", false, "highlightWithLevel:", "@f"},
        {"NSColor", false, "colorSpace", "@"},
        {"NSColor", false, "patternImage", "@"},
        {"NSColor", false, "writeToPasteboard:", "v@"},

        {"NSColor", true, "colorWithColorSpace:components:count:", "@@pi"},
        {"NSColor", true, "colorWithGenericGamma22White:alpha:", "@ff"},
        {"NSColor", true, "colorWithCGColor:", "@h"},
        {"NSColor", true, "colorWithDeviceCyan:magenta:yellow:black:alpha:", "@fffff"},
        {"NSColor", true, "colorWithDeviceRed:green:blue:alpha:", "@ffff"},
        {"NSColor", true, "colorWithDeviceHue:saturation:brightness:alpha:", "@ffff"},
        {"NSColor", true, "colorWithDeviceWhite:alpha:", "@ff"},
        {"NSColor", true, "colorWithSRGBRed:green:blue:alpha:", "@ffff"},
        {"NSColor", true, "colorWithCalibratedRed:green:blue:alpha:", "@ffff"},
        {"NSColor", true, "colorWithCalibratedHue:saturation:brightness:alpha:", "@ffff"},
        {"NSColor", true, "colorWithCalibratedWhite:alpha:", "@ff"},
        {"NSColor", true, "colorFromPasteboard:", "@@"},
        {"NSColor", true, "colorWithPatternImage:", "@@"},

        {"NSColorList", true, "alloc", "@"},
        {"NSColorList", true, "colorListNamed:", "@@"},
        {"NSColorList", false, "initWithName:", "@@"},
        {"NSColorList", false, "initWithName:fromFile:", "@@@"},
        {"NSColorList", false, "insertColor:key:atIndex:", "v@@I"},
        {"NSColorList", false, "setColor:forKey:", "v@@"},
        {"NSColorList", false, "colorWithKey:", "@@"},
        {"NSColorList", false, "removeColorWithKey:", "v@"},
        {"NSColorList", false, "writeToFile:", "c@"},
        {"NSColorList", false, "removeFile", "v"},
        {"NSColorList", false, "isEditable", "c"},
        {"NSColorList", false, "name", "@"},

        {"NSColorSpace", true, "alloc", "@"},
        {"NSColorSpace", true, "availableColorSpacesWithModel:", "@i"},
        {"NSColorSpace", true, "colorSpaceForColorSpaceName:", "@@"},
        {"NSColorSpace", false, "initWithICCProfileData:", "@@"},
        {"NSColorSpace", false, "initWithColorSyncProfile:", "@h"},
        {"NSColorSpace", false, "initWithCGColorSpace:", "@h"},
        {"NSColorSpace", false, "ICCProfileData", "@"},
        {"NSColorSpace", false, "localizedName", "@"},
        {"NSColorSpace", false, "colorSpaceName", "@"},
        {"NSColorSpace", false, "description", "@"},
        {"NSColorSpace", false, "colorSpaceModel", "i"},
        {"NSColorSpace", false, "numberOfColorComponents", "i"},
        {"NSColorSpace", false, "colorSyncProfile", "h"},
        {"NSColorSpace", false, "CGColorSpace", "h"},
    };
    for (const std::string_view component :
         {"blackComponent", "yellowComponent", "magentaComponent", "cyanComponent", "redComponent",
          "greenComponent", "blueComponent", "whiteComponent", "hueComponent", "saturationComponent",
          "brightnessComponent", "alphaComponent"}) {
      all->push_back({"NSColor", false, component, "f"});
    }
    for (const std::string_view colour : {"blackColor",
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
                                          "alternateSelectedControlTextColor"}) {
      all->push_back({"NSColor", true, colour, "@"});
    }
    for (const std::string_view space :
         {"genericRGBColorSpace", "genericGrayColorSpace", "genericCMYKColorSpace", "deviceRGBColorSpace",
          "deviceGrayColorSpace", "deviceCMYKColorSpace", "sRGBColorSpace", "adobeRGB1998ColorSpace",
          "genericGamma22GrayColorSpace"}) {
      all->push_back({"NSColorSpace", true, space, "@"});
    }
    return all;
  }();
  return *methods;
}

}  // namespace scripted
