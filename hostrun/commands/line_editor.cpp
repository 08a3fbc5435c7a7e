// hostrun/commands/line_editor.cpp - lines typed at a terminal, with history and completion.
#include "hostrun/commands/line_editor.h"

#include <editline/readline.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>

namespace hostrun {
namespace {

constexpr int kKeptLines = 1000;

LineEditor::Complete& Completer() {
  static LineEditor::Complete completer;
  return completer;
}

volatile std::sig_atomic_t interrupted = 0;
void NoteInterrupt(int) {
  interrupted = 1;
}

// While a line is typed, an interrupt drops that line; while a program runs, it ends the process.
class InterruptDropsLine {
 public:
  InterruptDropsLine() {
    interrupted = 0;
    struct sigaction action {};
    action.sa_handler = &NoteInterrupt;
    sigaction(SIGINT, &action, &before_);
  }
  InterruptDropsLine(const InterruptDropsLine&) = delete;
  InterruptDropsLine& operator=(const InterruptDropsLine&) = delete;
  ~InterruptDropsLine() { sigaction(SIGINT, &before_, nullptr); }

 private:
  struct sigaction before_ {};
};

// The candidates, one per call; the library frees what it is given.
char* NextCandidate(const char* beginning, int state) {
  static std::vector<std::string> candidates;
  static std::size_t next = 0;
  if (state == 0) {
    candidates = Completer()(beginning);
    next = 0;
  }
  return next < candidates.size() ? strdup(candidates[next++].c_str()) : nullptr;
}

char** CompleteWord(const char* beginning, int, int) {
  rl_attempted_completion_over = 1;  // never file names
  rl_completion_append_character = 0;
  return rl_completion_matches(beginning, &NextCandidate);
}

// Empty: nowhere to keep it.
std::string HistoryFile() {
  const char* const state = std::getenv("XDG_STATE_HOME");
  const char* const home = std::getenv("HOME");
  std::filesystem::path folder;
  if (state != nullptr && *state == '/') {
    folder = state;
  } else if (home != nullptr && *home == '/') {
    folder = std::filesystem::path(home) / ".local" / "state";
  } else {
    return {};
  }
  std::error_code error;
  std::filesystem::create_directories(folder / "hostrun", error);
  return error ? std::string() : (folder / "hostrun" / "history").native();
}

}  // namespace

LineEditor::LineEditor(Complete complete) {
  static char breaks[] = " \t\n\"(),=+-*/\\<>&:^";
  Completer() = std::move(complete);
  rl_readline_name = "hostrun";
  rl_completer_word_break_characters = breaks;
  rl_attempted_completion_function = &CompleteWord;
  rl_catch_signals = 0;
  using_history();
  stifle_history(kKeptLines);
  const std::string file = HistoryFile();
  if (!file.empty()) read_history(file.c_str());
}

LineEditor::~LineEditor() {
  const std::string file = HistoryFile();
  if (!file.empty()) write_history(file.c_str());
}

LineEditor::Input LineEditor::Read(const char* prompt) {
  const InterruptDropsLine guard;
  const std::unique_ptr<char, decltype(&std::free)> line(readline(prompt), &std::free);
  if (interrupted != 0) return {End::Cancelled, {}};
  if (line == nullptr) return {End::EndOfInput, {}};
  if (*line != 0) add_history(line.get());
  return {End::Line, line.get()};
}

}  // namespace hostrun
