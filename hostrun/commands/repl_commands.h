// hostrun/commands/repl_commands.h - the lines of a repl that begin with a colon: they are for the repl
// itself.
#pragma once

#include <string>

namespace hostrun {

// Runs a line such as ":doc NSColorQVX.getRGB" and writes what it has to say to stdout, errors to stderr.
// False: the session is to end.
bool RunReplCommand(const std::string& line);

}  // namespace hostrun
