// tests/whole/real/real_host.h - the bundle over the real platform, called by class and name as a program
// would.
#pragma once

#include <string>
#include <string_view>

#include "hostrun/host/call.h"
#include "hostrun/host/objects.h"
#include "hostrun/host/registry.h"
#include "hostrun/host/value.h"

namespace real {

// The bundle that the environment's QVX_BUNDLE names; without it, the one beside the executable.
std::string BundlePath();

// Starts the host runner's host with that bundle, and the platform library that lies beside the executable.
// Ends the process with one line if that fails.
void StartHost(double version = 2015.0);

// A function of a class by its declaration, which must be there.
const hostrun::Method& MethodOf(std::string_view className, std::string_view declaration);
const hostrun::Method& GetterOf(std::string_view className, std::string_view property);

// Calls it. A host exception that the bundle raises is counted and dropped; the answer is then Nil.
hostrun::Value Call(const hostrun::Method& method, const hostrun::ArgumentWords& words);
int RaisedSoFar();

// Entries in the instance cache.
long CachedInstances();

// What the process occupies of the machine's memory, in bytes, after what is free has been given back.
long long ResidentBytes();

}  // namespace real
