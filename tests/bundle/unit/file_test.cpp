// tests/bundle/unit/file_test.cpp - the built file: what it exports, imports and needs, and that loading it
// does nothing.
#include <dlfcn.h>
#include <elf.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <set>
#include <sstream>

#include "tests/bundle/unit/fixture.h"

namespace unit {
namespace {

using Names = std::set<std::string>;

const Names kPlatformSymbols = {"objc_msgSend",
                                "objc_msgSend_fpret",
                                "objc_getClass",
                                "sel_registerName",
                                "objc_exception_try_enter",
                                "objc_exception_try_exit",
                                "objc_exception_extract",
                                "objc_exception_match",
                                "objc_exception_throw",
                                "CFStringCreateWithCharacters",
                                "CFStringCreateWithCString",
                                "CFStringGetCString",
                                "CFStringGetLength",
                                "CFStringCreateMutableCopy",
                                "CFStringNormalize",
                                "CFURLCreateFromFSRef",
                                "CFURLCreateCopyAppendingPathComponent",
                                "CFURLCopyFileSystemPath",
                                "CFRelease",
                                "CFDictionaryGetValue",
                                "CFDictionarySetValue",
                                "CFDictionaryRemoveValue",
                                "NSLog",
                                "NSCalibratedRGBColorSpace"};

// The dynamic section of a 32-bit file, read from the file itself.
class BuiltFile : public testing::Test {
 protected:
  void SetUp() override {
    std::ostringstream file;
    file << std::ifstream(BUNDLE_FILE, std::ios::binary).rdbuf();
    bytes = file.str();
    ASSERT_GT(bytes.size(), sizeof(Elf32_Ehdr))
        << "wanted the bundle at " << BUNDLE_FILE << ", found none; build it";
    std::memcpy(&header, bytes.data(), sizeof header);
    for (std::size_t i = 0; i < header.e_phnum; ++i) {
      segments.push_back(At<Elf32_Phdr>(header.e_phoff + i * sizeof(Elf32_Phdr)));
    }
    for (std::size_t i = 0; i < header.e_shnum; ++i) {
      sections.push_back(At<Elf32_Shdr>(header.e_shoff + i * sizeof(Elf32_Shdr)));
    }
    for (const Elf32_Shdr& section : sections) {
      if (section.sh_type == SHT_DYNAMIC) {
        for (Elf32_Word at = 0; at < section.sh_size; at += sizeof(Elf32_Dyn)) {
          dynamic.push_back(At<Elf32_Dyn>(section.sh_offset + at));
        }
        strings = sections[section.sh_link].sh_offset;
      }
      if (section.sh_type == SHT_DYNSYM) {
        for (Elf32_Word at = sizeof(Elf32_Sym); at < section.sh_size; at += sizeof(Elf32_Sym)) {
          symbols.push_back(At<Elf32_Sym>(section.sh_offset + at));
        }
      }
    }
  }
  template <typename Record>
  [[nodiscard]] Record At(std::size_t offset) const {
    Record record;
    std::memcpy(&record, bytes.data() + offset, sizeof record);
    return record;
  }
  [[nodiscard]] std::string Text(std::size_t offset) const { return bytes.data() + strings + offset; }
  [[nodiscard]] std::string SectionName(const Elf32_Shdr& section) const {
    return bytes.data() + sections[header.e_shstrndx].sh_offset + section.sh_name;
  }
  [[nodiscard]] bool Has(Elf32_Sword tag) const {
    return std::ranges::any_of(dynamic, [tag](const Elf32_Dyn& each) { return each.d_tag == tag; });
  }
  [[nodiscard]] Elf32_Word Value(Elf32_Sword tag) const {
    for (const Elf32_Dyn& each : dynamic) {
      if (each.d_tag == tag) return each.d_un.d_val;
    }
    return 0;
  }

