// hostrun/host/standard_input.cpp - lines from standard input.
#include "hostrun/host/standard_input.h"

#include <cerrno>
#include <cstdio>

namespace hostrun {
namespace {

std::function<void()>& Interrupted() {
  static std::function<void()> interrupted;
  return interrupted;
}

// The next byte, or EOF.
int NextByte() {
  for (;;) {
    const int byte = std::getc(stdin);
    if (byte != EOF || std::ferror(stdin) == 0 || errno != EINTR) return byte;
    std::clearerr(stdin);
    if (Interrupted()) Interrupted()();
  }
}

}  // namespace

std::optional<std::string> ReadInputLine() {
  std::string line;
  int byte = NextByte();
  if (byte == EOF) return std::nullopt;
  for (; byte != EOF && byte != '\n'; byte = NextByte()) line += static_cast<char>(byte);
  if (line.ends_with('\r')) line.pop_back();
  return line;
}

bool AtEndOfInput() {
  const int byte = NextByte();
  if (byte != EOF) std::ungetc(byte, stdin);
  return byte == EOF;
}

void SetInputInterrupted(std::function<void()> interrupted) {
  Interrupted() = std::move(interrupted);
}

}  // namespace hostrun
