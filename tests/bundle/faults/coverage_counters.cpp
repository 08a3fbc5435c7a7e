// tests/bundle/faults/coverage_counters.cpp - finds the counters by the names that the compiler gives them.
#include "tests/bundle/faults/coverage_counters.h"

#include <elf.h>
#include <link.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <string_view>

namespace faults {

std::vector<CounterRange> CoverageCounters(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  const std::vector<char> file{std::istreambuf_iterator<char>(in), {}};
  const auto* const header = reinterpret_cast<const ElfW(Ehdr)*>(file.data());
  const auto* const sections = reinterpret_cast<const ElfW(Shdr)*>(file.data() + header->e_shoff);
  std::vector<CounterRange> counters;
  for (int i = 0; i < header->e_shnum; ++i) {
    if (sections[i].sh_type != SHT_SYMTAB) continue;
    const char* const names = file.data() + sections[sections[i].sh_link].sh_offset;
    const auto* const symbols = reinterpret_cast<const ElfW(Sym)*>(file.data() + sections[i].sh_offset);
    for (std::size_t j = 0; j < sections[i].sh_size / sizeof *symbols; ++j) {
      const std::string_view name = names + symbols[j].st_name;
      if (name.starts_with("__gcov0.")) counters.push_back({symbols[j].st_value, symbols[j].st_size});
    }
  }
  std::ranges::sort(counters, {}, &CounterRange::start);
  return counters;
}

}  // namespace faults
