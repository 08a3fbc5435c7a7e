// hostrun/host/output.cpp - standard output, and whether everything arrived there.
#include "hostrun/host/output.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace hostrun {
namespace {

constinit int firstError = 0;

void Note(bool written) {
  if (!written && firstError == 0) firstError = errno;
}

}  // namespace

void WriteOutput(std::string_view text) {
  Note(std::fwrite(text.data(), 1, text.size(), stdout) == text.size());
}

void FlushOutput() {
  Note(std::fflush(stdout) == 0);
}

bool OutputAbandoned() {
  return firstError == EPIPE;
}

Problem OutputProblem() {
  FlushOutput();
  if (std::ferror(stdout) == 0 && firstError == 0) return {};
  const char* const found = firstError == 0 ? "it takes no more" : std::strerror(firstError);
  return std::string("wanted to write standard output, found: ") + found;
}

}  // namespace hostrun
