// bundle/desktop/final_link/symbols.cpp - the bundle's symbol table.
#include "bundle/desktop/final_link/symbols.h"

#include <algorithm>
#include <numeric>

#include "bundle/desktop/final_link/opcodes.h"

namespace desktop {

namespace {

constexpr unsigned kLibraryShift = 8;  // where an undefined symbol's description has its library

std::uint32_t AddName(Bytes& strings, const std::string& name) {
  const auto offset = static_cast<std::uint32_t>(strings.size());
  AppendText(strings, name);
  return offset;
}

}  // namespace

SymbolTable MakeSymbolTable(const ExportedSymbol& exported, const Imports& imports) {
  SymbolTable table;
  AppendText(table.strings, " ");  // no symbol's name begins at 0, which stands for none
  table.symbols.push_back(
      {AddName(table.strings, exported.name), kInSection | kExternal, exported.section, 0, exported.address});
  table.definedCount = 1;

  std::vector<std::size_t> byName(imports.imports.size());
  std::iota(byName.begin(), byName.end(), std::size_t{0});
  std::ranges::sort(byName, {}, [&](std::size_t import) { return imports.imports[import].name; });
  std::vector<std::uint32_t> entryOf(byName.size());
  for (const std::size_t import : byName) {
    entryOf[import] = static_cast<std::uint32_t>(table.symbols.size());
    const auto description = static_cast<std::uint16_t>(imports.imports[import].library << kLibraryShift);
    table.symbols.push_back(
        {AddName(table.strings, imports.imports[import].name), kUndefined | kExternal, 0, description, 0});
  }
  table.strings.resize(RoundUp(table.strings.size(), sizeof(std::uint32_t)));

  for (std::size_t import = 0; import < entryOf.size(); ++import) {
    if (imports.imports[import].called) table.indirect.push_back(entryOf[import]);
  }
  table.indirect.insert(table.indirect.end(), entryOf.begin(), entryOf.end());
  return table;
}

}  // namespace desktop
