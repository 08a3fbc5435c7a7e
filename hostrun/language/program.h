// hostrun/language/program.h - a program from its text to its end.
#pragma once

#include <string>

#include "hostrun/language/binder.h"
#include "hostrun/language/source.h"

namespace hostrun {

inline constexpr int kExitFine = 0;
inline constexpr int kExitException = 1;  // an uncaught host exception, or a leak where that is an error
inline constexpr int kExitUse = 2;        // an error of use, syntax or binding

// Parses and binds; throws ProgramError.
BoundProgram Compile(const Source& source);

// Runs it to its end, reports an uncaught exception on stderr, releases all of its variables. Gives the exit
// status.
int RunProgram(const BoundProgram& program, const Source& source);

// What RunProgram does around a program, for who runs one in parts.
void BeginRunning();
void EndRunning();
void ReportUncaught(const Source& source, Object* exception);

}  // namespace hostrun
