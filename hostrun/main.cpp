// hostrun/main.cpp - hostrun: runs programs of the host language through a bundle, and the tools around it.
#include <CLI/CLI.hpp>

#include <unistd.h>

#include <cstdio>
#include <exception>
#include <string>
#include <string_view>

#include "hostrun/commands/check.h"
#include "hostrun/commands/classes.h"
#include "hostrun/commands/docs.h"
#include "hostrun/commands/repl.h"
#include "hostrun/commands/run.h"
#include "hostrun/commands/swatches.h"
#include "hostrun/commands/trace.h"
#include "hostrun/language/program.h"

namespace {

// Reads one command's options and runs it.
template <class Options>
int Start(CLI::App& app, const std::string& name, void (*add)(CLI::App&, Options&),
          int (*run)(const Options&), int argc, char** argv) {
  Options options;
  add(app, options);
  app.name(name);
  try {
    app.parse(argc, argv);
  } catch (const CLI::Success& wish) {
    return app.exit(wish);
  } catch (const CLI::ParseError& error) {
    std::fprintf(stderr, "%s: %s; %s --help says more\n", name.c_str(), error.what(), name.c_str());
    return hostrun::kExitUse;
  }
  return run(options);
}

struct Command {
  const char* name;
  const char* purpose;
  int (*start)(CLI::App& app, const std::string& name, int argc, char** argv);
};

constexpr Command kCommands[] = {
    {"classes", "Shows the registered classes and their members.",
     [](CLI::App& app, const std::string& name, int argc, char** argv) {
       return Start(app, name, &hostrun::AddClassesOptions, &hostrun::Classes, argc, argv);
     }},
    {"check", "Checks a bundle: its file, its records, every function.",
     [](CLI::App& app, const std::string& name, int argc, char** argv) {
       return Start(app, name, &hostrun::AddCheckOptions, &hostrun::Check, argc, argv);
     }},
    {"trace", "Runs a program and shows each call as it crosses.",
     [](CLI::App& app, const std::string& name, int argc, char** argv) {
       return Start(app, name, &hostrun::AddTraceOptions, &hostrun::Trace, argc, argv);
     }},
    {"repl", "Runs statements as they are typed and shows values.",
     [](CLI::App& app, const std::string& name, int argc, char** argv) {
       return Start(app, name, &hostrun::AddReplOptions, &hostrun::Repl, argc, argv);
     }},
    {"docs", "Writes the reference of the registered classes as one HTML page.",
     [](CLI::App& app, const std::string& name, int argc, char** argv) {
       return Start(app, name, &hostrun::AddDocsOptions, &hostrun::Docs, argc, argv);
     }},
    {"swatches", "Draws colours in a picture.",
     [](CLI::App& app, const std::string& name, int argc, char** argv) {
       return Start(app, name, &hostrun::AddSwatchesOptions, &hostrun::Swatches, argc, argv);
     }},
};

int Dispatch(int argc, char** argv) {
  for (const Command& command : kCommands) {
    if (argc < 2 || std::string_view(argv[1]) != command.name) continue;
    CLI::App app(command.purpose);
    return command.start(app, "hostrun " + std::string(command.name), argc - 1, argv + 1);
  }
  CLI::App app("Runs programs of the host language through a bundle.");
  std::string footer = "Commands (hostrun COMMAND --help says more):\n";
  for (const Command& command : kCommands) {
    footer += "  " + std::string(command.name) +
              std::string(10 - std::string_view(command.name).size(), ' ') + command.purpose + "\n";
  }
  app.footer(
      footer +
      "\nExample:\n  hostrun examples/first-colors.bas\n\n"
      "Exit status: 0 fine, 1 an uncaught host exception (or with --leaks something still alive), 2 an "
      "error of use\nor in the program; otherwise what Quit gives.");
  app.set_version_flag("--version", "hostrun " QVX_VERSION);
  return Start(app, "hostrun", &hostrun::AddRunOptions, &hostrun::Run, argc, argv);
}

}  // namespace

int main(int argc, char** argv) {
  int status = hostrun::kExitUse;
  try {
    status = Dispatch(argc, argv);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "hostrun: %s\n", error.what());
  }
  std::fflush(nullptr);
  // The platform's threads and tables need no tidying, and the process is over.
  _exit(status);
}
