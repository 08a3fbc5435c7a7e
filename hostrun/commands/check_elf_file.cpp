// hostrun/commands/check_elf_file.cpp - checks of a bundle's ELF file.
#include <algorithm>
#include <array>
#include <string_view>

#include "hostrun/commands/check_file.h"
#include "hostrun/commands/elf_file.h"
#include "hostrun/host/platform_symbols.h"

namespace hostrun {
namespace {

// The language's run-time: in every process that runs C or C++.
constexpr std::array<std::string_view, 5> kRunTimeLibraries = {"libc.so.6", "libm.so.6", "libstdc++.so.6",
                                                               "libgcc_s.so.1", "ld-linux.so.2"};

// The linker's own, which stays undefined in some files.
constexpr std::string_view kOffsetTable = "_GLOBAL_OFFSET_TABLE_";

template <class List>
bool Contains(const List& list, std::string_view name) {
  return std::find(list.begin(), list.end(), name) != list.end();
}

Problem CheckUndefined(const ElfFile& file) {
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

Problem CheckNeeded(const ElfFile& file) {
  std::vector<std::string> others;
  for (const std::string& name : file.needed) {
    if (!Contains(kRunTimeLibraries, name)) others.push_back(name);
  }
  if (others.empty()) return {};
  return "wanted no library but the language's run-time, found " + Listed(others) +
         "; the host has loaded the platform before";
}

Problem CheckText(const ElfFile& file) {
  if (!file.textRelocations) return {};
  return "wanted position-independent code, found text relocations; compile with -fPIC";
}

Problem CheckRelro(const ElfFile& file) {
  if (file.hasRelro) return {};
  return "wanted tables that are read-only after loading, found no such segment; link with -z relro";
}

Problem CheckStack(const ElfFile& file) {
  if (!file.hasStackHeader)
    return "wanted a stack that can't be executed, found no word about it; link with -z noexecstack";
  if (!file.executableStack) return {};
  return "wanted a stack that can't be executed, found one that can; link with -z noexecstack";
}

}  // namespace

const std::vector<FileCheck<ElfFile>>& ElfFileChecks() {
  static const std::vector<FileCheck<ElfFile>> checks = {
      {KindNamed("file/entry-point"),
       [](const ElfFile& file) { return CheckEntryPoint(file.exported, "REALPluginMain"); }},
      {KindNamed("file/exports"),
       [](const ElfFile& file) { return CheckExports(file.exported, "REALPluginMain"); }},
      {KindNamed("file/undefined-symbols"), &CheckUndefined},
      {KindNamed("file/needed-libraries"), &CheckNeeded},
      {KindNamed("file/text-relocations"), &CheckText},
      {KindNamed("file/relro"), &CheckRelro},
      {KindNamed("file/stack"), &CheckStack},
  };
  return checks;
}

}  // namespace hostrun
