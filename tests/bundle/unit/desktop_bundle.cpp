// tests/bundle/unit/desktop_bundle.cpp - puts the desktop bundle under unit tests that reach a bundle by its
// records alone.
#include <gtest/gtest.h>

#include "tests/bundle/faults/bundle_image.h"

namespace {

class LoadsDesktopBundle : public testing::Environment {
 public:
  void SetUp() override { faults::LoadBundle(DESKTOP_BUNDLE_FILE); }
};

const auto* const environment = testing::AddGlobalTestEnvironment(new LoadsDesktopBundle);

}  // namespace
