// hostrun/commands/guides.h - the manual page and what shells complete, made from the commands' own options.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "hostrun/commands/command_line.h"
#include "hostrun/commands/commands.h"

namespace hostrun {

// A command with its options.
struct Guide {
  std::string name;  // empty: hostrun without a command
  std::string purpose;
  std::unique_ptr<CommandLine> line;
  Action action;  // never called; it owns what the options write to
};

// What an option or argument takes.
struct Operand {
  std::string text;                // "FILE", "SECONDS (10)"; empty: nothing
  bool file = false;               // a path
  std::vector<std::string> words;  // these and nothing else; empty: anything
};

struct OptionGuide {
  std::vector<std::string> names;  // with their dashes, the short ones first; none: an argument
  Operand value;
  std::string description;
  std::string heading;
};

// The options and arguments of a command, in the order of its help.
std::vector<OptionGuide> OptionsOf(const Guide& guide);

// hostrun(1), for man. The first guide is that of hostrun itself.
std::string ManualPage(const std::vector<Guide>& guides, const std::string& version);

// What "bash", "zsh" or "fish" reads to complete hostrun's command line. Throws std::invalid_argument for any
// other shell. The first guide is that of hostrun itself.
std::string Completion(const std::string& shell, const std::vector<Guide>& guides);

}  // namespace hostrun
