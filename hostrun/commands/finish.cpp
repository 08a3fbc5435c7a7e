// hostrun/commands/finish.cpp - the end of every command: what was printed must have arrived.
#include "hostrun/commands/finish.h"

#include "hostrun/commands/terminal.h"
#include "hostrun/host/output.h"
#include "hostrun/host/platform_log.h"

namespace hostrun {

int FinishOutput(int status) {
  WritePlatformLog();
  const Problem problem = OutputProblem();
  return problem ? Refuse("hostrun", *problem) : status;
}

}  // namespace hostrun
