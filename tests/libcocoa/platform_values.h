// tests/libcocoa/platform_values.h - strings and arrays of the platform, for the tests of pasteboards.
#pragma once

#include <initializer_list>
#include <string>

#include "bundle/platform/message.h"

inline id Platform(const std::string& text) {
  return qvx::Message<"stringWithUTF8String:", id(const char*)>()(qvx::PlatformClass<"NSString">(),
                                                                  text.c_str());
}

// Of strings; it can be changed.
inline id Array(std::initializer_list<const char*> texts) {
  const id array = qvx::Message<"array", id()>()(qvx::PlatformClass<"NSMutableArray">());
  for (const char* text : texts) qvx::Message<"addObject:", void(id)>()(array, Platform(text));
  return array;
}
