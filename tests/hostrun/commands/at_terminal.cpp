// tests/hostrun/commands/at_terminal.cpp - a hostrun that runs at a terminal of its own.
#include "tests/hostrun/commands/at_terminal.h"

#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <csignal>

#include "tests/hostrun/commands/run_hostrun.h"

namespace command_tests {
namespace {

constexpr int kPatience = 20000;  // ms without a sign of life

}  // namespace

AtTerminal::AtTerminal(const std::vector<std::string>& arguments,
                       const std::vector<std::string>& environment) {
  winsize size{};
  size.ws_row = 40;
  size.ws_col = 120;
  child_ = forkpty(&terminal_, nullptr, nullptr, &size);
  if (child_ != 0) return;
  std::vector<std::string> variables = {"TERM=xterm"};
  variables.insert(variables.end(), environment.begin(), environment.end());
  BecomeHostrun(arguments, variables);
}

AtTerminal::~AtTerminal() {
  if (child_ > 0) {
    kill(child_, SIGKILL);
    waitpid(child_, nullptr, 0);
  }
  close(terminal_);
}

void AtTerminal::Type(const std::string& keys) {
  if (write(terminal_, keys.data(), keys.size()) != static_cast<ssize_t>(keys.size()))
    screen_ += "(not typed)";
}

bool AtTerminal::ReadMore() {
  pollfd one{terminal_, POLLIN, 0};
  if (poll(&one, 1, kPatience) <= 0) return false;
  std::array<char, 4096> part{};
  const ssize_t count = read(terminal_, part.data(), part.size());
  closed_ = count <= 0;
  if (closed_) return false;
  screen_.append(part.data(), static_cast<std::size_t>(count));
  return true;
}

bool AtTerminal::Shows(const std::string& text) {
  for (;;) {
    const std::size_t at = screen_.find(text, seen_);
    if (at != std::string::npos) {
      seen_ = at + text.size();
      return true;
    }
    if (!ReadMore()) return false;
  }
}

bool AtTerminal::Prompts(const std::string& prompt) {
  // The prompt is shown a moment before keys are read one by one; a control key would be lost in between.
  return Shows(prompt) && Takes(Keys::OneByOne);
}

bool AtTerminal::Takes(Keys keys) {
  termios modes{};
  for (int waited = 0; waited < kPatience; ++waited) {
    if (tcgetattr(terminal_, &modes) == 0 && ((modes.c_lflag & ICANON) != 0) == (keys == Keys::InLines))
      return true;
    poll(nullptr, 0, 1);
  }
  return false;
}

int AtTerminal::Status() {
  while (ReadMore()) continue;
  if (!closed_) return -1;
  int status = 0;
  waitpid(child_, &status, 0);
  child_ = -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

}  // namespace command_tests
