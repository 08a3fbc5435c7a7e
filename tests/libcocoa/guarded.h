// tests/libcocoa/guarded.h - a setjmp frame around a body, as a bundle's guard makes it.
#pragma once

#include <string>

#include "bundle/platform/message.h"

// Runs the body inside a frame. Answers the exception that was delivered, nil if the body ended by itself.
template <typename Body>
[[gnu::noinline]] id Guarded(const Body& body) {
  ObjCExceptionFrame frame;
  objc_exception_try_enter(&frame);
  if (_setjmp(frame.buffer) == 0) {
    body();
    objc_exception_try_exit(&frame);
    return nullptr;
  }
  return objc_exception_extract(&frame);
}

// A platform string as UTF-8.
inline std::string Text(id string) {
  char buffer[512] = "";
  CFStringGetCString(reinterpret_cast<CFStringRef>(string), buffer, sizeof buffer, 0x08000100);
  return buffer;
}

inline std::string NameOf(id exception) {
  static constexpr qvx::Message<"name", id()> kName;
  return exception == nullptr ? "(none)" : Text(kName(exception));
}

inline std::string ReasonOf(id exception) {
  static constexpr qvx::Message<"reason", id()> kReason;
  return exception == nullptr ? "(none)" : Text(kReason(exception));
}
