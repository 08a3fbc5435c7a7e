// hostrun/main.cpp - hostrun: runs programs of the host language through a bundle, and the tools around it.
#include <CLI/CLI.hpp>

#include <unistd.h>

#include <cstdio>
#include <exception>
#include <sstream>
#include <string>
#include <string_view>

#include "hostrun/commands/commands.h"
#include "hostrun/commands/finish.h"
#include "hostrun/commands/terminal.h"
#include "hostrun/language/program.h"

namespace {

struct Command {
  const char* name;
  const char* purpose;
  hostrun::Action (*prepare)(CLI::App& app);
};

constexpr Command kCommands[] = {
    {"classes", "Shows the registered classes and their members.", &hostrun::ClassesCommand},
    {"check", "Checks a bundle: its file, its records, every function.", &hostrun::CheckCommand},
    {"trace", "Runs a program and shows each call as it crosses.", &hostrun::TraceCommand},
    {"repl", "Runs statements as they are typed and shows values.", &hostrun::ReplCommand},
    {"docs", "Writes the reference of the registered classes as one HTML page.", &hostrun::DocsCommand},
    {"swatches", "Draws colours in a picture.", &hostrun::SwatchesCommand},
};
constexpr Command kRun = {"", "Runs programs of the host language through a bundle.", &hostrun::RunCommand};

// Reads the command line, from the command's name on, and runs the command. Gives the exit status.
int Start(const Command& command, CLI::App& app, const std::string& name, int argc, char** argv) {
  app.description(command.purpose);
  app.name(name);
  const hostrun::Action action = command.prepare(app);
  try {
    app.parse(argc, argv);
  } catch (const CLI::Success& wish) {
    std::ostringstream said;
    const int status = app.exit(wish, said);
    std::fputs(said.str().c_str(), stdout);
    return status;
  } catch (const CLI::ParseError& error) {
    return hostrun::Refuse(name, std::string(error.what()) + "; " + name + " --help says more");
  }
  return action();
}

int Dispatch(int argc, char** argv) {
  CLI::App app;
  for (const Command& command : kCommands) {
    if (argc >= 2 && std::string_view(argv[1]) == command.name)
      return Start(command, app, "hostrun " + std::string(command.name), argc - 1, argv + 1);
  }
  std::string footer = "Commands (hostrun COMMAND --help says more):\n";
  for (const Command& command : kCommands) {
    footer += "  " + hostrun::Padded(command.name, 10) + command.purpose + "\n";
  }
  app.footer(
      footer +
      "\nExample:\n  hostrun examples/first-colors.bas\n\n"
      "Exit status: 0 fine, 1 an uncaught host exception (or with --leaks something still alive), 2 an "
      "error of use\nor in the program; otherwise what Quit gives.");
  app.set_version_flag("--version", "hostrun " QVX_VERSION);
  return Start(kRun, app, "hostrun", argc, argv);
}

}  // namespace

int main(int argc, char** argv) {
  int status = hostrun::kExitUse;
  try {
    status = Dispatch(argc, argv);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "hostrun: %s\n", error.what());
  }
  status = hostrun::FinishOutput(status);
  // The platform's threads and tables need no tidying, and the process is over.
  _exit(status);
}
