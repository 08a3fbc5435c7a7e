// hostrun/host/bundle.h - loads a bundle and lets it register.
#pragma once

#include <string>

#include "hostrun/host/problem.h"

namespace hostrun {

// The file checks alone: a 32-bit shared object for the Intel 80386.
Problem CheckBundleFile(const std::string& file);

// Checks, loads and enters the bundle.
Problem LoadBundle(const std::string& file);

}  // namespace hostrun
