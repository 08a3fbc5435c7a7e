// bundle/desktop/final_link/relocation_reader.h - the relocations of one section of an object.
#pragma once

#include <vector>

#include "bundle/desktop/final_link/object.h"
#include "bundle/desktop/final_link/reader.h"

namespace desktop {

// Reads and checks the relocations that `header` names for `section`; `sections` are the object's, in the
// order that the object counts them in. Refuses a kind that the link does not know, and fields that overlap.
std::vector<Relocation> ReadRelocations(const Reader& reader, const SectionHeader& header,
                                        const InputSection& section,
                                        const std::vector<InputSection>& sections,
                                        const std::vector<InputSymbol>& symbols);

}  // namespace desktop
