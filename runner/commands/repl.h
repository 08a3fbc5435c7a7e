#pragma once
#include <CLI/CLI.hpp>
namespace hostrun {
struct ReplOptions {};
inline void AddReplOptions(CLI::App&, ReplOptions&) {}
inline int Repl(const ReplOptions&) {
  return 2;
}
}  // namespace hostrun
