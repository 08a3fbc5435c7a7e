// tests/bundle/faults/coverage_counters.h - where a bundle that counts what is reached keeps its counts.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace faults {

struct CounterRange {
  std::uintptr_t start;  // relative to where the file is loaded
  std::size_t size;
};

// The counters in the ELF file, in the order of their addresses; none in a bundle that counts nothing.
std::vector<CounterRange> CoverageCounters(const std::string& path);

}  // namespace faults
