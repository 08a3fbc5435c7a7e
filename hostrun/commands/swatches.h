// hostrun/commands/swatches.h - "hostrun swatches": a picture of colours.
#pragma once

#include <CLI/CLI.hpp>

#include <string>

#include "hostrun/host/host.h"

namespace hostrun {

struct SwatchesOptions {
  HostOptions host;
  std::string out = "swatches.png";
  std::string source;  // empty: the predefined colours
  int columns = 5;
};

void AddSwatchesOptions(CLI::App& app, SwatchesOptions& options);
int Swatches(const SwatchesOptions& options);

}  // namespace hostrun
