// hostrun/commands/swatches_picture.cpp - lays out cards of colours, and writes them as a PNG or SVG picture.
#include "hostrun/commands/swatches_picture.h"

#include <cairo/cairo.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <set>
#include <sstream>
#include <stdexcept>

#include "bundle/host/types.h"
#include "hostrun/commands/output_file.h"
#include "hostrun/commands/swatches_fit.h"
#include "hostrun/host/text.h"

namespace hostrun {
namespace {

constexpr double kMargin = 24;
constexpr double kGap = 14;
constexpr double kTitleHeight = 40;
constexpr double kLineHeight = 16;  // of the subtitle
constexpr double kHeaderGap = 8;
constexpr double kSubtitleSize = 12;
constexpr double kInset = 10;
constexpr double kSmallestText = 8.5;

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

constexpr char32_t kSymbols = 0x2400;  // for the control characters, in their order; then others
constexpr char32_t kDelete = 0x7F;
constexpr char32_t kDeleteSymbol = 0x2421;

// A control character as the symbol that stands for it: a name is one line.
std::string WithoutControls(const std::string& text) {
  std::u32string characters = Decode(text, qvx::kEncodingUTF8);
  for (char32_t& c : characters) {
    if (c < U' ') c += kSymbols;
    if (c == kDelete) c = kDeleteSymbol;
  }
  return Encode(characters, qvx::kEncodingUTF8);
}

// Makes texts fit their room, as wide as the picture's font makes them.
class Fitter {
 public:
  // `drawn` here, with this machine's font: what that lacks matters.
  explicit Fitter(bool drawn)
      : drawn_(drawn),
        surface_(cairo_image_surface_create(CAIRO_FORMAT_RGB24, 1, 1)),
        pen_(cairo_create(surface_.get())) {
    // Widths then grow in step with the size of the text.
    cairo_font_options_t* const options = cairo_font_options_create();
    cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_OFF);
    cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_NONE);
    cairo_set_font_options(pen_.get(), options);
    cairo_font_options_destroy(options);
  }

