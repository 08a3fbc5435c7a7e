// tests/hostrun/commands/run_hostrun.h - runs the hostrun of this build and says what came out.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace command_tests {

struct Finished {
  int status = -1;  // -1: it did not end by itself
  std::string out;
  std::string err;
};

// With `input` on stdin and extra variables ("NAME=value") in its environment.
Finished RunHostrun(const std::vector<std::string>& arguments, const std::string& input = {},
                    const std::vector<std::string>& environment = {});

// The same, with a standard output that takes nothing, as on a full disk.
Finished RunHostrunOntoFullDisk(const std::vector<std::string>& arguments);

// Replaces this process, with extra variables in its environment.
[[noreturn]] void BecomeHostrun(const std::vector<std::string>& arguments,
                                const std::vector<std::string>& environment);

// Options for a host without the platform library, which takes longer to load than most tests take without
// it.
const std::vector<std::string>& WithoutPlatform();
// The same for a program or a session that does without it; else none.
std::vector<std::string> PlatformFor(const std::string& text);

// A file of this build: a bundle, a library.
std::string BuiltFile(const std::string& name);

// A file with that text, gone at the end of the test program.
std::string TemporaryFile(const std::string& name, const std::string& text);

// How much "hostrun check" looks at in a bundle's file.
inline constexpr std::size_t kFileChecks = 8;
// In the sound bundle on one host: the file; load, version, order, records, declarations, life; a property,
// two methods, a shared method.
inline constexpr std::size_t kSoundChecks = kFileChecks + 10;
// The tally of checks that all passed but for so many.
std::string Tally(std::size_t checks, std::size_t failed = 0);

// What a file holds; empty where there is none.
std::string ReadFile(const std::string& path);

// The lines of a text.
std::vector<std::string> Lines(const std::string& text);
// Empty where there is none.
std::string LastLine(const std::string& text);

}  // namespace command_tests
