// tests/bundle/faults/bundle_image.cpp - the bundle as a host loads it, and its memory set back to an earlier
// state.
#include "tests/bundle/faults/bundle_image.h"

#include <dlfcn.h>
#include <link.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "hostrun/macho/image.h"
#include "tests/bundle/faults/coverage_counters.h"

namespace faults {
namespace {

struct Range {
  unsigned char* start;
  std::size_t size;
};

using PluginMain = void (*)(void* (*resolver)(const char*));

PluginMain pluginMain = nullptr;
std::vector<Range> writable;

constexpr std::uintptr_t kPage = 4096;

// The writable segments without the pages that the loader protects once it has relocated them.
int CollectWritable(dl_phdr_info* info, std::size_t /*size*/, void* wanted) {
  if (info->dlpi_addr != *static_cast<ElfW(Addr)*>(wanted)) return 0;
  std::uintptr_t protectedEnd = 0;
  for (int i = 0; i < info->dlpi_phnum; ++i) {
    const auto& header = info->dlpi_phdr[i];
    if (header.p_type == PT_GNU_RELRO) {
      protectedEnd = (info->dlpi_addr + header.p_vaddr + header.p_memsz) & ~(kPage - 1);
    }
  }
  for (int i = 0; i < info->dlpi_phnum; ++i) {
    const auto& header = info->dlpi_phdr[i];
    if (header.p_type != PT_LOAD || (header.p_flags & PF_W) == 0) continue;
    std::uintptr_t start = info->dlpi_addr + header.p_vaddr;
    const std::uintptr_t end = start + header.p_memsz;
    if (protectedEnd > start && protectedEnd <= end) start = protectedEnd;
    writable.push_back({reinterpret_cast<unsigned char*>(start), end - start});
  }
  return 1;
}

// Takes the counters out of what is saved and written back: they count over all calls.
void LeaveOut(const std::vector<CounterRange>& counters, std::uintptr_t base) {
  for (const CounterRange& counter : counters) {
    auto* const start = reinterpret_cast<unsigned char*>(base + counter.start);
    Range& last = writable.back();
    if (start < last.start || start >= last.start + last.size) continue;
    auto* const end = last.start + last.size;
    last.size = static_cast<std::size_t>(start - last.start);
    writable.push_back({start + counter.size, static_cast<std::size_t>(end - start) - counter.size});
  }
}

constexpr std::uint32_t kStackGuard = 0xFF0A0D00;

// This program's own symbols come first, and among them what stands before the allocator.
void* FindForDesktop(const std::string& symbol) {
  if (symbol == "___stack_chk_guard") return const_cast<std::uint32_t*>(&kStackGuard);
  const std::string name = symbol.substr(1);
  void* const watched = dlsym(RTLD_DEFAULT, ("__wrap_" + name).c_str());
  return watched != nullptr ? watched : dlsym(RTLD_DEFAULT, name.c_str());
}

void LoadDesktop(const std::string& path, std::vector<std::uint8_t> bytes) {
  try {
    static const hostrun::macho::Image image(hostrun::macho::ReadFile(std::move(bytes)), &FindForDesktop);
    pluginMain = reinterpret_cast<PluginMain>(image.Exported("_REALPluginMain"));
    for (const auto& part : image.writable()) writable.push_back({part.data(), part.size()});
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s: %s\n", path.c_str(), error.what());
    std::exit(2);
  }
}

void LoadElf(const std::string& path) {
  void* const handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (handle == nullptr) {
    std::fprintf(stderr, "wanted the bundle %s, found: %s\n", path.c_str(), dlerror());
    std::exit(2);
  }
  pluginMain = reinterpret_cast<PluginMain>(dlsym(handle, "REALPluginMain"));
  link_map* map = nullptr;
  dlinfo(handle, RTLD_DI_LINKMAP, &map);
  ElfW(Addr) address = map->l_addr;
  dl_iterate_phdr(&CollectWritable, &address);
  if (!writable.empty()) LeaveOut(CoverageCounters(path), address);
}

// Unchecked: between the variables of an instrumented bundle lies memory that nobody may touch.
void Copy(unsigned char* to, const unsigned char* from, std::size_t size) {
  asm volatile("rep movsb" : "+D"(to), "+S"(from), "+c"(size) : : "memory");
}

}  // namespace

void LoadBundle(const std::string& path) {
  // Not byte by byte: the unit tests, which are not optimised, read it in a process for each.
  std::ostringstream file;
  file << std::ifstream(path, std::ios::binary).rdbuf();
  const std::string text = file.str();
  const auto* const start = reinterpret_cast<const std::uint8_t*>(text.data());
  std::vector<std::uint8_t> bytes(start, start + text.size());
  if (hostrun::macho::IsMachO(bytes)) {
    LoadDesktop(path, std::move(bytes));
  } else {
    LoadElf(path);
  }
  if (pluginMain == nullptr || writable.empty()) {
    std::fprintf(stderr, "wanted REALPluginMain and writable memory in %s, found none\n", path.c_str());
    std::exit(2);
  }
}

void* EntryOfBundle() {
  return reinterpret_cast<void*>(pluginMain);
}

ImageState SaveBundle() {
  ImageState state;
  for (const Range& range : writable) {
    const std::size_t offset = state.size();
    state.resize(offset + range.size);
    Copy(state.data() + offset, range.start, range.size);
  }
  return state;
}

void RestoreBundle(const ImageState& state) {
  const unsigned char* from = state.data();
  for (const Range& range : writable) {
    Copy(range.start, from, range.size);
    from += range.size;
  }
}

}  // namespace faults

// What the scripted host starts: the loaded bundle's entry.
extern "C" void REALPluginMain(void* (*resolver)(const char*)) {
  faults::pluginMain(resolver);
}
