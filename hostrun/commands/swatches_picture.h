// hostrun/commands/swatches_picture.h - draws cards of colours as a PNG or SVG picture.
#pragma once

#include <string>
#include <vector>

#include "hostrun/commands/colours.h"

namespace hostrun {

struct SwatchPicture {
  std::string title;
  std::string subtitle;
  int columns = 5;
  std::vector<ColourCard> cards;
};

// Black or white: what reads better on both grounds at once, by the contrast ratio of the accessibility
// guidelines.
struct Ink {
  bool white = false;
  double contrast = 0;  // on the worse ground
};
Ink InkOn(const ColourCard& card);

// Writes the picture in the format of the file's extension, .png or .svg. Throws std::runtime_error in one
// line.
void WriteSwatchPicture(const SwatchPicture& picture, const std::string& file);

}  // namespace hostrun