  std::string bytes;
  Elf32_Ehdr header{};
  std::vector<Elf32_Phdr> segments;
  std::vector<Elf32_Shdr> sections;
  std::vector<Elf32_Dyn> dynamic;
  std::vector<Elf32_Sym> symbols;
  std::size_t strings = 0;
};

TEST_F(BuiltFile, IsASharedObjectForThe386) {
  EXPECT_EQ(header.e_ident[EI_CLASS], ELFCLASS32);
  EXPECT_EQ(header.e_type, ET_DYN);
  EXPECT_EQ(header.e_machine, EM_386);
}

TEST_F(BuiltFile, ExportsTheEntryPointAndNothingElse) {
  Names exported;
  for (const Elf32_Sym& symbol : symbols) {
    if (symbol.st_shndx != SHN_UNDEF) exported.insert(Text(symbol.st_name));
  }
  EXPECT_THAT(exported, ElementsAre("REALPluginMain"));
}

TEST_F(BuiltFile, ImportsThePlatformSymbolsAndTheRunTimeOnly) {
  // What the C and C++ run-time libraries define is found in them, or is one of their weak hooks.
  const Names hooks = {"__gmon_start__", "_ITM_deregisterTMCloneTable", "_ITM_registerTMCloneTable",
                       "__cxa_finalize"};
  Names platformSymbols;
  for (const Elf32_Sym& symbol : symbols) {
    if (symbol.st_shndx != SHN_UNDEF) continue;
    const std::string name = Text(symbol.st_name);
    if (kPlatformSymbols.contains(name)) {
      platformSymbols.insert(name);
    } else if (!hooks.contains(name)) {
      void* const found = dlsym(RTLD_NEXT, name.c_str());
      Dl_info info{};
      ASSERT_TRUE(found != nullptr && dladdr(found, &info) != 0)
          << name << " is no symbol of a run-time library";
      EXPECT_THAT(std::string(info.dli_fname),
                  testing::AnyOf(HasSubstr("libc."), HasSubstr("libm."), HasSubstr("libstdc++"),
                                 HasSubstr("libgcc_s"), HasSubstr("ld-linux")))
          << name;
    }
  }
  EXPECT_EQ(platformSymbols, kPlatformSymbols);
}

TEST_F(BuiltFile, NeedsTheRunTimeLibrariesOnly) {
  const Names allowed = {"libc.so.6", "libm.so.6", "libstdc++.so.6", "libgcc_s.so.1", "ld-linux.so.2"};
  for (const Elf32_Dyn& each : dynamic) {
    if (each.d_tag == DT_NEEDED) {
      EXPECT_TRUE(allowed.contains(Text(each.d_un.d_val))) << Text(each.d_un.d_val);
    }
  }
}

TEST_F(BuiltFile, LooksForNoLibrariesInPlacesOfItsOwn) {
  EXPECT_FALSE(Has(DT_RPATH));
  EXPECT_FALSE(Has(DT_RUNPATH));
}

TEST_F(BuiltFile, HasNoTextRelocations) {
  EXPECT_FALSE(Has(DT_TEXTREL));
  EXPECT_EQ(Value(DT_FLAGS) & DF_TEXTREL, 0U);
}

TEST_F(BuiltFile, IsBoundAtOnceAndReadOnlyAfterRelocation) {
  EXPECT_TRUE((Value(DT_FLAGS) & DF_BIND_NOW) != 0 || (Value(DT_FLAGS_1) & DF_1_NOW) != 0 ||
              Has(DT_BIND_NOW));
  EXPECT_TRUE(
      std::ranges::any_of(segments, [](const Elf32_Phdr& each) { return each.p_type == PT_GNU_RELRO; }));
}

TEST_F(BuiltFile, ProtectsEveryAddressThatTheLoaderFillsIn) {
  Elf32_Phdr relocated{};
  for (const Elf32_Phdr& each : segments) {
    if (each.p_type == PT_GNU_RELRO) relocated = each;
  }
  Names protectedOnes;
  for (const Elf32_Shdr& section : sections) {
    const std::string name = SectionName(section);
    if ((section.sh_flags & SHF_WRITE) == 0 || name == ".data" || name == ".bss") continue;
    EXPECT_GE(section.sh_addr, relocated.p_vaddr) << name;
    EXPECT_LE(section.sh_addr + section.sh_size, relocated.p_vaddr + relocated.p_memsz) << name;
    protectedOnes.insert(name);
  }
  EXPECT_THAT(protectedOnes, Contains(".got"));
}

TEST_F(BuiltFile, HasNoExecutableStackAndNothingWritableThatRuns) {
  bool declared = false;
  for (const Elf32_Phdr& each : segments) {
    if (each.p_type == PT_GNU_STACK) {
      declared = true;
      EXPECT_EQ(each.p_flags & PF_X, 0U);
    }
    if (each.p_type == PT_LOAD) {
      EXPECT_NE(each.p_flags & (PF_W | PF_X), static_cast<Elf32_Word>(PF_W | PF_X));
    }
  }
  EXPECT_TRUE(declared);
}

TEST_F(BuiltFile, IsBelow100KiBWithoutItsDebuggingInformation) {
  std::size_t size = 0;
  for (const Elf32_Phdr& each : segments) {
    if (each.p_type == PT_LOAD) size = std::max<std::size_t>(size, each.p_offset + each.p_filesz);
  }
  RecordProperty("loaded_bytes", static_cast<int>(size));
  EXPECT_LT(size, 100U * 1024);
}

TEST_F(BuiltFile, HasNoConstructorButTheCompilersOwn) {
  // frame_dummy, which registers nothing, is the one entry that every shared object has.
  for (const Elf32_Shdr& section : sections) {
    if (SectionName(section) == ".init_array") {
      EXPECT_LE(section.sh_size, 4U);
    }
    EXPECT_NE(SectionName(section), ".ctors");
  }
}

TEST_F(BuiltFile, IsCompiledWithStackProtection) {
  const bool checks = std::ranges::any_of(
      symbols, [this](const Elf32_Sym& symbol) { return Text(symbol.st_name) == "__stack_chk_fail"; });
  EXPECT_TRUE(checks);
}

TEST_F(BuiltFile, LoadsAtOnceAndRunsNothingOfPlatformOrHost) {
  void* const bundle = dlopen(BUNDLE_FILE, RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(bundle, nullptr) << dlerror();
  EXPECT_THAT(Log().Lines(), IsEmpty());
  EXPECT_THAT(Log().Lookups(), IsEmpty());
  EXPECT_NE(dlsym(bundle, "REALPluginMain"), nullptr);
  EXPECT_EQ(dlclose(bundle), 0);
}

TEST_F(BuiltFile, RunsAsTheHostLoadsIt) {
  void* const bundle = dlopen(BUNDLE_FILE, RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(bundle, nullptr) << dlerror();
  const auto enter = reinterpret_cast<void (*)(void* (*)(const char*))>(dlsym(bundle, "REALPluginMain"));
  ASSERT_NE(enter, nullptr);
  Call(enter, &Host::Resolve);
  ASSERT_THAT(TheHost().registered, SizeIs(3));
  void* const color = CallShared<void*>(kColor, "redColor as NSColorQVX");
  EXPECT_EQ(TheHost().Object(color).Native()->name, "redColor");
  EXPECT_EQ(GetProperty<double>(kColor, "redComponent", color), 0.5);
  EXPECT_THAT(Imbalances(), IsEmpty());
}

}  // namespace
}  // namespace unit
