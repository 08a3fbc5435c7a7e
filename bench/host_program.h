// bench/host_program.h - a program of the host language, timed from outside.
#pragma once

#include <vector>

namespace bench {

// Nanoseconds of processor time for one turn of the loop in bench/loop.bas, one figure per repetition: the
// difference between a run of many turns and a run of one, divided by the turns. Empty, with a message, where
// the host runner has not been built.
std::vector<double> MeasureHostProgram(int repetitions);

}  // namespace bench
