// bundle/desktop/final_link/export_trie.h - the tree by which the loader finds the exported symbol.
#pragma once

#include <cstdint>
#include <string>

#include "bundle/desktop/final_link/object.h"

namespace desktop {

// The tree of one symbol: a root with one edge, its whole name, to the one leaf. `address` counts from the
// file's header.
Bytes ExportTrie(const std::string& name, std::uint32_t address);

}  // namespace desktop
