// hostrun/commands/swatches_picture.cpp - draws cards of colours as a PNG or SVG picture.
#include "hostrun/commands/swatches_picture.h"

#include <cairo/cairo-svg.h>
#include <cairo/cairo.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <memory>
#include <sstream>
#include <stdexcept>

#include "bundle/host/types.h"
#include "hostrun/commands/output_file.h"
#include "hostrun/host/text.h"

namespace hostrun {
namespace {

constexpr const char* kFont = "DejaVu Sans";
constexpr double kMargin = 24;
constexpr double kGap = 14;
constexpr double kTitleHeight = 40;
constexpr double kLineHeight = 16;  // of the subtitle
constexpr double kHeaderGap = 8;
constexpr double kSubtitleSize = 12;
constexpr double kCardWidth = 216;
constexpr double kSwatchHeight = 72;
constexpr double kCardHeight = 136;
constexpr double kCorner = 8;
constexpr double kInset = 10;
constexpr double kSquare = 9;  // of the checkerboard
constexpr double kSmallestText = 8.5;
constexpr double kCheckerLight = 1.0;
constexpr double kCheckerDark = 0.82;

struct Rgb {
  double red;
  double green;
  double blue;
};
constexpr Rgb kPaper{0.957, 0.961, 0.969};
constexpr Rgb kCard{1, 1, 1};
constexpr Rgb kEdge{0.80, 0.82, 0.85};
constexpr Rgb kStrong{0.11, 0.12, 0.15};
constexpr Rgb kSoft{0.33, 0.36, 0.41};

double Shown(double component) {
  return std::isnan(component) ? 0 : std::clamp(component, 0.0, 1.0);
}

double Linear(double component) {
  return component <= 0.04045 ? component / 12.92 : std::pow((component + 0.055) / 1.055, 2.4);
}

double Luminance(const Rgb& c) {
  return 0.2126 * Linear(c.red) + 0.7152 * Linear(c.green) + 0.0722 * Linear(c.blue);
}

double Contrast(double a, double b) {
  return (std::max(a, b) + 0.05) / (std::min(a, b) + 0.05);
}

// The card's colour over a grey ground.
Rgb Over(const ColourCard& card, double ground) {
  const double alpha = Shown(card.alpha);
  const auto mix = [alpha, ground](double component) {
    return Shown(component) * alpha + ground * (1 - alpha);
  };
  return {mix(card.red), mix(card.green), mix(card.blue)};
}

struct Free {
  void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
  void operator()(cairo_t* pen) const { cairo_destroy(pen); }
};
using Surface = std::unique_ptr<cairo_surface_t, Free>;

// Where everything is.
struct Layout {
  double width = 0;
  double height = 0;
  double top = 0;  // of the first row of cards
  std::vector<std::string> subtitle;
};

class Drawing {
 public:
  explicit Drawing(cairo_surface_t* surface) : pen_(cairo_create(surface)) {
    // Widths then grow in step with the size of the text.
    cairo_font_options_t* const options = cairo_font_options_create();
    cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_OFF);
    cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_NONE);
    cairo_set_font_options(pen_.get(), options);
    cairo_font_options_destroy(options);
  }

  cairo_status_t Status() const { return cairo_status(pen_.get()); }

  // The words of a subtitle in as many lines as it takes.
  std::vector<std::string> Lines(const std::string& text, double width) {
    Font(kSubtitleSize, false);
    std::vector<std::string> lines;
    std::istringstream words(text);
    for (std::string word; words >> word;) {
      if (!lines.empty() && WidthOf(lines.back() + " " + word) <= width) {
        lines.back() += " " + word;
      } else {
        lines.push_back(word);
      }
    }
    return lines;
  }

  void Draw(const SwatchPicture& picture, const Layout& layout) {
    Colour(kPaper);
    cairo_paint(pen_.get());
    const double inside = layout.width - 2 * kMargin;
    Text(kMargin, kMargin + 18, picture.title, 20, true, kStrong, inside);
    double line = kMargin + kTitleHeight;
    for (const std::string& text : layout.subtitle) {
      Text(kMargin, line, text, kSubtitleSize, false, kSoft, inside);
      line += kLineHeight;
    }
    for (std::size_t i = 0; i < picture.cards.size(); ++i) {
      const std::size_t row = i / static_cast<std::size_t>(picture.columns);
      const std::size_t column = i % static_cast<std::size_t>(picture.columns);
      Card(picture.cards[i], kMargin + static_cast<double>(column) * (kCardWidth + kGap),
           layout.top + static_cast<double>(row) * (kCardHeight + kGap));
    }
  }

