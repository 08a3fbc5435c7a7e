// hostrun/host/platform_log.h - the platform's log lines, held back until it is known whether they matter.
//
// The platform logs each exception before the host hears of it. What is logged while the bundle is called
// goes with the exception that comes out of the call, and is written only if that one ends the program;
// where none comes out, it is written as soon as the call has returned.
#pragma once

#include <string>

namespace hostrun {

// From now on lines are held back. To be called once, after the platform is loaded; a platform that has no
// place for a handler goes on to log at once. A crash writes what is held.
void HoldPlatformLog();

// Writes what is held to stderr, behind what the program has printed.
void WritePlatformLog();

// What is held, which is then held no longer. Each line ends with a line end.
std::string TakePlatformLog();

}  // namespace hostrun
