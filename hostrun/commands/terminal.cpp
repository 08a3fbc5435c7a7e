// hostrun/commands/terminal.cpp - what all commands say in the same way: colour, refusals.
#include "hostrun/commands/terminal.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>

#include "hostrun/host/output.h"
#include "hostrun/language/program.h"

namespace hostrun {
namespace {

// The variable is set and not empty.
bool IsSet(const char* name) {
  const char* const value = std::getenv(name);
  return value != nullptr && *value != 0;
}

const char* Sequence(Style style) {
  switch (style) {
    case Style::Plain:
      return "";
    case Style::Strong:
      return "\033[1m";
    case Style::Faint:
      return "\033[2m";
    case Style::Good:
      return "\033[32m";
    case Style::Bad:
      return "\033[31m";
    case Style::Notable:
      return "\033[33m";
  }
  return "";
}

}  // namespace

bool TakesSequences(std::FILE* stream) {
  const char* const terminal = std::getenv("TERM");
  const bool dumb = terminal == nullptr || std::string_view(terminal) == "dumb";
  return !dumb && isatty(fileno(stream)) != 0;
}

bool TakesColour(std::FILE* stream) {
  return !IsSet("NO_COLOR") && TakesSequences(stream);
}

bool TakesTrueColour(std::FILE* stream) {
  const char* const depth = std::getenv("COLORTERM");
  const std::string_view known = depth == nullptr ? "" : depth;
  return (known == "truecolor" || known == "24bit") && TakesColour(stream);
}

std::string Painter::operator()(Style style, std::string_view text) const {
  if (!colour_ || style == Style::Plain) return std::string(text);
  return Sequence(style) + std::string(text) + "\033[0m";
}

std::string Counted(std::size_t count, std::string_view thing) {
  return std::to_string(count) + " " + std::string(thing) + (count == 1 ? "" : "s");
}

int Refuse(std::string_view command, std::string_view line) {
  return Refuse(std::string(command).append(": ").append(line));
}

int Refuse(std::string_view line) {
  FlushOutput();
  std::fprintf(stderr, "%.*s\n", static_cast<int>(line.size()), line.data());
  return kExitUse;
}

std::string Padded(std::string_view text, std::size_t width) {
  // Continuation bytes of UTF-8 take no room.
  const auto shown = static_cast<std::size_t>(std::count_if(
      text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80; }));
  return std::string(text) + std::string(shown < width ? width - shown : 1, ' ');
}

}  // namespace hostrun
