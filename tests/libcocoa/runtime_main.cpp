// tests/libcocoa/runtime_main.cpp - runs the tests of the platform library's mechanics.
#include <gtest/gtest.h>

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
