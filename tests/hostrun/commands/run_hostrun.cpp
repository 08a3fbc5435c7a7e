// tests/hostrun/commands/run_hostrun.cpp - runs the hostrun of this build and says what came out.
#include "tests/hostrun/commands/run_hostrun.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

namespace command_tests {
namespace {

// A folder of this process alone.
class Folder {
 public:
  Folder() : path_(std::filesystem::temp_directory_path() / ("command-tests-" + std::to_string(getpid()))) {
    std::filesystem::create_directories(path_);
  }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;
  ~Folder() {
    std::error_code error;
    std::filesystem::remove_all(path_, error);
  }
  std::string File(const std::string& name) const { return (path_ / name).native(); }

 private:
  std::filesystem::path path_;
};

const Folder& TheFolder() {
  static const Folder folder;
  return folder;
}

void Redirect(const std::string& path, int flags, int to) {
  const int file = open(path.c_str(), flags | O_CLOEXEC, 0600);
  if (file < 0 || dup2(file, to) < 0) _exit(126);
}

Finished RunOnto(const std::string& out, const std::vector<std::string>& arguments, const std::string& input,
                 const std::vector<std::string>& environment) {
  const std::string in = TemporaryFile("stdin", input);
  const std::string err = TheFolder().File("stderr");
  const pid_t child = fork();
  if (child == 0) {
    Redirect(in, O_RDONLY, STDIN_FILENO);
    Redirect(out, O_WRONLY | O_CREAT | O_TRUNC, STDOUT_FILENO);
    Redirect(err, O_WRONLY | O_CREAT | O_TRUNC, STDERR_FILENO);
    BecomeHostrun(arguments, environment);
  }
  int status = 0;
  waitpid(child, &status, 0);
  // What takes nothing would give zeros for ever.
  const bool readable = std::filesystem::is_regular_file(out);
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, readable ? ReadFile(out) : std::string(),
          ReadFile(err)};
}

}  // namespace

void BecomeHostrun(const std::vector<std::string>& arguments, const std::vector<std::string>& environment) {
  // Whoever runs the tests may object to colour, and has a history of their own.
  for (const char* const name : {"NO_COLOR", "COLORTERM"}) unsetenv(name);
  setenv("XDG_STATE_HOME", TheFolder().File("state").c_str(), 1);
  for (const std::string& variable : environment) putenv(const_cast<char*>(variable.c_str()));
  std::vector<char*> words = {const_cast<char*>("hostrun")};
  for (const std::string& argument : arguments) words.push_back(const_cast<char*>(argument.c_str()));
  words.push_back(nullptr);
  execv(BuiltFile("hostrun").c_str(), words.data());
  _exit(127);
}

Finished RunHostrun(const std::vector<std::string>& arguments, const std::string& input,
                    const std::vector<std::string>& environment) {
  return RunOnto(TheFolder().File("stdout"), arguments, input, environment);
}

Finished RunHostrunOntoFullDisk(const std::vector<std::string>& arguments) {
  return RunOnto("/dev/full", arguments, {}, {});
}

const std::vector<std::string>& WithoutPlatform() {
  static const std::vector<std::string> options = {"--platform", "none", "--bundle",
                                                   BuiltFile("broken/Any.so")};
  return options;
}

std::vector<std::string> PlatformFor(const std::string& text) {
  const bool wanted = text.find("QVX") != std::string::npos || text.find("qvx") != std::string::npos ||
                      text.find("Pasteboard") != std::string::npos;
  return wanted ? std::vector<std::string>() : WithoutPlatform();
}

std::string BuiltFile(const std::string& name) {
  return std::string(BUILD_FOLDER) + "/" + name;
}

std::string TemporaryFile(const std::string& name, const std::string& text) {
  std::ofstream(TheFolder().File(name), std::ios::binary) << text;
  return TheFolder().File(name);
}

std::string Tally(std::size_t checks, std::size_t failed) {
  return std::to_string(checks) + " checks, " + std::to_string(checks - failed) + " passed, " +
         std::to_string(failed) + " failed";
}

std::string ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

std::string LastLine(const std::string& text) {
  const std::vector<std::string> lines = Lines(text);
  return lines.empty() ? std::string() : lines.back();
}

}  // namespace command_tests
