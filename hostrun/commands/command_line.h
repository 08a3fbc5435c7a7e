// hostrun/commands/command_line.h - the options and arguments of a command.
//
// Only command_line.cpp knows the library behind it, whose headers cost more to compile than most commands.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace hostrun {

// One option or argument of a command. A handle: it is valid as long as its command line. Each setter gives
// the option itself.
class Option {
 public:
  explicit Option(CLI::Option* option) : option_(option) {}

  // What help shows for its value: "FILE", "SECONDS (10)", "raised | uncaught | never".
  Option Takes(const char* text) const;
  // The heading of help that it stands below, instead of "Options".
  Option Below(const char* heading) const;
  Option Describe(const char* description) const;
  Option Required() const;
  // Each mention takes one value; without this, an option with several takes all that follow.
  Option OneEach() const;
  Option OneOf(const std::vector<std::string>& words) const;
  Option Between(int least, int most) const;
  Option Between(double least, double most) const;
  // `problem` gives what is wrong with a value; empty: nothing.
  Option Refusing(std::string (*problem)(const std::string& value)) const;
  Option Excludes(const Option& other) const;

  // What was typed for it; nothing, where it was not named.
  std::optional<std::string> Typed() const;

 private:
  CLI::Option* option_;
};

// What an option looks like from outside.
struct OptionShape {
  std::vector<std::string> names;  // with their dashes, the short ones first; none: an argument
  std::string value;               // as Option::Takes has it; empty: it takes none
  std::string description;
  std::string heading;
};

// What the command line of a command may hold. Options write to variables, which outlive Read. `names` is as
// in
// "-e,--execute"; a name without dashes is an argument.
class CommandLine {
 public:
  CommandLine();
  CommandLine(const CommandLine&) = delete;
  CommandLine& operator=(const CommandLine&) = delete;
  ~CommandLine();

  Option Add(const char* names, std::string& value, const char* description);
  Option Add(const char* names, std::vector<std::string>& values, const char* description);
  Option Add(const char* names, std::set<std::string>& values, const char* description);
  Option Add(const char* names, double& value, const char* description);
  Option Add(const char* names, int& value, const char* description);
  Option AddFlag(const char* names, bool& value, const char* description);
  // Calls `named` where it is named.
  Option AddFlag(const char* names, std::function<void()> named, const char* description);
  // "--version", which writes `text`.
  void AddVersion(const char* text);
  // An option that was added: "--host-version", or an argument's name.
  Option Find(const char* name) const;

  // The line of help above the options, and the paragraphs below them.
  void Describe(const char* purpose);
  void SetFooter(const std::string& footer);
  std::string Footer() const;
  // The options and arguments, in the order of help.
  std::vector<OptionShape> Shapes() const;

  // Reads what was typed behind argv[0] for the command of that name. Gives the exit status where the command
  // is not to run: help or the version was asked for and written, or the line was wrong, which has been said
  // on stderr.
  std::optional<int> Read(const std::string& command, int argc, char** argv);

 private:
  std::unique_ptr<CLI::App> app_;
};

}  // namespace hostrun
