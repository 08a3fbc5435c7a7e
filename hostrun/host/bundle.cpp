// hostrun/host/bundle.cpp - loads a bundle and lets it register.
#include "hostrun/host/bundle.h"

#include <dlfcn.h>
#include <elf.h>

#include <cerrno>
#include <cstring>
#include <fstream>

#include "hostrun/host/registry.h"
#include "hostrun/host/services.h"

namespace hostrun {
namespace {

using EntryPoint = void (*)(void* (*resolver)(const char*));

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

}  // namespace

Problem CheckBundleFile(const std::string& file) {
  static constexpr const char* kWanted = "a bundle (32-bit ELF shared object for i386)";
  std::ifstream in(file, std::ios::binary);
  if (!in) return Refusal(file, kWanted, std::strerror(errno));
  Elf32_Ehdr header{};
  in.read(reinterpret_cast<char*>(&header), sizeof header);
  if (in.gcount() < EI_NIDENT || std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0) {
    return Refusal(file, kWanted, "a file that is not ELF");
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

Problem LoadBundle(const std::string& file) {
  Problem problem = CheckBundleFile(file);
  if (problem) return problem;
  // A path with a slash, so that it is never searched for elsewhere.
  const std::string path = file.find('/') == std::string::npos ? "./" + file : file;
  void* const library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) return Refusal(file, "a bundle that loads", dlerror());
  const auto entry = reinterpret_cast<EntryPoint>(dlsym(library, "REALPluginMain"));
  if (entry == nullptr) return Refusal(file, "an exported function REALPluginMain", "none");
  entry(&ResolveService);
  if (!TheRegistry().problems().empty()) {
    return Refusal(file, "definition records that can be read", TheRegistry().problems().front());
  }
  return {};
}

}  // namespace hostrun
