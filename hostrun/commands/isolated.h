// hostrun/commands/isolated.h - runs something in a process of its own, with a time limit.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>

#include "hostrun/host/problem.h"

namespace hostrun {

enum class Status : std::uint8_t { Passed, Failed, Crashed, TimedOut, Skipped };

// How a process ended; never Skipped.
struct Outcome {
  Status status;
  std::string reason;  // empty when it passed
};

// Sends one line from the process to the one that started it; the limit starts anew.
using SendLine = std::function<void(const std::string&)>;

// Runs `body` in a copy of this process. What it prints is thrown away; an exception that it throws is a
// problem like one that it gives. `onLine` gets what it sends, in this process and while it runs. A process
// that sends nothing for longer than `limit` is killed. Gives Failed with a reason where no process can be
// had.
Outcome RunIsolated(std::chrono::milliseconds limit, const std::function<Problem(const SendLine&)>& body,
                    const std::function<void(const std::string&)>& onLine = {});

}  // namespace hostrun
