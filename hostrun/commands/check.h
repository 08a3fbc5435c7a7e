// hostrun/commands/check.h - "hostrun check": a validator for bundles of the binary interface.
#pragma once

#include <CLI/CLI.hpp>

#include <string>

#include "hostrun/host/host.h"

namespace hostrun {

struct CheckOptions {
  HostOptions host;
  const CLI::Option* version = nullptr;  // counts whether one host version was asked for
  std::string bundle;                    // empty: the one of `host`
  std::string filter;
  double timeLimit = 10;  // seconds for one check
  bool json = false;
  bool onlyFailed = false;
};

void AddCheckOptions(CLI::App& app, CheckOptions& options);
int Check(const CheckOptions& options);

}  // namespace hostrun
