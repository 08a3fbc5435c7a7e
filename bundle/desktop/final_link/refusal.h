// bundle/desktop/final_link/refusal.h - why an object can't be linked.
#pragma once

#include <cstdint>
#include <sstream>
#include <stdexcept>
#include <string>

namespace desktop {

// What was wanted and what was found instead, in one line.
class Refusal : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

// Throws a Refusal: "wanted " and the parts, one after the other.
template <typename... Parts>
[[noreturn]] void RefuseFor(const Parts&... parts) {
  std::ostringstream line;
  line << "wanted ";
  (line << ... << parts);
  throw Refusal(line.str());
}

std::string Hex(std::uint64_t number);

// A name of the object, fit for a line of text.
std::string Quoted(const std::string& name);

}  // namespace desktop
