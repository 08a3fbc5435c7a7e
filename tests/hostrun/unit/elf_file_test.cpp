// tests/hostrun/unit/elf_file_test.cpp - what is read of an ELF file's tables, and what happens where they
// lie.
#include "hostrun/commands/elf_file.h"

#include <elf.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <stdexcept>

#include "tests/hostrun/unit/temporary_folder.h"

namespace hostrun {
namespace {

template <class T>
std::string Raw(const T& value) {
  return {reinterpret_cast<const char*>(&value), sizeof value};
}

constexpr Elf32_Addr kLoaded = 0x1000;  // how much further than in the file everything lies in memory

// A file by its tables; in memory all of it lies at kLoaded.
struct TestElf {
  std::string names = std::string(1, '\0');
  std::vector<Elf32_Sym> symbols{Elf32_Sym{}};
  std::vector<Elf32_Half> versions{0};  // of each symbol; no table where there is but one
  std::vector<Elf32_Dyn> entries;       // of the dynamic section, before those of the tables
  std::vector<Elf32_Phdr> segments;     // besides the loaded one and the dynamic one
  std::string hash;
  Elf32_Sword hashTag = DT_HASH;
  // The libraries, and their versions' numbers.
  std::vector<std::pair<std::string, std::vector<Elf32_Half>>> needs;

  Elf32_Word Name(const std::string& name) {
    names += name + '\0';
    return static_cast<Elf32_Word>(names.size() - name.size() - 1);
  }
  void Add(const std::string& name, unsigned binding, Elf32_Section section, Elf32_Half version = 0) {
    Elf32_Sym symbol{};
    symbol.st_name = Name(name);
    symbol.st_info = static_cast<unsigned char>(ELF32_ST_INFO(binding, STT_FUNC));
    symbol.st_shndx = section;
    symbols.push_back(symbol);
    versions.push_back(version);
  }
  void AddEntry(Elf32_Sword tag, Elf32_Word value) { entries.push_back({tag, {value}}); }
  void AddSegment(Elf32_Word type, Elf32_Word flags) {
    Elf32_Phdr segment{};
    segment.p_type = type;
    segment.p_flags = flags;
    segments.push_back(segment);
  }

  std::string Bytes() {
    std::vector<Elf32_Dyn> dynamic = entries;
    const std::size_t headers = sizeof(Elf32_Ehdr) + (segments.size() + 2) * sizeof(Elf32_Phdr);
    std::string tables;
    const auto add = [&](Elf32_Sword tag, const std::string& table) {
      tables.resize((tables.size() + 3) / 4 * 4);
      if (!table.empty())
        dynamic.push_back({tag, {static_cast<Elf32_Word>(kLoaded + headers + tables.size())}});
      tables += table;
    };
    std::string verneed;
    for (std::size_t i = 0; i < needs.size(); ++i) {
      const auto& [library, numbers] = needs[i];
      const std::size_t size = sizeof(Elf32_Verneed) + numbers.size() * sizeof(Elf32_Vernaux);
      verneed += Raw(Elf32_Verneed{1, static_cast<Elf32_Half>(numbers.size()), Name(library),
                                   sizeof(Elf32_Verneed), static_cast<Elf32_Word>(size)});
      for (const Elf32_Half number : numbers)
        verneed += Raw(Elf32_Vernaux{0, 0, number, 0, sizeof(Elf32_Vernaux)});
    }
    if (!needs.empty()) dynamic.push_back({DT_VERNEEDNUM, {static_cast<Elf32_Word>(needs.size())}});
    add(DT_VERNEED, verneed);
    std::string table;
    for (const Elf32_Sym& symbol : symbols) table += Raw(symbol);
    add(DT_SYMTAB, table);
    add(hashTag, hash);
    if (versions.size() > 1) {
      add(DT_VERSYM, {reinterpret_cast<const char*>(versions.data()), versions.size() * sizeof versions[0]});
    }
    add(DT_STRTAB, names);
    tables.resize((tables.size() + 3) / 4 * 4);
    const std::size_t dynamicAt = headers + tables.size();
    for (const Elf32_Dyn& entry : dynamic) tables += Raw(entry);
    tables += Raw(Elf32_Dyn{DT_NULL, {0}}) + Raw(Elf32_Dyn{DT_TEXTREL, {0}});  // behind the end

    Elf32_Ehdr header{};
    header.e_phoff = sizeof header;
    header.e_phnum = static_cast<Elf32_Half>(segments.size() + 2);
    Elf32_Phdr loaded{};
    loaded.p_type = PT_LOAD;
    loaded.p_vaddr = kLoaded;
    loaded.p_filesz = static_cast<Elf32_Word>(headers + tables.size());
    Elf32_Phdr section{};
    section.p_type = PT_DYNAMIC;
    section.p_offset = static_cast<Elf32_Off>(dynamicAt);
    section.p_filesz = static_cast<Elf32_Word>((dynamic.size() + 2) * sizeof(Elf32_Dyn));
    std::string bytes = Raw(header) + Raw(loaded) + Raw(section);
    for (const Elf32_Phdr& segment : segments) bytes += Raw(segment);
    return bytes + tables;
  }
};

class ElfFiles : public testing::Test {
 protected:
  ElfFile Read(const std::string& bytes) const {
    std::ofstream(folder_.Path("file"), std::ios::binary) << bytes;
    return ReadElfFile(folder_.Path("file"));
  }
  ElfFile Read(TestElf elf) const { return Read(elf.Bytes()); }
  std::string ProblemOf(const std::string& bytes) const {
    try {
      Read(bytes);
      return {};
    } catch (const std::runtime_error& error) {
      return error.what();
    }
  }

