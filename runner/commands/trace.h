#pragma once
#include <CLI/CLI.hpp>
namespace hostrun {
struct TraceOptions {};
inline void AddTraceOptions(CLI::App&, TraceOptions&) {}
inline int Trace(const TraceOptions&) {
  return 2;
}
}  // namespace hostrun
