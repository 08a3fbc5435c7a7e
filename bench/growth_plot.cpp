// bench/growth_plot.cpp - the plot of what grows with a size: a line for each call.
#include "bench/growth_plot.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "bench/canvas.h"

namespace bench {

namespace {

constexpr double kMargin = 20;
constexpr double kScale = 56;   // the labels of the times
constexpr double kPlot = 430;   // one panel's width
constexpr double kNames = 250;  // what the lines are called
constexpr double kHeight = 400;
constexpr double kTop = 62;
constexpr double kBottom = 40;
constexpr double kPanel = kScale + kPlot + kNames;
constexpr double kLineOfText = 13;

constexpr Colour kLines[] = {{0.20, 0.45, 0.75}, {0.80, 0.33, 0.20}, {0.25, 0.60, 0.35}, {0.55, 0.35, 0.70},
                             {0.80, 0.60, 0.10}, {0.35, 0.35, 0.40}, {0.10, 0.60, 0.65}, {0.85, 0.40, 0.60},
                             {0.50, 0.45, 0.20}, {0.30, 0.30, 0.80}};

struct Scale {
  double fewest, most;
  double Part(double value) const { return std::log(value / fewest) / std::log(most / fewest); }
};
constexpr Scale kSizes = {1, 1e8};
constexpr Scale kTimes = {1e1, 1e9};

double X(double left, double size) {
  return left + kPlot * kSizes.Part(size);
}
double Y(double nanoseconds) {
  return kTop + kHeight * (1 - kTimes.Part(nanoseconds));
}

void DrawGrid(Canvas& canvas, double left) {
  const char* const sizes[] = {"1", "10", "100", "1 000", "10 000", "100 000", "1 M", "10 M", ""};
  const char* const times[] = {"10 ns", "100 ns", "1 µs", "10 µs", "100 µs", "1 ms", "10 ms", "100 ms", ""};
  for (int i = 0; i <= 8; ++i) {
    const double size = kSizes.fewest * std::pow(10.0, i);
    const double time = kTimes.fewest * std::pow(10.0, i);
    canvas.Line(X(left, size), kTop, X(left, size), kTop + kHeight, kGrid);
    canvas.Line(left, Y(time), left + kPlot, Y(time), kGrid);
    canvas.Text(X(left, size), kTop + kHeight + 16, sizes[i], 10, Canvas::Align::kCentre);
    canvas.Text(left - 6, Y(time) + 4, times[i], 10, Canvas::Align::kRight);
  }
}

struct Label {
  double y;
  std::string text;
  Colour colour;
};

// The names stand at the ends of their lines, moved down where they would cover each other.
void DrawLabels(Canvas& canvas, double left, std::vector<Label> labels) {
  std::sort(labels.begin(), labels.end(), [](const Label& a, const Label& b) { return a.y < b.y; });
  double next = kTop;
  for (const Label& label : labels) {
    const double y = std::max(label.y + 4, next);
    canvas.Text(left, y, label.text, 11, Canvas::Align::kLeft, label.colour);
    next = y + kLineOfText;
  }
}

void DrawPanel(Canvas& canvas, double left, const std::vector<Growth>& series, const std::string& platform) {
  canvas.Text(left, kTop - 12, platform + " platform", 13);
  DrawGrid(canvas, left);
  std::vector<Label> labels;
  for (const Growth& each : series) {
    if (each.platform != platform || each.points.size() < 2) continue;
    const Colour colour = kLines[labels.size() % std::size(kLines)];
    for (std::size_t i = 1; i < each.points.size(); ++i) {
      const auto& [size, time] = each.points[i];
      const auto& [sizeBefore, timeBefore] = each.points[i - 1];
      canvas.Line(X(left, sizeBefore), Y(timeBefore), X(left, size), Y(time), colour, 1.6);
    }
    for (const auto& [size, time] : each.points) canvas.Box(X(left, size) - 2, Y(time) - 2, 4, 4, colour);
    char exponent[16];
    std::snprintf(exponent, sizeof exponent, ", %.2f", Exponent(each.points.front(), each.points.back()));
    labels.push_back({Y(each.points.back().second), each.name + exponent, colour});
  }
  DrawLabels(canvas, left + kPlot + 10, labels);
}

}  // namespace

double Exponent(std::pair<double, double> from, std::pair<double, double> to) {
  const double exponent = std::log(to.second / from.second) / std::log(to.first / from.first);
  return std::fabs(exponent) < 0.005 ? 0 : exponent;  // not "-0.00"
}

void WriteGrowthPlot(const std::string& file, const std::vector<Growth>& series) {
  Canvas canvas(file, 2 * kMargin + 2 * kPanel, kTop + kHeight + kBottom);
  canvas.Text(kMargin, 26,
              "What grows with a size: fastest time by units, bytes, colours, wrappers or functions", 16);
  canvas.Text(kMargin + 2 * kPanel, 26,
              "behind each name: the exponent from its smallest size to its largest", 11,
              Canvas::Align::kRight);
  DrawPanel(canvas, kMargin + kScale, series, "scripted");
  DrawPanel(canvas, kMargin + kPanel + kScale, series, "real");
}

}  // namespace bench
