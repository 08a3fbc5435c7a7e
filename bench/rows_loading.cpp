// bench/rows_loading.cpp - loading the bundle and starting it.
#include <dlfcn.h>

#include <memory>

#include "bench/rows.h"

namespace bench {

namespace {

void AddLoading(Bundle& bundle, const char* name, double version, const std::string& file) {
  constexpr double kTwoMilliseconds = 2e6;
  const auto copy = std::make_shared<TemporaryCopy>(file);
  const auto host = std::make_shared<Host>(Host{&bundle.GetPlatform(), version, {}});
  AddRow(bundle, {.name = name, .nanoseconds = kTwoMilliseconds, .counted = false}, [copy, host] {
    Activate(*host);
    host->definitions.clear();
    dlclose(LoadAndStart(copy->Path()));
  });
}

}  // namespace

// What the old layout allocates for its records is never freed; it is a few KiB for each load.
void AddLoadingRows(Bundle& bundle, const std::string& file) {
  AddLoading(bundle, "load, start and unload, current layout", kNewHost, file);
  AddLoading(bundle, "load, start and unload, old layout", kOldHost, file);
}

}  // namespace bench
