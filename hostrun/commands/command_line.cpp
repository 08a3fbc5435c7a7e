// hostrun/commands/command_line.cpp - the options and arguments of a command.
#include "hostrun/commands/command_line.h"

#include <CLI/CLI.hpp>

#include <sstream>
#include <utility>

#include "hostrun/commands/terminal.h"
#include "hostrun/host/output.h"
#include "hostrun/host/suggest.h"

namespace hostrun {

Option Option::Takes(const char* text) const {
  option_->option_text(text);
  return *this;
}

Option Option::Below(const char* heading) const {
  option_->group(heading);
  return *this;
}

Option Option::Describe(const char* description) const {
  option_->description(description);
  return *this;
}

Option Option::Required() const {
  option_->required();
  return *this;
}

Option Option::OneEach() const {
  option_->allow_extra_args(false);
  return *this;
}

Option Option::OneOf(const std::vector<std::string>& words) const {
  option_->check(CLI::IsMember(words));
  return *this;
}

Option Option::Between(int least, int most) const {
  option_->check(CLI::Range(least, most));
  return *this;
}

Option Option::Between(double least, double most) const {
  option_->check(CLI::Range(least, most));
  return *this;
}

Option Option::Refusing(std::string (*problem)(const std::string& value)) const {
  option_->check(problem);
  return *this;
}

Option Option::Excludes(const Option& other) const {
  option_->excludes(other.option_);
  return *this;
}

std::optional<std::string> Option::Typed() const {
  if (option_->count() == 0) return std::nullopt;
  return option_->as<std::string>();
}

CommandLine::CommandLine() : app_(std::make_unique<CLI::App>()) {}
CommandLine::~CommandLine() = default;

Option CommandLine::Add(const char* names, std::string& value, const char* description) {
  return Option(app_->add_option(names, value, description));
}

Option CommandLine::Add(const char* names, std::vector<std::string>& values, const char* description) {
  return Option(app_->add_option(names, values, description));
}

Option CommandLine::Add(const char* names, std::set<std::string>& values, const char* description) {
  return Option(app_->add_option(names, values, description));
}

Option CommandLine::Add(const char* names, double& value, const char* description) {
  return Option(app_->add_option(names, value, description));
}

Option CommandLine::Add(const char* names, int& value, const char* description) {
  return Option(app_->add_option(names, value, description));
}

Option CommandLine::AddFlag(const char* names, bool& value, const char* description) {
  return Option(app_->add_flag(names, value, description));
}

Option CommandLine::AddFlag(const char* names, std::function<void()> named, const char* description) {
  return Option(app_->add_flag_callback(names, std::move(named), description));
}

void CommandLine::AddVersion(const char* text) {
  app_->set_version_flag("--version", text);
}

Option CommandLine::Find(const char* name) const {
  return Option(app_->get_option(name));
}

void CommandLine::Describe(const char* purpose) {
  app_->description(purpose);
}

void CommandLine::SetFooter(const std::string& footer) {
  app_->footer(footer);
}

std::string CommandLine::Footer() const {
  return app_->get_footer();
}

std::vector<OptionShape> CommandLine::Shapes() const {
  std::vector<OptionShape> shapes;
  for (const CLI::Option* const option : std::as_const(*app_).get_options()) {
    OptionShape shape;
    for (const std::string& name : option->get_snames()) shape.names.push_back("-" + name);
    for (const std::string& name : option->get_lnames()) shape.names.push_back("--" + name);
    if (option->get_items_expected_max() != 0) shape.value = option->get_option_text();
    shape.description = option->get_description();
    shape.heading = option->get_group();
    shapes.push_back(std::move(shape));
  }
  return shapes;
}

std::optional<int> CommandLine::Read(const std::string& command, int argc, char** argv) {
  app_->name(command);
  try {
    app_->parse(argc, argv);
    return std::nullopt;
  } catch (const CLI::Success& wish) {
    std::ostringstream said;
    const int status = app_->exit(wish, said);
    WriteOutput(said.str());
    return status;
  } catch (const CLI::ExtrasError& error) {
    const std::vector<std::string> unknown = app_->remaining();
    if (unknown.empty()) throw;
    std::vector<std::string> names;
    for (const CLI::Option* const option : app_->get_options()) {
      for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
    }
    return Refuse(command, "wanted no more arguments or an option that it has, found " + unknown.front() +
                               DidYouMean(unknown.front(), names) + "; " + command + " --help says more");
  } catch (const CLI::ParseError& error) {
    return Refuse(command, std::string(error.what()) + "; " + command + " --help says more");
  }
}

}  // namespace hostrun