  // The words of a text in as many lines as it takes.
  std::vector<std::string> Lines(const std::string& text, double size, double width) {
    Font(size, false);
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

  // Made smaller first, then cut.
  FittedText Fit(double x, double y, const std::string& whole, double size, bool bold, const Rgb& colour,
                 double width) {
    Font(size, bold);
    std::u32string characters = Decode(WithoutControls(whole), qvx::kEncodingUTF8);
    if (drawn_) ReplaceMissing(characters);
    std::string text = Encode(characters, qvx::kEncodingUTF8);
    const double natural = WidthOf(text);
    if (natural > width) {
      size = std::max(kSmallestText, size * width / natural);
      cairo_set_font_size(pen_.get(), size);
    }
    while (WidthOf(text) > width + 0.5 && !characters.empty()) {
      characters.pop_back();
      text = Encode(characters + U"…", qvx::kEncodingUTF8);
    }
    return {x, y, text, size, bold, colour};
  }

  // Letters that the font does not have.
  const std::set<char32_t>& missing() const { return missing_; }

 private:
  struct Free {
    void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
    void operator()(cairo_t* pen) const { cairo_destroy(pen); }
  };

  void Font(double size, bool bold) {
    cairo_select_font_face(pen_.get(), kSwatchFont, CAIRO_FONT_SLANT_NORMAL,
                           bold ? CAIRO_FONT_WEIGHT_BOLD : CAIRO_FONT_WEIGHT_NORMAL);
    cairo_set_font_size(pen_.get(), size);
  }

  double WidthOf(const std::string& text) {
    cairo_text_extents_t extents;
    cairo_text_extents(pen_.get(), text.c_str(), &extents);
    return extents.x_advance;
  }

  bool FontHas(char32_t c) {
    if (c < kDelete) return true;
    const std::string letter = Encode(std::u32string(1, c), qvx::kEncodingUTF8);
    cairo_glyph_t* glyphs = nullptr;
    int count = 0;
    cairo_scaled_font_text_to_glyphs(cairo_get_scaled_font(pen_.get()), 0, 0, letter.c_str(),
                                     static_cast<int>(letter.size()), &glyphs, &count, nullptr, nullptr,
                                     nullptr);
    const bool has = count > 0 && glyphs[0].index != 0;
    cairo_glyph_free(glyphs);
    return has;
  }

  // Symbols of control characters that the font does not have become ^I and the like; others are noted.
  void ReplaceMissing(std::u32string& characters) {
    std::u32string replaced;
    for (const char32_t c : characters) {
      if (FontHas(c)) {
        replaced += c;
      } else if (c >= kSymbols && c < kSymbols + U' ') {
        replaced += {U'^', U'@' + (c - kSymbols)};
      } else if (c == kDeleteSymbol) {
        replaced += U"^?";
      } else {
        replaced += c;
        missing_.insert(c);
      }
    }
    characters = std::move(replaced);
  }

  bool drawn_;
  std::unique_ptr<cairo_surface_t, Free> surface_;
  std::unique_ptr<cairo_t, Free> pen_;
  std::set<char32_t> missing_;
};

FittedCard FitCard(Fitter& fitter, const ColourCard& card, double x, double y) {
  const double width = kCardWidth - 2 * kInset;
  FittedCard fitted{x, y, WithoutControls(card.name), {}, Shown(card.alpha), {}};
  if (card.drawable) fitted.colour = Rgb{Shown(card.red), Shown(card.green), Shown(card.blue)};
  const auto add = [&](double at, const std::string& text, double size, bool bold, const Rgb& colour) {
    fitted.texts.push_back(fitter.Fit(kInset, at, text, size, bold, colour, width));
  };
  const Rgb onSwatch = InkOn(card).white ? Rgb{1, 1, 1} : Rgb{0, 0, 0};
  std::string value = card.drawable ? card.hex : "no RGB form";
  if (card.drawable && card.alpha < 1) value += "  alpha " + ComponentText(card.alpha);
  add(kSwatchHeight - kInset, value, 13, true, card.drawable ? onSwatch : kStrong);
  double line = kSwatchHeight + 20;
  add(line, card.name, 12, true, kStrong);
  add(line += 18, card.space, 10.5, false, kSoft);
  // A named colour holds no components of its own: what it is resolved to is shown in their place.
  std::string components = card.components;
  if (components.empty() && card.drawable) {
    components = "\u2192 " + ComponentText(card.red) + " " + ComponentText(card.green) + " " +
                 ComponentText(card.blue) + " " + ComponentText(card.alpha);
  }
  add(line + 16, components, 10.5, false, kSoft);
  return fitted;
}

FittedPicture FitPicture(Fitter& fitter, const SwatchPicture& picture) {
  const auto columns = static_cast<std::size_t>(picture.columns);
  const std::size_t rows = (picture.cards.size() + columns - 1) / columns;
  FittedPicture fitted;
  fitted.width = 2 * kMargin + picture.columns * (kCardWidth + kGap) - kGap;
  fitted.title = WithoutControls(picture.title);
  const double inside = fitted.width - 2 * kMargin;
  fitted.texts.push_back(fitter.Fit(kMargin, kMargin + 18, picture.title, 20, true, kStrong, inside));
  double line = kMargin + kTitleHeight;
  for (const std::string& text : fitter.Lines(picture.subtitle, kSubtitleSize, inside)) {
    fitted.texts.push_back(fitter.Fit(kMargin, line, text, kSubtitleSize, false, kSoft, inside));
    line += kLineHeight;
  }
  const double top = line + kHeaderGap;
  for (std::size_t i = 0; i < picture.cards.size(); ++i) {
    fitted.cards.push_back(FitCard(fitter, picture.cards[i],
                                   kMargin + static_cast<double>(i % columns) * (kCardWidth + kGap),
                                   top + static_cast<double>(i / columns) * (kCardHeight + kGap)));
  }
  fitted.height = top + static_cast<double>(rows) * (kCardHeight + kGap) - kGap + kMargin;
  return fitted;
}

// One line for people. An SVG is drawn with whatever fonts its reader has.
void SayWhatIsMissing(const std::set<char32_t>& letters) {
  constexpr std::size_t kMost = 8;
  if (letters.empty()) return;
  std::string text;
  std::size_t count = 0;
  for (const char32_t c : letters) {
    if (count++ == kMost) break;
    char code[16];
    std::snprintf(code, sizeof code, " (U+%04X)", static_cast<unsigned>(c));
    text += (text.empty() ? "" : ", ") + Encode(std::u32string(1, c), qvx::kEncodingUTF8) + code;
  }
  if (letters.size() > kMost) text += " and " + std::to_string(letters.size() - kMost) + " more";
  std::fprintf(stderr, "hostrun: the font %s has no %s; boxes are drawn in their place, an .svg shows them\n",
               kSwatchFont, text.c_str());
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
  const bool vector = extension == ".svg";
  Fitter fitter(!vector);
  const FittedPicture fitted = FitPicture(fitter, picture);
  WriteFile(file, vector ? SvgOf(fitted) : PngOf(fitted));
  SayWhatIsMissing(fitter.missing());
}

}  // namespace hostrun
