// hostrun/commands/check_file.cpp - checks of a bundle's file.
#include "hostrun/commands/check_file.h"

#include <algorithm>

#include "hostrun/host/bundle.h"

namespace hostrun {
namespace {

// Each check reads the file anew, in its own process: a file that can't be read fails all of them.
template <class File>
void AddChecks(std::vector<BundleCheck>& checks, const std::string& bundle,
               const std::vector<FileCheck<File>>& kinds, File (*read)(const std::string& file)) {
  for (const FileCheck<File>& each : kinds) {
    checks.push_back({each.kind, {}, [bundle, read, check = each.check] {
                        const Problem problem = CheckBundleFile(bundle);
                        return problem ? problem : check(read(BundleFile(bundle)));
                      }});
  }
}

}  // namespace

std::string Listed(const std::vector<std::string>& names) {
  constexpr std::size_t kMost = 6;
  if (names.empty()) return "none";
  std::string text;
  for (std::size_t i = 0; i < names.size() && i < kMost; ++i) text += (i == 0 ? "" : ", ") + names[i];
  return names.size() > kMost ? text + " and " + std::to_string(names.size() - kMost) + " more" : text;
}

Problem CheckEntryPoint(const std::vector<std::string>& exported, const std::string& entryPoint) {
  if (std::find(exported.begin(), exported.end(), entryPoint) != exported.end()) return {};
  return "wanted an exported function " + entryPoint + ", found " + Listed(exported) +
         "; declare it extern \"C\" with default visibility";
}

Problem CheckExports(const std::vector<std::string>& exported, const std::string& entryPoint) {
  std::vector<std::string> others;
  for (const std::string& name : exported) {
    if (name != entryPoint) others.push_back(name);
  }
  if (others.empty()) return {};
  return "wanted no exported symbol but the entry point, found " + Listed(others) +
         "; compile with -fvisibility=hidden";
}

std::vector<BundleCheck> FileChecks(const std::string& bundle) {
  std::vector<BundleCheck> checks;
  checks.push_back({KindNamed("file/format"), {}, [bundle] { return CheckBundleFile(bundle); }});
  if (IsDesktopFile(BundleFile(bundle))) {
    AddChecks(checks, bundle, DesktopFileChecks(), &ReadDesktopFile);
  } else {
    AddChecks(checks, bundle, ElfFileChecks(), &ReadElfFile);
  }
  return checks;
}

}  // namespace hostrun
