// hostrun/commands/docs_page.h - the reference as one HTML page that needs nothing but itself.
#pragma once

#include <string>
#include <vector>

#include "hostrun/commands/colours.h"
#include "hostrun/commands/docs_text.h"

namespace hostrun {

// Every description has its member: Mismatches found none.
std::string ReferencePage(const std::vector<ClassText>& texts, const std::vector<ColourCard>& predefined,
                          const std::string& subtitle);

}  // namespace hostrun
