// hostrun/host/host.h - starts a host: its own classes, the platform, the sibling part, the bundle.
#pragma once

#include <string>
#include <vector>

#include "hostrun/host/services.h"

namespace hostrun {

struct HostOptions {
  HostIdentity identity;
  std::string bundle;    // file
  std::string platform;  // file; "none" for a bundle that needs none
  bool sibling = true;
  bool platformLog = false;  // the platform's log lines are written at once, and none is dropped
};

// Registers what every host knows. To be called once, before anything else.
void RegisterHostClasses();

// The host is started: strings that the registered declarations hold are no leak of a program.
void NoteStarted();

// What is still alive. An object of a built-in kind counts there and not by its class.
struct LiveCounts {
  struct ByPlace {
    std::string className;
    int line = 0;  // of the program, where it was made
    int count = 0;
  };
  std::vector<ByPlace> objects;
  std::vector<ByPlace> strings;
  int nativeRetains = 0;  // wrapper instances that still hold their native object
  bool Any() const { return !objects.empty() || !strings.empty(); }
};
LiveCounts CountLive();
// One line per kind; empty when nothing is alive.
std::string DescribeLive(const LiveCounts& counts);

}  // namespace hostrun
