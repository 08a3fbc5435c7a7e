// hostrun/host/bundle.cpp - loads a bundle and lets it register.
#include "hostrun/host/bundle.h"

#include <dlfcn.h>
#include <elf.h>
#include <link.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <vector>

#include "hostrun/host/desktop_symbols.h"
#include "hostrun/host/registry.h"
#include "hostrun/host/services.h"
#include "hostrun/macho/format.h"
#include "hostrun/macho/image.h"

namespace hostrun {
namespace {

constexpr const char* kWanted = "a bundle (32-bit ELF shared object or Mach-O bundle, for i386)";
constexpr const char* kEntryWanted = "an exported function REALPluginMain";

LoadedBundle bundle;

std::string Refusal(const std::string& file, const std::string& wanted, const std::string& found) {
  return file + ": wanted " + wanted + ", found " + found;
}

// The loader would map pages that the file does not have, and die of them.
bool IsCutShort(std::ifstream& in, const Elf32_Ehdr& header) {
  in.clear();
  in.seekg(0, std::ios::end);
  const auto size = static_cast<std::uint64_t>(in.tellg());
  if (header.e_phentsize != sizeof(Elf32_Phdr)) return true;
  if (header.e_phoff + std::uint64_t{header.e_phnum} * sizeof(Elf32_Phdr) > size) return true;
  for (unsigned i = 0; i < header.e_phnum; ++i) {
    Elf32_Phdr segment{};
    in.seekg(static_cast<std::streamoff>(header.e_phoff + i * sizeof segment));
    in.read(reinterpret_cast<char*>(&segment), sizeof segment);
    if (!in || std::uint64_t{segment.p_offset} + segment.p_filesz > size) return true;
  }
  return false;
}

Problem CheckElfFile(const std::string& file) {
  std::error_code error;
  if (std::filesystem::is_directory(file, error))
    return Refusal(file, kWanted, "a folder; take the folder NAME.bundle, or the file in it");
  std::ifstream in(file, std::ios::binary);
  if (!in) return Refusal(file, kWanted, std::strerror(errno));
  Elf32_Ehdr header{};
  in.read(reinterpret_cast<char*>(&header), sizeof header);
  if (in.gcount() < EI_NIDENT || std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0) {
    return Refusal(file, kWanted, "a file that is neither ELF nor Mach-O");
  }
  if (header.e_ident[EI_CLASS] != ELFCLASS32) return Refusal(file, kWanted, "a 64-bit ELF file");
  if (in.gcount() < static_cast<std::streamsize>(sizeof header))
    return Refusal(file, kWanted, "a truncated ELF file");
  if (header.e_machine != EM_386) {
    return Refusal(file, kWanted, "an ELF file for machine " + std::to_string(header.e_machine));
  }
  if (header.e_type != ET_DYN) return Refusal(file, kWanted, "an ELF file that is no shared object");
  if (IsCutShort(in, header)) return Refusal(file, kWanted, "a truncated ELF file");
  return {};
}

Problem CheckDesktopFile(const std::string& file) {
  try {
    ReadDesktopFile(file);
    return {};
  } catch (const macho::FormatError& error) {
    return file + ": " + error.what();
  }
}

// The addresses of the loaded file that `inside` lies in.
struct FindFile {
  std::uintptr_t inside;
  std::uintptr_t begin = 0;
  std::uintptr_t end = 0;
};

int FindFileAround(dl_phdr_info* info, std::size_t /*size*/, void* data) {
  auto& wanted = *static_cast<FindFile*>(data);
  std::uintptr_t begin = UINTPTR_MAX;
  std::uintptr_t end = 0;
  for (int i = 0; i < info->dlpi_phnum; ++i) {
    const ElfW(Phdr)& segment = info->dlpi_phdr[i];
    if (segment.p_type != PT_LOAD) continue;
    begin = std::min<std::uintptr_t>(begin, info->dlpi_addr + segment.p_vaddr);
    end = std::max<std::uintptr_t>(end, info->dlpi_addr + segment.p_vaddr + segment.p_memsz);
  }
  if (wanted.inside < begin || wanted.inside >= end) return 0;
  wanted.begin = begin;
  wanted.end = end;
  return 1;
}

Problem MapElf(const std::string& file) {
  // A path with a slash, so that it is never searched for elsewhere.
  const std::string path = file.find('/') == std::string::npos ? "./" + file : file;
  void* const library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) return Refusal(file, "a bundle that loads", dlerror());
  void* const entry = dlsym(library, "REALPluginMain");
  if (entry == nullptr) return Refusal(file, kEntryWanted, "none");
  FindFile found{reinterpret_cast<std::uintptr_t>(entry)};
  dl_iterate_phdr(&FindFileAround, &found);
  bundle = {reinterpret_cast<decltype(bundle.enter)>(entry), found.begin, found.end};
  return {};
}

Problem MapDesktop(const std::string& file) {
  try {
    const macho::File contents = ReadDesktopFile(file);
    const auto exported =
        std::find_if(contents.exports.begin(), contents.exports.end(),
                     [](const macho::Export& one) { return one.symbol == "_REALPluginMain"; });
    if (exported == contents.exports.end()) return Refusal(file, kEntryWanted, "none");
    const macho::Segment& segment = *contents.SegmentAround(exported->address, 1);
    if ((segment.protection & macho::kExecute) == 0)
      return Refusal(file, kEntryWanted, "it in " + segment.name + ", which can't be executed");

    auto image = std::make_unique<macho::Image>(contents, &FindDesktopSymbol);
    void* const entry = image->Exported(exported->symbol);
    const std::span<std::uint8_t> memory = image->memory();
    const auto begin = reinterpret_cast<std::uintptr_t>(memory.data());
    bundle = {reinterpret_cast<decltype(bundle.enter)>(entry), begin, begin + memory.size()};
    static_cast<void>(image.release());  // what it registers points into it for good
    return {};
  } catch (const std::exception& error) {
    return file + ": " + error.what();
  }
}

}  // namespace

