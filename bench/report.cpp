// bench/report.cpp - turns what was measured into the table, the JSON and the plots.
//
//   report RAW PAIRS INSTRUCTIONS DESKTOP TABLE JSON PLOT GROWTH
//
// RAW is what `bench measure` wrote, PAIRS what runs of `bench pairs` wrote; INSTRUCTIONS has lines
// "platform/row <tab> instructions per call", DESKTOP the same of the desktop bundle. The last two may be
// missing. The exit status is 0 whether or not targets are met: the machine may be busy. The table says
// which.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <map>
#include <nlohmann/json.hpp>
#include <sstream>

#include "bench/growth_plot.h"
#include "bench/plot.h"

namespace bench {

namespace {

using nlohmann::json;

double Median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  const std::size_t middle = values.size() / 2;
  return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

std::string FullName(const json& row) {
  return row["platform"].get<std::string>() + "/" + row["name"].get<std::string>();
}

std::map<std::string, double> ReadInstructions(const char* file) {
  std::map<std::string, double> counts;
  std::ifstream input(file);
  std::string line;
  while (std::getline(input, line)) {
    const std::size_t tab = line.find('\t');
    if (tab != std::string::npos) counts[line.substr(0, tab)] = std::atof(line.c_str() + tab + 1);
  }
  return counts;
}

// The ratio of each row's time to its prescribed path's, each the fastest of all runs: where a process has
// its memory decides a tenth of so short a call.
std::map<std::string, double> ReadPairs(const char* file) {
  std::map<std::string, std::pair<double, double>> fastest;
  std::ifstream input(file);
  for (std::string line; std::getline(input, line);) {
    const std::size_t tab = line.find('\t');
    double path = 0;
    double row = 0;
    if (tab == std::string::npos || std::sscanf(line.c_str() + tab, "%lf %lf", &path, &row) != 2) continue;
    const auto [found, isFirst] = fastest.try_emplace(line.substr(0, tab), path, row);
    if (isFirst) continue;
    found->second.first = std::min(found->second.first, path);
    found->second.second = std::min(found->second.second, row);
  }
  std::map<std::string, double> ratios;
  for (const auto& [name, each] : fastest) ratios[name] = each.second / each.first;
  return ratios;
}

// Adds to each row its median, its spread, its instructions, its ratio to its limit and whether it meets its
// target.
void Evaluate(json& rows, const std::map<std::string, double>& pairs,
              const std::map<std::string, double>& instructions,
              const std::map<std::string, double>& desktop) {
  std::map<std::string, double> medians;
  std::map<std::string, double> minima;
  for (json& row : rows) {
    const auto samples = row["nanoseconds"].get<std::vector<double>>();
    row["median"] = Median(samples);
    row["minimum"] = *std::min_element(samples.begin(), samples.end());
    row["maximum"] = *std::max_element(samples.begin(), samples.end());
    medians[FullName(row)] = row["median"];
    minima[FullName(row)] = row["minimum"];
    const auto counted = instructions.find(FullName(row));
    if (counted != instructions.end()) row["instructions"] = counted->second;
    const auto onDesktop = desktop.find(FullName(row));
    if (onDesktop != desktop.end() && counted != instructions.end())
      row["desktop"] = onDesktop->second / counted->second;
  }
  for (json& row : rows) {
    const double median = row["median"];
    if (!row["limit"].get<std::string>().empty()) {
      const std::string limit = row["platform"].get<std::string>() + "/" + row["limit"].get<std::string>();
      row["ratio"] = median / medians.at(limit);
      row["ratio_of_minima"] = row["minimum"].get<double>() / minima.at(limit);
      if (row["target"] > 0.0) row["met"] = row["ratio"] <= row["target"];
    }
    const std::string path = row.value("path", "");
    const auto pair = pairs.find(FullName(row));
    if (!path.empty() && pair != pairs.end()) {
      row["ratio_to_path"] = pair->second;
      const std::string name = row["platform"].get<std::string>() + "/" + path;
      bool met = row["ratio_to_path"] <= row["path_target"];
      const auto counted = instructions.find(name);
      if (counted != instructions.end() && row.contains("instructions")) {
        row["instructions_to_path"] = row["instructions"].get<double>() / counted->second;
        met = met && row["instructions_to_path"] <= row["path_target"];
      }
      row["path_met"] = met;
    }
    if (row["target_nanoseconds"] > 0.0) row["met"] = median <= row["target_nanoseconds"];
  }
}

std::string Number(double value, int digits) {
  char text[40];
  std::snprintf(text, sizeof text, "%.*f", digits, value);
  return text;
}

std::string Time(double nanoseconds) {
  if (nanoseconds < 1e3) return Number(nanoseconds, 1) + " ns";
  if (nanoseconds < 1e6) return Number(nanoseconds / 1e3, 2) + " us";
  return Number(nanoseconds / 1e6, 2) + " ms";
}

std::string Target(const json& row) {
  std::string text;
  if (row["target"] > 0.0) text = Number(row["target"], 2);
  if (row["target_nanoseconds"] > 0.0) text = Time(row["target_nanoseconds"]);
  if (!text.empty()) text += row["met"].get<bool>() ? " met" : " NOT met";
  return text;
}

// A count that some rows don't have.
std::string CountOr(const json& row, const char* key) {
  return row.contains(key) ? Number(row[key], 1) : "-";
}

// The prescribed paths have a part of the table of their own.
bool IsPath(const json& row) {
  return row["name"].get<std::string>().rfind("prescribed path: ", 0) == 0;
}

void WriteTable(std::ostream& out, const json& rows) {
  char line[240];
  std::string platform;
  for (const json& row : rows) {
    if (IsPath(row)) continue;
    if (row["platform"] != platform) {
      platform = row["platform"];
      std::snprintf(line, sizeof line, "\n%-46s %11s %11s %8s %11s %9s %7s %7s  %s\n",
                    (platform + " platform").c_str(), "median", "instruct.", "desktop", "allocations",
                    "by bundle", "ratio", "minima", "target");
      out << line;
    }
    const bool hasInstructions = row.contains("instructions");
    const bool hasRatio = row.contains("ratio");
    std::snprintf(line, sizeof line, "%-46s %11s %11s %8s %11s %9s %7s %7s  %s",
                  row["name"].get<std::string>().c_str(), Time(row["median"]).c_str(),
                  hasInstructions ? Number(row["instructions"], 0).c_str() : "-",
                  row.contains("desktop") ? Number(row["desktop"], 2).c_str() : "-",
                  CountOr(row, "allocations").c_str(), CountOr(row, "bundle_allocations").c_str(),
                  hasRatio ? Number(row["ratio"], 2).c_str() : "",
                  hasRatio ? Number(row["ratio_of_minima"], 2).c_str() : "", Target(row).c_str());
    std::string text = line;
    text.erase(text.find_last_not_of(' ') + 1);
    if (hasRatio && !row["limit"].get<std::string>().empty()) {
      text.resize(std::max<std::size_t>(text.size(), 133), ' ');
      text += " / " + row["limit"].get<std::string>();
    }
    out << text << "\n";
  }
}

// Each row beside its prescribed path.
void WritePaths(std::ostream& out, const json& rows) {
  std::map<std::string, double> paths;  // instructions
  for (const json& row : rows) {
    if (IsPath(row)) paths[FullName(row)] = row.value("instructions", 0.0);
  }
  char line[240];
  std::snprintf(line, sizeof line, "\n%-58s %9s %9s %7s %7s %7s\n", "against the prescribed path", "path",
                "row", "ratio", "time", "target");
  out << line;
  for (const json& row : rows) {
    if (!row.contains("ratio_to_path")) continue;
    const bool counted = row.contains("instructions_to_path");
    const std::string path = row["platform"].get<std::string>() + "/" + row["path"].get<std::string>();
    std::snprintf(line, sizeof line, "%-58s %9s %9s %7s %7s %7s %s\n", FullName(row).c_str(),
                  counted ? Number(paths.at(path), 0).c_str() : "-",
                  counted ? Number(row["instructions"], 0).c_str() : "-",
                  counted ? Number(row["instructions_to_path"], 2).c_str() : "-",
                  Number(row["ratio_to_path"], 2).c_str(), Number(row["path_target"], 2).c_str(),
                  row["path_met"].get<bool>() ? "met" : "NOT met");
    out << line;
  }
}

// What of the rows grows with their sizes, from size to fastest time.
std::vector<Growth> GrowthOf(const json& rows) {
  std::map<std::pair<std::string, std::string>, std::vector<std::pair<double, double>>> series;
  for (const json& row : rows) {
    const std::string name = row.value("series", "");
    if (!name.empty()) series[{row["platform"], name}].emplace_back(row["size"], row["minimum"]);
  }
  std::vector<Growth> growth;
  for (auto& [name, points] : series) {
    std::sort(points.begin(), points.end());
    growth.push_back({name.first, name.second, points});
  }
  return growth;
}

// A line for each step of a series.
void WriteGrowth(std::ostream& out, const std::vector<Growth>& growth) {
  char line[240];
  std::snprintf(line, sizeof line, "\n%-46s %10s %11s %9s\n", "growth", "size", "fastest", "exponent");
  out << line;
  for (const Growth& each : growth) {
    for (std::size_t i = 0; i < each.points.size(); ++i) {
      const auto& [size, time] = each.points[i];
      const std::string exponent = i > 0 ? Number(Exponent(each.points[i - 1], each.points[i]), 2) : "";
      std::snprintf(line, sizeof line, "%-46s %10.0f %11s %9s\n", (each.platform + "/" + each.name).c_str(),
                    size, Time(time).c_str(), exponent.c_str());
      out << line;
    }
  }
}

}  // namespace

}  // namespace bench

