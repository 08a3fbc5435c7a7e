// bench/plot.cpp - the plot of a run: each row beside its limit, on a logarithmic scale.
#include "bench/plot.h"

#include <algorithm>
#include <cmath>

#include "bench/canvas.h"

namespace bench {

namespace {

constexpr double kRow = 17;
constexpr double kLabels = 300;
constexpr double kBars = 560;
constexpr double kRatios = 130;
constexpr double kMargin = 20;
constexpr double kHeader = 64;
constexpr double kPanelGap = 44;
constexpr double kFewest = 1e1;  // nanoseconds at the left edge
constexpr double kMost = 1e8;

constexpr Colour kLimitColour = {0.62, 0.68, 0.76};
constexpr Colour kOverColour = {0.20, 0.45, 0.75};
constexpr Colour kMissedColour = {0.80, 0.33, 0.20};

double Width(double nanoseconds) {
  const double part = std::log(nanoseconds / kFewest) / std::log(kMost / kFewest);
  return kBars * std::min(1.0, std::max(0.0, part));
}

std::string Number(double value, const char* format) {
  char text[32];
  std::snprintf(text, sizeof text, format, value);
  return text;
}

void DrawGrid(Canvas& canvas, double top, double bottom) {
  const struct {
    double nanoseconds;
    const char* label;
  } lines[] = {{1e1, "10 ns"},  {1e2, "100 ns"}, {1e3, "1 µs"},  {1e4, "10 µs"},
               {1e5, "100 µs"}, {1e6, "1 ms"},   {1e7, "10 ms"}, {1e8, "100 ms"}};
  for (const auto& line : lines) {
    const double x = kMargin + kLabels + Width(line.nanoseconds);
    canvas.Line(x, top - 4, x, bottom, kGrid);
    canvas.Text(x, top - 8, line.label, 10, Canvas::Align::kCentre);
  }
}

// The limit's bar above the row's own, thinner one.
void DrawRow(Canvas& canvas, double y, const Bar& bar) {
  const double ratio = bar.nanoseconds / bar.limitNanoseconds;
  const bool missed = bar.target > 0 && ratio > bar.target;
  const double left = kMargin + kLabels;
  canvas.Text(left - 8, y + 11, bar.name, 11, Canvas::Align::kRight);
  canvas.Box(left, y + 1, Width(bar.limitNanoseconds), 6, kLimitColour);
  canvas.Box(left, y + 7, Width(bar.nanoseconds), 6, missed ? kMissedColour : kOverColour);
  std::string text = Number(ratio, "× %.2f");
  if (bar.target > 0) text += Number(bar.target, " (target %.2f)");
  canvas.Text(left + kBars + 10, y + 11, text, 11);
}

}  // namespace

void WritePlot(const std::string& file, const std::vector<Bar>& bars) {
  int panels = 0;
  for (std::size_t i = 0; i < bars.size(); ++i) panels += i == 0 || bars[i].platform != bars[i - 1].platform;
  const double width = 2 * kMargin + kLabels + kBars + kRatios;
  const double height = kHeader + static_cast<double>(bars.size()) * kRow + panels * kPanelGap + kMargin;
  Canvas canvas(file, width, height);
  canvas.Text(kMargin, 26, "What the bundle adds to the platform's calls", 16);
  canvas.Box(kMargin, 40, 18, 6, kLimitColour);
  canvas.Text(kMargin + 24, 47, "the limit", 11);
  canvas.Box(kMargin + 100, 40, 18, 6, kOverColour);
  canvas.Text(kMargin + 124, 47, "the row", 11);
  canvas.Box(kMargin + 190, 40, 18, 6, kMissedColour);
  canvas.Text(kMargin + 214, 47, "the row, target not met", 11);

  double y = kHeader;
  for (std::size_t i = 0; i < bars.size(); ++i) {
    if (i == 0 || bars[i].platform != bars[i - 1].platform) {
      std::size_t end = i;
      while (end < bars.size() && bars[end].platform == bars[i].platform) ++end;
      y += kPanelGap;
      canvas.Text(kMargin, y - 8, bars[i].platform + " platform", 13);
      DrawGrid(canvas, y, y + static_cast<double>(end - i) * kRow);
    }
    DrawRow(canvas, y, bars[i]);
    y += kRow;
  }
}

}  // namespace bench
