// bundle/platform/messages.h - every message that the bundle sends, once each, with the exact type of its
// method.
//
// Families of one type (component and text getters, colours from components, predefined colours and spaces)
// name theirs where the family stands.
#pragma once

#include "bundle/platform/message.h"

namespace qvx::msg {

// One message per line.
// clang-format off

// Every object.
inline constexpr Message<"alloc", id()> alloc;
inline constexpr Message<"retain", id()> retain;
inline constexpr Message<"release", void()> release;
inline constexpr Message<"autorelease", id()> autorelease;
inline constexpr Message<"respondsToSelector:", BOOL(SEL)> respondsToSelector;

// NSException; the last three are class methods that the sibling parts add.
inline constexpr Message<"name", id()> name;
inline constexpr Message<"reason", id()> reason;
inline constexpr Message<"userInfo", id()> userInfo;
inline constexpr Message<"GetInstancesDictionaryQVX", CFMutableDictionaryRef()> GetInstancesDictionaryQVX;
inline constexpr Message<"PrepareNSExceptionQVX", void()> PrepareNSExceptionQVX;
inline constexpr Message<"NewNSExceptionQVX:", void*(id)> NewNSExceptionQVX;

// NSData, enumeration, pasteboard.
inline constexpr Message<"dataWithBytes:length:", id(const void*, NSUInteger)> dataWithBytes;
inline constexpr Message<"dataWithContentsOfFile:", id(id)> dataWithContentsOfFile;
inline constexpr Message<"bytes", const void*()> bytes;
inline constexpr Message<"length", NSUInteger()> length;
inline constexpr Message<"objectEnumerator", id()> objectEnumerator;
inline constexpr Message<"nextObject", id()> nextObject;
inline constexpr Message<"generalPasteboard", id()> generalPasteboard;

// NSColor: factories.
inline constexpr Message<"colorWithColorSpace:components:count:", id(id, const CGFloat*, NSInteger)> colorWithColorSpace;
inline constexpr Message<"colorWithCGColor:", id(const void*)> colorWithCGColor;
inline constexpr Message<"colorWithDeviceCyan:magenta:yellow:black:alpha:", id(CGFloat, CGFloat, CGFloat, CGFloat, CGFloat)> colorWithDeviceCyan;
inline constexpr Message<"colorFromPasteboard:", id(id)> colorFromPasteboard;
inline constexpr Message<"colorWithPatternImage:", id(id)> colorWithPatternImage;

// NSColor: components, conversions and derived colours.
inline constexpr Message<"getRed:green:blue:alpha:", void(CGFloat*, CGFloat*, CGFloat*, CGFloat*)> getRed;
inline constexpr Message<"getHue:saturation:brightness:alpha:", void(CGFloat*, CGFloat*, CGFloat*, CGFloat*)> getHue;
inline constexpr Message<"getCyan:magenta:yellow:black:alpha:", void(CGFloat*, CGFloat*, CGFloat*, CGFloat*, CGFloat*)> getCyan;
inline constexpr Message<"getWhite:alpha:", void(CGFloat*, CGFloat*)> getWhite;
inline constexpr Message<"numberOfComponents", NSInteger()> numberOfComponents;
inline constexpr Message<"getComponents:", void(CGFloat*)> getComponents;
inline constexpr Message<"CGColor", NSInteger()> CGColor;
inline constexpr Message<"blendedColorWithFraction:ofColor:", id(CGFloat, id)> blendedColorWithFraction;
inline constexpr Message<"colorWithAlphaComponent:", id(CGFloat)> colorWithAlphaComponent;
inline constexpr Message<"colorUsingColorSpaceName:", id(id)> colorUsingColorSpaceName;
inline constexpr Message<"colorUsingColorSpace:", id(id)> colorUsingColorSpace;
inline constexpr Message<"shadowWithLevel:", id(CGFloat)> shadowWithLevel;
inline constexpr Message<"highlightWithLevel:", id(CGFloat)> highlightWithLevel;
inline constexpr Message<"colorSpace", id()> colorSpace;
inline constexpr Message<"patternImage", id()> patternImage;
inline constexpr Message<"writeToPasteboard:", void(id)> writeToPasteboard;

// NSColorList.
inline constexpr Message<"initWithName:", id(id)> initWithName;
inline constexpr Message<"initWithName:fromFile:", id(id, id)> initWithNameFromFile;
inline constexpr Message<"colorListNamed:", id(id)> colorListNamed;
inline constexpr Message<"insertColor:key:atIndex:", void(id, id, NSUInteger)> insertColor;
inline constexpr Message<"setColor:forKey:", void(id, id)> setColor;
inline constexpr Message<"colorWithKey:", id(id)> colorWithKey;
inline constexpr Message<"removeColorWithKey:", void(id)> removeColorWithKey;
inline constexpr Message<"writeToFile:", BOOL(id)> writeToFile;
inline constexpr Message<"removeFile", void()> removeFile;
inline constexpr Message<"isEditable", BOOL()> isEditable;

// NSColorSpace.
inline constexpr Message<"initWithICCProfileData:", id(id)> initWithICCProfileData;
inline constexpr Message<"initWithColorSyncProfile:", id(void*)> initWithColorSyncProfile;
inline constexpr Message<"initWithCGColorSpace:", id(void*)> initWithCGColorSpace;
inline constexpr Message<"availableColorSpacesWithModel:", id(NSInteger)> availableColorSpacesWithModel;
inline constexpr Message<"colorSpaceForColorSpaceName:", id(id)> colorSpaceForColorSpaceName;
inline constexpr Message<"ICCProfileData", id()> ICCProfileData;

// clang-format on

}  // namespace qvx::msg
