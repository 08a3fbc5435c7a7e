// tests/whole/fuzz/fail.cpp - how a target says what is wrong.
#include <cstdio>
#include <cstdlib>

#include "tests/whole/fuzz/target.h"

void fuzz::Fail(const std::string& what) {
  std::fprintf(stderr, "%s\n", what.c_str());
  std::abort();
}
