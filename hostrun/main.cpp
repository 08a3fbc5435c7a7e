// hostrun/main.cpp - hostrun: runs programs of the host language through a bundle, and the tools around it.
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdio>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "hostrun/commands/commands.h"
#include "hostrun/commands/finish.h"
#include "hostrun/commands/guides.h"
#include "hostrun/commands/run.h"
#include "hostrun/commands/terminal.h"
#include "hostrun/host/output.h"
#include "hostrun/host/suggest.h"
#include "hostrun/language/program.h"

namespace {

struct Command {
  const char* name;
  const char* purpose;
  hostrun::Action (*prepare)(hostrun::CommandLine& line);
};

hostrun::Action ManualCommand(hostrun::CommandLine& line);
hostrun::Action CompletionCommand(hostrun::CommandLine& line);

constexpr Command kCommands[] = {
    {"classes", "Shows the registered classes and their members.", &hostrun::ClassesCommand},
    {"check", "Checks a bundle: its file, its records, every function.", &hostrun::CheckCommand},
    {"check-syntax", "Says what is wrong with programs, without running them.", &hostrun::CheckSyntaxCommand},
    {"trace", "Runs a program and shows each call as it crosses.", &hostrun::TraceCommand},
    {"debug", "Runs a program statement by statement.", &hostrun::DebugCommand},
    {"repl", "Runs statements as they are typed and shows values.", &hostrun::ReplCommand},
    {"docs", "Writes the reference of the registered classes as one HTML page.", &hostrun::DocsCommand},
    {"swatches", "Draws colours in a picture.", &hostrun::SwatchesCommand},
    {"completion", "Writes what a shell reads to complete hostrun's command line.", &CompletionCommand},
    {"manual", "Writes the manual page, for man.", &ManualCommand},
};
constexpr Command kRun = {"", "Runs programs of the host language through a bundle.", &hostrun::RunCommand};
constexpr const char* kVersion = "hostrun " QVX_VERSION;
constexpr const char* kRunFooter =
    "Example:\n  hostrun examples/first-colors.bas\n\n"
    "Exit status: 0 fine, 1 an uncaught host exception (or with --leaks something still alive), 2 an "
    "error of use\nor in the program; otherwise what Quit gives.";

// Adds a command's options to `line` and gives its action.
hostrun::Action Prepare(const Command& command, hostrun::CommandLine& line) {
  line.Describe(command.purpose);
  return command.prepare(line);
}

std::vector<hostrun::Guide> Guides() {
  std::vector<hostrun::Guide> guides;
  const auto add = [&](const Command& command) {
    auto line = std::make_unique<hostrun::CommandLine>();
    hostrun::Action action = Prepare(command, *line);
    guides.push_back({command.name, command.purpose, std::move(line), std::move(action)});
  };
  add(kRun);
  guides.front().line->AddVersion(kVersion);
  guides.front().line->SetFooter(kRunFooter);
  for (const Command& command : kCommands) add(command);
  return guides;
}

hostrun::Action ManualCommand(hostrun::CommandLine& line) {
  line.SetFooter("Example:\n  hostrun manual | man -l -\n\nExit status: 0 written, 2 an error of use.");
  return [] {
    hostrun::WriteOutput(hostrun::ManualPage(Guides(), QVX_VERSION));
    return hostrun::kExitFine;
  };
}

hostrun::Action CompletionCommand(hostrun::CommandLine& line) {
  const auto shell = std::make_shared<std::string>();
  line.Add("shell", *shell, "The shell that is to read it")
      .Takes("bash | zsh | fish")
      .Required()
      .OneOf({"bash", "zsh", "fish"});
  line.SetFooter(
      "Example:\n  eval \"$(hostrun completion bash)\"\n\nExit status: 0 written, 2 an error of use.");
  return [shell] {
    hostrun::WriteOutput(hostrun::Completion(*shell, Guides()));
    return hostrun::kExitFine;
  };
}

// Reads the command line, from the command's name on, and runs the command. Gives the exit status.
int Start(const Command& command, hostrun::CommandLine& line, const std::string& name, int argc,
          char** argv) {
  const hostrun::Action action = Prepare(command, line);
  const std::optional<int> status = line.Read(name, argc, argv);
  return status ? *status : action();
}

// "help COMMAND" is "COMMAND --help", and "help" is "--help".
int Help(int argc, char** argv);

int Dispatch(int argc, char** argv) {
  if (argc >= 2 && std::string_view(argv[1]) == "help") return Help(argc, argv);
  hostrun::CommandLine line;
  for (const Command& command : kCommands) {
    if (argc >= 2 && std::string_view(argv[1]) == command.name)
      return Start(command, line, "hostrun " + std::string(command.name), argc - 1, argv + 1);
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
  line.SetFooter(footer + "\n" + kRunFooter);
  line.AddVersion(kVersion);
  return Start(kRun, line, "hostrun", argc, argv);
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

// A standard stream that is closed gets what refuses to be read or written: a file that the program opens
// would take its number, and with it what is meant for the stream.
void HoldClosedStreams() {
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(stream, F_GETFD) < 0) open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
  }
}

}  // namespace

int main(int argc, char** argv) {
  HoldClosedStreams();
  // What can't be written is found out where it is written.
  std::signal(SIGPIPE, SIG_IGN);
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
