// hostrun/commands/run.h - "hostrun PROGRAM.bas": runs a program through the bundle.
#pragma once

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

#include "hostrun/host/host.h"

namespace hostrun {

struct RunOptions {
  HostOptions host;
  bool leaksAreErrors = false;
  std::string program;
  std::vector<std::string> arguments;
};

void AddRunOptions(CLI::App& app, RunOptions& options);
int Run(const RunOptions& options);

}  // namespace hostrun
