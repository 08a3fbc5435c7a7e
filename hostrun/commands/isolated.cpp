// hostrun/commands/isolated.cpp - runs something in a process of its own, with a time limit.
#include "hostrun/commands/isolated.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <exception>
#include <optional>

#include "hostrun/host/output.h"

namespace hostrun {
namespace {

using Clock = std::chrono::steady_clock;

// A line is one message: its first byte says which.
constexpr char kProgress = '+';
constexpr char kPassed = '=';
constexpr char kFailed = '!';

// A message is one line, so a line end inside it travels as a record separator.
constexpr char kLineEndInside = '\x1e';

void WriteMessage(int to, char kind, std::string text) {
  for (char& c : text) {
    if (c == '\n') c = kLineEndInside;
  }
  text = kind + text + '\n';
  for (std::size_t at = 0; at < text.size();) {
    const ssize_t count = write(to, text.data() + at, text.size() - at);
    if (count <= 0) _exit(1);
    at += static_cast<std::size_t>(count);
  }
}

// The child's side: its streams lead nowhere, and it ends with its parent.
[[noreturn]] void RunChild(int to, const std::function<Problem(const SendLine&)>& body) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  const int nowhere = open("/dev/null", O_RDWR | O_CLOEXEC);
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) dup2(nowhere, stream);
  Problem problem;
  try {
    problem = body([to](const std::string& line) { WriteMessage(to, kProgress, line); });
  } catch (const std::exception& error) {
    problem = error.what();
  }
  WriteMessage(to, problem ? kFailed : kPassed, problem.value_or(""));
  _exit(0);
}

// Collects what a child says until it ends or is silent for too long.
class Listener {
 public:
  Listener(int from, const std::function<void(const std::string&)>& onLine) : from_(from), onLine_(onLine) {}

  // False: the time is up.
  bool Listen(std::chrono::milliseconds limit) {
    Clock::time_point end = Clock::now() + limit;
    for (;;) {
      const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now()).count();
      pollfd one{from_, POLLIN, 0};
      const int ready = poll(&one, 1, left > 0 ? static_cast<int>(left) : 0);
      if (ready == 0) return false;
      if (ready < 0) continue;  // interrupted
      std::array<char, 4096> part{};
      const ssize_t count = read(from_, part.data(), part.size());
      if (count <= 0) return true;
      text_.append(part.data(), static_cast<std::size_t>(count));
      if (TakeLines()) end = Clock::now() + limit;
    }
  }

  // What the child said of itself before it ended; nothing: it ended without a word.
  const std::optional<Outcome>& outcome() const { return outcome_; }

 private:
  bool TakeLines() {
    bool any = false;
    for (std::size_t end = text_.find('\n'); end != std::string::npos; end = text_.find('\n')) {
      std::string line = text_.substr(1, end - 1);
      for (char& c : line) {
        if (c == kLineEndInside) c = '\n';
      }
      if (text_[0] != kProgress) {
        outcome_ = {text_[0] == kPassed ? Status::Passed : Status::Failed, line};
      } else if (onLine_) {
        onLine_(line);
      }
      text_.erase(0, end + 1);
      any = true;
    }
    return any;
  }

  int from_;
  const std::function<void(const std::string&)>& onLine_;
  std::string text_;
  std::optional<Outcome> outcome_;
};

std::string DescribeEnd(int status) {
  if (WIFSIGNALED(status)) {
    return "crashed with signal " + std::to_string(WTERMSIG(status)) + " (" + strsignal(WTERMSIG(status)) +
           ")";
  }
  return "ended its process with status " + std::to_string(WEXITSTATUS(status));
}

}  // namespace

Outcome RunIsolated(std::chrono::milliseconds limit, const std::function<Problem(const SendLine&)>& body,
                    const std::function<void(const std::string&)>& onLine) {
  FlushOutput();
  std::array<int, 2> ends{};
  if (pipe(ends.data()) != 0)
    return {Status::Failed, std::string("wanted a pipe, found: ") + std::strerror(errno)};
  const pid_t child = fork();
  if (child == 0) {
    close(ends[0]);
    RunChild(ends[1], body);
  }
  close(ends[1]);
  if (child < 0) {
    close(ends[0]);
    return {Status::Failed, std::string("wanted a process, found: ") + std::strerror(errno)};
  }
  Listener listener(ends[0], onLine);
  const bool inTime = listener.Listen(limit);
  close(ends[0]);
  if (!inTime) kill(child, SIGKILL);
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) continue;
  if (!inTime) return {Status::TimedOut, "did not come back within " + std::to_string(limit.count()) + " ms"};
  return listener.outcome().value_or(Outcome{Status::Crashed, DescribeEnd(status)});
}

}  // namespace hostrun
