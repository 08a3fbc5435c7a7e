// bundle/desktop/final_link/load_commands.h - the head of the bundle's file.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "bundle/desktop/final_link/link_information.h"

namespace desktop {

// A segment's or a section's name, of at most 16 letters.
Name16 Name(std::string_view text);

// What every header of the section says, wherever its bytes are.
SectionHeader HeaderOf(const OutputSection& section, std::string_view segment);

// How many bytes header and load commands take; known before anything has its place.
std::uint32_t LoadCommandsSize(const SectionCounts& sections, const Imports& imports);

// Header and load commands, with a UUID of zeros.
Bytes LoadCommands(const Layout& layout, const Imports& imports, const LinkInformation& information,
                   const SymbolTable& table);

// Gives a whole file the UUID that its contents make.
void SetUuid(Bytes& file);

// The UUID of a file that begins with our own load commands.
std::array<std::uint8_t, 16> UuidOf(const Bytes& file);

}  // namespace desktop
