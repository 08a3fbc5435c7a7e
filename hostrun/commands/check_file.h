// hostrun/commands/check_file.h - what the checks of a bundle's file have in common, whichever format it has.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "hostrun/commands/check_parts.h"
#include "hostrun/commands/elf_file.h"
#include "hostrun/macho/file.h"

namespace hostrun {

// A check of a file that has been read.
template <class File>
struct FileCheck {
  const CheckKind& kind;
  Problem (*check)(const File& file);
};

const std::vector<FileCheck<ElfFile>>& ElfFileChecks();
const std::vector<FileCheck<macho::File>>& DesktopFileChecks();

// Up to six names for a message; "none" without any.
std::string Listed(const std::vector<std::string>& names);

// The exported names, and the one that must be among them and stand alone.
Problem CheckEntryPoint(const std::vector<std::string>& exported, const std::string& entryPoint);
Problem CheckExports(const std::vector<std::string>& exported, const std::string& entryPoint);

}  // namespace hostrun
