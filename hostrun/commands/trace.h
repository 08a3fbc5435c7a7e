// hostrun/commands/trace.h - "hostrun trace": runs a program and shows each call as it crosses into the
// bundle.
#pragma once

#include <CLI/CLI.hpp>

#include <string>

#include "hostrun/commands/run.h"

namespace hostrun {

struct TraceOptions {
  RunOptions run;
  std::string output;  // file; empty: stderr
  bool all = false;    // also look-ups and exception frames
};

void AddTraceOptions(CLI::App& app, TraceOptions& options);
int Trace(const TraceOptions& options);

}  // namespace hostrun
