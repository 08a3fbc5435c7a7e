// tests/whole/fuzz/driver.cpp - feeds a target without a coverage-guided fuzzer: kept inputs first, then
// mutations of them and of the seeds, the same ones for the same number.
//
//   fuzz_... RUNS SEED [FILE-OR-FOLDER...]
//   fuzz_... --seeds FOLDER      writes the seeds as files, for the fuzzer that is guided by coverage
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>

#include "tests/whole/fuzz/target.h"

namespace {

constexpr std::size_t kLongest = 8192;
constexpr const char* kCrashFile = "crash-input";

std::string current;

// Keeps the input that ended the process. Only calls that a signal handler may make.
void KeepInput(int signal) {
  const int file = creat(kCrashFile, 0644);
  if (file >= 0) {
    const ssize_t written = write(file, current.data(), current.size());
    static_cast<void>(written);
    close(file);
  }
  std::signal(signal, SIG_DFL);
  raise(signal);
}

void Feed(std::string input) {
  current = std::move(input);
  LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(current.data()), current.size());
}

std::string Read(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

class Generator {
 public:
  explicit Generator(unsigned seed) : random_(seed) {}

  std::string Next(const std::vector<std::string>& from) {
    std::string input = from[Below(from.size())];
    const std::size_t longest = std::max(kLongest, input.size());
    for (std::size_t i = Below(6) + 1; i > 0; --i) Mutate(input, from);
    if (input.size() > longest) input.resize(longest);
    return input;
  }

 private:
  std::size_t Below(std::size_t bound) { return random_() % bound; }
  char Byte() {
    static constexpr unsigned char kTelling[] = {0x00, 0x01, 0x7F, 0x80, 0xFF, 0xFE,
                                                 0xD8, 0xDC, '"',  '(',  ')',  ' '};
    return static_cast<char>(Below(2) == 0 ? kTelling[Below(sizeof kTelling)] : Below(256));
  }

  void Mutate(std::string& input, const std::vector<std::string>& from) {
    const std::size_t at = Below(input.size() + 1);
    const std::size_t length = std::min(Below(16) + 1, input.size() - at);
    switch (Below(7)) {
      case 0:
        if (at < input.size()) input[at] = Byte();
        break;
      case 1:
        input.insert(at, 1, Byte());
        break;
      case 2:
        input.erase(at, length);
        break;
      case 3:
        input.insert(at, input.substr(Below(input.size() + 1), Below(64)));
        break;
      case 4: {
        const std::string& other = from[Below(from.size())];
        input = input.substr(0, at) + other.substr(Below(other.size() + 1));
        break;
      }
      case 5:  // a number in either byte order, at its limits
        if (at + 4 <= input.size()) {
          const std::uint32_t limits[] = {0,          1,          0x7FFFFFFF, 0x80000000,
                                          0xFFFFFFFF, 0xFFFFFF7F, 0x100,      0x10000};
          std::memcpy(input.data() + at, &limits[Below(8)], 4);
        }
        break;
      default:
        input.resize(at);
        break;
    }
  }

  std::mt19937 random_;
};

int WriteSeeds(const std::filesystem::path& folder) {
  std::filesystem::create_directories(folder);
  int number = 0;
  for (const std::string& seed : fuzz::Seeds()) {
    std::ofstream file(folder / ("seed-" + std::to_string(number++)), std::ios::binary);
    file.write(seed.data(), static_cast<std::streamsize>(seed.size()));
    if (!file.flush()) {
      std::fprintf(stderr, "wanted to write the seeds below %s, could not\n", folder.c_str());
      return 2;
    }
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) {
    std::fprintf(stderr, "wanted RUNS SEED [FILE-OR-FOLDER...], found %d arguments\n", argc - 1);
    return 2;
  }
  if (std::strcmp(argv[1], "--seeds") == 0) return WriteSeeds(argv[2]);
  for (const int signal : {SIGSEGV, SIGABRT, SIGBUS, SIGFPE, SIGILL}) std::signal(signal, &KeepInput);
  std::vector<std::string> inputs = fuzz::Seeds();
  for (int i = 3; i < argc; ++i) {
    if (!std::filesystem::is_directory(argv[i])) {
      inputs.push_back(Read(argv[i]));
      continue;
    }
    for (const auto& entry : std::filesystem::directory_iterator(argv[i]))
      inputs.push_back(Read(entry.path()));
  }
  for (const std::string& input : inputs) Feed(input);
  Generator generator(static_cast<unsigned>(std::strtoul(argv[2], nullptr, 10)));
  const long runs = std::strtol(argv[1], nullptr, 10);
  for (long i = 0; i < runs; ++i) Feed(generator.Next(inputs));
  std::printf("%zu kept inputs and %ld made ones\n", inputs.size(), runs);
  return 0;
}
