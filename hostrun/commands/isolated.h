// hostrun/commands/isolated.h - runs something in a process of its own, with a time limit.
#pragma once

#include <chrono>
#include <functional>
#include <string>

namespace hostrun {

struct Outcome {
  enum class Status : std::uint8_t { Passed, Failed, Crashed, TimedOut };
  Status status;
  std::string reason;  // empty when it passed
};

// Sends one line from the process to the one that started it; the limit starts anew.
using SendLine = std::function<void(const std::string&)>;

// Runs `body` in a copy of this process. It gives the reason for its failure, or an empty text. What it
// prints is thrown away. A process that says nothing for longer than `limit` is killed.
Outcome RunIsolated(std::chrono::milliseconds limit, const std::function<std::string(const SendLine&)>& body,
                    const std::function<void(const std::string&)>& onLine = {});

}  // namespace hostrun
