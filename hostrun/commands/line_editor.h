// hostrun/commands/line_editor.h - lines typed at a terminal, with history and completion.
#pragma once

#include <csignal>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace hostrun {

// While it lives, an interrupt from the terminal calls the handler; afterwards it does what it did before.
class InterruptHandler {
 public:
  explicit InterruptHandler(void (*handler)(int)) {
    struct sigaction action {};
    action.sa_handler = handler;
    sigaction(SIGINT, &action, &before_);
  }
  InterruptHandler(const InterruptHandler&) = delete;
  InterruptHandler& operator=(const InterruptHandler&) = delete;
  ~InterruptHandler() { sigaction(SIGINT, &before_, nullptr); }

 private:
  struct sigaction before_ {};
};

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
