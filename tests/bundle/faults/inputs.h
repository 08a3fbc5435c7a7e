// tests/bundle/faults/inputs.h - representative arguments for every kind of parameter.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "tests/bundle/faults/targets.h"

namespace faults {

// The names of a parameter's values; the first is the one that usual programs pass.
std::vector<std::string> ValueNames(const Target& target, const Parameter& parameter);

// The choice of one value per parameter, by position in ValueNames.
using Choice = std::vector<std::size_t>;

// The usual values, and every choice that differs from them in one parameter.
std::vector<Choice> Choices(const Target& target);
std::string Describe(const Target& target, const Choice& choice);

inline constexpr std::size_t kMostWords = 24;

// The arguments of one call as they lie on the stack, and what the test owns of them.
struct Arguments {
  struct {
    std::uint32_t words[kMostWords];
  } stack{};
  std::size_t count = 0;
  std::array<double, 8> outputs{};
  std::size_t outputCount = 0;
  std::vector<void*> objects;
  std::vector<void*> strings;
  void* self = nullptr;

  void Release();  // gives up every reference of the test's
};

// What stands in an output before the call.
inline constexpr double kUntouched = -12345.5;

// Makes the arguments in the scripted host. With a cache, instances that wrap something are entered in it.
void MakeArguments(const Target& target, const Choice& choice, bool cached, Arguments& arguments);

}  // namespace faults