 private:
  void Colour(const Rgb& c, double alpha = 1) {
    cairo_set_source_rgba(pen_.get(), c.red, c.green, c.blue, alpha);
  }

  void Rounded(double x, double y, double width, double height) {
    constexpr double kQuarter = 1.5707963267948966;
    cairo_t* const pen = pen_.get();
    cairo_new_path(pen);
    cairo_arc(pen, x + width - kCorner, y + kCorner, kCorner, -kQuarter, 0);
    cairo_arc(pen, x + width - kCorner, y + height - kCorner, kCorner, 0, kQuarter);
    cairo_arc(pen, x + kCorner, y + height - kCorner, kCorner, kQuarter, 2 * kQuarter);
    cairo_arc(pen, x + kCorner, y + kCorner, kCorner, 2 * kQuarter, 3 * kQuarter);
    cairo_close_path(pen);
  }

  double WidthOf(const std::string& text) {
    cairo_text_extents_t extents;
    cairo_text_extents(pen_.get(), text.c_str(), &extents);
    return extents.x_advance;
  }

  void Font(double size, bool bold) {
    cairo_select_font_face(pen_.get(), kFont, CAIRO_FONT_SLANT_NORMAL,
                           bold ? CAIRO_FONT_WEIGHT_BOLD : CAIRO_FONT_WEIGHT_NORMAL);
    cairo_set_font_size(pen_.get(), size);
  }

  // Text that fits: made smaller first, then cut.
  void Text(double x, double y, std::string text, double size, bool bold, const Rgb& colour, double width) {
    cairo_t* const pen = pen_.get();
    Font(size, bold);
    const double natural = WidthOf(text);
    if (natural > width) cairo_set_font_size(pen, std::max(kSmallestText, size * width / natural));
    std::u32string characters = Decode(text, qvx::kEncodingUTF8);
    while (WidthOf(text) > width + 0.5 && !characters.empty()) {
      characters.pop_back();
      text = Encode(characters + U"…", qvx::kEncodingUTF8);
    }
    Colour(colour);
    cairo_move_to(pen, x, y);
    cairo_show_text(pen, text.c_str());
  }

  void Checkerboard(double x, double y) {
    cairo_t* const pen = pen_.get();
    Colour({kCheckerLight, kCheckerLight, kCheckerLight});
    cairo_paint(pen);
    Colour({kCheckerDark, kCheckerDark, kCheckerDark});
    for (int row = 0; row * kSquare < kSwatchHeight; ++row) {
      for (int column = row % 2; column * kSquare < kCardWidth; column += 2) {
        cairo_rectangle(pen, x + column * kSquare, y + row * kSquare, kSquare, kSquare);
      }
    }
    cairo_fill(pen);
  }

  void Swatch(const ColourCard& card, double x, double y) {
    cairo_t* const pen = pen_.get();
    cairo_save(pen);
    Rounded(x, y, kCardWidth, kCardHeight);
    cairo_clip(pen);
    cairo_rectangle(pen, x, y, kCardWidth, kSwatchHeight);
    cairo_clip(pen);
    if (card.drawable) {
      if (Shown(card.alpha) < 1) Checkerboard(x, y);
      Colour({Shown(card.red), Shown(card.green), Shown(card.blue)}, Shown(card.alpha));
      cairo_paint(pen);
    } else {
      Colour(kEdge);
      cairo_set_line_width(pen, 2);
      constexpr int kStripe = 12;
      for (int i = -static_cast<int>(kSwatchHeight); i < static_cast<int>(kCardWidth); i += kStripe) {
        const double at = i;
        cairo_move_to(pen, x + at, y + kSwatchHeight);
        cairo_line_to(pen, x + at + kSwatchHeight, y);
      }
      cairo_stroke(pen);
    }
    Colour(kEdge);
    cairo_set_line_width(pen, 1);
    cairo_move_to(pen, x, y + kSwatchHeight - 0.5);
    cairo_rel_line_to(pen, kCardWidth, 0);
    cairo_stroke(pen);
    cairo_restore(pen);
  }

