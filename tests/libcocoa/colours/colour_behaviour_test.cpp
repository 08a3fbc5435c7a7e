// tests/libcocoa/colours/colour_behaviour_test.cpp - every scenario, against GNUstep alone and with libcocoa.
//
// The scenarios and their expected answers are in the two scenario programs; each is run in a process of its
// own, with folders that were emptied before, and may hang or crash there.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
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

// What a scenario program finds in its environment; the folder is the one of all its scenarios. A crash of
// GNUstep alone is an answer as the system tells it, not a finding of AddressSanitizer's.
std::vector<std::string> environmentFor(const std::string& program, const fs::path& folder) {
  const std::string profiles = QVX_ICC_FOLDER;
  return {"GNUSTEP_CONFIG_FILE=" + (folder / "GNUstep.conf").string(),
          "QVX_SCENARIO_FOLDER=" + folder.string(),
          "QVX_ICC_FOLDER=" + profiles,
          std::string("QVX_SCENARIOS_PLAIN=") + QVX_SCENARIOS_PLAIN,
          "QVX_CMYK_PROFILE=" + profiles + "/default_cmyk.icc",
          "HOME=" + folder.string(),
          program == QVX_SCENARIOS_PLAIN ? "ASAN_OPTIONS=handle_segv=0" : "ASAN_OPTIONS=",
          "LC_ALL=C.UTF-8",
          "PATH=/usr/bin:/bin"};
}

// A scenario program at work. It forks a child for each scenario that it is asked for, so that the libraries
// are loaded once; the children share a folder, which is emptied before each.
class Server {
 public:
  explicit Server(std::string program) : program_(std::move(program)) { start(); }
  ~Server() {
    if (toServer_ != nullptr) std::fclose(toServer_);
    if (fromServer_ != nullptr) std::fclose(fromServer_);
    if (process_ > 0) waitpid(process_, nullptr, 0);
  }
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;

  // What the scenario printed, without the last line end; or "hangs", "crashes with signal N", "ends with
  // status N".
  std::string run(const std::string& scenario) {
    if (process_ <= 0) return "can't be started: " + program_;
    for (const fs::directory_entry& each : fs::directory_iterator(folder_.path())) fs::remove_all(each);
    writeConfiguration(folder_.path());
    std::fprintf(toServer_, "%s\n", scenario.c_str());
    std::fflush(toServer_);
    int status = 0;
    if (std::fscanf(fromServer_, "%d", &status) != 1) return "ended its program: " + program_;
    if (WIFSIGNALED(status) && WTERMSIG(status) == SIGALRM) return "hangs";
    if (WIFSIGNALED(status)) return "crashes with signal " + std::to_string(WTERMSIG(status));
    if (WEXITSTATUS(status) != 0)
      return "ends with status " + std::to_string(WEXITSTATUS(status)) + ": " +
             contents(folder_.path() / "errors");
    std::string text = contents(folder_.path() / "output");
    if (!text.empty() && text.back() == '\n') text.pop_back();
    return text;
  }

 private:
  void start() {
    writeConfiguration(folder_.path());
    std::array<int, 2> questions{};
    std::array<int, 2> answers{};
    if (pipe2(questions.data(), O_CLOEXEC) != 0 || pipe2(answers.data(), O_CLOEXEC) != 0) return;
    std::vector<std::string> words{program_, "serve"};
    std::vector<std::string> environment = environmentFor(program_, folder_.path());
    const std::vector<char*> argv = pointersTo(words);
    const std::vector<char*> envp = pointersTo(environment);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, questions[0], STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, answers[1], STDOUT_FILENO);
    if (posix_spawn(&process_, program_.c_str(), &actions, nullptr, argv.data(), envp.data()) != 0)
      process_ = 0;
    posix_spawn_file_actions_destroy(&actions);
    close(questions[0]);
    close(answers[1]);
    toServer_ = fdopen(questions[1], "w");
    fromServer_ = fdopen(answers[0], "r");
  }

  std::string program_;
  ScratchFolder folder_;
  pid_t process_ = 0;
  FILE* toServer_ = nullptr;
  FILE* fromServer_ = nullptr;
};

// The program's own list of its scenarios.
std::vector<Scenario> allScenarios() {
  FILE* const listing = popen(QVX_SCENARIOS_HERE, "r");  // NOLINT: the command is made by the build
  if (listing == nullptr) return {};
  std::string text;
  for (int next = std::fgetc(listing); next != EOF; next = std::fgetc(listing))
    text.push_back(static_cast<char>(next));
  pclose(listing);
  std::istringstream lines(text);
  std::vector<Scenario> scenarios;
  Scenario each;
  while (std::getline(lines, each.name) && std::getline(lines, each.plain) && std::getline(lines, each.here))
    scenarios.push_back(each);
  return scenarios;
}

class Behaviour : public testing::Test {
 public:
  Behaviour(Server& server, std::string name, std::string expected)
      : server_(server), name_(std::move(name)), expected_(std::move(expected)) {}
  void TestBody() override {
    const std::string found = server_.run(name_);
    if (found == "raises NoOtherUser") GTEST_SKIP() << "here nobody can become another user";
    EXPECT_EQ(found, expected_) << name_;
  }

 private:
  Server& server_;
  std::string name_, expected_;
};

void registerBehaviour(const char* suite, Server& server, const std::string& name,
                       const std::string& expected) {
  testing::RegisterTest(suite, name.c_str(), nullptr, nullptr, __FILE__, __LINE__,
                        [=, &server]() -> Behaviour* { return new Behaviour(server, name, expected); });
}

int runAll() {
  const std::vector<Scenario> scenarios = allScenarios();
  if (scenarios.empty()) {
    std::fputs("wanted scenarios from " QVX_SCENARIOS_HERE ", found none; build it first\n", stderr);
    return EXIT_FAILURE;
  }
  Server plain(QVX_SCENARIOS_PLAIN);
  Server here(QVX_SCENARIOS_HERE);
  std::signal(SIGPIPE, SIG_IGN);  // a program that ended is an answer, not this one's end
  for (const Scenario& each : scenarios) {
    if (!each.plain.empty()) registerBehaviour("GNUstepAlone", plain, each.name, each.plain);
    registerBehaviour("WithLibcocoa", here, each.name, each.here);
  }
  return RUN_ALL_TESTS();
}

}  // namespace

int main(int argc, char** argv) {
  try {
    testing::InitGoogleTest(&argc, argv);
    return runAll();
  } catch (const std::exception& problem) {
    std::fprintf(stderr, "colour_behaviour_test: wanted to run the scenarios, found: %s\n", problem.what());
    return EXIT_FAILURE;
  }
}
