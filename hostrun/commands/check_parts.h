// hostrun/commands/check_parts.h - the checks of "hostrun check", by theme.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "hostrun/host/host.h"

namespace hostrun {

// One check. The body gives the reason for a failure, or an empty text; it may crash or hang.
struct BundleCheck {
  std::string name;
  std::function<std::string()> body;
};

// Of the file alone: nothing is loaded.
std::vector<BundleCheck> FileChecks(const std::string& bundle);

// Starts a host in this process, once, and enters the bundle. Gives what prevents that, or an empty text;
// records that can't be read prevent nothing.
std::string EnterBundle(const HostOptions& options);

// Of what the entered bundle registered: version, order, record words, declarations.
std::vector<BundleCheck> RegistrationChecks();

// Of each function behind the records.
std::vector<BundleCheck> CallChecks();

}  // namespace hostrun
