// hostrun/host/desktop_symbols.h - what a desktop bundle's symbols are in this process.
#pragma once

#include <string>
#include <string_view>

namespace hostrun {

// Whether a desktop bundle may import the symbol, and from that library: the platform's symbols from where
// the desktop keeps them, and those of the language's run-time whose arguments and results are the same there
// and here. The symbol begins with the underscore that the desktop's C puts in front.
bool IsDesktopSymbol(std::string_view symbol, std::string_view library);

// The address of such a symbol, of whichever library; null where it may not be imported. Throws
// macho::FormatError where the process has none of that name, as before a platform library is loaded.
void* FindDesktopSymbol(const std::string& symbol);

}  // namespace hostrun
