// hostrun/sibling/platform_objects.cpp - typed sends to platform objects, through the run-time's C functions.
#include "hostrun/sibling/platform_objects.h"

#include "bundle/host/types.h"
#include "hostrun/host/platform_library.h"
#include "hostrun/host/text.h"

namespace hostrun {
namespace {

ObjectRuntime runtime;

template <class F>
void Find(F& function, const char* name, std::string& missing) {
  function = reinterpret_cast<F>(GlobalSymbol(name));
  if (function == nullptr && missing.empty()) missing = name;
}

}  // namespace

std::string FindObjectRuntime() {
  std::string missing;
  Find(runtime.getClass, "objc_getClass", missing);
  Find(runtime.selector, "sel_registerName", missing);
  Find(runtime.lookup, "objc_msg_lookup", missing);
  Find(runtime.addMethod, "class_addMethod", missing);
  return missing;
}

const ObjectRuntime& TheObjectRuntime() {
  return runtime;
}

PlatformId ClassOf(PlatformId object) {
  return *static_cast<PlatformId*>(object);
}

PlatformId NewPlatformString(const std::string& utf8) {
  const auto text = DecodeStrictly(utf8, qvx::kEncodingUTF8);
  if (!text || ThePlatform().newString == nullptr) return nullptr;
  const std::u16string units = Utf16(*text);
  const void* const made = ThePlatform().newString(
      nullptr, reinterpret_cast<const std::uint16_t*>(units.data()), static_cast<long>(units.size()));
  return const_cast<void*>(made);
}

void ReleasePlatformObject(PlatformId object) {
  if (object != nullptr) Send<void>(object, "release");
}

HostString* HostStringOf(PlatformId string) {
  const char* const utf8 = Send<const char*>(string, "UTF8String");
  return utf8 == nullptr ? nullptr : NewString(utf8);
}

}  // namespace hostrun
