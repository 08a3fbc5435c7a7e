// bench/start/main.cpp - what libcocoa adds to the start of a GNUstep program.
//
// The same program, linked with GNUstep alone and with libcocoa before it, is run by turns. For each stage:
// the medians of both and their difference, in time from start to end, in processor time, in instructions
// where the processor counts them, and in memory. Both find GNUstep's resources through the same
// configuration file.
#include <fcntl.h>
#include <linux/perf_event.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

constexpr unsigned kFewestRuns = 30;
constexpr unsigned kRuns = 60;

enum Measure : std::size_t { kWall, kProcessor, kInstructions, kResident, kShare, kOwn, kMeasures };

struct MeasureText {
  const char* name;
  const char* unit;
};
constexpr std::array<MeasureText, kMeasures> kTexts{{{"from start to end", "ms"},
                                                     {"processor time", "ms"},
                                                     {"instructions", "million"},
                                                     {"resident memory", "MiB"},
                                                     {"share of memory", "MiB"},
                                                     {"memory of its own", "MiB"}}};

using Run = std::array<double, kMeasures>;

double milliseconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_usec) / 1e3;
}

// Counts the instructions of a process and its children from its exec on; -1 where nothing counts them.
int instructionsOf(pid_t process) {
  perf_event_attr attributes = {};
  attributes.type = PERF_TYPE_HARDWARE;
  attributes.size = sizeof attributes;
  attributes.config = PERF_COUNT_HW_INSTRUCTIONS;
  attributes.disabled = 1;
  attributes.enable_on_exec = 1;
  attributes.inherit = 1;
  attributes.exclude_kernel = 1;
  attributes.exclude_hv = 1;
  return static_cast<int>(syscall(SYS_perf_event_open, &attributes, process, -1, -1, 0UL));
}

// The program's run to the stage. Ends this program if it fails: there is nothing to compare then.
Run measure(const char* program, const char* stage, const std::string& configuration) {
  std::array<int, 2> go{};
  std::array<int, 2> answer{};
  if (pipe(go.data()) != 0 || pipe(answer.data()) != 0) std::exit(EXIT_FAILURE);
  const pid_t child = fork();
  if (child == 0) {
    char byte = 0;
    close(go[1]);
    if (read(go[0], &byte, 1) != 1) _exit(EXIT_FAILURE);
    dup2(answer[1], STDOUT_FILENO);
    for (const int end : {go[0], answer[0], answer[1]}) close(end);
    const char* const environment[] = {configuration.c_str(), "PATH=/usr/bin:/bin", "LC_ALL=C.UTF-8",
                                       nullptr};
    execle(program, program, stage, nullptr, environment);
    _exit(EXIT_FAILURE);
  }
  close(go[0]);
  close(answer[1]);
  const int counter = instructionsOf(child);
  const auto start = std::chrono::steady_clock::now();
  bool worked = write(go[1], "g", 1) == 1;
  std::string text;
  std::array<char, 256> buffer{};
  for (ssize_t got = 0; (got = read(answer[0], buffer.data(), buffer.size())) > 0;)
    text.append(buffer.data(), static_cast<std::size_t>(got));
  int status = 0;
  rusage usage{};
  wait4(child, &status, 0, &usage);
  const std::chrono::duration<double, std::milli> wall = std::chrono::steady_clock::now() - start;
  close(go[1]);
  close(answer[0]);

  Run run{};
  run[kWall] = wall.count();
  run[kProcessor] = milliseconds(usage.ru_utime) + milliseconds(usage.ru_stime);
  std::uint64_t instructions = 0;
  if (counter != -1 && read(counter, &instructions, sizeof instructions) == sizeof instructions)
    run[kInstructions] = static_cast<double>(instructions) / 1e6;
  if (counter != -1) close(counter);
  std::array<int, 3> kib{};
  worked = worked && status == 0 && std::sscanf(text.c_str(), "%d %d %d", &kib[0], &kib[1], &kib[2]) == 3;
  if (!worked) {
    std::fprintf(stderr, "start_cost: wanted %s to reach \"%s\", found status %d; build it anew\n", program,
                 stage, status);
    std::exit(EXIT_FAILURE);
  }
  for (std::size_t i = 0; i < kib.size(); ++i) run.at(kResident + i) = kib.at(i) / 1024.0;
  return run;
}

double median(const std::vector<Run>& runs, std::size_t which) {
  std::vector<double> values;
  values.reserve(runs.size());
  for (const Run& run : runs) values.push_back(run.at(which));
  std::sort(values.begin(), values.end());
  const std::size_t half = values.size() / 2;
  return values.size() % 2 != 0 ? values[half] : (values[half - 1] + values[half]) / 2;
}

void compare(const char* stage, const std::string& configuration, unsigned times) {
  std::vector<Run> plain;
  std::vector<Run> here;
  measure(START_PLAIN, stage, configuration);  // fills the caches
  measure(START_HERE, stage, configuration);
  for (unsigned i = 0; i < times; ++i) {
    plain.push_back(measure(START_PLAIN, stage, configuration));
    here.push_back(measure(START_HERE, stage, configuration));
  }
  for (std::size_t i = 0; i < kMeasures; ++i) {
    const double without = median(plain, i);
    const double with = median(here, i);
    if (i == kInstructions && without == 0) continue;  // the processor does not count
    std::printf("%-10s %-20s %10.2f %10.2f %+10.2f %s\n", stage, kTexts.at(i).name, without, with,
                with - without, kTexts.at(i).unit);
  }
}

}  // namespace

// start_cost [RUNS]
int main(int argc, char** argv) {
  const unsigned wanted = argc > 1 ? static_cast<unsigned>(std::strtoul(argv[1], nullptr, 10)) : kRuns;
  const unsigned times = std::max(kFewestRuns, wanted);
  std::string folder = (fs::temp_directory_path() / "start-cost-XXXXXX").string();
  if (mkdtemp(folder.data()) == nullptr) return EXIT_FAILURE;
  const fs::path file = fs::path(folder) / "GNUstep.conf";
  std::ofstream(file) << "GNUSTEP_USER_CONFIG_FILE=.none\n"
                      << "GNUSTEP_USER_DIR_LIBRARY=" << folder << "/User\n"
                      << "GNUSTEP_USER_DEFAULTS_DIR=" << folder << "/Defaults\n"
                      << "GNUSTEP_SYSTEM_LIBRARY=" << START_RESOURCES << "\n";
  std::printf("medians of %u runs by turns\n%-10s %-20s %10s %10s %10s\n", times, "until", "", "GNUstep",
              "with it", "added");
  for (const char* stage : {"loaded", "colour", "converted"})
    compare(stage, "GNUSTEP_CONFIG_FILE=" + file.string(), times);
  fs::remove_all(folder);
  return EXIT_SUCCESS;
}
