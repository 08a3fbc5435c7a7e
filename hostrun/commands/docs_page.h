// hostrun/commands/docs_page.h - the reference as one HTML page, complete in itself.
#pragma once

#include <string>
#include <vector>

#include "hostrun/commands/colours.h"
#include "hostrun/commands/docs_text.h"

namespace hostrun {

// Expects that every member has its description and the reverse: Mismatches found none. `subtitle` is plain
// text below the heading.
std::string ReferencePage(const std::vector<ClassText>& texts, const std::vector<ColourCard>& predefined,
                          const std::string& subtitle);

}  // namespace hostrun
