// bundle/desktop/final_link/link_information.h - the contents of __LINKEDIT, which only the loader reads.
#pragma once

#include <cstdint>

#include "bundle/desktop/final_link/image.h"
#include "bundle/desktop/final_link/symbols.h"

namespace desktop {

// A part of the file.
struct FilePart {
  std::uint32_t offset;
  std::uint32_t size;
};

struct LinkInformation {
  std::uint32_t offset;  // in the file
  Bytes bytes;           // the parts in this order
  FilePart rebases;
  FilePart binds;
  FilePart exports;
  FilePart symbols;
  FilePart indirect;
  FilePart strings;
};

LinkInformation MakeLinkInformation(const Image& image, const Imports& imports, const Layout& layout,
                                    const ExportedSymbol& exported, const SymbolTable& table);

}  // namespace desktop