std::string BundleFile(const std::string& given) {
  const std::filesystem::path path(given);
  std::error_code error;
  if (!std::filesystem::is_directory(path, error)) return given;
  const std::filesystem::path folder = path.has_filename() ? path : path.parent_path();
  if (folder.extension() != ".bundle") return given;
  return (folder / "Contents" / "MacOS" / folder.stem()).native();
}

bool IsDesktopFile(const std::string& file) {
  std::ifstream in(file, std::ios::binary);
  std::array<std::uint8_t, sizeof(std::uint32_t)> magic{};
  in.read(reinterpret_cast<char*>(magic.data()), magic.size());
  return in && macho::IsMachO(magic);
}

macho::File ReadDesktopFile(const std::string& file) {
  constexpr std::uintmax_t kLargest = 64U << 20U;
  std::error_code error;
  const std::uintmax_t size = std::filesystem::file_size(file, error);
  if (!error && size > kLargest) {
    throw macho::FormatError("a bundle of at most " + std::to_string(kLargest) + " bytes",
                             std::to_string(size));
  }
  std::ifstream in(file, std::ios::binary);
  return macho::ReadFile({std::istreambuf_iterator<char>(in), {}});
}

Problem CheckBundleFile(const std::string& given) {
  const std::string file = BundleFile(given);
  return IsDesktopFile(file) ? CheckDesktopFile(file) : CheckElfFile(file);
}

Problem MapBundle(const std::string& given) {
  Problem problem = CheckBundleFile(given);
  if (problem) return problem;
  const std::string file = BundleFile(given);
  return IsDesktopFile(file) ? MapDesktop(file) : MapElf(file);
}

const LoadedBundle& TheBundle() {
  return bundle;
}

Problem LoadBundle(const std::string& given) {
  Problem problem = MapBundle(given);
  if (problem) return problem;
  bundle.enter(&ResolveService);
  if (!TheRegistry().problems().empty()) {
    return Refusal(given, "definition records that can be read", TheRegistry().problems().front());
  }
  return {};
}

}  // namespace hostrun
