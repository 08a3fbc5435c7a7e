// tests/bundle/unit/desktop_bundle.cpp - puts the desktop bundle under unit tests that reach a bundle by its
// records alone.
#include <gtest/gtest.h>

#include "bundle/bridge/instances.h"
#include "tests/bundle/faults/bundle_image.h"

namespace {

class LoadsDesktopBundle : public testing::Environment {
 public:
  void SetUp() override { faults::LoadBundle(DESKTOP_BUNDLE_FILE); }
};

const auto* const environment = testing::AddGlobalTestEnvironment(new LoadsDesktopBundle);

}  // namespace

// For tests that set the bundle's own variables; they are linked here, and left out of the run.
namespace qvx {
constinit CFMutableDictionaryRef instances = nullptr;
constinit bool ExceptionsInitialized = false;
}  // namespace qvx
