// hostrun/macho/frames.h - makes a desktop bundle's unwind tables ones that this process's unwinder reads.
#pragma once

#include <cstdint>
#include <span>

namespace hostrun::macho {

// Translates the records of __eh_frame in place: on the desktop the stack and the frame pointer have each
// other's number. `memory` is the mapped image, rebased and bound; the records are `size` bytes at `offset`.
// Throws FormatError for records that the unwinder could not read: it does not check what it is given.
void TranslateFrames(std::span<std::uint8_t> memory, std::uint32_t offset, std::uint32_t size);

}  // namespace hostrun::macho
