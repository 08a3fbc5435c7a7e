// bundle/desktop/final_link/relocation_reader.cpp - the relocations of one section of an object.
#include "bundle/desktop/final_link/relocation_reader.h"

#include <algorithm>

namespace desktop {

namespace {

constexpr unsigned kFourBytes = 2;  // the exponent that stands for a field of 4 bytes

// A relocation's two words, taken apart.
struct Fields {
  bool scattered;
  bool distance;    // from the field's end
  bool external;    // `number` counts symbols, not sections; never scattered
  unsigned length;  // the exponent of the field's size
  unsigned kind;
  std::uint32_t offset;
  std::uint32_t number;  // of a symbol, counted from 0, or a section, counted from 1
  std::uint32_t value;   // scattered: an address of the object
};

Fields Take(const RelocationEntry& entry) {
  Fields fields{};
  fields.scattered = (entry.where & kScattered) != 0;
  if (fields.scattered) {
    fields.offset = entry.where & 0xFFFFFF;
    fields.kind = entry.where >> 24 & 0xF;
    fields.length = entry.where >> 28 & 3;
    fields.distance = (entry.where >> 30 & 1) != 0;
    fields.value = entry.what;
  } else {
    fields.offset = entry.where;
    fields.number = entry.what & 0xFFFFFF;
    fields.distance = (entry.what >> 24 & 1) != 0;
    fields.length = entry.what >> 25 & 3;
    fields.external = (entry.what >> 27 & 1) != 0;
    fields.kind = entry.what >> 28;
  }
  return fields;
}

class SectionRelocations {
 public:
  SectionRelocations(const Reader& reader, const SectionHeader& header, const InputSection& section,
                     const std::vector<InputSection>& sections, const std::vector<InputSymbol>& symbols)
      : reader_(reader), header_(header), section_(section), sections_(sections), symbols_(symbols) {}

  std::vector<Relocation> Read() {
    const std::uint64_t size = std::uint64_t{header_.relocationCount} * sizeof(RelocationEntry);
    reader_.Part(header_.relocationOffset, size, "the relocations of " + section_.Title());
    std::vector<Relocation> relocations;
    while (next_ < header_.relocationCount) relocations.push_back(ReadOne());
    std::ranges::sort(relocations, {}, &Relocation::offset);
    const auto overlapping = std::ranges::adjacent_find(
        relocations,
        [](const auto& first, const auto& second) { return second.offset - first.offset < kPointerSize; });
    if (overlapping != relocations.end()) {
      RefuseFor("one relocation for a field, found two at ", Hex(overlapping->offset), " of ",
                section_.Title());
    }
    return relocations;
  }

 private:
  Fields Next() {
    const std::uint64_t offset = header_.relocationOffset + std::uint64_t{next_++} * sizeof(RelocationEntry);
    return Take(reader_.At<RelocationEntry>(offset, "a relocation"));
  }

  std::string Place(const Fields& fields) const {
    return "the relocation at " + Hex(fields.offset) + " of " + section_.Title();
  }

  // What the field holds in the object.
  std::uint32_t Held(const Fields& fields) const {
    return RecordAt<std::uint32_t>(&section_.bytes[fields.offset]);
  }

  Relocation ReadOne() {
    const Fields fields = Next();
    if (fields.length != kFourBytes) {
      RefuseFor(Place(fields), " of a field of 4 bytes, found ", 1U << fields.length);
    }
    if (std::uint64_t{fields.offset} + kPointerSize > section_.bytes.size()) {
      RefuseFor(Place(fields), " inside of the section's ", section_.bytes.size(),
                " bytes, found its field outside");
    }
    switch (static_cast<RelocationKind>(fields.kind)) {
      case RelocationKind::Vanilla:
        return fields.external ? OfSymbol(fields) : OfSection(fields);
      case RelocationKind::SectionDifference:
      case RelocationKind::LocalSectionDifference:
        if (fields.scattered && !fields.distance) return OfDifference(fields);
        [[fallthrough]];
      default:
        RefuseFor(Place(fields), " of an address, a distance or a difference, found kind ", fields.kind);
    }
  }

  Relocation OfSymbol(const Fields& fields) const {
    if (fields.number >= symbols_.size()) {
      RefuseFor(Place(fields), " by one of ", symbols_.size(), " symbols, found symbol ", fields.number);
    }
    Relocation relocation{
        fields.distance ? Relocation::Kind::SymbolDistance : Relocation::Kind::SymbolAddress, fields.offset};
    relocation.symbol = fields.number;
    return relocation;
  }

  Relocation OfSection(const Fields& fields) const {
    Relocation relocation{fields.distance ? Relocation::Kind::Distance : Relocation::Kind::Address,
                          fields.offset};
    relocation.target = fields.value;
    if (!fields.scattered) {
      relocation.target = Held(fields);
      if (fields.distance) relocation.target += section_.address + fields.offset + kPointerSize;
      if (fields.number == 0 || fields.number > sections_.size()) {
        RefuseFor(Place(fields), " by one of ", sections_.size(), " sections, found section ", fields.number);
      }
      const InputSection& target = sections_[fields.number - 1];
      if (!target.Holds(relocation.target)) {
        RefuseFor(Place(fields), " to a target in ", target.Title(), ", found ", Hex(relocation.target));
      }
    }
    return relocation;
  }

  Relocation OfDifference(const Fields& fields) {
    if (next_ == header_.relocationCount) RefuseFor(Place(fields), " and its pair, found the last one");
    const Fields pair = Next();
    if (!pair.scattered || static_cast<RelocationKind>(pair.kind) != RelocationKind::Pair) {
      RefuseFor(Place(fields), " followed by its pair, found kind ", pair.kind);
    }
    Relocation relocation{Relocation::Kind::Difference, fields.offset};
    relocation.target = fields.value;
    relocation.base = pair.value;
    return relocation;
  }

  const Reader& reader_;
  const SectionHeader& header_;
  const InputSection& section_;
  const std::vector<InputSection>& sections_;
  const std::vector<InputSymbol>& symbols_;
  std::uint32_t next_ = 0;
};

}  // namespace

std::vector<Relocation> ReadRelocations(const Reader& reader, const SectionHeader& header,
                                        const InputSection& section,
                                        const std::vector<InputSection>& sections,
                                        const std::vector<InputSymbol>& symbols) {
  return SectionRelocations(reader, header, section, sections, symbols).Read();
}

}  // namespace desktop
