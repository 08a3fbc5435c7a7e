// bundle/desktop/final_link/link_information.cpp - the contents of __LINKEDIT, which only the loader reads.
#include "bundle/desktop/final_link/link_information.h"

#include <span>

#include "bundle/desktop/final_link/export_trie.h"
#include "bundle/desktop/final_link/opcodes.h"

namespace desktop {

namespace {

FilePart Append(LinkInformation& information, std::span<const std::uint8_t> part) {
  Bytes& bytes = information.bytes;
  const auto offset = information.offset + static_cast<std::uint32_t>(bytes.size());
  bytes.insert(bytes.end(), part.begin(), part.end());
  const auto size = static_cast<std::uint32_t>(part.size());
  bytes.resize(RoundUp(bytes.size(), sizeof(std::uint32_t)));
  return {offset, size};
}

template <typename Record>
std::span<const std::uint8_t> BytesOf(const std::vector<Record>& records) {
  const auto bytes = std::as_bytes(std::span(records));
  return {reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()};
}

}  // namespace

LinkInformation MakeLinkInformation(const Image& image, const Imports& imports, const Layout& layout,
                                    const ExportedSymbol& exported, const SymbolTable& table) {
  LinkInformation information{};
  information.offset = layout.dataFileEnd;
  information.rebases = Append(information, RebaseOpcodes(image.rebases, layout.textEnd));
  information.binds = Append(information, BindOpcodes(image.binds, imports, layout.textEnd));
  information.exports = Append(information, ExportTrie(exported.name, exported.address));
  information.symbols = Append(information, BytesOf(table.symbols));
  information.indirect = Append(information, BytesOf(table.indirect));
  information.strings = Append(information, table.strings);
  return information;
}

}  // namespace desktop
