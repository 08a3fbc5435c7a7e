// hostrun/host/desktop_symbols.cpp - what a desktop bundle's symbols are in this process.
#include "hostrun/host/desktop_symbols.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <iterator>

#include "hostrun/host/platform_library.h"
#include "hostrun/macho/bytes.h"

namespace hostrun {
namespace {

struct Symbol {
  std::string_view name;  // without the underscore in front
  std::string_view library;
};

#define PLATFORM_LIBRARY(library, path) constexpr std::string_view library = path;
#include "bundle/platform/symbols.inc"
#define PLATFORM_LIBRARY(library, path) constexpr std::string_view library = path;
#include "bundle/desktop/runtime_symbols.inc"

constexpr Symbol kSymbols[] = {
#define PLATFORM_SYMBOL(name, kind, library) {#name, library},
#include "bundle/platform/symbols.inc"
#define PLATFORM_SYMBOL(name, kind, library) {#name, library},
#include "bundle/desktop/runtime_symbols.inc"
};

// What a file's lazy pointers go through until they are bound. It has no underscore, and nobody calls it:
// here they are bound at once.
constexpr std::string_view kLazyBinder = "dyld_stub_binder";

// The word that stack protectors compare with. A zero byte in it stops what copies text.
constexpr std::uint32_t kStackGuard = 0xFF0A0D00;

// The symbol of that name in a file, which has an underscore more; null if there is none.
const Symbol* SymbolOf(std::string_view symbol) {
  if (!symbol.starts_with('_')) return nullptr;
  const auto* const found = std::find_if(std::begin(kSymbols), std::end(kSymbols),
                                         [&](const Symbol& known) { return known.name == symbol.substr(1); });
  return found == std::end(kSymbols) ? nullptr : found;
}

}  // namespace

bool IsDesktopSymbol(std::string_view symbol, std::string_view library) {
  if (symbol == kLazyBinder) return library == libSystem;
  const Symbol* const known = SymbolOf(symbol);
  return known != nullptr && known->library == library;
}

void* FindDesktopSymbol(const std::string& symbol) {
  if (symbol == kLazyBinder) return reinterpret_cast<void*>(&std::abort);
  if (symbol == "___stack_chk_guard") return const_cast<std::uint32_t*>(&kStackGuard);
  const Symbol* const known = SymbolOf(symbol);
  if (known == nullptr) return nullptr;
  void* const found = GlobalSymbol(known->name.data());  // the names are literals
  if (found == nullptr) {
    throw macho::FormatError("the platform's symbol " + symbol + " in this process",
                             "none; load a platform library before the bundle");
  }
  return found;
}

}  // namespace hostrun
