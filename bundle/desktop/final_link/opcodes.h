// bundle/desktop/final_link/opcodes.h - the programs by which the loader moves and fills pointers.
#pragma once

#include <cstdint>
#include <span>

#include "bundle/desktop/final_link/image.h"

namespace desktop {

// The place of __DATA among the segments; every pointer is in it.
inline constexpr std::uint8_t kDataSegment = 1;

// Rebases every address, each in the segment that begins at `dataStart`.
Bytes RebaseOpcodes(std::span<const std::uint32_t> addresses, std::uint32_t dataStart);

// Binds every pointer to its import, by library number and name.
Bytes BindOpcodes(std::span<const Bind> binds, const Imports& imports, std::uint32_t dataStart);

// Appends a number in groups of 7 bits, the lowest first.
void AppendUleb(Bytes& bytes, std::uint32_t number);
void AppendText(Bytes& bytes, const std::string& text);  // with a zero at its end

}  // namespace desktop
