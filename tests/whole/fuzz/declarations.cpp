// tests/whole/fuzz/declarations.cpp - declarations of any bytes, as a plugin may register them.
#include "hostrun/host/declaration.h"

#include "hostrun/host/host.h"
#include "tests/whole/fuzz/target.h"

namespace {

void StartOnce() {
  static const bool started = (hostrun::RegisterHostClasses(), true);
  static_cast<void>(started);
}

}  // namespace

std::vector<std::string> fuzz::Seeds() {
  return {
      "colorWithDeviceRGB(red as double, green as double, blue as double, alpha as double=1.0) as NSColorQVX",
      "colorWithColorSpace(ColorSpace as NSColorSpaceQVX, paramarray components as double) as NSColorQVX",
      "getCMYK(byref cyan as double, byref magenta as double, byref yellow as double, byref black as double)",
      "availableColorSpacesWithModel(Model as integer) as NSColorSpaceQVX()",
      "Components as double()",
      "Constructor",
      "LenB( s as string ) as integer",
      "NSUnknownColorSpaceModel=-1",
      "NSCustomColorSpace = \"NSCustomColorSpace\"",
      "kColour as Color = &cFF00FF",
  };
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  StartOnce();
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  try {
    const hostrun::Signature signature = hostrun::ParseSignature(text);
    // What was read can be written and read again as the same.
    if (!hostrun::SameSignature(hostrun::ParseSignature(signature.Text()), signature)) {
      fuzz::Fail("\"" + signature.Text() + "\" is another signature than what it was read from");
    }
  } catch (const hostrun::DeclarationError&) {
  }
  try {
    hostrun::ParseConstant(text);
  } catch (const hostrun::DeclarationError&) {
  }
  return 0;
}
