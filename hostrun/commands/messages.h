// hostrun/commands/messages.h - platform messages as texts, from their words on the stack.
#pragma once

#include <cstdint>
#include <string>

namespace hostrun {

// "-[NSColor colorWithAlphaComponent: 0.5]" of a message whose receiver, selector and arguments lie at
// `words`. No message is sent to find out: an object is shown by its class alone.
std::string MessageText(const std::uint32_t* words);

// "<NSColor>" for an instance, "NSColor" for the class itself, or "nil".
std::string PlatformObjectText(std::uint32_t object);

}  // namespace hostrun
