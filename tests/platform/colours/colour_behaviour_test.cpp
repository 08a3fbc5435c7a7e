// tests/platform/colours/colour_behaviour_test.cpp - every scenario, against GNUstep alone and with libcocoa.
//
// The scenarios and their expected answers are in the two scenario programs; each is run in a process of its
// own, with folders of its own, and may hang or crash there.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

constexpr auto kPatience = 20s;

struct Scenario {
  std::string name, plain, here;
};

// A new folder below the system's for temporary files, removed at the end.
class ScratchFolder {
 public:
  ScratchFolder() {
    std::string made = (fs::temp_directory_path() / "colour-scenario-XXXXXX").string();
    if (mkdtemp(made.data()) == nullptr) throw std::runtime_error("no temporary folder");
    path_ = made;
  }
  ~ScratchFolder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
  }
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;
  [[nodiscard]] const fs::path& path() const { return path_; }

 private:
  fs::path path_;
};

// GNUstep looks for the user's and the system's lists below this folder, and keeps its defaults there.
void writeConfiguration(const fs::path& folder) {
  std::ofstream configuration(folder / "GNUstep.conf");
  configuration << "GNUSTEP_USER_CONFIG_FILE=.none\n"
                << "GNUSTEP_USER_DIR_LIBRARY=" << (folder / "User").string() << "\n"
                << "GNUSTEP_USER_DEFAULTS_DIR=" << (folder / "Defaults").string() << "\n"
                << "GNUSTEP_LOCAL_LIBRARY=" << (folder / "Local").string() << "\n"
                << "GNUSTEP_NETWORK_LIBRARY=" << (folder / "Network").string() << "\n"
                << "GNUSTEP_SYSTEM_LIBRARY=" << (folder / "System").string() << "\n";
}

std::string contents(const fs::path& file) {
  std::ifstream in(file);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

// What exec wants: pointers to the texts, and a null pointer.
std::vector<char*> pointersTo(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

// The program's standard output, without the last line end; or "hangs", "crashes with signal N", "ends with
// status N".
std::string run(const std::string& program, const std::vector<std::string>& arguments) {
  const ScratchFolder scratch;
  writeConfiguration(scratch.path());
  const std::string output = (scratch.path() / "output").string();
  const std::string errors = (scratch.path() / "errors").string();

  const std::string profiles = QVX_ICC_FOLDER;
  std::vector<std::string> environment{"GNUSTEP_CONFIG_FILE=" + (scratch.path() / "GNUstep.conf").string(),
                                       "QVX_SCENARIO_FOLDER=" + scratch.path().string(),
                                       "QVX_ICC_FOLDER=" + profiles,
                                       "QVX_CMYK_PROFILE=" + profiles + "/default_cmyk.icc",
                                       "HOME=" + scratch.path().string(),
                                       "LC_ALL=C.UTF-8",
                                       "PATH=/usr/bin:/bin"};
  std::vector<std::string> words{program};
  words.insert(words.end(), arguments.begin(), arguments.end());
  const std::vector<char*> envp = pointersTo(environment);
  const std::vector<char*> argv = pointersTo(words);

  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  constexpr mode_t kMode = 0600;
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, output.c_str(), O_WRONLY | O_CREAT, kMode);
  posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, errors.c_str(), O_WRONLY | O_CREAT, kMode);
  pid_t child = 0;
  const int failure = posix_spawn(&child, program.c_str(), &actions, nullptr, argv.data(), envp.data());
  posix_spawn_file_actions_destroy(&actions);
  if (failure != 0) return "can't be started: " + program;

  const auto end = std::chrono::steady_clock::now() + kPatience;
  int status = 0;
  while (waitpid(child, &status, WNOHANG) == 0) {
    if (std::chrono::steady_clock::now() > end) {
      kill(child, SIGKILL);
      waitpid(child, &status, 0);
      return "hangs";
    }
    std::this_thread::sleep_for(2ms);
  }
  if (WIFSIGNALED(status)) return "crashes with signal " + std::to_string(WTERMSIG(status));
  if (WEXITSTATUS(status) != 0)
    return "ends with status " + std::to_string(WEXITSTATUS(status)) + ": " + contents(errors);
  std::string text = contents(output);
  if (!text.empty() && text.back() == '\n') text.pop_back();
  return text;
}

std::vector<Scenario> allScenarios() {
  std::vector<Scenario> scenarios;
  std::istringstream lines(run(QVX_SCENARIOS_HERE, {}));
  Scenario each;
  while (std::getline(lines, each.name) && std::getline(lines, each.plain) && std::getline(lines, each.here))
    scenarios.push_back(each);
  return scenarios;
}

class Behaviour : public testing::Test {
 public:
  Behaviour(std::string program, std::string name, std::string expected)
      : program_(std::move(program)), name_(std::move(name)), expected_(std::move(expected)) {}
  void TestBody() override { EXPECT_EQ(run(program_, {name_}), expected_) << name_; }

 private:
  std::string program_, name_, expected_;
};

void registerBehaviour(const char* suite, const std::string& program, const std::string& name,
                       const std::string& expected) {
  testing::RegisterTest(suite, name.c_str(), nullptr, nullptr, __FILE__, __LINE__,
                        [=]() -> Behaviour* { return new Behaviour(program, name, expected); });
}

}  // namespace

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  const std::vector<Scenario> scenarios = allScenarios();
  if (scenarios.empty()) {
    std::fputs("wanted scenarios from " QVX_SCENARIOS_HERE ", found none; build it first\n", stderr);
    return EXIT_FAILURE;
  }
  for (const Scenario& each : scenarios) {
    if (!each.plain.empty()) registerBehaviour("GNUstepAlone", QVX_SCENARIOS_PLAIN, each.name, each.plain);
    registerBehaviour("WithLibcocoa", QVX_SCENARIOS_HERE, each.name, each.here);
  }
  return RUN_ALL_TESTS();
}
