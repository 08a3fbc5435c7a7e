// hostrun/commands/elf_file.cpp - what the dynamic section of a 32-bit ELF file says.
#include "hostrun/commands/elf_file.h"

#include <elf.h>

#include <cstring>
#include <fstream>
#include <iterator>
#include <map>
#include <stdexcept>

namespace hostrun {
namespace {

constexpr Elf32_Half kHiddenVersion = 0x8000;

class Image {
 public:
  explicit Image(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    bytes_.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  }

  template <class T>
  T At(std::size_t offset) const {
    T value{};
    if (offset > bytes_.size() || bytes_.size() - offset < sizeof value) {
      throw std::runtime_error("wanted a whole ELF file, found one that ends inside of its tables");
    }
    std::memcpy(&value, bytes_.data() + offset, sizeof value);
    return value;
  }

  std::string TextAt(std::size_t offset) const {
    const std::size_t end = offset < bytes_.size() ? bytes_.find('\0', offset) : std::string::npos;
    if (end == std::string::npos)
      throw std::runtime_error("wanted a name in the ELF file's tables, found its end");
    return bytes_.substr(offset, end - offset);
  }

 private:
  std::string bytes_;
};

class Reader {
 public:
  explicit Reader(const std::string& path) : image_(path) {}

  ElfFile Read() {
    const auto header = image_.At<Elf32_Ehdr>(0);
    for (unsigned i = 0; i < header.e_phnum; ++i) {
      segments_.push_back(image_.At<Elf32_Phdr>(header.e_phoff + i * sizeof(Elf32_Phdr)));
    }
    for (const Elf32_Phdr& segment : segments_) {
      if (segment.p_type == PT_GNU_RELRO) file_.hasRelro = true;
      if (segment.p_type == PT_GNU_STACK) {
        file_.hasStackHeader = true;
        file_.executableStack = (segment.p_flags & PF_X) != 0;
      }
      if (segment.p_type == PT_DYNAMIC) ReadDynamic(segment);
    }
    ReadSymbols();
    return std::move(file_);
  }

 private:
  void ReadDynamic(const Elf32_Phdr& segment) {
    std::vector<Elf32_Word> needed;
    for (std::size_t at = 0; at + sizeof(Elf32_Dyn) <= segment.p_filesz; at += sizeof(Elf32_Dyn)) {
      const auto entry = image_.At<Elf32_Dyn>(segment.p_offset + at);
      if (entry.d_tag == DT_NULL) break;
      if (entry.d_tag == DT_NEEDED) needed.push_back(entry.d_un.d_val);
      if (entry.d_tag == DT_TEXTREL) file_.textRelocations = true;
      if (entry.d_tag == DT_FLAGS && (entry.d_un.d_val & DF_TEXTREL) != 0) file_.textRelocations = true;
      tags_[entry.d_tag] = entry.d_un.d_val;
    }
    for (const Elf32_Word name : needed) file_.needed.push_back(Name(name));
  }

  // Where the loaded address lies in the file.
  std::size_t Offset(Elf32_Addr address) const {
    for (const Elf32_Phdr& segment : segments_) {
      if (segment.p_type == PT_LOAD && address >= segment.p_vaddr &&
          address - segment.p_vaddr < segment.p_filesz) {
        return segment.p_offset + (address - segment.p_vaddr);
      }
    }
    throw std::runtime_error("wanted a table inside of the ELF file's segments, found one outside");
  }

  bool Has(Elf32_Sword tag) const { return tags_.contains(tag); }
  std::string Name(Elf32_Word at) const { return image_.TextAt(Offset(tags_.at(DT_STRTAB)) + at); }

  std::size_t SymbolCount() const {
    if (Has(DT_HASH)) return image_.At<Elf32_Word>(Offset(tags_.at(DT_HASH)) + sizeof(Elf32_Word));
    if (!Has(DT_GNU_HASH)) return 0;
    const std::size_t table = Offset(tags_.at(DT_GNU_HASH));
    const auto buckets = image_.At<Elf32_Word>(table);
    const auto first = image_.At<Elf32_Word>(table + 4);
    const std::size_t bucketsAt = table + 16 + image_.At<Elf32_Word>(table + 8) * sizeof(Elf32_Word);
    std::size_t last = 0;
    for (std::size_t i = 0; i < buckets; ++i) {
      last = std::max<std::size_t>(last, image_.At<Elf32_Word>(bucketsAt + i * 4));
    }
    if (last < first) return first;
    // A chain ends with a word whose lowest bit is set.
    while ((image_.At<Elf32_Word>(bucketsAt + (buckets + last - first) * 4) & 1U) == 0) ++last;
    return last + 1;
  }

  // The library that each version number belongs to.
  std::map<Elf32_Half, std::string> Versions() const {
    std::map<Elf32_Half, std::string> libraries;
    if (!Has(DT_VERNEED)) return libraries;
    std::size_t at = Offset(tags_.at(DT_VERNEED));
    for (Elf32_Word i = 0; i < tags_.at(DT_VERNEEDNUM); ++i) {
      const auto need = image_.At<Elf32_Verneed>(at);
      std::size_t version = at + need.vn_aux;
      for (unsigned j = 0; j < need.vn_cnt; ++j) {
        const auto one = image_.At<Elf32_Vernaux>(version);
        libraries[one.vna_other & static_cast<Elf32_Half>(~kHiddenVersion)] = Name(need.vn_file);
        version += one.vna_next;
      }
      at += need.vn_next;
    }
    return libraries;
  }

  void ReadSymbols() {
    if (!Has(DT_SYMTAB) || !Has(DT_STRTAB)) return;
    const std::map<Elf32_Half, std::string> versions = Versions();
    const std::size_t symbols = Offset(tags_.at(DT_SYMTAB));
    const std::size_t count = SymbolCount();
    for (std::size_t i = 1; i < count; ++i) {
      const auto symbol = image_.At<Elf32_Sym>(symbols + i * sizeof(Elf32_Sym));
      const auto binding = ELF32_ST_BIND(symbol.st_info);
      if (binding == STB_LOCAL) continue;
      if (symbol.st_shndx != SHN_UNDEF) {
        file_.exported.push_back(Name(symbol.st_name));
        continue;
      }
      ElfFile::Undefined undefined{Name(symbol.st_name), binding == STB_WEAK, {}};
      if (Has(DT_VERSYM)) {
        const auto version = image_.At<Elf32_Half>(Offset(tags_.at(DT_VERSYM)) + i * sizeof(Elf32_Half));
        const auto known = versions.find(version & static_cast<Elf32_Half>(~kHiddenVersion));
        if (known != versions.end()) undefined.library = known->second;
      }
      file_.undefined.push_back(std::move(undefined));
    }
  }

  Image image_;
  std::vector<Elf32_Phdr> segments_;
  std::map<Elf32_Sword, Elf32_Word> tags_;
  ElfFile file_;
};

}  // namespace

ElfFile ReadElfFile(const std::string& path) {
  return Reader(path).Read();
}

}  // namespace hostrun
