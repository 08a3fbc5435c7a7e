// hostrun/commands/commands.h - the commands of hostrun, as its table of commands knows them.
#pragma once

#include <CLI/CLI.hpp>

#include <functional>

namespace hostrun {

// What a command does. Gives the exit status of the process; may throw std::exception, whose text is then one
// line for the user.
using Action = std::function<int()>;

// Each adds a command's options to `app` and gives its action, to be called once, after `app` has read the
// command line and while it still lives.
Action CheckCommand(CLI::App& app);
Action CheckSyntaxCommand(CLI::App& app);
Action ClassesCommand(CLI::App& app);
Action DebugCommand(CLI::App& app);
Action DocsCommand(CLI::App& app);
Action ReplCommand(CLI::App& app);
Action RunCommand(CLI::App& app);
Action SwatchesCommand(CLI::App& app);
Action TraceCommand(CLI::App& app);

}  // namespace hostrun
