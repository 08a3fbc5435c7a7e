// hostrun/commands/start.h - starts the host that a command needs.
#pragma once

#include <string>

#include "hostrun/commands/command_line.h"
#include "hostrun/host/host.h"
#include "hostrun/host/problem.h"

namespace hostrun {

// The path of a file that belongs to hostrun: beside the executable, as a build leaves it, or where an
// installation keeps it. It need not exist.
std::string OwnFile(const char* file);

// The options that choose which host is imitated. Sets the defaults: this build's bundle and platform
// library. `options` outlives the use of `line`.
void AddHostOptions(CommandLine& line, HostOptions& options);

// Starts a host that has entered no bundle yet: its own classes, the platform, the sibling part. Once in a
// process.
Problem StartWithoutBundle(const HostOptions& options);

// The same, and lets the bundle register.
Problem StartHost(const HostOptions& options);

}  // namespace hostrun
