// hostrun/host/desktop_symbols.cpp - what a desktop bundle's symbols are in this process.
#include "hostrun/host/desktop_symbols.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <iterator>

#include "hostrun/host/platform_library.h"

namespace hostrun {
namespace {

struct PlatformSymbol {
  std::string_view name;
  std::string_view library;
};

#define PLATFORM_LIBRARY(library, path) constexpr std::string_view library = path;
#include "bundle/platform/symbols.inc"

constexpr PlatformSymbol kPlatform[] = {
#define PLATFORM_SYMBOL(name, kind, library) {#name, library},
#include "bundle/platform/symbols.inc"
};

// Names of the language's run-time, without the underscore in front.
constexpr std::string_view kLanguage[] = {
    "__cxa_allocate_exception",
    "__cxa_begin_catch",
    "__cxa_call_unexpected",
    "__cxa_end_catch",
    "__cxa_free_exception",
    "__cxa_pure_virtual",
    "__cxa_rethrow",
    "__cxa_throw",
    "__gxx_personality_v0",
    "_ZNSt9bad_allocD1Ev",
    "_ZSt9terminatev",
    "_ZTISt9bad_alloc",
    "_ZTVSt9bad_alloc",
    "_ZTVN10__cxxabiv117__class_type_infoE",
    "_ZTVN10__cxxabiv120__si_class_type_infoE",
};
constexpr std::string_view kSystem[] = {
    "_Unwind_Resume",
    "__bzero",
    "__stack_chk_fail",
    "__stack_chk_guard",
    "_setjmp",
    "abort",
    "bzero",
    "calloc",
    "free",
    "malloc",
    "memchr",
    "memcmp",
    "memcpy",
    "memmove",
    "memset",
    "realloc",
    "snprintf",
    "strcmp",
    "strlen",
    "strncmp",
};
constexpr std::string_view kLanguageLibrary = "/usr/lib/libstdc++.6.dylib";
constexpr std::string_view kSystemLibrary = "/usr/lib/libSystem.B.dylib";

// What a file's lazy pointers go through until they are bound. It has no underscore, and nobody calls it:
// here they are bound at once.
constexpr std::string_view kLazyBinder = "dyld_stub_binder";

// The word that stack protectors compare with. A zero byte in it stops what copies text.
constexpr std::uint32_t kStackGuard = 0xFF0A0D00;

template <class List>
bool Contains(const List& list, std::string_view name) {
  return std::find(std::begin(list), std::end(list), name) != std::end(list);
}

}  // namespace

bool IsDesktopSymbol(std::string_view symbol, std::string_view library) {
  if (symbol == kLazyBinder) return library == kSystemLibrary;
  if (!symbol.starts_with('_')) return false;
  const std::string_view name = symbol.substr(1);
  if (Contains(kLanguage, name)) return library == kLanguageLibrary;
  if (Contains(kSystem, name)) return library == kSystemLibrary;
  return std::any_of(std::begin(kPlatform), std::end(kPlatform), [&](const PlatformSymbol& known) {
    return known.name == name && known.library == library;
  });
}

void* FindDesktopSymbol(const std::string& symbol) {
  if (symbol == kLazyBinder) return reinterpret_cast<void*>(&std::abort);
  if (!symbol.starts_with('_')) return nullptr;
  const std::string name = symbol.substr(1);
  if (name == "__stack_chk_guard") return const_cast<std::uint32_t*>(&kStackGuard);
  if (name == "__bzero") return GlobalSymbol("bzero");
  const bool known = Contains(kLanguage, name) || Contains(kSystem, name) ||
                     std::any_of(std::begin(kPlatform), std::end(kPlatform),
                                 [&](const PlatformSymbol& one) { return one.name == name; });
  return known ? GlobalSymbol(name.c_str()) : nullptr;
}

}  // namespace hostrun
