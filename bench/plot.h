// bench/plot.h - the plot of a run: each row beside its limit.
#pragma once

#include <string>
#include <vector>

namespace bench {

struct Bar {
  std::string platform;
  std::string name;
  std::string limit;
  double nanoseconds;
  double limitNanoseconds;
  double target;  // the largest ratio; 0 for none
};

// Writes an SVG, one panel for each platform.
void WritePlot(const std::string& file, const std::vector<Bar>& bars);

}  // namespace bench
