// hostrun/host/bundle.h - loads a bundle and lets it register.
#pragma once

#include <string>

namespace hostrun {

// The file checks alone: a 32-bit shared object for the Intel 80386. One line on failure, empty on success.
std::string CheckBundleFile(const std::string& file);

// Checks, loads and enters the bundle. One line on failure, empty on success.
std::string LoadBundle(const std::string& file);

}  // namespace hostrun
