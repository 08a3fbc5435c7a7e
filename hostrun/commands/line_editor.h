// hostrun/commands/line_editor.h - lines typed at a terminal, with history and completion.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace hostrun {

// Of this process; there is one terminal.
class LineEditor {
 public:
  // All whole words that could stand for a beginning.
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

  Input Read(const char* prompt);
};

}  // namespace hostrun
