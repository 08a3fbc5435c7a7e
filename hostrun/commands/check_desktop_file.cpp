// hostrun/commands/check_desktop_file.cpp - checks of a desktop bundle's file.
#include <algorithm>
#include <set>
#include <string_view>

#include "hostrun/commands/check_file.h"
#include "hostrun/host/desktop_symbols.h"
#include "hostrun/macho/format.h"

namespace hostrun {
namespace {

using macho::File;
using macho::Segment;

constexpr const char* kEntryPoint = "_REALPluginMain";

// The systems that load 32-bit bundles, and keep what this format asks them for.
constexpr std::uint32_t kFirstSystem = 0x000A0500;  // 10.5
constexpr std::uint32_t kLastSystem = 0x000A0EFF;   // 10.14

struct SegmentProtection {
  std::string_view segment;
  std::uint32_t protection;
};
constexpr SegmentProtection kProtections[] = {
    {"__TEXT", macho::kRead | macho::kExecute},
    {"__DATA", macho::kRead | macho::kWrite},
    {"__LINKEDIT", macho::kRead},
};

std::string ProtectionText(std::uint32_t protection) {
  return {(protection & macho::kRead) != 0 ? 'r' : '-', (protection & macho::kWrite) != 0 ? 'w' : '-',
          (protection & macho::kExecute) != 0 ? 'x' : '-'};
}

std::string SystemText(std::uint32_t version) {
  return std::to_string(version >> 16) + "." + std::to_string((version >> 8) & 0xFF);
}

std::vector<std::string> Exported(const File& file) {
  std::vector<std::string> names;
  for (const macho::Export& one : file.exports) names.push_back(one.symbol);
  return names;
}

Problem CheckEntry(const File& file) {
  return CheckEntryPoint(Exported(file), kEntryPoint);
}

Problem CheckOnlyEntry(const File& file) {
  return CheckExports(Exported(file), kEntryPoint);
}

Problem CheckUndefined(const File& file) {
  std::vector<std::string> unknown;
  std::set<std::string> met;
  for (const macho::Bind& bind : file.binds) {
    const std::string library =
        bind.library > 0 ? file.libraries[static_cast<std::size_t>(bind.library) - 1] : "no library";
    const std::string text = bind.symbol + " of " + library;
    if (!IsDesktopSymbol(bind.symbol, library) && met.insert(text).second) unknown.push_back(text);
  }
  if (unknown.empty()) return {};
  return "wanted undefined symbols of the language's run-time and the platform only, found " +
         Listed(unknown);
}

Problem CheckNeeded(const File& file) {
  std::vector<std::string> others;
  for (const std::string& name : file.libraries) {
    const bool ofPlatform = (name.starts_with("/usr/lib/lib") && name.ends_with(".dylib")) ||
                            name.starts_with("/System/Library/Frameworks/");
    if (!ofPlatform) others.push_back(name);
  }
  if (others.empty()) return {};
  return "wanted libraries of the platform only, found " + Listed(others);
}

Problem CheckText(const File& file) {
  std::vector<std::uint32_t> addresses = file.rebases;
  for (const macho::Bind& bind : file.binds) addresses.push_back(bind.address);
  const auto writable = [&file](std::uint32_t address) {
    return (file.SegmentAround(address, 1)->protection & macho::kWrite) != 0;
  };
  const auto found = std::find_if_not(addresses.begin(), addresses.end(), writable);
  if (found == addresses.end()) return {};
  return "wanted position-independent code, found an address to fill in at " + macho::Hex(*found) + ", in " +
         file.SegmentAround(*found, 1)->name + "; compile with -fPIC";
}

Problem CheckProtections(const File& file) {
  for (const Segment& segment : file.segments) {
    const auto* const known = std::find_if(std::begin(kProtections), std::end(kProtections),
                                           [&](const auto& one) { return one.segment == segment.name; });
    if (known == std::end(kProtections)) {
      if ((segment.protection & macho::kWrite) == 0 || (segment.protection & macho::kExecute) == 0) continue;
      return "wanted no code that can be written to, found " + segment.name;
    }
    if (segment.protection != known->protection) {
      return "wanted " + segment.name + " as " + ProtectionText(known->protection) + ", found " +
             ProtectionText(segment.protection);
    }
  }
  return {};
}

Problem CheckOldestSystem(const File& file) {
  static const std::string kWanted =
      "wanted an oldest system from 10.5 to 10.14, which load 32-bit bundles, found ";
  if (!file.oldestSystem) return kWanted + "none";
  if (*file.oldestSystem >= kFirstSystem && *file.oldestSystem <= kLastSystem) return {};
  return kWanted + SystemText(*file.oldestSystem);
}

}  // namespace

const std::vector<FileCheck<File>>& DesktopFileChecks() {
  static const std::vector<FileCheck<File>> checks = {
      {KindNamed("file/entry-point"), &CheckEntry},
      {KindNamed("file/exports"), &CheckOnlyEntry},
      {KindNamed("file/undefined-symbols"), &CheckUndefined},
      {KindNamed("file/needed-libraries"), &CheckNeeded},
      {KindNamed("file/text-relocations"), &CheckText},
      {KindNamed("file/protections"), &CheckProtections},
      {KindNamed("file/oldest-system"), &CheckOldestSystem},
  };
  return checks;
}

}  // namespace hostrun
