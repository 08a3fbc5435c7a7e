// tests/bundle/scripted/balance.h - the oracle: what every call must leave behind as it found it.
#pragma once

#include <string>
#include <vector>

namespace scripted {

// Everything that is out of balance right now, as sentences; empty when all is well:
// - rules broken on the way (EventLog::Violations);
// - exception frames: entered = left + delivered, none open;
// - native objects: the bundle holds each exactly as often as live instances wrap it;
// - host objects, arrays, blocks and strings: the bundle holds no reference;
// - string data that the host gave out and never got back;
// - bytes of a host object around its class data.
std::vector<std::string> Imbalances();

}  // namespace scripted
