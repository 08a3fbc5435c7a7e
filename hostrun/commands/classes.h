// hostrun/commands/classes.h - "hostrun classes": the class browser.
#pragma once

#include <CLI/CLI.hpp>

#include <string>

#include "hostrun/host/host.h"

namespace hostrun {

struct ClassesOptions {
  HostOptions host;
  std::string wanted;  // CLASS or CLASS.MEMBER; empty: every class of the bundle
  bool all = false;    // also the classes that are not the bundle's
  bool json = false;
  bool layout = false;
};

void AddClassesOptions(CLI::App& app, ClassesOptions& options);
int Classes(const ClassesOptions& options);

}  // namespace hostrun
