#pragma once
#include <CLI/CLI.hpp>
namespace hostrun {
struct CheckOptions {};
inline void AddCheckOptions(CLI::App&, CheckOptions&) {}
inline int Check(const CheckOptions&) { return 2; }
}
