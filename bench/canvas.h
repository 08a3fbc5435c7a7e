// bench/canvas.h - draws a plot's boxes, lines and texts into an SVG.
#pragma once

#include <cairo/cairo-svg.h>

#include <memory>
#include <stdexcept>
#include <string>

namespace bench {

struct Colour {
  double red, green, blue;
};
inline constexpr Colour kText = {0.15, 0.15, 0.18};
inline constexpr Colour kGrid = {0.88, 0.88, 0.90};

class Canvas {
 public:
  Canvas(const std::string& file, double width, double height)
      : surface_(cairo_svg_surface_create(file.c_str(), width, height), &cairo_surface_destroy),
        cairo_(cairo_create(surface_.get()), &cairo_destroy) {
    if (cairo_status(cairo_.get()) != CAIRO_STATUS_SUCCESS) {
      throw std::runtime_error("wanted to write " + file +
                               ", found: " + cairo_status_to_string(cairo_status(cairo_.get())));
    }
    cairo_select_font_face(cairo_.get(), "sans-serif", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_NORMAL);
    Box(0, 0, width, height, {1, 1, 1});
  }

  void Box(double x, double y, double width, double height, Colour colour) {
    Use(colour);
    cairo_rectangle(cairo_.get(), x, y, width, height);
    cairo_fill(cairo_.get());
  }

  void Line(double x1, double y1, double x2, double y2, Colour colour, double width = 1) {
    Use(colour);
    cairo_set_line_width(cairo_.get(), width);
    cairo_move_to(cairo_.get(), x1, y1);
    cairo_line_to(cairo_.get(), x2, y2);
    cairo_stroke(cairo_.get());
  }

  enum class Align { kLeft, kCentre, kRight };

  void Text(double x, double y, const std::string& text, double size, Align align = Align::kLeft,
            Colour colour = kText) {
    Use(colour);
    cairo_set_font_size(cairo_.get(), size);
    cairo_text_extents_t extents;
    cairo_text_extents(cairo_.get(), text.c_str(), &extents);
    if (align == Align::kRight) x -= extents.x_advance;
    if (align == Align::kCentre) x -= extents.x_advance / 2;
    cairo_move_to(cairo_.get(), x, y);
    cairo_show_text(cairo_.get(), text.c_str());
  }

 private:
  void Use(Colour colour) { cairo_set_source_rgb(cairo_.get(), colour.red, colour.green, colour.blue); }

  std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)> surface_;
  std::unique_ptr<cairo_t, decltype(&cairo_destroy)> cairo_;
};

}  // namespace bench
