// hostrun/commands/guides.cpp - a command's options, as the manual page and the shells see them.
#include "hostrun/commands/guides.h"

#include <algorithm>
#include <sstream>

namespace hostrun {
namespace {

bool IsWord(const std::string& text) {
  return std::ranges::all_of(text, [](char letter) { return letter >= 'a' && letter <= 'z'; });
}

// "bash | zsh | fish" is a choice of words; "FILE", "BUNDLE" and "PROGRAM.bas" are paths.
Operand OperandOf(const OptionShape& option) {
  Operand value;
  value.text = option.value;
  std::istringstream parts(value.text);
  for (std::string part; parts >> part;) {
    if (part != "|") value.words.push_back(part);
  }
  if (!std::ranges::all_of(value.words, IsWord)) value.words.clear();
  value.file = std::ranges::any_of(
      std::vector<std::string>{"FILE", "BUNDLE", ".bas", ".clr"},
      [&](const std::string& path) { return value.text.find(path) != std::string::npos; });
  return value;
}

}  // namespace

std::vector<OptionGuide> OptionsOf(const Guide& guide) {
  std::vector<OptionGuide> options;
  for (const OptionShape& option : guide.line->Shapes())
    options.push_back({option.names, OperandOf(option), option.description, option.heading});
  return options;
}

}  // namespace hostrun
