// hostrun/commands/line_editor.cpp - lines typed at a terminal, with history and completion.
#include "hostrun/commands/line_editor.h"

#include <editline/readline.h>

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <clocale>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string_view>

#include "hostrun/host/interrupts.h"

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

// --- pastes: a terminal that is asked to marks their beginning and their end

bool knowsPastes = false;
bool pasting = false;
std::string waiting;  // bytes that are read and not yet handed on

void TellPastes(bool wanted) {
  if (!knowsPastes) return;
  std::fputs(wanted ? "\033[?2004h" : "\033[?2004l", stdout);
  std::fflush(stdout);
}

// Waits for a byte, or the end of the input. False: for an interrupt.
bool WaitForByte(int terminal) {
  const HeldInterrupt held;
  pollfd one{terminal, POLLIN, 0};
  while (interrupted == 0) {
    if (ppoll(&one, 1, nullptr, &held.before()) >= 0 || errno != EINTR) return true;
  }
  return false;
}

// The next byte, or -1 at the end of the input or for an interrupt.
int NextByte(int terminal) {
  if (!waiting.empty()) {
    const auto byte = static_cast<unsigned char>(waiting.front());
    waiting.erase(0, 1);
    return byte;
  }
  while (WaitForByte(terminal)) {
    unsigned char byte = 0;
    const ssize_t count = read(terminal, &byte, 1);
    if (count == 1) return byte;
    if (count == 0 || errno != EINTR) return -1;
  }
  return -1;
}

// Behind an escape: takes the rest of a mark, and nothing else.
bool TakeMark(int terminal) {
  constexpr std::string_view kBegin = "[200~";
  constexpr std::string_view kEnd = "[201~";
  constexpr int kGap = 50;  // ms between the bytes of one key
  std::string taken = std::move(waiting);
  waiting.clear();
  while (kBegin.starts_with(taken.substr(0, kBegin.size())) ||
         kEnd.starts_with(taken.substr(0, kEnd.size()))) {
    if (taken.size() >= kBegin.size()) {
      pasting = taken.starts_with(kBegin);
      waiting = taken.substr(kBegin.size());
      return true;
    }
    pollfd one{terminal, POLLIN, 0};
    char byte = 0;
    if (poll(&one, 1, kGap) <= 0 || read(terminal, &byte, 1) != 1) break;
    taken += byte;
  }
  waiting = taken;
  return false;
}

// The next character, however many bytes it has.
int NextCharacter(std::FILE* in) {
  const int terminal = fileno(in);
  std::mbstate_t state{};
  for (;;) {
    const int byte = NextByte(terminal);
    if (byte < 0) return -1;
    if (byte == '\033' && TakeMark(terminal)) continue;
    if (byte == '\n' || byte == '\r') TellPastes(false);
    const char c = static_cast<char>(byte);
    wchar_t character = 0;
    const std::size_t used = std::mbrtowc(&character, &c, 1, &state);
    if (used == static_cast<std::size_t>(-2)) continue;
    if (used == static_cast<std::size_t>(-1)) {
      state = {};
      return '?';
    }
    return static_cast<int>(character);
  }
}

bool firstWord = false;

// The candidates, one per call; the library frees what it is given.
char* NextCandidate(const char* beginning, int state) {
  static std::vector<std::string> candidates;
  static std::size_t next = 0;
  if (state == 0) {
    candidates = Completer()(beginning, firstWord);
    next = 0;
  }
  return next < candidates.size() ? strdup(candidates[next++].c_str()) : nullptr;
}

char** CompleteWord(const char* beginning, int start, int) {
  firstWord = start == 0;
  rl_attempted_completion_over = 1;  // never file names
  rl_completion_append_character = 0;
  return rl_completion_matches(beginning, &NextCandidate);
}

std::string historyName;

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
  return error ? std::string() : (folder / "hostrun" / historyName).native();
}

// A file that has grown to twice what is kept is written anew, beside and renamed.
void ShortenHistory(const std::string& file) {
  std::ifstream in(file);
  const auto lines = std::count(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>(), '\n');
  if (lines <= 2 * kKeptLines) return;
  const std::string beside = file + "." + std::to_string(getpid());
  std::error_code error;
  if (write_history(beside.c_str()) == 0) std::filesystem::rename(beside, file, error);
}

}  // namespace

LineEditor::LineEditor(const std::string& history, Complete complete) {
  static char breaks[] = " \t\n\"(),=+-*/\\<>&:^";
  historyName = history;
  Completer() = std::move(complete);
  // The library looks at the locale and at this function once, when it is first used.
  // Letters are what the user's locale says they are, or else UTF-8.
  const char* const locale = std::setlocale(LC_CTYPE, "");
  if (locale == nullptr || MB_CUR_MAX == 1) std::setlocale(LC_CTYPE, "C.UTF-8");
  rl_getc_function = &NextCharacter;
  rl_readline_name = "hostrun";
  rl_completer_word_break_characters = breaks;
  rl_attempted_completion_function = &CompleteWord;
  rl_catch_signals = 0;
  using_history();
  stifle_history(kKeptLines);
  const std::string file = HistoryFile();
  if (!file.empty()) {
    read_history(file.c_str());
    ShortenHistory(file);
  }
  const char* const terminal = std::getenv("TERM");
  knowsPastes = terminal != nullptr && std::string_view(terminal) != "dumb";
}

LineEditor::Input LineEditor::Read(const char* prompt) {
  interrupted = 0;
  const InterruptHandler guard(&NoteInterrupt);  // drops the line
  TellPastes(true);
  const std::unique_ptr<char, decltype(&std::free)> line(readline(prompt), &std::free);
  if (interrupted != 0 || line == nullptr) {
    TellPastes(false);
    return {interrupted != 0 ? End::Cancelled : End::EndOfInput, {}};
  }
  if (*line != 0) {
    add_history(line.get());
    const std::string file = HistoryFile();
    if (!file.empty()) append_history(0, file.c_str());  // the library counts those before the last
  }
  return {End::Line, line.get(), pasting};
}

}  // namespace hostrun
