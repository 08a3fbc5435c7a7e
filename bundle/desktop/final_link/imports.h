// bundle/desktop/final_link/imports.h - what the bundle takes from libraries.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "bundle/desktop/final_link/object.h"

namespace desktop {

// A symbol of a library. Each has one pointer, in the order of the list.
struct Import {
  std::string name;       // as the file has it, with the leading underscore
  std::size_t symbol;     // in the object
  std::uint32_t library;  // counted from 1
  bool called;            // has a stub
};

struct Imports {
  std::vector<std::string> libraries;  // paths, in the order that the file names them
  std::vector<Import> imports;         // by library, then by name

  // The place of an object's undefined symbol in `imports`, which has every one that the object uses.
  std::size_t Of(std::size_t symbol) const;
  std::size_t CalledCount() const;
};

// Collects what the object uses of libraries. Refuses a symbol that neither the platform's list nor the
// run-time's has, and a call to data.
Imports CollectImports(const Object& object);

}  // namespace desktop
