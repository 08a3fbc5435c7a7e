// hostrun/macho/image.h - a desktop bundle in this process's memory.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "hostrun/macho/file.h"

namespace hostrun::macho {

// The address of a symbol of that name, which begins with the underscore that the desktop's C puts in front;
// null where the file may have none of that name.
using FindSymbol = std::function<void*(const std::string& symbol)>;

// Maps the file anywhere, fills in its addresses and protects its segments. Its functions can be called, and
// exceptions go through them, for as long as this lives; calling them is the caller's risk. Images share
// nothing: a file can be mapped any number of times.
class Image {
 public:
  // Throws FormatError where a symbol is missing or the unwind tables can't be read, std::system_error where
  // there is no memory. `file` is not kept.
  Image(const File& file, const FindSymbol& find);
  Image(const Image&) = delete;
  Image& operator=(const Image&) = delete;
  ~Image();

  // The address of an exported symbol; null if there is none.
  void* Exported(std::string_view symbol) const;

  // All of the image, and the parts of it that the bundle may write to.
  std::span<std::uint8_t> memory() const { return mapping_.memory; }
  const std::vector<std::span<std::uint8_t>>& writable() const { return writable_; }

 private:
  struct Mapping {
    explicit Mapping(std::size_t size);
    Mapping(const Mapping&) = delete;
    Mapping& operator=(const Mapping&) = delete;
    ~Mapping();
    std::span<std::uint8_t> memory;
  };
  struct Function {
    std::string symbol;
    void* address;
  };

  Mapping mapping_;
  std::vector<std::span<std::uint8_t>> writable_;
  std::vector<Function> exported_;
  void* frames_ = nullptr;  // registered with the unwinder
};

}  // namespace hostrun::macho
