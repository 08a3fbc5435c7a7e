// hostrun/main.cpp - hostrun: runs programs of the host language through a bundle, and the tools around it.
#include <CLI/CLI.hpp>

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <exception>
#include <sstream>
#include <string>
#include <string_view>

#include "hostrun/commands/commands.h"
#include "hostrun/commands/finish.h"
#include "hostrun/commands/run.h"
#include "hostrun/commands/terminal.h"
#include "hostrun/host/suggest.h"
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
    {"check-syntax", "Says what is wrong with programs, without running them.", &hostrun::CheckSyntaxCommand},
    {"trace", "Runs a program and shows each call as it crosses.", &hostrun::TraceCommand},
    {"repl", "Runs statements as they are typed and shows values.", &hostrun::ReplCommand},
    {"docs", "Writes the reference of the registered classes as one HTML page.", &hostrun::DocsCommand},
    {"swatches", "Draws colours in a picture.", &hostrun::SwatchesCommand},
};
constexpr Command kRun = {"", "Runs programs of the host language through a bundle.", &hostrun::RunCommand};

std::vector<std::string> OptionsOf(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::Option* const option : app.get_options()) {
    for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
  }
  return names;
}

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
  } catch (const CLI::ExtrasError& error) {
    const std::vector<std::string> unknown = app.remaining();
    if (unknown.empty()) throw;
    return hostrun::Refuse(name, "wanted no more arguments or an option that it has, found " +
                                     unknown.front() + hostrun::DidYouMean(unknown.front(), OptionsOf(app)) +
                                     "; " + name + " --help says more");
  } catch (const CLI::ParseError& error) {
    return hostrun::Refuse(name, std::string(error.what()) + "; " + name + " --help says more");
  }
  return action();
}

// "help COMMAND" is "COMMAND --help", and "help" is "--help".
int Help(int argc, char** argv);

int Dispatch(int argc, char** argv) {
  if (argc >= 2 && std::string_view(argv[1]) == "help") return Help(argc, argv);
  CLI::App app;
  for (const Command& command : kCommands) {
    if (argc >= 2 && std::string_view(argv[1]) == command.name)
      return Start(command, app, "hostrun " + std::string(command.name), argc - 1, argv + 1);
  }
  if (argc >= 2 && argv[1][0] != '-' && hostrun::NamesNoProgram(argv[1])) {
    std::vector<std::string> names;
    for (const Command& command : kCommands) names.emplace_back(command.name);
    return hostrun::RefuseNoProgram(argv[1], hostrun::DidYouMean(argv[1], names));
  }
  std::string footer = "Commands (hostrun help COMMAND says more):\n";
  for (const Command& command : kCommands) {
    footer += "  " + hostrun::Padded(command.name, 14) + command.purpose + "\n";
  }
  app.footer(
      footer +
      "\nExample:\n  hostrun examples/first-colors.bas\n\n"
      "Exit status: 0 fine, 1 an uncaught host exception (or with --leaks something still alive), 2 an "
      "error of use\nor in the program; otherwise what Quit gives.");
  app.set_version_flag("--version", "hostrun " QVX_VERSION);
  return Start(kRun, app, "hostrun", argc, argv);
}

int Help(int argc, char** argv) {
  std::string wish = "--help";
  if (argc == 2) {
    std::array<char*, 3> line = {argv[0], wish.data(), nullptr};
    return Dispatch(2, line.data());
  }
  const std::string_view name = argv[2];
  const bool known =
      std::ranges::any_of(kCommands, [&](const Command& command) { return name == command.name; });
  if (argc > 3 || !known) {
    return hostrun::Refuse("hostrun help", "wanted one command, found " +
                                               std::string(argc > 3 ? argv[3] : argv[2]) +
                                               "; hostrun --help lists the commands");
  }
  std::array<char*, 4> line = {argv[0], argv[2], wish.data(), nullptr};
  return Dispatch(3, line.data());
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
