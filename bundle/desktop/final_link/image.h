// bundle/desktop/final_link/image.h - the bundle's code and data, with every field filled for address 0.
#pragma once

#include <cstdint>
#include <vector>

#include "bundle/desktop/final_link/layout.h"

namespace desktop {

// A pointer of __DATA that the loader fills.
struct Bind {
  std::uint32_t address;
  std::size_t import;
};

struct Image {
  Bytes bytes;  // up to the end of what __DATA has in the file; load commands still missing
  std::vector<std::uint32_t> rebases;  // ascending addresses of pointers that move with the bundle
  std::vector<Bind> binds;             // by import, then by address
};

// Copies the sections to their places, makes stubs and carries every relocation over. Refuses one that would
// need the loader to write into __TEXT.
Image MakeImage(const Object& object, const Imports& imports, const Layout& layout);

}  // namespace desktop
