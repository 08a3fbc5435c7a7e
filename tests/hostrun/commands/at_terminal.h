// tests/hostrun/commands/at_terminal.h - a hostrun that runs at a terminal of its own.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <vector>

namespace command_tests {

class AtTerminal {
 public:
  // An xterm of 120 columns, with extra variables ("NAME=value") in its environment.
  explicit AtTerminal(const std::vector<std::string>& arguments,
                      const std::vector<std::string>& environment = {});
  AtTerminal(const AtTerminal&) = delete;
  AtTerminal& operator=(const AtTerminal&) = delete;
  ~AtTerminal();

  void Type(const std::string& keys);

  // Waits until the terminal shows that text, behind what was waited for before.
  bool Shows(const std::string& text);

  // Waits until it asks for a line.
  bool Prompts(const std::string& prompt = "> ");

  // Waits until the terminal hands keys on like that. What is typed while it changes may be lost.
  enum class Keys : std::uint8_t { OneByOne, InLines };
  bool Takes(Keys keys);

  // Waits until it ends, and gives its status as a shell does: 128 and the number of the signal that ended
  // it. -1 where it does not end by itself.
  int Status();

  // All that came, with its escape sequences.
  const std::string& screen() const { return screen_; }

 private:
  bool ReadMore();  // false: it has ended, or is silent for too long

  int terminal_ = -1;
  pid_t child_ = -1;
  bool closed_ = false;
  std::string screen_;
  std::size_t seen_ = 0;
};

}  // namespace command_tests
