// bench/rows_blocks.cpp - memory blocks: profile data out of a colour space and into one.
#include <cstdlib>
#include <cstring>
#include <stdexcept>

#include "bench/rows.h"

namespace bench {

namespace {

constexpr std::int32_t kLargestCounted = 100 * 1024;
constexpr std::int32_t kMebibyte = 1024 * 1024;

// An sRGB profile of the asked size: the platform's own, with zeros after its tags and its new size in the
// header. The scripted platform takes any bytes.
std::vector<unsigned char> Profile(Bundle& bundle, std::int32_t size) {
  std::vector<unsigned char> profile(static_cast<std::size_t>(size));
  if (bundle.GetPlatform().name == "scripted") return profile;
  const Platform& platform = bundle.GetPlatform();
  const id space =
      platform.Send<id>(platform.objc_getClass("NSColorSpace"), platform.sel_registerName("sRGBColorSpace"));
  const id data = platform.Send<id>(space, platform.sel_registerName("ICCProfileData"));
  const auto length = platform.Send<NSUInteger>(data, platform.sel_registerName("length"));
  const auto* const bytes = platform.Send<const void*>(data, platform.sel_registerName("bytes"));
  if (length > profile.size()) profile.resize(length);
  std::memcpy(profile.data(), bytes, length);
  for (std::size_t i = 0; i < 4; ++i) profile[i] = static_cast<unsigned char>(profile.size() >> (24 - 8 * i));
  return profile;
}

void AddLimit(Bundle& bundle, const Row& row, const std::vector<unsigned char>& profile) {
  void* (*volatile copy)(void*, const void*, std::size_t) = &std::memcpy;
  AddRow(bundle, row, [=] {
    void* const memory = std::malloc(profile.size());
    copy(memory, profile.data(), profile.size());
    benchmark::ClobberMemory();
    std::free(memory);
  });
}

void AddOut(Bundle& bundle, const Row& row, qvx::REALmemoryBlock block) {
  auto* const fill =
      bundle.Function<void(qvx::REALobject, qvx::REALmemoryBlock)>("NSColorSpaceQVX", "Constructor(");
  auto* const data =
      bundle.Function<qvx::REALmemoryBlock(qvx::REALobject)>("NSColorSpaceQVX", "ICCProfileData as");
  const qvx::REALobject space = NewInstance("NSColorSpaceQVX");
  fill(space, block);
  const qvx::REALmemoryBlock first = data(space);
  if (first == nullptr) throw std::runtime_error("wanted " + row.name + ", found none");
  Unlock(first);
  AddRow<Pooled::kYes>(
      bundle, row,
      [calls = bundle.Calls(), native = NativeOf(space),
       get = SelectorOf(bundle.GetPlatform(), "ICCProfileData")] {
        Unlock(PrescribedBlock(calls, native, get));
      },
      [=] { Unlock(data(space)); });
}

void AddIn(Bundle& bundle, const Row& row, qvx::REALmemoryBlock block) {
  auto* const make = bundle.Function<qvx::REALobject(qvx::REALmemoryBlock)>(
      "NSColorSpaceQVX", "ColorSpaceWithICCProfileData(ICCProfileData");
  const Platform& platform = bundle.GetPlatform();
  // A pool for each call: the data waits in it.
  AddRow(
      bundle, row,
      [=, &platform, calls = bundle.Calls(), spaces = platform.objc_getClass("NSColorSpace")] {
        const Pool pool(platform);
        Unlock(PrescribedFromBlock(calls, spaces, block));
      },
      [=, &platform] {
        const Pool pool(platform);
        Unlock(make(block));
      });
}

void AddSize(Bundle& bundle, std::int32_t size) {
  const std::vector<unsigned char> profile = Profile(bundle, size);
  const qvx::REALmemoryBlock block = NewBlock(profile.data(), static_cast<std::int32_t>(profile.size()));
  const std::string bytes =
      size < kMebibyte ? std::to_string(size / 1024) + " KiB" : std::to_string(size / kMebibyte) + " MiB";
  const Row limit = {.name = "malloc + memcpy, " + bytes, .counted = size <= kLargestCounted};
  AddLimit(bundle, limit, profile);
  const auto row = [&](const char* what) {
    return Row{.name = std::string(what) + ", " + bytes,
               .limit = limit.name,
               .counted = limit.counted,
               .series = what,
               .size = size};
  };
  Row out = row("profile data");
  out.target = size == 16 * kMebibyte ? 1.05 : 0;
  AddOut(bundle, out, block);
  AddIn(bundle, row("space from data"), block);
}

}  // namespace

void AddBlockRows(Bundle& bundle) {
  AddSize(bundle, 3 * 1024);  // about the smallest that a profile can be
  AddSize(bundle, kLargestCounted);
}

void AddLargeBlockRows(Bundle& bundle) {
  AddSize(bundle, kMebibyte);
  AddSize(bundle, 16 * kMebibyte);
}

}  // namespace bench
