// runner/main.cpp - hostrun: runs programs of the host language through a bundle.
#include <CLI/CLI.hpp>

#include <unistd.h>
#include <cstdio>

#include "runner/commands/run.h"
#include "runner/language/program.h"

int main(int argc, char** argv) {
  CLI::App app("Runs programs of the host language through a bundle.");
  app.footer(
      "Example:\n  hostrun examples/first-colors.bas\n\n"
      "Exit status: 0 fine, 1 an uncaught host exception (or a leak with --leaks), 2 an error of use or in "
      "the program.");
  hostrun::RunOptions options;
  hostrun::AddRunOptions(app, options);
  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp& help) {
    return app.exit(help);
  } catch (const CLI::ParseError& error) {
    std::fprintf(stderr, "hostrun: %s; hostrun --help says more\n", error.what());
    return hostrun::kExitUse;
  }
  const int status = hostrun::Run(options);
  std::fflush(nullptr);
  // The platform's threads and tables need no tidying, and the process is over.
  _exit(status);
}
