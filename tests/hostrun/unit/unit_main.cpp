// tests/hostrun/unit/unit_main.cpp - the unit tests share one host without a platform.
#include <gtest/gtest.h>

#include "hostrun/host/host.h"

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  hostrun::RegisterHostClasses();
  return RUN_ALL_TESTS();
}
