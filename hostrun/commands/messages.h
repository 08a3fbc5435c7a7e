// hostrun/commands/messages.h - platform messages as texts, from their words on the stack.
#pragma once

#include <cstdint>
#include <string>

namespace hostrun {

// "-[NSColor colorWithAlphaComponent: 0.5]" of a message whose receiver, selector and arguments lie at
// `words`. Nothing is sent for it: objects are told by their class.
std::string MessageText(const std::uint32_t* words);

// "<NSColor>", the class itself by its name, or nil.
std::string PlatformObjectText(std::uint32_t object);

}  // namespace hostrun
