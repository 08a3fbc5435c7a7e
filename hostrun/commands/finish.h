// hostrun/commands/finish.h - the end of every command: what was printed must have arrived.
#pragma once

namespace hostrun {

// Writes what still waits to be written. Gives the exit status: `status`, or that of an error of use when
// something that was printed could not be written, which is then said on stderr.
int FinishOutput(int status);

}  // namespace hostrun
