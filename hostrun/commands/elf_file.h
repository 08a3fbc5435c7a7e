// hostrun/commands/elf_file.h - what the dynamic section of a 32-bit ELF file says.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace hostrun {

// The names are copies: the file is closed.
struct ElfFile {
  struct Undefined {
    std::string name;
    bool weak = false;
    std::string library;  // whose version it asks for; empty: of none
  };
  std::vector<std::string> exported;
  std::vector<Undefined> undefined;
  std::vector<std::string> needed;  // DT_NEEDED
  bool textRelocations = false;
  bool hasRelro = false;
  bool hasStackHeader = false;
  bool executableStack = false;
};

// `path` has passed CheckBundleFile. Throws std::runtime_error for a file that does not hold what its headers
// promise.
ElfFile ReadElfFile(const std::string& path);

}  // namespace hostrun
