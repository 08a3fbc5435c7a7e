// hostrun/commands/finish.cpp - the end of every command: what was printed must have arrived.
#include "hostrun/commands/finish.h"

#include "hostrun/commands/terminal.h"
#include "hostrun/host/output.h"
#include "hostrun/host/platform_log.h"
#include "hostrun/language/program.h"

namespace hostrun {

int FinishOutput(int status) {
  WritePlatformLog();
  const Problem problem = OutputProblem();
  if (!problem) return status;
  // Whoever stops reading knows it.
  return OutputAbandoned() ? kExitUse : Refuse("hostrun", *problem);
}

}  // namespace hostrun
