// bundle/desktop/final_link/link.h - one object in, one bundle out.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "bundle/desktop/final_link/object.h"

namespace desktop {

// Links an object into a bundle that exports one symbol, `exported`, named as the file has it (with the
// leading underscore). The same object gives the same bytes. Throws a Refusal for what it can't carry over
// faithfully.
Bytes Link(std::span<const std::uint8_t> object, const std::string& exported);

}  // namespace desktop