  void Card(const ColourCard& card, double x, double y) {
    cairo_t* const pen = pen_.get();
    Rounded(x, y, kCardWidth, kCardHeight);
    Colour(kCard);
    cairo_fill(pen);
    Swatch(card, x, y);
    Rounded(x, y, kCardWidth, kCardHeight);
    Colour(kEdge);
    cairo_set_line_width(pen, 1);
    cairo_stroke(pen);

    const double width = kCardWidth - 2 * kInset;
    const Ink ink = InkOn(card);
    const Rgb onSwatch = ink.white ? Rgb{1, 1, 1} : Rgb{0, 0, 0};
    std::string value = card.drawable ? card.hex : "no RGB form";
    if (card.drawable && card.alpha < 1) value += "  alpha " + ComponentText(card.alpha);
    Text(x + kInset, y + kSwatchHeight - kInset, value, 13, true, card.drawable ? onSwatch : kStrong, width);
    double line = y + kSwatchHeight + 20;
    Text(x + kInset, line, card.name, 12, true, kStrong, width);
    Text(x + kInset, line += 18, card.space, 10.5, false, kSoft, width);
    // A named colour holds no components of its own: what it is resolved to is shown in their place.
    std::string components = card.components;
    if (components.empty() && card.drawable) {
      components = "\u2192 " + ComponentText(card.red) + " " + ComponentText(card.green) + " " +
                   ComponentText(card.blue) + " " + ComponentText(card.alpha);
    }
    Text(x + kInset, line + 16, components, 10.5, false, kSoft, width);
  }

  std::unique_ptr<cairo_t, Free> pen_;
};

void Check(cairo_status_t status, const std::string& file) {
  if (status == CAIRO_STATUS_SUCCESS) return;
  throw std::runtime_error(file + ": wanted to write a picture, found: " + cairo_status_to_string(status));
}

// What cairo hands on of a picture, collected.
cairo_status_t Append(void* bytes, const unsigned char* part, unsigned size) {
  static_cast<std::string*>(bytes)->append(reinterpret_cast<const char*>(part), size);
  return CAIRO_STATUS_SUCCESS;
}

Layout LayoutOf(const SwatchPicture& picture) {
  const Surface scratch(cairo_image_surface_create(CAIRO_FORMAT_RGB24, 1, 1));
  const auto columns = static_cast<std::size_t>(picture.columns);
  const std::size_t rows = (picture.cards.size() + columns - 1) / columns;
  Layout layout;
  layout.width = 2 * kMargin + picture.columns * (kCardWidth + kGap) - kGap;
  layout.subtitle = Drawing(scratch.get()).Lines(picture.subtitle, layout.width - 2 * kMargin);
  layout.top =
      kMargin + kTitleHeight + static_cast<double>(layout.subtitle.size()) * kLineHeight + kHeaderGap;
  layout.height = layout.top + static_cast<double>(rows) * (kCardHeight + kGap) - kGap + kMargin;
  return layout;
}

}  // namespace

Ink InkOn(const ColourCard& card) {
  const double light = Luminance(Over(card, kCheckerLight));
  const double dark = Luminance(Over(card, kCheckerDark));
  const double onBlack = std::min(Contrast(light, 0), Contrast(dark, 0));
  const double onWhite = std::min(Contrast(light, 1), Contrast(dark, 1));
  return {onWhite > onBlack, std::max(onBlack, onWhite)};
}

void WriteSwatchPicture(const SwatchPicture& picture, const std::string& file) {
  const std::string extension = LowerName(std::filesystem::path(file).extension().native());
  if (extension != ".png" && extension != ".svg") {
    throw std::runtime_error(file + ": wanted a file name that ends in .png or .svg, found " +
                             (extension.empty() ? "none of them" : extension));
  }
  const Layout layout = LayoutOf(picture);
  const bool vector = extension == ".svg";
  std::string bytes;
  const Surface surface(
      vector ? cairo_svg_surface_create_for_stream(&Append, &bytes, layout.width, layout.height)
             : cairo_image_surface_create(CAIRO_FORMAT_RGB24, static_cast<int>(layout.width),
                                          static_cast<int>(layout.height)));
  Check(cairo_surface_status(surface.get()), file);
  Drawing drawing(surface.get());
  drawing.Draw(picture, layout);
  Check(drawing.Status(), file);
  if (!vector) Check(cairo_surface_write_to_png_stream(surface.get(), &Append, &bytes), file);
  cairo_surface_finish(surface.get());
  Check(cairo_surface_status(surface.get()), file);
  WriteFile(file, bytes);
}

}  // namespace hostrun
