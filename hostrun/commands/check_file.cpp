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

// The language's run-time: in every process that runs C or C++.
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

Problem CheckEntryPoint(const ElfFile& file) {
  if (Contains(file.exported, kEntryPoint)) return {};
  return "wanted an exported function " + std::string(kEntryPoint) + ", found " + Listed(file.exported) +
         "; declare it extern \"C\" with default visibility";
}

Problem CheckExports(const ElfFile& file) {
  std::vector<std::string> others;
  for (const std::string& name : file.exported) {
    if (name != kEntryPoint) others.push_back(name);
  }
  if (others.empty()) return {};
  return "wanted no exported symbol but the entry point, found " + Listed(others) +
         "; compile with -fvisibility=hidden";
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

struct FileCheck {
  const CheckKind& kind;
  Problem (*check)(const ElfFile& file);
};

constexpr FileCheck kFileChecks[] = {
    {KindNamed("file/entry-point"), &CheckEntryPoint},
    {KindNamed("file/exports"), &CheckExports},
    {KindNamed("file/undefined-symbols"), &CheckUndefined},
    {KindNamed("file/needed-libraries"), &CheckNeeded},
    {KindNamed("file/text-relocations"), &CheckText},
    {KindNamed("file/relro"), &CheckRelro},
    {KindNamed("file/stack"), &CheckStack},
};

}  // namespace

std::vector<BundleCheck> FileChecks(const std::string& bundle) {
  std::vector<BundleCheck> checks;
  checks.push_back({KindNamed("file/format"), {}, [bundle] { return CheckBundleFile(bundle); }});
  for (const FileCheck& each : kFileChecks) {
    checks.push_back({each.kind, {}, [bundle, check = each.check] {
                        const Problem problem = CheckBundleFile(bundle);
                        return problem ? problem : check(ReadElfFile(bundle));
                      }});
  }
  return checks;
}

}  // namespace hostrun
