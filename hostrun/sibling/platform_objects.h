// hostrun/sibling/platform_objects.h - typed sends to platform objects, through the run-time's C functions.
#pragma once

#include <cstdint>
#include <string>

#include "hostrun/host/strings.h"

namespace hostrun {

// A platform object, class or selector. The run-time keeps what lies behind.
using PlatformId = void*;
using Selector = const void*;

// The run-time's functions that the sibling part uses, looked up once.
struct ObjectRuntime {
  PlatformId (*getClass)(const char* name) = nullptr;  // null: no such class
  Selector (*selector)(const char* name) = nullptr;
  void* (*lookup)(PlatformId receiver, Selector selector) = nullptr;  // the method's function
  bool (*addMethod)(PlatformId cls, Selector selector, void* function, const char* types) = nullptr;
};

// The name of the first function that is missing, or empty.
std::string FindObjectRuntime();
const ObjectRuntime& TheObjectRuntime();

// The first word of every object; of a class, its metaclass.
PlatformId ClassOf(PlatformId object);

// Sends a message: the method's function is called with the receiver, the selector and the arguments. A
// message to nil gives a zero result.
template <class R, class... A>
R Send(PlatformId receiver, const char* selector, A... arguments) {
  if (receiver == nullptr) return R();
  const Selector sel = TheObjectRuntime().selector(selector);
  const auto function =
      reinterpret_cast<R (*)(PlatformId, Selector, A...)>(TheObjectRuntime().lookup(receiver, sel));
  return function(receiver, sel, arguments...);
}

// A new platform string that the caller releases; null for text that is not UTF-8.
PlatformId NewPlatformString(const std::string& utf8);
void ReleasePlatformObject(PlatformId object);
// The host string of a platform string; null for nil.
HostString* HostStringOf(PlatformId string);

}  // namespace hostrun
