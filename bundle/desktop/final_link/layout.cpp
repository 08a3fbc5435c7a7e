// bundle/desktop/final_link/layout.cpp - where everything in the bundle's memory goes.
#include "bundle/desktop/final_link/layout.h"

#include <algorithm>

#include "bundle/desktop/final_link/refusal.h"

namespace desktop {

namespace {

constexpr std::uint32_t kEndOfFrames = 4;  // a zero word ends call frame information

bool IsText(const InputSection& section) {
  return section.segment == "__TEXT";
}
bool IsPointers(const InputSection& section) {
  return section.kind == SectionKind::Pointers;
}
bool IsZeroFilled(const InputSection& section) {
  return section.kind == SectionKind::ZeroFill;
}
bool IsFrames(const InputSection& section) {
  return section.kind == SectionKind::Coalesced;
}

// Text comes first and in one piece, call frame information last in it.
void CheckOrder(const Object& object) {
  bool textEnded = false;
  bool framesSeen = false;
  for (const InputSection& section : object.sections) {
    const bool known = IsText(section) ? !IsPointers(section) && !IsZeroFilled(section)
                                       : section.segment == "__DATA" || IsPointers(section);
    if (!known) RefuseFor("code and constants in __TEXT, data in __DATA, found ", section.Title());
    if (!IsText(section)) {
      textEnded = true;
      continue;
    }
    if (textEnded) RefuseFor("the sections of __TEXT before all others, found ", section.Title(), " behind");
    if (framesSeen) RefuseFor("__TEXT,__eh_frame last in __TEXT, found ", section.Title(), " behind");
    framesSeen = IsFrames(section);
  }
}

OutputSection Carry(const InputSection& section, std::size_t index, std::uint32_t address) {
  return {section.name, section.flags & ~kHasRelocations, address, section.size, section.alignment, index};
}

void PlaceText(const Object& object, std::uint32_t commandsEnd, std::size_t stubCount, Layout& layout) {
  layout.stubs = commandsEnd;
  const auto stubsSize = static_cast<std::uint32_t>(stubCount) * kStubSize;
  layout.text.push_back(
      {"__symbol_stub",
       static_cast<std::uint32_t>(SectionKind::Stubs) | kOnlyInstructions | kSomeInstructions, layout.stubs,
       stubsSize, kPointerSize, std::nullopt});
  std::uint32_t alignment = kPointerSize;
  for (const InputSection& section : object.sections) {
    if (IsText(section)) alignment = std::max(alignment, section.alignment);
  }
  const std::uint32_t first = object.sections.front().address;
  // Moved by whole units of the strictest alignment, everything in the block stays aligned.
  const std::uint32_t block = RoundUp(layout.stubs + stubsSize, alignment) + first % alignment;
  for (std::size_t index = 0; const InputSection& section : object.sections) {
    if (!IsText(section)) break;
    layout.movedBy[index] = std::int64_t{block} - first;
    layout.text.push_back(Carry(section, index, section.address - first + block));
    if (IsFrames(section)) layout.text.back().size += kEndOfFrames;
    ++index;
  }
  layout.textEnd = RoundUp(layout.text.back().End(), kPageSize);
}

void PlaceData(const Object& object, std::size_t pointerCount, Layout& layout) {
  layout.pointers = layout.textEnd;
  layout.data.push_back({"__nl_symbol_ptr", static_cast<std::uint32_t>(SectionKind::Pointers),
                         layout.pointers, static_cast<std::uint32_t>(pointerCount) * kPointerSize,
                         kPointerSize, std::nullopt});
  for (const bool zeroFilled : {false, true}) {
    for (std::size_t index = 0; index < object.sections.size(); ++index) {
      const InputSection& section = object.sections[index];
      if (IsText(section) || IsPointers(section) || IsZeroFilled(section) != zeroFilled) continue;
      const std::uint32_t address = RoundUp(layout.data.back().End(), section.alignment);
      layout.movedBy[index] = std::int64_t{address} - section.address;
      layout.data.push_back(Carry(section, index, address));
    }
    (zeroFilled ? layout.dataEnd : layout.dataFileEnd) = RoundUp(layout.data.back().End(), kPageSize);
  }
}

}  // namespace

SectionCounts CountSections(const Object& object) {
  SectionCounts counts{1, 1};  // stubs and pointers
  for (const InputSection& section : object.sections) {
    if (IsText(section)) ++counts.text;
    if (!IsText(section) && !IsPointers(section)) ++counts.data;
  }
  return counts;
}

Layout LayOut(const Object& object, const Imports& imports, std::uint32_t commandsEnd) {
  CheckOrder(object);
  Layout layout{};
  layout.movedBy.resize(object.sections.size());
  PlaceText(object, commandsEnd, imports.CalledCount(), layout);
  PlaceData(object, imports.imports.size(), layout);
  return layout;
}

std::uint32_t Layout::Place(const Object& object, const Imports& imports, std::uint32_t address,
                            const std::string& what) const {
  const std::size_t index = object.SectionAt(address, what);
  const InputSection& section = object.sections[index];
  if (!IsPointers(section)) return static_cast<std::uint32_t>(address + movedBy[index]);
  const std::uint32_t offset = address - section.address;
  if (offset % kPointerSize != 0) RefuseFor("the target of ", what, " at a pointer, found ", Hex(address));
  return PointerTo(imports.Of(section.symbols[offset / kPointerSize]));
}

std::uint32_t Layout::StubOf(const Imports& imports, std::size_t import) const {
  const auto before =
      std::count_if(imports.imports.begin(), imports.imports.begin() + static_cast<std::ptrdiff_t>(import),
                    [](const Import& each) { return each.called; });
  return stubs + static_cast<std::uint32_t>(before) * kStubSize;
}

std::uint32_t Layout::PointerTo(std::size_t import) const {
  return pointers + static_cast<std::uint32_t>(import) * kPointerSize;
}

}  // namespace desktop
