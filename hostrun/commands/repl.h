// hostrun/commands/repl.h - "hostrun repl": runs statements as they are typed and shows values.
#pragma once

#include <CLI/CLI.hpp>

#include "hostrun/host/host.h"

namespace hostrun {

struct ReplOptions {
  HostOptions host;
};

void AddReplOptions(CLI::App& app, ReplOptions& options);
int Repl(const ReplOptions& options);

}  // namespace hostrun
