// hostrun/commands/xml.cpp - texts within HTML and SVG.
#include "hostrun/commands/xml.h"

namespace hostrun {

std::string XmlEscaped(std::string_view text) {
  std::string xml;
  for (const char c : text) {
    switch (c) {
      case '&':
        xml += "&amp;";
        break;
      case '<':
        xml += "&lt;";
        break;
      case '>':
        xml += "&gt;";
        break;
      case '"':
        xml += "&quot;";
        break;
      default:
        xml += c;
    }
  }
  return xml;
}

}  // namespace hostrun
