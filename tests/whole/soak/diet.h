// tests/whole/soak/diet.h - kinds of things that a program makes and drops.
#pragma once

#include <span>

namespace soak {

struct Kind {
  const char* name;
  void (*consume)(int index);  // makes one of the kind, uses it, drops it; each index makes a different one
  bool raises;                 // one host exception each; else none
};

std::span<const Kind> Diet();

}  // namespace soak
