// hostrun/commands/swatches_fit.h - a picture of colours with every text in its place, ready to be drawn.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace hostrun {

inline constexpr const char* kSwatchFont = "DejaVu Sans";

// Sizes of a card, in pixels.
inline constexpr double kCardWidth = 216;
inline constexpr double kCardHeight = 136;
inline constexpr double kSwatchHeight = 72;
inline constexpr double kCardCorner = 8;
inline constexpr double kCheckerSquare = 9;  // below what is transparent
inline constexpr double kCheckerLight = 1.0;
inline constexpr double kCheckerDark = 0.82;
inline constexpr double kStripe = 12;  // from one line to the next where a colour can't be shown

// Components from 0 to 1.
struct Rgb {
  double red;
  double green;
  double blue;
};
inline constexpr Rgb kPaper{0.957, 0.961, 0.969};
inline constexpr Rgb kCardGround{1, 1, 1};
inline constexpr Rgb kEdge{0.80, 0.82, 0.85};

// A text that fits its room, from its left end on the base line.
struct FittedText {
  double x;
  double y;
  std::string text;  // UTF-8
  double size;
  bool bold;
  Rgb colour;
};

struct FittedCard {
  double x;
  double y;
  std::string title;          // the whole name
  std::optional<Rgb> colour;  // nothing: it can't be shown
  double alpha;
  std::vector<FittedText> texts;  // from the card's corner
};

struct FittedPicture {
  double width = 0;
  double height = 0;
  std::string title;
  std::vector<FittedText> texts;
  std::vector<FittedCard> cards;
};

// The bytes of a picture file. PngOf throws std::runtime_error for a picture that is too large.
std::string PngOf(const FittedPicture& picture);
std::string SvgOf(const FittedPicture& picture);

}  // namespace hostrun
