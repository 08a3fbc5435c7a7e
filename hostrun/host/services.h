// hostrun/host/services.h - the services that a plugin finds by name, and the version of the host that gives
// them.
#pragma once

#include <cstdint>
#include <set>
#include <string>

namespace hostrun {

struct HostIdentity {
  double version = 2015.0;
  std::set<std::string> withheld;  // service names that the resolver does not know
};

// To be called before any string or plugin exists: it also chooses the form of string records.
void SetHostIdentity(HostIdentity identity);
const HostIdentity& TheHostIdentity();

// The resolver handed to plugins: null for a name that is unknown or withheld.
void* ResolveService(const char* name);

// What the resolver answers instead of a service's own function; null: that function. To be set before any
// plugin asks.
using ServiceWrapper = void* (*)(const char* name, void* function);
void SetServiceWrapper(ServiceWrapper wrap);

// The layout version that the plugin announced; 0 before it did.
std::int32_t AnnouncedLayout();

}  // namespace hostrun
