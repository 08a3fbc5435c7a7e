// hostrun/commands/swatches_svg.cpp - a picture of colours as SVG: text is text, what repeats is defined
// once.
#include <array>
#include <cmath>
#include <cstdio>

#include "hostrun/commands/colours.h"
#include "hostrun/commands/swatches_fit.h"
#include "hostrun/commands/xml.h"

namespace hostrun {
namespace {

// At most two decimals, as few as it takes.
std::string Number(double value) {
  return ComponentText(std::round(value * 100) / 100);
}

std::string Hex(const Rgb& colour) {
  const auto byte = [](double component) { return static_cast<unsigned>(std::lround(component * 255)); };
  std::array<char, 8> text{};
  std::snprintf(text.data(), text.size(), "#%02x%02x%02x", byte(colour.red), byte(colour.green),
                byte(colour.blue));
  return text.data();
}

std::string Attribute(const char* name, const std::string& value) {
  return std::string(" ") + name + "=\"" + value + "\"";
}

std::string TextOf(const FittedText& text) {
  std::string svg = "<text" + Attribute("x", Number(text.x)) + Attribute("y", Number(text.y)) +
                    Attribute("font-size", Number(text.size)) + Attribute("fill", Hex(text.colour));
  if (text.bold) svg += " class=\"b\"";
  return svg + ">" + XmlEscaped(text.text) + "</text>\n";
}

std::string Definitions() {
  const std::string corner = Number(kCardCorner);
  const std::string width = Number(kCardWidth);
  const std::string swatch = Number(kSwatchHeight);
  const std::string square = Number(kCheckerSquare);
  const std::string both = Number(2 * kCheckerSquare);
  const std::string dark = Hex({kCheckerDark, kCheckerDark, kCheckerDark});
  return "<style>text{font-family:'" + std::string(kSwatchFont) +
         "',sans-serif;white-space:pre}.b{font-weight:bold}</style>\n<defs>\n" +
         "<pattern id=\"checks\" width=\"" + both + "\" height=\"" + both +
         "\" patternUnits=\"userSpaceOnUse\"><path fill=\"#fff\" d=\"M0 0h" + both + "v" + both + "h-" +
         both + "z\"/><path fill=\"" + dark + "\" d=\"M0 0h" + square + "v" + both + "h" + square + "v-" +
         square + "h-" + both + "z\"/></pattern>\n<pattern id=\"stripes\" width=\"" + Number(kStripe) +
         "\" height=\"" + Number(kStripe) + "\" patternUnits=\"userSpaceOnUse\"><path stroke=\"" +
         Hex(kEdge) + "\" stroke-width=\"2\" d=\"M-1 " + Number(kStripe + 1) + "L" + Number(kStripe + 1) +
         " -1\"/></pattern>\n<rect id=\"card\" x=\".5\" y=\".5\" width=\"" + Number(kCardWidth - 1) +
         "\" height=\"" + Number(kCardHeight - 1) + "\" rx=\"" + corner +
         "\"/>\n<path id=\"swatch\" d=\"M0 " + swatch + "V" + corner + "a" + corner + " " + corner +
         " 0 0 1 " + corner + " -" + corner + "H" + Number(kCardWidth - kCardCorner) + "a" + corner + " " +
         corner + " 0 0 1 " + corner + " " + corner + "V" + swatch +
         "z\"/>\n<g id=\"edge\" fill=\"none\" stroke=\"" + Hex(kEdge) +
         "\"><use href=\"#card\"/><path d=\"M0 " + Number(kSwatchHeight - 0.5) + "h" + width +
         "\"/></g>\n</defs>\n";
}

std::string CardOf(const FittedCard& card) {
  std::string svg =
      "<g" + Attribute("transform", "translate(" + Number(card.x) + " " + Number(card.y) + ")") + "><title>" +
      XmlEscaped(card.title) + "</title><use href=\"#card\" fill=\"" + Hex(kCardGround) + "\"/>";
  const bool seeThrough = card.colour && card.alpha < 1;
  if (!card.colour || seeThrough)
    svg += std::string("<use href=\"#swatch\" fill=\"url(#") + (seeThrough ? "checks" : "stripes") + ")\"/>";
  if (card.colour) {
    svg += "<use href=\"#swatch\"" + Attribute("fill", Hex(*card.colour));
    if (seeThrough) svg += Attribute("fill-opacity", ComponentText(card.alpha));
    svg += "/>";
  }
  svg += "<use href=\"#edge\"/>\n";
  for (const FittedText& text : card.texts) svg += TextOf(text);
  return svg + "</g>\n";
}

}  // namespace

std::string SvgOf(const FittedPicture& picture) {
  const std::string width = Number(picture.width);
  const std::string height = Number(picture.height);
  std::string svg = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<svg xmlns=\"http://www.w3.org/2000/svg\"" +
                    Attribute("width", width) + Attribute("height", height) +
                    Attribute("viewBox", "0 0 " + width + " " + height) + ">\n<title>" +
                    XmlEscaped(picture.title) + "</title>\n" + Definitions() +
                    "<rect width=\"100%\" height=\"100%\"" + Attribute("fill", Hex(kPaper)) + "/>\n";
  for (const FittedText& text : picture.texts) svg += TextOf(text);
  for (const FittedCard& card : picture.cards) svg += CardOf(card);
  return svg + "</svg>\n";
}

}  // namespace hostrun
