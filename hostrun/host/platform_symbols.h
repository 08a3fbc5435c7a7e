// hostrun/host/platform_symbols.h - the names of the platform's symbols that a bundle imports.
#pragma once

#include <array>

namespace hostrun {

// In the order of the list; the thunks in shim/ are numbered by it.
inline constexpr auto kPlatformSymbols = std::to_array<const char*>({
#define PLATFORM_SYMBOL(name, kind, library) #name,
#include "bundle/platform/symbols.inc"
});

}  // namespace hostrun
