// hostrun/macho/image.cpp - maps a desktop bundle into this process's memory.
#include "hostrun/macho/image.h"

#include <sys/mman.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <system_error>

#include "hostrun/macho/format.h"
#include "hostrun/macho/frames.h"

// Of the compiler's run-time library: tables that end with an entry without a length.
extern "C" void __register_frame(void* table);    // NOLINT(bugprone-reserved-identifier)
extern "C" void __deregister_frame(void* table);  // NOLINT(bugprone-reserved-identifier)

namespace hostrun::macho {
namespace {

static_assert(sizeof(void*) == sizeof(std::uint32_t), "the bundle's processor is this one");

[[noreturn]] void ThrowNoMemory() {
  throw std::system_error(errno, std::generic_category(), "wanted memory for a bundle");
}

std::uint32_t SpanOf(const File& file) {
  return file.segments.back().address + file.segments.back().size - file.segments.front().address;
}

// Fills the mapping as the file says. Offsets count from its start.
class Filler {
 public:
  Filler(const File& file, std::span<std::uint8_t> memory)
      : file_(file), memory_(memory), lowest_(file.segments.front().address) {}

  std::uint32_t Offset(std::uint32_t address) const { return address - lowest_; }
  std::span<std::uint8_t> MemoryOf(const Segment& segment) const {
    return memory_.subspan(Offset(segment.address), segment.size);
  }

  void CopySegments() const {
    for (const Segment& segment : file_.segments)
      std::copy_n(file_.bytes.data() + segment.fileOffset, segment.fileSize, MemoryOf(segment).data());
  }

  void Rebase() const {
    const std::uint32_t slide = AddressOf(memory_.data()) - lowest_;
    for (const std::uint32_t address : file_.rebases) Add(address, slide);
  }

  void Bind(const FindSymbol& find) const {
    for (const macho::Bind& bind : file_.binds) {
      void* const found = find(bind.symbol);
      if (found == nullptr)
        throw FormatError("symbols of the platform and the language's run-time only", bind.symbol);
      Set(bind.address, AddressOf(found) + static_cast<std::uint32_t>(bind.addend));
    }
  }

  void Protect() const {
    for (const Segment& segment : file_.segments) {
      const std::span<std::uint8_t> part = MemoryOf(segment);
      const int protection = ((segment.protection & kRead) != 0 ? PROT_READ : 0) |
                             ((segment.protection & kWrite) != 0 ? PROT_WRITE : 0) |
                             ((segment.protection & kExecute) != 0 ? PROT_EXEC : 0);
      if (mprotect(part.data(), part.size(), protection) != 0) ThrowNoMemory();
    }
  }

 private:
  static std::uint32_t AddressOf(const void* place) {
    return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(place));
  }
  void Set(std::uint32_t address, std::uint32_t word) const {
    std::memcpy(memory_.data() + Offset(address), &word, sizeof word);
  }
  void Add(std::uint32_t address, std::uint32_t slide) const {
    std::uint32_t word = 0;
    std::memcpy(&word, memory_.data() + Offset(address), sizeof word);
    Set(address, word + slide);
  }

  const File& file_;
  std::span<std::uint8_t> memory_;
  std::uint32_t lowest_;
};

// The unwind tables; null if the file has none.
const Section* FindFrames(const File& file) {
  for (const Segment& segment : file.segments) {
    if (segment.name != "__TEXT") continue;
    for (const Section& section : segment.sections) {
      if (section.name != "__eh_frame" || section.size == 0) continue;
      if ((segment.protection & kRead) == 0)
        throw FormatError("unwind tables that can be read", "protected ones");
      return &section;
    }
  }
  return nullptr;
}

}  // namespace

Image::Mapping::Mapping(std::size_t size) {
  void* const start = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (start == MAP_FAILED) ThrowNoMemory();
  memory = {static_cast<std::uint8_t*>(start), size};
}

Image::Mapping::~Mapping() {
  munmap(memory.data(), memory.size());
}

Image::Image(const File& file, const FindSymbol& find) : mapping_(SpanOf(file)) {
  const Filler filler(file, memory());
  filler.CopySegments();
  filler.Rebase();
  filler.Bind(find);
  const Section* const frames = FindFrames(file);
  if (frames != nullptr) TranslateFrames(memory(), filler.Offset(frames->address), frames->size);
  for (const Export& one : file.exports)
    exported_.push_back({one.symbol, memory().data() + filler.Offset(one.address)});
  for (const Segment& segment : file.segments) {
    if ((segment.protection & kWrite) != 0) writable_.push_back(filler.MemoryOf(segment));
  }
  filler.Protect();
  if (frames == nullptr) return;
  frames_ = memory().data() + filler.Offset(frames->address);
  __register_frame(frames_);
}

Image::~Image() {
  if (frames_ != nullptr) __deregister_frame(frames_);
}

void* Image::Exported(std::string_view symbol) const {
  const auto found = std::find_if(exported_.begin(), exported_.end(),
                                  [symbol](const Function& function) { return function.symbol == symbol; });
  return found == exported_.end() ? nullptr : found->address;
}

}  // namespace hostrun::macho
