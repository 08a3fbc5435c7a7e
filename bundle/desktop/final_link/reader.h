// bundle/desktop/final_link/reader.h - records of a file that may be damaged.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string>
#include <type_traits>

#include "bundle/desktop/final_link/refusal.h"

namespace desktop {

// The record that begins at `bytes`, wherever that is.
template <typename Record>
Record RecordAt(const std::uint8_t* bytes) {
  static_assert(std::is_trivially_copyable_v<Record>);
  Record record;
  std::memcpy(&record, bytes, sizeof record);
  return record;
}

class Reader {
 public:
  explicit Reader(std::span<const std::uint8_t> file) : file_(file) {}

  // `size` bytes from `offset` on. Refuses a file that ends before; `what` names them.
  std::span<const std::uint8_t> Part(std::uint64_t offset, std::uint64_t size,
                                     const std::string& what) const {
    if (offset > file_.size() || size > file_.size() - offset) {
      RefuseFor(what, " inside the file, found ", size, " bytes at ", offset, " of ", file_.size());
    }
    return file_.subspan(static_cast<std::size_t>(offset), static_cast<std::size_t>(size));
  }

  template <typename Record>
  Record At(std::uint64_t offset, const std::string& what) const {
    return RecordAt<Record>(Part(offset, sizeof(Record), what).data());
  }

 private:
  std::span<const std::uint8_t> file_;
};

}  // namespace desktop
