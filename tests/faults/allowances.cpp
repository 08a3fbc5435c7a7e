// tests/faults/allowances.cpp - what is right although it looks like a broken promise, each with its reason.
#include "tests/faults/promises.h"

namespace faults {

const std::vector<Allowance>& Allowances() {
  static const std::vector<Allowance> allowances = {};
  return allowances;
}

}  // namespace faults
