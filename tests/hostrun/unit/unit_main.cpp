// runner/tests/unit_main.cpp - the unit tests share one host without a platform.
#include <gtest/gtest.h>

#include "runner/host/host.h"

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  hostrun::RegisterHostClasses();
  return RUN_ALL_TESTS();
}
