// hostrun/macho/link_information.h - reads which words of a bundle are rebased and bound, and what it
// exports.
#pragma once

#include "hostrun/macho/file.h"
#include "hostrun/macho/format.h"

namespace hostrun::macho {

// These read a part of the file's link information and add what it says to `file`, whose segments, libraries
// and bytes have been read. Throw FormatError.
void ReadRebases(Bytes part, File& file);
enum class Binding : std::uint8_t { AtOnce, Lazy };
void ReadBinds(Bytes part, Binding binding, File& file);
void ReadExports(Bytes part, File& file);

}  // namespace hostrun::macho
