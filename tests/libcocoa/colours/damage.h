// tests/libcocoa/colours/damage.h - files, and bytes that get damaged: the same damage in every run.
#pragma once

#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

namespace damage {

using Bytes = std::vector<std::uint8_t>;

inline Bytes readFile(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

// A new file each time: file systems write one out at once when it is truncated and closed.
inline void writeFile(const std::filesystem::path& path, const Bytes& bytes) {
  std::filesystem::remove(path);
  std::ofstream out(path, std::ios::binary);
  std::copy(bytes.begin(), bytes.end(), std::ostreambuf_iterator<char>(out));
}

// Some bytes changed, and now and then a piece cut off, doubled, or a word made absurd.
class Damager {
 public:
  explicit Damager(unsigned seed) : random_(seed) {}

  Bytes operator()(Bytes bytes) {
    const unsigned changes = 1 + below(8);
    for (unsigned i = 0; i < changes && !bytes.empty(); ++i) changeOnce(bytes);
    return bytes;
  }

 private:
  unsigned below(std::size_t limit) { return static_cast<unsigned>(random_() % limit); }

  void changeOnce(Bytes& bytes) {
    const std::size_t at = below(bytes.size());
    switch (below(8)) {
      case 0:
        bytes.resize(at);
        break;
      case 1:
        for (std::size_t i = at; i < at + 4 && i < bytes.size(); ++i) bytes[i] = below(2) != 0 ? 0xFF : 0;
        break;
      case 2: {
        const Bytes piece(bytes.begin() + static_cast<std::ptrdiff_t>(at),
                          bytes.begin() + static_cast<std::ptrdiff_t>(std::min(at + 16, bytes.size())));
        bytes.insert(bytes.begin() + static_cast<std::ptrdiff_t>(at), piece.begin(), piece.end());
        break;
      }
      case 3:
        bytes[at] ^= static_cast<std::uint8_t>(1U << below(8));
        break;
      default:
        bytes[at] = static_cast<std::uint8_t>(below(256));
        break;
    }
  }

  std::mt19937 random_;
};

// A folder of its own with room for a list.
class ListFile {
 public:
  ListFile() {
    std::string made = (std::filesystem::temp_directory_path() / "colour-damage-XXXXXX").string();
    if (mkdtemp(made.data()) == nullptr) throw std::runtime_error("no temporary folder");
    folder_ = made;
  }
  ~ListFile() {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
  }
  ListFile(const ListFile&) = delete;
  ListFile& operator=(const ListFile&) = delete;
  [[nodiscard]] std::filesystem::path path() const { return folder_ / "list.clr"; }

 private:
  std::filesystem::path folder_;
};

// How many times as many rounds as ./test makes: QVX_DAMAGE_TIMES in the environment.
inline unsigned timesAsMany() {
  const char* const wanted = std::getenv("QVX_DAMAGE_TIMES");
  return wanted == nullptr ? 1 : static_cast<unsigned>(std::max(1UL, std::strtoul(wanted, nullptr, 10)));
}

}  // namespace damage
