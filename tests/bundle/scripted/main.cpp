// tests/bundle/scripted/main.cpp - runs every test in a process of its own.
//
// The bundle keeps what it found for the life of the process (services, selectors, the host's version,
// definitions that registration rewrote), and gives no way to forget it. So each test gets a fresh copy of a
// process in which no test has run yet; a crash is one failed test, not the end of the run. The framework
// goes through the tests once: as each begins the process forks, the copy runs the test and ends, and the
// process itself steps over it. It still makes the fixture, so what a test needs belongs into SetUp(), not
// into a constructor. With --gtest_list_tests, or --here, nothing is forked.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <map>
#include <string>
#include <vector>

// Writes what a build that counts lines has counted; in no other build.
extern "C" [[gnu::weak]] void __gcov_dump();  // NOLINT(bugprone-reserved-identifier)

namespace {

constexpr unsigned kSecondsPerTest = 20;
constexpr std::size_t kAtOnce = 4;

class ProcessPerTest : public testing::EmptyTestEventListener {
 public:
  // What the framework says in this process, where it believes every test skipped, is of no use.
  ProcessPerTest() : said_(fdopen(dup(STDOUT_FILENO), "w")) {
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    dup2(nowhere, STDOUT_FILENO);
    close(nowhere);
  }

  void OnTestStart(const testing::TestInfo& test) override {
    if (running_.size() == kAtOnce) WaitForOne();
    ++count_;
    FILE* const output = std::tmpfile();
    std::fflush(stdout);
    const pid_t child = fork();
    if (child == 0) {
      forked_ = true;
      dup2(fileno(output), STDOUT_FILENO);
      dup2(fileno(output), STDERR_FILENO);
      alarm(kSecondsPerTest);
      return;
    }
    running_.emplace(child, Running{std::string(test.test_suite_name()) + "." + test.name(), output});
    GTEST_SKIP();
  }

  void OnTestEnd(const testing::TestInfo& test) override {
    if (!forked_) return;
    std::fflush(nullptr);
    if (__gcov_dump != nullptr) __gcov_dump();
    _exit(test.result()->Failed() ? 1
                                  : 0);  // giving back what describes all tests would take as long as a test
  }

  // Waits for the last tests. Answers whether there were any, and all passed.
  bool Finish() {
    while (!running_.empty()) WaitForOne();
    for (const std::string& name : failed_) std::fprintf(said_, "[  FAILED  ] %s\n", name.c_str());
    std::fprintf(said_, "%zu tests, each in a process of its own: %zu passed, %zu failed\n", count_,
                 count_ - failed_.size(), failed_.size());
    std::fflush(said_);
    return failed_.empty() && count_ > 0;
  }

 private:
  struct Running {
    std::string name;
    FILE* output;
  };

  void WaitForOne() {
    int status = 0;
    const auto found = running_.find(wait(&status));
    if (found == running_.end()) return;
    const auto& [name, output] = found->second;
    if (status != 0) {
      failed_.push_back(name);
      std::fprintf(said_, "[ RUN      ] %s\n", name.c_str());
      Show(output);
      if (WIFSIGNALED(status)) std::fprintf(said_, "%s: %s\n", name.c_str(), strsignal(WTERMSIG(status)));
      std::fflush(said_);
    }
    std::fclose(output);
    running_.erase(found);
  }

  void Show(FILE* output) {
    std::rewind(output);
    char buffer[4096];
    for (std::size_t got = 0; (got = std::fread(buffer, 1, sizeof buffer, output)) > 0;) {
      std::fwrite(buffer, 1, got, said_);
    }
  }

  FILE* const said_;
  bool forked_ = false;
  std::size_t count_ = 0;
  std::map<pid_t, Running> running_;
  std::vector<std::string> failed_;
};

}  // namespace

int main(int argc, char** argv) {
  bool here = false;
  for (int i = 1; i < argc; ++i) here |= std::strcmp(argv[i], "--here") == 0;
  testing::InitGoogleTest(&argc, argv);
  if (here || GTEST_FLAG_GET(list_tests)) return RUN_ALL_TESTS();

  auto* const processes = new ProcessPerTest;  // the framework's from now on
  testing::UnitTest::GetInstance()->listeners().Append(processes);
  const int status = RUN_ALL_TESTS();
  return processes->Finish() ? status : 1;
}
