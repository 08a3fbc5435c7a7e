// hostrun/commands/start.h - what every sub-command that needs a host does first.
#pragma once

#include <CLI/CLI.hpp>

#include <string>

#include "hostrun/host/host.h"
#include "hostrun/host/problem.h"

namespace hostrun {

// The path of a file that belongs to hostrun: in the executable's folder, as a build leaves it, or where an
// installation keeps it.
std::string OwnFile(const char* file);

// The options that describe the host, with their defaults: the files beside the executable.
void AddHostOptions(CLI::App& app, HostOptions& options);

// Starts a host that has entered no bundle yet: its own classes, the platform, the sibling part. Once in a
// process.
Problem StartWithoutBundle(const HostOptions& options);

// The same, and lets the bundle register.
Problem StartHost(const HostOptions& options);

}  // namespace hostrun