  // One symbol of each kind: of a library's version, of none, weak, local, exported.
  static TestElf Sample() {
    TestElf elf;
    elf.AddEntry(DT_NEEDED, elf.Name("libone.so"));
    elf.AddEntry(DT_NEEDED, elf.Name("libtwo.so"));
    elf.needs = {{"libone.so", {2, 3}}, {"libtwo.so", {4}}};
    elf.Add("of_one", STB_GLOBAL, SHN_UNDEF, 3);
    elf.Add("of_two", STB_GLOBAL, SHN_UNDEF, 4 | 0x8000);
    elf.Add("of_none", STB_GLOBAL, SHN_UNDEF, 1);
    elf.Add("maybe", STB_WEAK, SHN_UNDEF);
    elf.Add("inside", STB_LOCAL, 5);
    elf.Add("first", STB_GLOBAL, 5);
    elf.Add("second", STB_WEAK, 5);
    elf.hash = Raw(Elf32_Word{1}) + Raw(static_cast<Elf32_Word>(elf.symbols.size()));
    return elf;
  }

 private:
  TemporaryFolder folder_;
};

using Names = std::vector<std::string>;

TEST_F(ElfFiles, TellWhatTheyNeedAndExport) {
  const ElfFile file = Read(Sample());
  EXPECT_EQ(file.needed, (Names{"libone.so", "libtwo.so"}));
  EXPECT_EQ(file.exported, (Names{"first", "second"}));
}

TEST_F(ElfFiles, TellWhoseVersionAnUndefinedSymbolHas) {
  const ElfFile file = Read(Sample());
  std::vector<std::string> told;
  for (const ElfFile::Undefined& one : file.undefined)
    told.push_back(one.name + (one.weak ? "?" : "") + " " + one.library);
  EXPECT_EQ(told, (Names{"of_one libone.so", "of_two libtwo.so", "of_none ", "maybe? "}));
}

TEST_F(ElfFiles, NeedNoVersions) {
  TestElf elf = Sample();
  elf.versions = {0};
  const ElfFile file = Read(elf);
  ASSERT_EQ(file.undefined.size(), 4U);
  EXPECT_EQ(file.undefined[0].library, "");
}

// Two buckets, of which the second one's chain is the last; the chain ends by its lowest bit.
TEST_F(ElfFiles, MayHaveTheShorterHash) {
  TestElf elf = Sample();
  elf.hashTag = DT_GNU_HASH;
  const auto last = static_cast<Elf32_Word>(elf.symbols.size() - 1);
  const auto words = [](std::initializer_list<Elf32_Word> all) {
    std::string bytes;
    for (const Elf32_Word word : all) bytes += Raw(word);
    return bytes;
  };
  // Buckets, first symbol, size and shift of the filter; the filter; the buckets; the chains.
  elf.hash = words({2, last - 1, 3, 0, 7, 7, 7, 0, last - 1, 2, 3});
  EXPECT_EQ(Read(elf).exported, (Names{"first", "second"}));
  elf.hash = words({2, last - 1, 3, 0, 7, 7, 7, last - 1, last, 3, 3});
  EXPECT_EQ(Read(elf).exported, (Names{"first", "second"}));
  elf.hash = words({2, last - 1, 3, 0, 7, 7, 7, last - 1, 0, 3, 3});
  EXPECT_EQ(Read(elf).exported, Names{"first"});
  elf.hash = words({1, 5, 1, 0, 7, 0});
  EXPECT_EQ(Read(elf).exported, Names{}) << "nothing is exported";
  EXPECT_EQ(Read(elf).undefined.size(), 4U);
}

TEST_F(ElfFiles, HaveNoSymbolsWithoutAHash) {
  TestElf elf = Sample();
  elf.hash.clear();
  EXPECT_EQ(Read(elf).undefined.size(), 0U);
}

TEST_F(ElfFiles, TellOfTextRelocationsInEitherWay) {
  EXPECT_FALSE(Read(Sample()).textRelocations);
  TestElf flag = Sample();
  flag.AddEntry(DT_TEXTREL, 0);
  EXPECT_TRUE(Read(flag).textRelocations);
  TestElf bit = Sample();
  bit.AddEntry(DT_FLAGS, DF_TEXTREL | DF_BIND_NOW);
  EXPECT_TRUE(Read(bit).textRelocations);
  TestElf otherBit = Sample();
  otherBit.AddEntry(DT_FLAGS, DF_BIND_NOW);
  EXPECT_FALSE(Read(otherBit).textRelocations);
}

TEST_F(ElfFiles, TellOfTheirStackAndOfWhatIsReadOnlyLater) {
  const ElfFile plain = Read(Sample());
  EXPECT_FALSE(plain.hasRelro);
  EXPECT_FALSE(plain.hasStackHeader);
  EXPECT_FALSE(plain.executableStack);
  TestElf safe = Sample();
  safe.AddSegment(PT_GNU_RELRO, PF_R);
  safe.AddSegment(PT_GNU_STACK, PF_R | PF_W);
  const ElfFile told = Read(safe);
  EXPECT_TRUE(told.hasRelro);
  EXPECT_TRUE(told.hasStackHeader);
  EXPECT_FALSE(told.executableStack);
  TestElf stack = Sample();
  stack.AddSegment(PT_GNU_STACK, PF_R | PF_W | PF_X);
  EXPECT_TRUE(Read(stack).executableStack);
}

TEST_F(ElfFiles, AreReadNowhereBehindTheirEnd) {
  const std::string whole = Sample().Bytes();
  const std::size_t behindTheEnd = 2 * sizeof(Elf32_Dyn);
  for (std::size_t size = 3; size < whole.size() - behindTheEnd; size += 7) {
    EXPECT_NE(ProblemOf(whole.substr(0, size)), "") << size;
  }
  EXPECT_EQ(ProblemOf(whole), "");
  EXPECT_EQ(ProblemOf(""), "wanted a whole ELF file, found one that ends inside of its tables");
}

TEST_F(ElfFiles, HaveTheirTablesInsideOfTheirSegments) {
  for (const Elf32_Word outside : {kLoaded - 1, kLoaded + 0x10000}) {
    TestElf elf;
    elf.AddEntry(DT_STRTAB, outside);
    elf.names.clear();
    elf.AddEntry(DT_NEEDED, 0);
    EXPECT_EQ(ProblemOf(elf.Bytes()), "wanted a table inside of the ELF file's segments, found one outside")
        << outside;
  }
  TestElf elf;
  elf.AddEntry(DT_NEEDED, 0x10000);
  EXPECT_EQ(ProblemOf(elf.Bytes()), "wanted a name in the ELF file's tables, found its end");
}

}  // namespace
}  // namespace hostrun
