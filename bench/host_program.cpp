// bench/host_program.cpp - a program of the host language, timed from outside.
#include "bench/host_program.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <stdexcept>
#include <string>

namespace bench {

namespace {

double Nanoseconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) * 1e9 + static_cast<double>(time.tv_usec) * 1e3;
}

// The processor time that the program of that name takes for so many turns.
double TimeOf(const std::string& name, long turns) {
  std::string program = BENCH_HOSTRUN;
  std::string source = std::string(BENCH_PROGRAMS "/") + name;
  std::string argument = std::to_string(turns);
  char* const arguments[] = {program.data(), source.data(), argument.data(), nullptr};
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  pid_t child = 0;
  const int failure = posix_spawn(&child, program.c_str(), &actions, nullptr, arguments, environ);
  posix_spawn_file_actions_destroy(&actions);
  int status = 0;
  rusage usage = {};
  if (failure != 0 || wait4(child, &status, 0, &usage) != child || status != 0) {
    throw std::runtime_error("wanted " + program + " to run " + source + ", found a failure");
  }
  return Nanoseconds(usage.ru_utime) + Nanoseconds(usage.ru_stime);
}

}  // namespace

std::vector<double> MeasureHostProgram(const std::string& name, long turns, int repetitions) {
  if (access(BENCH_HOSTRUN, X_OK) != 0) {
    std::fprintf(stderr,
                 "bench: no row for a host program: wanted %s, found none; build the target hostrun\n",
                 BENCH_HOSTRUN);
    return {};
  }
  std::vector<double> nanoseconds;
  for (int i = 0; i < repetitions; ++i) {
    const double many = TimeOf(name, turns);
    nanoseconds.push_back((many - TimeOf(name, 1)) / static_cast<double>(turns - 1));
  }
  return nanoseconds;
}

}  // namespace bench
