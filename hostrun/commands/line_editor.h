// hostrun/commands/line_editor.h - lines typed at a terminal, with history and completion.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace hostrun {

// There is one terminal, and one of these in a process. Reads the history when it is made, and adds each line
// to its file at once: sessions side by side keep each other's lines.
class LineEditor {
 public:
  // Every word that a beginning could be completed to; `first`: it begins the line.
  using Complete = std::function<std::vector<std::string>(const std::string& beginning, bool first)>;

  enum class End : std::uint8_t { Line, Cancelled, EndOfInput };
  struct Input {
    End end;
    std::string line;
    bool pasted = false;  // it came in the middle of a paste
  };

  // `history` is the name of the file that the history is kept in.
  LineEditor(const std::string& history, Complete complete);
  LineEditor(const LineEditor&) = delete;
  LineEditor& operator=(const LineEditor&) = delete;

  // Waits for a line, without its end. `line` is empty unless `end` is Line.
  Input Read(const char* prompt);
};

}  // namespace hostrun
