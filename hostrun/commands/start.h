// hostrun/commands/start.h - what every sub-command that needs a host does first.
#pragma once

#include <CLI/CLI.hpp>

#include <string>

#include "hostrun/host/host.h"

namespace hostrun {

// The path of a file that belongs to hostrun: in the executable's folder, as a build leaves it, or where an
// installation keeps it.
std::string OwnFile(const char* file);

// The options that describe the host, with their defaults: the files beside the executable.
void AddHostOptions(CLI::App& app, HostOptions& options);

// Starts the host. One line on failure, empty on success.
std::string StartHost(const HostOptions& options);

}  // namespace hostrun
