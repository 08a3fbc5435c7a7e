// hostrun/commands/line_editor.h - lines typed at a terminal, with history and completion.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace hostrun {

// There is one terminal, and one of these in a process. Reads the history when it is made.
class LineEditor {
 public:
  // Every word that a beginning could be completed to.
  using Complete = std::function<std::vector<std::string>(const std::string& beginning)>;

  enum class End : std::uint8_t { Line, Cancelled, EndOfInput };
  struct Input {
    End end;
    std::string line;
  };

  explicit LineEditor(Complete complete);
  LineEditor(const LineEditor&) = delete;
  LineEditor& operator=(const LineEditor&) = delete;
  ~LineEditor();  // writes the history

  // Waits for a line, without its end. `line` is empty unless `end` is Line.
  Input Read(const char* prompt);
};

}  // namespace hostrun
