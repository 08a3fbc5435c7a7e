// bundle/desktop/final_link/refusal.cpp - why an object can't be linked.
#include "bundle/desktop/final_link/refusal.h"

#include <cstddef>

namespace desktop {

std::string Hex(std::uint64_t number) {
  std::ostringstream text;
  text << "0x" << std::hex << std::uppercase << number;
  return text.str();
}

std::string Quoted(const std::string& name) {
  constexpr std::size_t kLongest = 100;
  std::string text = "\"";
  for (const char letter : name.substr(0, kLongest)) text += letter >= ' ' && letter <= '~' ? letter : '?';
  return text + (name.size() > kLongest ? "...\"" : "\"");
}

}  // namespace desktop
