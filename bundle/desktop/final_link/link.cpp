// bundle/desktop/final_link/link.cpp - one object in, one bundle out.
#include "bundle/desktop/final_link/link.h"

#include <algorithm>
#include <utility>

#include "bundle/desktop/final_link/debug_file.h"
#include "bundle/desktop/final_link/load_commands.h"
#include "bundle/desktop/final_link/refusal.h"

namespace desktop {

namespace {

// Room that a signing tool needs to add its load command.
constexpr std::uint32_t kRoomForCommands = 32;

// As many as a symbol can name.
constexpr std::uint32_t kMostSections = 255;

const InputSymbol& FindExported(const Object& object, const std::string& name) {
  const InputSymbol* found = nullptr;
  for (const InputSymbol& symbol : object.symbols) {
    if (!symbol.exported) continue;
    if (symbol.name != name || found != nullptr) {
      RefuseFor("one exported symbol, ", Quoted(name), ", found ", Quoted(symbol.name),
                symbol.name == name ? " again" : "");
    }
    found = &symbol;
  }
  if (found == nullptr) RefuseFor("the exported symbol ", Quoted(name), ", found none");
  return *found;
}

ExportedSymbol PlaceExported(const InputSymbol& symbol, const Layout& layout) {
  const auto isIts = [&](const OutputSection& section) { return section.from == *symbol.section; };
  const auto section = std::ranges::find_if(layout.text, isIts);
  if (section == layout.text.end()) RefuseFor("the exported symbol in __TEXT, found it elsewhere");
  return {symbol.name, static_cast<std::uint8_t>(section - layout.text.begin() + 1),
          static_cast<std::uint32_t>(symbol.value + layout.movedBy[*symbol.section])};
}

}  // namespace

Linked Link(std::span<const std::uint8_t> file, const std::string& exported) {
  const Object object = ReadObject(file);
  const InputSymbol& symbol = FindExported(object, exported);
  const Imports imports = CollectImports(object);
  const SectionCounts counts = CountSections(object);
  if (counts.text + counts.data > kMostSections) {
    RefuseFor("at most ", kMostSections, " sections, found ", counts.text + counts.data);
  }
  const std::uint32_t commandsSize = LoadCommandsSize(counts, imports);
  const Layout layout = LayOut(object, imports, commandsSize + kRoomForCommands);
  const Image image = MakeImage(object, imports, layout);
  const ExportedSymbol placed = PlaceExported(symbol, layout);
  const SymbolTable table = MakeSymbolTable(placed, imports);
  const LinkInformation information = MakeLinkInformation(image, imports, layout, placed, table);

  Bytes bundle = image.bytes;
  std::ranges::copy(LoadCommands(layout, imports, information, table), bundle.begin());
  bundle.insert(bundle.end(), information.bytes.begin(), information.bytes.end());
  SetUuid(bundle);
  Bytes debug = DebugFile(object, imports, layout, bundle);
  return {std::move(bundle), std::move(debug)};
}

}  // namespace desktop
