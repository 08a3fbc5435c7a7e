// hostrun/host/bundle.h - loads a bundle and lets it register.
//
// A bundle is a 32-bit ELF shared object, or a desktop bundle: the folder NAME.bundle, or the Mach-O file in
// it.
#pragma once

#include <cstdint>
#include <string>

#include "hostrun/host/problem.h"
#include "hostrun/macho/file.h"

namespace hostrun {

// The bundle's file itself: of a folder NAME.bundle, Contents/MacOS/NAME; of anything else what was given.
std::string BundleFile(const std::string& given);

// Whether that file is of the desktop's format, for whichever processor.
bool IsDesktopFile(const std::string& file);

// Reads such a file. Throws macho::FormatError.
macho::File ReadDesktopFile(const std::string& file);

// The file checks alone: a bundle for the Intel 80386 with nothing cut off.
Problem CheckBundleFile(const std::string& given);

// A bundle in this process; it stays for good. All zero: none is loaded.
struct LoadedBundle {
  void (*enter)(void* (*resolver)(const char*)) = nullptr;
  std::uintptr_t begin = 0;
  std::uintptr_t end = 0;

  bool Contains(const void* address) const {
    const auto at = reinterpret_cast<std::uintptr_t>(address);
    return at >= begin && at < end;
  }
};

// Checks and loads the bundle, and does not enter it.
Problem MapBundle(const std::string& given);
// The one that was loaded last.
const LoadedBundle& TheBundle();

// Checks, loads and enters the bundle.
Problem LoadBundle(const std::string& given);

}  // namespace hostrun
