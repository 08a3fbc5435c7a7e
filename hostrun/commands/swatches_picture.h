// hostrun/commands/swatches_picture.h - draws cards of colours as a PNG or SVG picture.
#pragma once

#include <string>
#include <vector>

#include "hostrun/commands/colours.h"

namespace hostrun {

// What a picture shows: its headings, and its cards in rows.
struct SwatchPicture {
  std::string title;
  std::string subtitle;
  int columns = 5;
  std::vector<ColourCard> cards;
};

// Black or white: the one that is easier to read on both halves of a card's checked ground, by the contrast
// ratio of the accessibility guidelines (1 to 21).
struct Ink {
  bool white = false;
  double contrast = 0;  // on the worse ground
};
Ink InkOn(const ColourCard& card);

// Writes the picture in the format of the file's extension, .png or .svg. Throws std::runtime_error, in one
// line, for another extension and for a file that can't be written.
void WriteSwatchPicture(const SwatchPicture& picture, const std::string& file);

}  // namespace hostrun
