// bundle/desktop/final_link/image.cpp - the bundle's code and data, with every field filled for address 0.
#include "bundle/desktop/final_link/image.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <tuple>

#include "bundle/desktop/final_link/reader.h"
#include "bundle/desktop/final_link/refusal.h"

namespace desktop {

namespace {

class ImageMaker {
 public:
  ImageMaker(const Object& object, const Imports& imports, const Layout& layout)
      : object_(object), imports_(imports), layout_(layout) {
    image_.bytes.resize(layout.dataFileEnd);
  }

  Image Make() {
    for (const auto* sections : {&layout_.text, &layout_.data}) {
      for (const OutputSection& section : *sections) {
        if (!section.from) continue;
        std::ranges::copy(object_.sections[*section.from].bytes, image_.bytes.data() + section.address);
      }
    }
    MakeStubsAndPointers();
    // Sections of __DATA keep their order, and relocations are sorted: the rebases ascend.
    for (std::size_t index = 0; index < object_.sections.size(); ++index) {
      for (const Relocation& relocation : object_.sections[index].relocations) CarryOver(index, relocation);
    }
    std::ranges::sort(image_.binds, {}, [](const Bind& bind) { return std::tie(bind.import, bind.address); });
    return std::move(image_);
  }

 private:
  std::uint32_t Held(std::uint32_t address) const { return RecordAt<std::uint32_t>(&image_.bytes[address]); }
  void Put(std::uint32_t address, std::uint32_t value) {
    std::memcpy(&image_.bytes[address], &value, sizeof value);
  }

  // A stub jumps through its pointer. It is entered by a call that leaves %eax free:
  //
  //       calll here
  // here: popl %eax
  //       jmpl *(pointer - here)(%eax)
  void MakeStubsAndPointers() {
    constexpr std::array<std::uint8_t, 8> kBeforeDistance = {0xE8, 0, 0, 0, 0, 0x58, 0xFF, 0xA0};
    constexpr std::uint32_t kHere = 5;
    for (std::size_t import = 0; import < imports_.imports.size(); ++import) {
      const std::uint32_t pointer = layout_.PointerTo(import);
      image_.binds.push_back({pointer, import});
      if (!imports_.imports[import].called) continue;
      const std::uint32_t stub = layout_.StubOf(imports_, import);
      std::ranges::copy(kBeforeDistance, image_.bytes.data() + stub);
      Put(stub + kBeforeDistance.size(), pointer - (stub + kHere));
    }
  }

  void CarryOver(std::size_t index, const Relocation& relocation) {
    const InputSection& section = object_.sections[index];
    const std::string what = "the relocation at " + Hex(relocation.offset) + " of " + section.Title();
    const std::uint32_t before = section.address + relocation.offset;
    const auto after = static_cast<std::uint32_t>(before + layout_.movedBy[index]);
    const std::uint32_t held = Held(after);
    const auto moved = [&](std::uint32_t address) {
      return layout_.Place(object_, imports_, address, what) - address;
    };
    switch (relocation.kind) {
      case Relocation::Kind::Address:
        RefusePointerInText(section, what);
        Put(after, held + moved(relocation.target));
        image_.rebases.push_back(after);
        return;
      case Relocation::Kind::Distance:
        Put(after, held + moved(relocation.target) - (after - before));
        return;
      case Relocation::Kind::Difference:
        Put(after, held + moved(relocation.target) - moved(relocation.base));
        return;
      case Relocation::Kind::SymbolAddress:
        RefusePointerInText(section, what);
        return PutSymbol(relocation, after);
      case Relocation::Kind::SymbolDistance:
        return PutDistance(relocation, before, after, what);
    }
  }

  static void RefusePointerInText(const InputSection& section, const std::string& what) {
    if (section.segment == "__TEXT") RefuseFor(what, " to be position independent, found an address");
  }

  void PutSymbol(const Relocation& relocation, std::uint32_t after) {
    const InputSymbol& symbol = object_.symbols[relocation.symbol];
    if (!symbol.section) {
      if (Held(after) != 0) {
        RefuseFor("the address of ", Quoted(symbol.name), " itself, found ", Held(after), " added to it");
      }
      image_.binds.push_back({after, imports_.Of(relocation.symbol)});
      return;
    }
    Put(after, Held(after) + PlaceOf(symbol));
    image_.rebases.push_back(after);
  }

  void PutDistance(const Relocation& relocation, std::uint32_t before, std::uint32_t after,
                   const std::string& what) {
    const InputSymbol& symbol = object_.symbols[relocation.symbol];
    const std::uint32_t added = Held(after) + before + kPointerSize;
    if (added != 0)
      RefuseFor(what, " to call ", Quoted(symbol.name), " itself, found ", Hex(added), " added to it");
    const std::uint32_t target =
        symbol.section ? PlaceOf(symbol) : layout_.StubOf(imports_, imports_.Of(relocation.symbol));
    Put(after, target - (after + kPointerSize));
  }

  std::uint32_t PlaceOf(const InputSymbol& symbol) const {
    return layout_.Place(object_, imports_, symbol.value, Quoted(symbol.name));
  }

  const Object& object_;
  const Imports& imports_;
  const Layout& layout_;
  Image image_;
};

}  // namespace

Image MakeImage(const Object& object, const Imports& imports, const Layout& layout) {
  return ImageMaker(object, imports, layout).Make();
}

}  // namespace desktop
