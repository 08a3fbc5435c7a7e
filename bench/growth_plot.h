// bench/growth_plot.h - the plot of what grows with a size.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace bench {

// One call at several sizes: from size to nanoseconds, by size.
struct Growth {
  std::string platform;
  std::string name;
  std::vector<std::pair<double, double>> points;
};

// How the time grows from one size to the next: 0 for not at all, 1 for in proportion.
double Exponent(std::pair<double, double> from, std::pair<double, double> to);

// Writes an SVG, one panel for each platform, both axes logarithmic.
void WriteGrowthPlot(const std::string& file, const std::vector<Growth>& series);

}  // namespace bench
