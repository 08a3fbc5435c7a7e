// hostrun/commands/docs.h - "hostrun docs": the reference of the bundle's classes as one HTML file.
#pragma once

#include <CLI/CLI.hpp>

#include <string>

#include "hostrun/host/host.h"

namespace hostrun {

struct DocsOptions {
  HostOptions host;
  std::string out = "reference.html";
  std::string descriptions;
};

void AddDocsOptions(CLI::App& app, DocsOptions& options);
int Docs(const DocsOptions& options);

}  // namespace hostrun
