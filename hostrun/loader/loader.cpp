// hostrun/loader/loader.cpp - desktop bundles for any host on Linux.
#include "hostrun/loader/loader.h"

#include <cstdio>
#include <exception>
#include <string>

#include "hostrun/host/bundle.h"
#include "hostrun/host/desktop_symbols.h"
#include "hostrun/macho/image.h"

using hostrun::macho::Image;

[[gnu::visibility("default")]] void* QVXOpenDesktopBundle(const char* file, char* error, unsigned long size) {
  try {
    const std::string path = hostrun::BundleFile(file);
    if (!hostrun::IsDesktopFile(path))
      throw std::runtime_error("wanted a desktop bundle (Mach-O), found none");
    return new Image(hostrun::ReadDesktopFile(path), &hostrun::FindDesktopSymbol);
  } catch (const std::exception& reason) {
    std::snprintf(error, size, "%s: %s", file, reason.what());
    return nullptr;
  }
}

[[gnu::visibility("default")]] void* QVXDesktopSymbol(void* bundle, const char* name) {
  return static_cast<Image*>(bundle)->Exported('_' + std::string(name));
}

[[gnu::visibility("default")]] void QVXCloseDesktopBundle(void* bundle) {
  delete static_cast<Image*>(bundle);
}