int main(int count, char** arguments) {
  if (count != 9) {
    std::cerr << "report: wanted RAW PAIRS INSTRUCTIONS DESKTOP TABLE JSON PLOT GROWTH; use tools/bench\n";
    return 2;
  }
  try {
    nlohmann::json results = nlohmann::json::parse(std::ifstream(arguments[1]));
    bench::Evaluate(results["rows"], bench::ReadPairs(arguments[2]), bench::ReadInstructions(arguments[3]),
                    bench::ReadInstructions(arguments[4]));
    std::ostringstream table;
    bench::WriteTable(table, results["rows"]);
    bench::WritePaths(table, results["rows"]);
    const std::vector<bench::Growth> growth = bench::GrowthOf(results["rows"]);
    bench::WriteGrowth(table, growth);
    std::cout << table.str();
    std::ofstream(arguments[5]) << table.str();
    std::ofstream(arguments[6]) << results.dump(1) << "\n";
    std::vector<bench::Bar> bars;
    for (const auto& row : results["rows"]) {
      if (!row.contains("ratio")) continue;
      bars.push_back({row["platform"], row["name"], row["limit"], row["median"],
                      row["median"].get<double>() / row["ratio"].get<double>(), row["target"]});
    }
    bench::WritePlot(arguments[7], bars);
    bench::WriteGrowthPlot(arguments[8], growth);
  } catch (const std::exception& problem) {
    std::cerr << "report: " << problem.what() << "\n";
    return 1;
  }
  return 0;
}
