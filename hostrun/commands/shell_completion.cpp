// hostrun/commands/shell_completion.cpp - what bash, zsh and fish complete.
#include <sstream>
#include <stdexcept>

#include "hostrun/commands/guides.h"

namespace hostrun {
namespace {

std::string Joined(const std::vector<std::string>& words, const char* between) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : between) + word;
  return text;
}

std::vector<std::string> CommandNames(const std::vector<Guide>& guides) {
  std::vector<std::string> names;
  for (std::size_t i = 1; i < guides.size(); ++i) names.push_back(guides[i].name);
  return names;
}

// A text in single quotes, for all three shells. Fish reads a backslash there; no description has one.
std::string Quoted(const std::string& text) {
  std::string quoted = "'";
  for (const char letter : text) quoted += letter == '\'' ? "'\\''" : std::string(1, letter);
  return quoted + "'";
}

// ---- bash

std::string Bash(const std::vector<Guide>& guides) {
  std::ostringstream out;
  out << "# What bash completes for hostrun; made by \"hostrun completion bash\".\n"
         "_hostrun() {\n"
         "  local word=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} command= words=\n"
         "  COMPREPLY=()\n"
         "  if [ \"$COMP_CWORD\" -gt 1 ]; then command=${COMP_WORDS[1]}; fi\n"
         "  case $command in\n"
         "    help) if [ \"$COMP_CWORD\" = 2 ]; then words='"
      << Joined(CommandNames(guides), " ") << "'; fi ;;\n";
  for (std::size_t i = 1; i <= guides.size(); ++i) {
    // hostrun itself comes last, for what is no command.
    const Guide& guide = guides[i % guides.size()];
    std::vector<std::string> dashed;
    std::vector<std::string> files;
    std::vector<std::string> others;
    std::vector<std::string> choice;
    for (const OptionGuide& option : OptionsOf(guide)) {
      dashed.insert(dashed.end(), option.names.begin(), option.names.end());
      if (option.names.empty() && !option.value.words.empty()) choice = option.value.words;
      if (option.value.text.empty() || option.names.empty()) continue;
      auto& takers = option.value.file ? files : others;
      takers.insert(takers.end(), option.names.begin(), option.names.end());
    }
    out << "    " << (guide.name.empty() ? "*" : guide.name) << ")\n      case $previous in\n";
    // What the shell completes by itself are names of files.
    if (!files.empty()) out << "        " << Joined(files, " | ") << ") return ;;\n";
    if (!others.empty()) out << "        " << Joined(others, " | ") << ") compopt +o default; return ;;\n";
    out << "      esac\n      case $word in\n        -*) words='" << Joined(dashed, " ") << "' ;;\n";
    if (!choice.empty()) out << "        *) words='" << Joined(choice, " ") << "' ;;\n";
    if (guide.name.empty()) {
      out << "        *) if [ \"$COMP_CWORD\" = 1 ]; then words='help " << Joined(CommandNames(guides), " ")
          << "'; fi ;;\n";
    }
    out << "      esac\n      ;;\n";
  }
  out << "  esac\n"
         "  mapfile -t COMPREPLY < <(compgen -W \"$words\" -- \"$word\")\n"
         "  # A program may be named where a command may.\n"
         "  if [ \"$COMP_CWORD\" = 1 ] && [[ $word != -* ]]; then\n"
         "    local file\n"
         "    while IFS= read -r file; do COMPREPLY+=(\"$file\"); done < <(compgen -f -- \"$word\")\n"
         "    compopt -o filenames\n"
         "  fi\n"
         "}\n"
         "complete -o default -F _hostrun hostrun\n";
  return out.str();
}

// ---- zsh

// A description inside of an option's brackets.
std::string Bracketed(const std::string& text) {
  std::string escaped;
  for (const char letter : text) {
    if (letter == '[' || letter == ']' || letter == ':' || letter == '\\') escaped += '\\';
    escaped += letter;
  }
  return escaped;
}

