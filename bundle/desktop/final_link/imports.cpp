// bundle/desktop/final_link/imports.cpp - what the bundle takes from libraries.
#include "bundle/desktop/final_link/imports.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <tuple>

#include "bundle/desktop/final_link/refusal.h"

namespace desktop {

namespace {

enum class Library : std::uint8_t {
#define PLATFORM_LIBRARY(library, path) library,
#include "bundle/platform/symbols.inc"
#define PLATFORM_LIBRARY(library, path) library,
#include "bundle/desktop/runtime_symbols.inc"
};

constexpr std::array kLibraryPaths = {
#define PLATFORM_LIBRARY(library, path) path,
#include "bundle/platform/symbols.inc"
#define PLATFORM_LIBRARY(library, path) path,
#include "bundle/desktop/runtime_symbols.inc"
};

enum class Kind : std::uint8_t { Function, NoReturn, Data };

struct Listed {
  std::string_view name;
  Kind kind;
  Library library;
};

constexpr std::array kListed = {
#define PLATFORM_SYMBOL(name, kind, library) Listed{"_" #name, Kind::kind, Library::library},
#include "bundle/platform/symbols.inc"
#define PLATFORM_SYMBOL(name, kind, library) Listed{"_" #name, Kind::kind, Library::library},
#include "bundle/desktop/runtime_symbols.inc"
};

const Listed& Find(const std::string& name) {
  const auto found = std::ranges::find(kListed, std::string_view(name), &Listed::name);
  if (found == kListed.end()) {
    RefuseFor("a symbol of bundle/platform/symbols.inc or bundle/desktop/runtime_symbols.inc, found ",
              Quoted(name), "; list it if every system from 10.6 on has it");
  }
  return *found;
}

// How an object uses a symbol that it does not define.
struct Use {
  bool used = false;
  bool called = false;
};

std::vector<Use> UsesOf(const Object& object) {
  std::vector<Use> uses(object.symbols.size());
  for (const InputSection& section : object.sections) {
    for (const std::size_t symbol : section.symbols) uses[symbol].used = true;
    for (const Relocation& relocation : section.relocations) {
      const bool called = relocation.kind == Relocation::Kind::SymbolDistance;
      if (!called && relocation.kind != Relocation::Kind::SymbolAddress) continue;
      if (object.symbols[relocation.symbol].section) continue;
      uses[relocation.symbol].used = true;
      uses[relocation.symbol].called |= called;
    }
  }
  return uses;
}

}  // namespace

std::size_t Imports::Of(std::size_t symbol) const {
  return static_cast<std::size_t>(std::ranges::find(imports, symbol, &Import::symbol) - imports.begin());
}

std::size_t Imports::CalledCount() const {
  return static_cast<std::size_t>(std::ranges::count(imports, true, &Import::called));
}

Imports CollectImports(const Object& object) {
  Imports collected;
  const std::vector<Use> uses = UsesOf(object);
  for (std::size_t symbol = 0; symbol < uses.size(); ++symbol) {
    if (!uses[symbol].used) continue;
    const std::string& name = object.symbols[symbol].name;
    const Listed& listed = Find(name);
    if (uses[symbol].called && listed.kind == Kind::Data)
      RefuseFor("no call to data, found one to ", Quoted(name));
    collected.imports.push_back(
        {name, symbol, static_cast<std::uint32_t>(listed.library), uses[symbol].called});
  }
  std::ranges::sort(collected.imports, {},
                    [](const Import& import) { return std::tie(import.library, import.name); });
  const auto twice = std::ranges::adjacent_find(collected.imports, {}, &Import::name);
  if (twice != collected.imports.end()) RefuseFor("one symbol of a name, found two of ", Quoted(twice->name));

  // Libraries that are used, counted from 1. The C library always is: a file without it is not loaded.
  for (std::uint32_t library = 0; const char* const path : kLibraryPaths) {
    const bool needed =
        library == static_cast<std::uint32_t>(Library::libSystem) ||
        std::ranges::find(collected.imports, library, &Import::library) != collected.imports.end();
    if (needed) collected.libraries.emplace_back(path);
    ++library;
  }
  for (Import& import : collected.imports) {
    const auto path = std::ranges::find(collected.libraries, kLibraryPaths[import.library]);
    import.library = static_cast<std::uint32_t>(path - collected.libraries.begin()) + 1;
  }
  return collected;
}

}  // namespace desktop
