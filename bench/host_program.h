// bench/host_program.h - a program of the host language, timed from outside.
#pragma once

#include <string>
#include <vector>

namespace bench {

// Nanoseconds of processor time for one turn of the loop in the program `name` beside this file, one figure
// per repetition: the difference between a run of `turns` turns and a run of one, divided by the turns.
// Empty, with a message, where the host runner has not been built.
std::vector<double> MeasureHostProgram(const std::string& name, long turns, int repetitions);

}  // namespace bench
