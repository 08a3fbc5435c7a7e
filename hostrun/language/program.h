// hostrun/language/program.h - a program from its text to its end.
#pragma once

#include <string>

#include "hostrun/language/binder.h"
#include "hostrun/language/source.h"

namespace hostrun {

inline constexpr int kExitFine = 0;
inline constexpr int kExitException = 1;  // an uncaught host exception, or a leak where that is an error
inline constexpr int kExitUse = 2;        // an error of use, syntax or binding

// Parses and binds; throws ProgramErrors.
BoundProgram Compile(const Source& source);
// The same with a binder that nothing was bound with yet, and that is used again afterwards.
BoundProgram Compile(const Source& source, Binder& binder);

// Runs it to its end, reports an uncaught exception on stderr and empties all of its variables. Gives the
// exit status: one of the above, or that of Quit.
int RunProgram(const BoundProgram& program, const Source& source);

// What RunProgram does around a program, for a session that runs one in parts. Between the two, exceptions
// get traces and calls are counted against the stack.
void BeginRunning();
void EndRunning();
// Writes what the platform logged of the exception, the exception, its line of `source` and the calls that
// led there to stderr.
void ReportUncaught(const Source& source, Object* exception);

}  // namespace hostrun
