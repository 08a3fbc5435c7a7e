// bundle/desktop/final_link/link.h - one object in, one bundle out.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "bundle/desktop/final_link/object.h"

namespace desktop {

struct Linked {
  Bytes bundle;
  Bytes debug;  // what turns the bundle's addresses into names and lines; it has the bundle's UUID
};

// Links an object into a bundle that exports one symbol, `exported`, named as the file has it (with the
// leading underscore). The same object gives the same bytes, and what it holds for debuggers changes nothing
// in the bundle. Throws a Refusal for what it can't carry over faithfully.
Linked Link(std::span<const std::uint8_t> object, const std::string& exported);

}  // namespace desktop
