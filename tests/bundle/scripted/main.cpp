// tests/bundle/scripted/main.cpp - runs every test in a process of its own.
//
// The bundle keeps what it found for the life of the process (services, selectors, the host's version,
// definitions that registration rewrote), and gives no way to forget it. So each test gets a fresh copy of a
// process in which nothing has run yet; a crash is one failed test, not the end of the run. With
// --gtest_list_tests, or --here, nothing is forked; with --gtest_fail_fast, nothing more after a failure.
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

struct Running {
  std::string name;
  FILE* output;
};

// The tests that the filter lets through. Listing them is how the framework can be asked.
std::vector<std::string> Selected() {
  GTEST_FLAG_SET(list_tests, true);
  std::fflush(stdout);
  const int saved = dup(STDOUT_FILENO);
  FILE* const sink = std::tmpfile();
  dup2(fileno(sink), STDOUT_FILENO);
  const int ignored = RUN_ALL_TESTS();
  static_cast<void>(ignored);
  std::fflush(stdout);
  dup2(saved, STDOUT_FILENO);
  close(saved);
  std::fclose(sink);
  GTEST_FLAG_SET(list_tests, false);
  std::vector<std::string> names;
  const testing::UnitTest& all = *testing::UnitTest::GetInstance();
  for (int i = 0; i < all.total_test_suite_count(); ++i) {
    const testing::TestSuite& suite = *all.GetTestSuite(i);
    for (int j = 0; j < suite.total_test_count(); ++j) {
      const testing::TestInfo& test = *suite.GetTestInfo(j);
      if (test.should_run()) names.push_back(std::string(suite.name()) + "." + test.name());
    }
  }
  return names;
}

[[noreturn]] void RunOne(const std::string& name, FILE* output) {
  dup2(fileno(output), STDOUT_FILENO);
  dup2(fileno(output), STDERR_FILENO);
  alarm(kSecondsPerTest);
  GTEST_FLAG_SET(filter, name);
  const int status = RUN_ALL_TESTS();
  std::fflush(nullptr);
  if (__gcov_dump != nullptr) __gcov_dump();
  _exit(status);  // giving back what describes all the other tests would take as long as a test
}

void Show(FILE* output) {
  std::rewind(output);
  char buffer[4096];
  for (std::size_t got = 0; (got = std::fread(buffer, 1, sizeof buffer, output)) > 0;) {
    std::fwrite(buffer, 1, got, stdout);
  }
}

}  // namespace

int main(int argc, char** argv) {
  bool here = false;
  for (int i = 1; i < argc; ++i) here |= std::strcmp(argv[i], "--here") == 0;
  testing::InitGoogleTest(&argc, argv);
  if (here || GTEST_FLAG_GET(list_tests)) return RUN_ALL_TESTS();

  const std::vector<std::string> names = Selected();
  std::vector<std::string> failed;
  std::map<pid_t, Running> running;
  const auto waitForOne = [&] {
    int status = 0;
    const pid_t child = wait(&status);
    const auto found = running.find(child);
    if (found == running.end()) return;
    if (status != 0) {
      failed.push_back(found->second.name);
      Show(found->second.output);
      if (WIFSIGNALED(status)) {
        std::printf("%s: %s\n", found->second.name.c_str(), strsignal(WTERMSIG(status)));
      }
    }
    std::fclose(found->second.output);
    running.erase(found);
  };
  std::size_t begun = 0;
  for (const std::string& name : names) {
    if (running.size() == kAtOnce) waitForOne();
    if (GTEST_FLAG_GET(fail_fast) && !failed.empty()) break;
    ++begun;
    FILE* const output = std::tmpfile();
    std::fflush(stdout);
    const pid_t child = fork();
    if (child == 0) RunOne(name, output);
    running.emplace(child, Running{name, output});
  }
  while (!running.empty()) waitForOne();

  for (const std::string& name : failed) std::printf("[  FAILED  ] %s\n", name.c_str());
  std::printf("%zu tests, each in a process of its own: %zu passed, %zu failed\n", begun,
              begun - failed.size(), failed.size());
  return failed.empty() && !names.empty() ? 0 : 1;
}
