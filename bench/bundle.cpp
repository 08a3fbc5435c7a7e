// bench/bundle.cpp - a bundle loaded into a host of its own.
#include "bench/bundle.h"

#include <dlfcn.h>
#include <link.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <vector>

#include "bench/allocations.h"
#include "hostrun/macho/image.h"

namespace bench {

namespace {

struct Range {
  std::uintptr_t inside;
  std::uintptr_t begin;
  std::uintptr_t end;
};

// The loaded segments of the object that `inside` lies in.
int FindRange(dl_phdr_info* object, std::size_t /*size*/, void* argument) {
  auto& range = *static_cast<Range*>(argument);
  std::uintptr_t begin = UINTPTR_MAX;
  std::uintptr_t end = 0;
  for (int i = 0; i < object->dlpi_phnum; ++i) {
    const ElfW(Phdr)& segment = object->dlpi_phdr[i];
    if (segment.p_type != PT_LOAD) continue;
    begin = std::min<std::uintptr_t>(begin, object->dlpi_addr + segment.p_vaddr);
    end = std::max<std::uintptr_t>(end, object->dlpi_addr + segment.p_vaddr + segment.p_memsz);
  }
  if (range.inside < begin || range.inside >= end) return 0;
  range.begin = begin;
  range.end = end;
  return 1;
}

// What the process has globally comes first, as for an ELF bundle; then the platform's own.
void* FindForDesktop(const Platform& platform, const std::string& symbol) {
  static constexpr std::uint32_t kStackGuard = 0xFF0A0D00;
  if (symbol == "___stack_chk_guard") return const_cast<std::uint32_t*>(&kStackGuard);
  const char* const name = symbol.c_str() + 1;
  void* const found = dlsym(RTLD_DEFAULT, name);
  return found != nullptr ? found : dlsym(platform.library, name);
}

// Loads and starts a desktop bundle. Answers its memory; null for a file of another format.
std::span<std::uint8_t> StartDesktop(const Platform& platform, const std::string& file) {
  std::ifstream in(file, std::ios::binary);
  std::vector<std::uint8_t> bytes{std::istreambuf_iterator<char>(in), {}};
  if (!hostrun::macho::IsMachO(bytes)) return {};
  auto image = std::make_unique<hostrun::macho::Image>(
      hostrun::macho::ReadFile(std::move(bytes)),
      [&platform](const std::string& symbol) { return FindForDesktop(platform, symbol); });
  using Main = void (*)(void* (*)(const char*));
  reinterpret_cast<Main>(image->Exported("_REALPluginMain"))(&Resolve);
  return image.release()->memory();  // it stays loaded
}

}  // namespace

TemporaryCopy::TemporaryCopy(const std::string& file) {
  std::string name = (std::filesystem::temp_directory_path() / "QVXColor-XXXXXX").string();
  const int descriptor = mkstemp(name.data());
  if (descriptor == -1) throw std::runtime_error("wanted a temporary file " + name + ", could not make it");
  close(descriptor);
  path_ = name;
  std::filesystem::copy_file(file, path_, std::filesystem::copy_options::overwrite_existing);
}

TemporaryCopy::~TemporaryCopy() {
  unlink(path_.c_str());
}

void* LoadAndStart(const std::string& path) {
  void* const library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) throw std::runtime_error(dlerror());
  using Main = void (*)(void* (*)(const char*));
  const auto main = reinterpret_cast<Main>(dlsym(library, "REALPluginMain"));
  if (main == nullptr) throw std::runtime_error(dlerror());
  main(&Resolve);
  return library;
}

Bundle::Bundle(const Platform& platform, const std::string& file)
    : host_{&platform, kNewHost, {}},
      instances_(platform.CFDictionaryCreateMutable(nullptr, 0, nullptr, nullptr)),
      calls_(CallsFor(platform, instances_)) {
  bench::Activate(host_);
  if (const std::span<std::uint8_t> memory = StartDesktop(platform, file); !memory.empty()) {
    begin_ = memory.data();
    end_ = memory.data() + memory.size();
  } else {
    const TemporaryCopy copy(file);
    void* const library = LoadAndStart(copy.Path());
    Range range = {reinterpret_cast<std::uintptr_t>(dlsym(library, "REALPluginMain")), 0, 0};
    dl_iterate_phdr(&FindRange, &range);
    begin_ = reinterpret_cast<const void*>(range.begin);
    end_ = reinterpret_cast<const void*>(range.end);
  }
  for (const qvx::REALclassDefinition* definition : host_.definitions) {
    qvx::REALclassDefinition& prescribed = host_.prescribed.emplace_back(*definition);
    prescribed.constructor = reinterpret_cast<void (*)(qvx::REALobject)>(&PrescribedConstructor);
    prescribed.destructor = reinterpret_cast<void (*)(qvx::REALobject)>(&PrescribedDestructor);
  }
  // A bundle takes its cache when it first makes an instance.
  OfferInstances(platform, instances_);
  Unlock(NewInstance("NSColorQVX"));
}

void Bundle::Activate() {
  bench::Activate(host_);
  PrescribedUse(&calls_);
  SetBundleRange(begin_, end_);
}

qvx::REALproc Bundle::FunctionOf(const char* className, const char* name) const {
  const qvx::REALproc function = host_.Find(className, name);
  if (function == nullptr) {
    throw std::runtime_error(std::string("wanted ") + className + "." + name + ", found no such declaration");
  }
  return function;
}

}  // namespace bench
