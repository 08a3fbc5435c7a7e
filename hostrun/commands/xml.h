// hostrun/commands/xml.h - texts within HTML and SVG.
#pragma once

#include <string>
#include <string_view>

namespace hostrun {

// What has a meaning in markup is replaced; also fit for an attribute in double quotes.
std::string XmlEscaped(std::string_view text);

}  // namespace hostrun
