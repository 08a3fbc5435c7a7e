// hostrun/commands/commands.h - the commands of hostrun, as its table of commands knows them.
#pragma once

#include <functional>

#include "hostrun/commands/command_line.h"

namespace hostrun {

// What a command does. Gives the exit status of the process; may throw std::exception, whose text is then one
// line for the user.
using Action = std::function<int()>;

// Each adds a command's options to `line` and gives its action, to be called once, after `line` was read and
// while it still lives.
Action CheckCommand(CommandLine& line);
Action CheckSyntaxCommand(CommandLine& line);
Action ClassesCommand(CommandLine& line);
Action DebugCommand(CommandLine& line);
Action DocsCommand(CommandLine& line);
Action ReplCommand(CommandLine& line);
Action RunCommand(CommandLine& line);
Action SwatchesCommand(CommandLine& line);
Action TraceCommand(CommandLine& line);

}  // namespace hostrun
