// tests/libcocoa/child_process.cpp - see child_process.h.
#include "tests/libcocoa/child_process.h"

#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>

namespace {

std::vector<char*> Pointers(const std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (const std::string& text : texts) pointers.push_back(const_cast<char*>(text.c_str()));
  pointers.push_back(nullptr);
  return pointers;
}

[[noreturn]] void Become(const std::vector<std::string>& arguments,
                         const std::vector<std::string>& environment) {
  const std::vector<char*> argv = Pointers(arguments);
  const std::vector<char*> envp = Pointers(environment);
  ::execve(argv[0], argv.data(), envp.data());
  ::_exit(127);
}

std::string ReadAll(int file) {
  std::string text;
  std::array<char, 4096> buffer;
  for (ssize_t size = 0; (size = ::read(file, buffer.data(), buffer.size())) > 0;) {
    text.append(buffer.data(), static_cast<std::size_t>(size));
  }
  return text;
}

// A file of its own for a child to write to.
int TemporaryFile() {
  std::string name = "/tmp/cocoa-child-XXXXXX";
  const int file = ::mkstemp(name.data());
  ::unlink(name.c_str());
  return file;
}

std::string Written(int file) {
  ::lseek(file, 0, SEEK_SET);
  std::string text = ReadAll(file);
  ::close(file);
  return text;
}

}  // namespace

Outcome RunProgram(const std::vector<std::string>& arguments, const std::vector<std::string>& environment,
                   uid_t user) {
  const int output = TemporaryFile();
  const int errors = TemporaryFile();
  const pid_t process = ::fork();
  if (process == 0) {
    ::dup2(output, STDOUT_FILENO);
    ::dup2(errors, STDERR_FILENO);
    if (user != 0 && ::setuid(user) != 0) ::_exit(126);
    Become(arguments, environment);
  }
  Outcome outcome{};
  ::waitpid(process, &outcome.status, 0);
  outcome.output = Written(output);
  outcome.errors = Written(errors);
  return outcome;
}

Background::Background(const std::vector<std::string>& arguments,
                       const std::vector<std::string>& environment) {
  std::array<int, 2> ends{};
  if (::pipe(ends.data()) != 0) return;
  process_ = ::fork();
  if (process_ == 0) {
    ::dup2(ends[1], STDOUT_FILENO);
    Become(arguments, environment);
  }
  ::close(ends[1]);
  char letter = 0;
  while (::read(ends[0], &letter, 1) == 1 && letter != '\n') first_line_ += letter;
  ::close(ends[0]);
}

Background::~Background() {
  if (process_ <= 0) return;
  ::kill(process_, SIGTERM);
  ::waitpid(process_, nullptr, 0);
}
