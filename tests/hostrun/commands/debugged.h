// tests/hostrun/commands/debugged.h - programs under "hostrun debug", with commands from a pipe.
#pragma once

#include <string>
#include <vector>

#include "tests/hostrun/commands/run_hostrun.h"

namespace command_tests {

inline constexpr const char* kSum =
    "Function Twice(n As Integer) As Integer\n"  // 1
    "  Return n * 2\n"                           // 2
    "End Function\n"                             // 3
    "\n"                                         // 4
    "Dim total As Integer\n"                     // 5
    "For i As Integer = 1 To 3\n"                // 6
    "  total = total + Twice(i)\n"               // 7
    "  Print i\n"                                // 8
    "Next\n"                                     // 9
    "Print \"total\", total\n";                  // 10

inline constexpr const char* kEnd = "the program has ended with status 0\n";

// The program is called "debugged.bas" in what comes out.
Finished Debugged(const std::string& program, const std::string& commands,
                  const std::vector<std::string>& options = {});

// What it and the debugger print, where nothing is wrong with the commands.
std::string OutOf(const std::string& program, const std::string& commands);

// What is said to be wrong.
std::string ErrorOf(const std::string& program, const std::string& commands);

}  // namespace command_tests
