// tests/whole/fuzz/target.h - what a fuzz target gives, whichever driver feeds it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace fuzz {

// Good inputs to start from, besides those that are kept in the corpus.
std::vector<std::string> Seeds();

// What is wrong is said here: prints the line and ends the process.
[[noreturn]] void Fail(const std::string& what);

}  // namespace fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
