// hostrun/commands/terminal.h - what all commands say in the same way: colour, refusals.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

namespace hostrun {

// Whether escape sequences may be written to that stream: it is a terminal that knows them.
bool TakesSequences(std::FILE* stream);
// Whether it may be coloured too: NO_COLOR is not set.
bool TakesColour(std::FILE* stream);
// Whether it also shows 24-bit colours.
bool TakesTrueColour(std::FILE* stream);

enum class Style : std::uint8_t { Plain, Strong, Faint, Good, Bad, Notable };

// Wraps texts in the style's escape sequences, or leaves them as they are.
class Painter {
 public:
  explicit Painter(bool colour) : colour_(colour) {}
  std::string operator()(Style style, std::string_view text) const;

 private:
  bool colour_;
};

// "1 check", "2 checks".
std::string Counted(std::size_t count, std::string_view thing);

// Says why on stderr, behind the name of the command where there is one, and gives the exit status for an
// error of use.
int Refuse(std::string_view command, std::string_view line);
int Refuse(std::string_view line);

// "text" and as many blanks as it lacks to that width; at least one.
std::string Padded(std::string_view text, std::size_t width);

}  // namespace hostrun
