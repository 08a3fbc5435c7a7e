// bundle/desktop/final_link/symbols.h - the bundle's symbol table.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "bundle/desktop/final_link/format.h"
#include "bundle/desktop/final_link/imports.h"

namespace desktop {

// Defined and undefined symbols in two runs, each by name. There are no local ones.
struct SymbolTable {
  std::vector<SymbolEntry> symbols;
  std::uint32_t definedCount;
  std::vector<std::uint32_t> indirect;  // the symbol of each stub, then of each pointer
  Bytes strings;                        // whole words
};

// `section` counts the sections of the file from 1.
struct ExportedSymbol {
  std::string name;
  std::uint8_t section;
  std::uint32_t address;
};

SymbolTable MakeSymbolTable(const ExportedSymbol& exported, const Imports& imports);

}  // namespace desktop