std::string ZshAction(const Operand& value) {
  if (value.file) return ":_files";
  if (!value.words.empty()) return ":(" + Joined(value.words, " ") + ")";
  return ": ";
}

std::string Zsh(const std::vector<Guide>& guides) {
  std::ostringstream out;
  out << "#compdef hostrun\n"
         "# What zsh completes for hostrun; made by \"hostrun completion zsh\".\n"
         "_hostrun() {\n"
         "  local -a commands=(\n    'help:Explains a command.'\n";
  for (std::size_t i = 1; i < guides.size(); ++i) {
    out << "    " << Quoted(guides[i].name + ":" + Bracketed(guides[i].purpose)) << "\n";
  }
  out << "  )\n"
         "  local command=\n"
         "  if (( CURRENT == 2 )) && [[ $words[2] != -* ]]; then _describe -t commands command commands; fi\n"
         "  if (( CURRENT > 2 )); then command=$words[2]; fi\n"
         "  case $command in\n"
         "    help) _describe -t commands command commands ;;\n";
  for (std::size_t i = 1; i <= guides.size(); ++i) {
    const Guide& guide = guides[i % guides.size()];
    out << "    " << (guide.name.empty() ? "*" : guide.name) << ")\n";
    // The command itself is one of the words.
    if (!guide.name.empty()) out << "      shift words\n      (( CURRENT-- ))\n";
    out << "      _arguments -s";
    for (const OptionGuide& option : OptionsOf(guide)) {
      for (const std::string& name : option.names) {
        std::string row = "*" + name + "[" + Bracketed(option.description) + "]";
        if (!option.value.text.empty()) row += ":" + Bracketed(option.value.text) + ZshAction(option.value);
        out << " \\\n        " << Quoted(row);
      }
      if (option.names.empty())
        out << " \\\n        " << Quoted("*:" + Bracketed(option.value.text) + ZshAction(option.value));
    }
    out << "\n      ;;\n";
  }
  out << "  esac\n"
         "}\n"
         "if [[ $funcstack[1] == _hostrun ]]; then _hostrun \"$@\"; else compdef _hostrun hostrun; fi\n";
  return out.str();
}

// ---- fish

std::string Fish(const std::vector<Guide>& guides) {
  std::ostringstream out;
  const std::string all = "help " + Joined(CommandNames(guides), " ");
  out << "# What fish completes for hostrun; made by \"hostrun completion fish\".\n"
      << "complete -c hostrun -n __fish_is_first_token -a help -d 'Explains a command.'\n";
  for (std::size_t i = 1; i < guides.size(); ++i) {
    out << "complete -c hostrun -n __fish_is_first_token -a " << guides[i].name << " -d "
        << Quoted(guides[i].purpose) << "\n";
  }
  out << "complete -c hostrun -n '__fish_seen_subcommand_from help' -f -a '"
      << Joined(CommandNames(guides), " ") << "'\n";
  for (const Guide& guide : guides) {
    const std::string when = guide.name.empty() ? "'not __fish_seen_subcommand_from " + all + "'"
                                                : "'__fish_seen_subcommand_from " + guide.name + "'";
    for (const OptionGuide& option : OptionsOf(guide)) {
      if (option.names.empty()) {
        if (!option.value.words.empty())
          out << "complete -c hostrun -n " << when << " -f -a '" << Joined(option.value.words, " ") << "'\n";
        continue;
      }
      out << "complete -c hostrun -n " << when;
      for (const std::string& name : option.names) {
        out << (name.starts_with("--") ? " -l " + name.substr(2) : " -s " + name.substr(1));
      }
      if (!option.value.text.empty()) out << (option.value.file ? " -r -F" : " -x");
      out << " -d " << Quoted(option.description) << "\n";
    }
  }
  return out.str();
}

}  // namespace

std::string Completion(const std::string& shell, const std::vector<Guide>& guides) {
  if (shell == "bash") return Bash(guides);
  if (shell == "zsh") return Zsh(guides);
  if (shell == "fish") return Fish(guides);
  throw std::invalid_argument("wanted bash, zsh or fish, found " + shell);
}

}  // namespace hostrun
