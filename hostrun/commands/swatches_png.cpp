// hostrun/commands/swatches_png.cpp - a picture of colours as PNG.
#include <cairo/cairo.h>

#include <memory>
#include <stdexcept>

#include "hostrun/commands/swatches_fit.h"

namespace hostrun {
namespace {

struct Free {
  void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
  void operator()(cairo_t* pen) const { cairo_destroy(pen); }
};

// What cairo hands on of a picture, collected.
cairo_status_t Append(void* bytes, const unsigned char* part, unsigned size) {
  static_cast<std::string*>(bytes)->append(reinterpret_cast<const char*>(part), size);
  return CAIRO_STATUS_SUCCESS;
}

void Check(cairo_status_t status) {
  if (status == CAIRO_STATUS_SUCCESS) return;
  throw std::runtime_error(std::string("wanted to draw a picture, found: ") + cairo_status_to_string(status));
}

class Drawing {
 public:
  explicit Drawing(cairo_surface_t* surface) : pen_(cairo_create(surface)) {}

  cairo_status_t Status() const { return cairo_status(pen_.get()); }

  void Draw(const FittedPicture& picture) {
    cairo_t* const pen = pen_.get();
    Colour(kPaper);
    cairo_paint(pen);
    for (const FittedText& text : picture.texts) Text(text);
    for (const FittedCard& card : picture.cards) {
      cairo_save(pen);
      cairo_translate(pen, card.x, card.y);
      Card(card);
      cairo_restore(pen);
    }
  }

 private:
  void Colour(const Rgb& c, double alpha = 1) {
    cairo_set_source_rgba(pen_.get(), c.red, c.green, c.blue, alpha);
  }

  void Rounded() {
    constexpr double kQuarter = 1.5707963267948966;
    cairo_t* const pen = pen_.get();
    cairo_new_path(pen);
    cairo_arc(pen, kCardWidth - kCardCorner, kCardCorner, kCardCorner, -kQuarter, 0);
    cairo_arc(pen, kCardWidth - kCardCorner, kCardHeight - kCardCorner, kCardCorner, 0, kQuarter);
    cairo_arc(pen, kCardCorner, kCardHeight - kCardCorner, kCardCorner, kQuarter, 2 * kQuarter);
    cairo_arc(pen, kCardCorner, kCardCorner, kCardCorner, 2 * kQuarter, 3 * kQuarter);
    cairo_close_path(pen);
  }

  void Text(const FittedText& text) {
    cairo_t* const pen = pen_.get();
    cairo_select_font_face(pen, kSwatchFont, CAIRO_FONT_SLANT_NORMAL,
                           text.bold ? CAIRO_FONT_WEIGHT_BOLD : CAIRO_FONT_WEIGHT_NORMAL);
    cairo_set_font_size(pen, text.size);
    Colour(text.colour);
    cairo_move_to(pen, text.x, text.y);
    cairo_show_text(pen, text.text.c_str());
  }

  void Checkerboard() {
    cairo_t* const pen = pen_.get();
    Colour({kCheckerLight, kCheckerLight, kCheckerLight});
    cairo_paint(pen);
    Colour({kCheckerDark, kCheckerDark, kCheckerDark});
    for (int row = 0; row * kCheckerSquare < kSwatchHeight; ++row) {
      for (int column = row % 2; column * kCheckerSquare < kCardWidth; column += 2) {
        cairo_rectangle(pen, column * kCheckerSquare, row * kCheckerSquare, kCheckerSquare, kCheckerSquare);
      }
    }
    cairo_fill(pen);
  }

  void Stripes() {
    cairo_t* const pen = pen_.get();
    Colour(kEdge);
    cairo_set_line_width(pen, 2);
    for (double at = -kSwatchHeight; at < kCardWidth; at += kStripe) {
      cairo_move_to(pen, at, kSwatchHeight);
      cairo_line_to(pen, at + kSwatchHeight, 0);
    }
    cairo_stroke(pen);
  }

  void Swatch(const FittedCard& card) {
    cairo_t* const pen = pen_.get();
    cairo_save(pen);
    Rounded();
    cairo_clip(pen);
    cairo_rectangle(pen, 0, 0, kCardWidth, kSwatchHeight);
    cairo_clip(pen);
    if (card.colour) {
      if (card.alpha < 1) Checkerboard();
      Colour(*card.colour, card.alpha);
      cairo_paint(pen);
    } else {
      Stripes();
    }
    Colour(kEdge);
    cairo_set_line_width(pen, 1);
    cairo_move_to(pen, 0, kSwatchHeight - 0.5);
    cairo_rel_line_to(pen, kCardWidth, 0);
    cairo_stroke(pen);
    cairo_restore(pen);
  }

  void Card(const FittedCard& card) {
    cairo_t* const pen = pen_.get();
    Rounded();
    Colour(kCardGround);
    cairo_fill(pen);
    Swatch(card);
    Rounded();
    Colour(kEdge);
    cairo_set_line_width(pen, 1);
    cairo_stroke(pen);
    for (const FittedText& text : card.texts) Text(text);
  }

  std::unique_ptr<cairo_t, Free> pen_;
};

}  // namespace

std::string PngOf(const FittedPicture& picture) {
  const std::unique_ptr<cairo_surface_t, Free> surface(cairo_image_surface_create(
      CAIRO_FORMAT_RGB24, static_cast<int>(picture.width), static_cast<int>(picture.height)));
  Check(cairo_surface_status(surface.get()));
  Drawing drawing(surface.get());
  drawing.Draw(picture);
  Check(drawing.Status());
  std::string bytes;
  Check(cairo_surface_write_to_png_stream(surface.get(), &Append, &bytes));
  return bytes;
}

}  // namespace hostrun
