// hostrun/commands/check_file.cpp - checks of a bundle's file.
#include <algorithm>
#include <array>
#include <string_view>

#include "hostrun/commands/check_parts.h"
#include "hostrun/commands/elf_file.h"
#include "hostrun/commands/platform_symbols.h"
#include "hostrun/host/bundle.h"

namespace hostrun {
namespace {

constexpr std::string_view kEntryPoint = "REALPluginMain";

// Part of every process that runs C or C++.
constexpr std::array<std::string_view, 5> kRunTimeLibraries = {"libc.so.6", "libm.so.6", "libstdc++.so.6",
                                                               "libgcc_s.so.1", "ld-linux.so.2"};

// The linker's own, which stays undefined in some files.
constexpr std::string_view kOffsetTable = "_GLOBAL_OFFSET_TABLE_";

template <class List>
bool Contains(const List& list, std::string_view name) {
  return std::find(list.begin(), list.end(), name) != list.end();
}

std::string Listed(const std::vector<std::string>& names) {
  constexpr std::size_t kMost = 6;
  if (names.empty()) return "none";
  std::string text;
  for (std::size_t i = 0; i < names.size() && i < kMost; ++i) text += (i == 0 ? "" : ", ") + names[i];
  return names.size() > kMost ? text + " and " + std::to_string(names.size() - kMost) + " more" : text;
}

std::string CheckEntryPoint(const ElfFile& file) {
  if (Contains(file.exported, kEntryPoint)) return {};
  return "wanted an exported function " + std::string(kEntryPoint) + ", found " + Listed(file.exported) +
         "; declare it extern \"C\" with default visibility";
}

std::string CheckExports(const ElfFile& file) {
  std::vector<std::string> others;
  for (const std::string& name : file.exported) {
    if (name != kEntryPoint) others.push_back(name);
  }
  if (others.empty()) return {};
  return "wanted no exported symbol but the entry point, found " + Listed(others) +
         "; compile with -fvisibility=hidden";
}

std::string CheckUndefined(const ElfFile& file) {
  std::vector<std::string> unknown;
  for (const ElfFile::Undefined& symbol : file.undefined) {
    const bool runTime = Contains(kRunTimeLibraries, symbol.library);
    if (!runTime && !symbol.weak && !Contains(kPlatformSymbols, symbol.name) && symbol.name != kOffsetTable)
      unknown.push_back(symbol.name);
  }
  if (unknown.empty()) return {};
  return "wanted undefined symbols of the language's run-time and the platform only, found " +
         Listed(unknown);
}

std::string CheckNeeded(const ElfFile& file) {
  std::vector<std::string> others;
  for (const std::string& name : file.needed) {
    if (!Contains(kRunTimeLibraries, name)) others.push_back(name);
  }
  if (others.empty()) return {};
  return "wanted no library but the language's run-time, found " + Listed(others) +
         "; the host has loaded the platform before";
}

std::string CheckText(const ElfFile& file) {
  return file.textRelocations ? "wanted position-independent code, found text relocations; compile with -fPIC"
                              : "";
}

std::string CheckRelro(const ElfFile& file) {
  return file.hasRelro
             ? ""
             : "wanted tables that are read-only after loading, found no such segment; link with -z relro";
}

std::string CheckStack(const ElfFile& file) {
  if (!file.hasStackHeader)
    return "wanted a stack that can't be executed, found no word about it; link with -z noexecstack";
  return file.executableStack
             ? "wanted a stack that can't be executed, found one that can; link with -z noexecstack"
             : "";
}

}  // namespace

std::vector<BundleCheck> FileChecks(const std::string& bundle) {
  std::vector<BundleCheck> checks;
  checks.push_back({"file/format", [bundle] { return CheckBundleFile(bundle); }});
  const auto add = [&](const char* name, std::string (*check)(const ElfFile&)) {
    checks.push_back({name, [bundle, check] {
                        const std::string problem = CheckBundleFile(bundle);
                        return problem.empty() ? check(ReadElfFile(bundle)) : problem;
                      }});
  };
  add("file/entry-point", &CheckEntryPoint);
  add("file/exports", &CheckExports);
  add("file/undefined-symbols", &CheckUndefined);
  add("file/needed-libraries", &CheckNeeded);
  add("file/text-relocations", &CheckText);
  add("file/relro", &CheckRelro);
  add("file/stack", &CheckStack);
  return checks;
}

}  // namespace hostrun
