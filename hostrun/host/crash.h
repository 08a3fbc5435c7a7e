// hostrun/host/crash.h - what must still be written when a signal ends the process.
#pragma once

namespace hostrun {

// Runs `rescue` when a signal is about to end the process: one of a crash, or one that asks it to end. The
// process then ends as it would have without. Rescues run in the order in which they were added, in the
// context of the signal: they may use nothing but write, rename and what is as harmless. At most four.
void AtCrash(void (*rescue)());

}  // namespace hostrun
