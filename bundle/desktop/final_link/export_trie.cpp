// bundle/desktop/final_link/export_trie.cpp - the tree by which the loader finds the exported symbol.
#include "bundle/desktop/final_link/export_trie.h"

#include "bundle/desktop/final_link/opcodes.h"
#include "bundle/desktop/final_link/refusal.h"

namespace desktop {

Bytes ExportTrie(const std::string& name, std::uint32_t address) {
  constexpr std::uint8_t kNothingHere = 0;    // the size of what a node that ends no name says
  constexpr std::uint8_t kRegularSymbol = 0;  // an exported symbol's flags
  Bytes root = {kNothingHere, 1};             // one edge
  AppendText(root, name);
  const std::size_t leafOffset = root.size() + 1;
  if (leafOffset >= 0x80) RefuseFor("the exported symbol's name shorter than 124 bytes, found ", name.size());
  AppendUleb(root, static_cast<std::uint32_t>(leafOffset));

  Bytes terminal = {kRegularSymbol};
  AppendUleb(terminal, address);
  AppendUleb(root, static_cast<std::uint32_t>(terminal.size()));
  root.insert(root.end(), terminal.begin(), terminal.end());
  root.push_back(0);  // no edges
  return root;
}

}  // namespace desktop
