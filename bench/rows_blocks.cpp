// bench/rows_blocks.cpp - memory blocks: profile data out of a colour space and into one.
#include <cstdlib>
#include <cstring>
#include <stdexcept>

#include "bench/rows.h"

namespace bench {

namespace {

constexpr std::int32_t kSmall = 3 * 1024;
constexpr std::int32_t kLarge = 16 * 1024 * 1024;

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

void AddLimit(Bundle& bundle, const char* name, const std::vector<unsigned char>& profile, bool counted) {
  void* (*volatile copy)(void*, const void*, std::size_t) = &std::memcpy;
  AddRow(bundle, {.name = name, .counted = counted}, [=] {
    void* const memory = std::malloc(profile.size());
    copy(memory, profile.data(), profile.size());
    benchmark::ClobberMemory();
    std::free(memory);
  });
}

void AddOut(Bundle& bundle, const std::string& size, const char* limit, qvx::REALmemoryBlock block,
            double target, bool counted) {
  auto* const fill =
      bundle.Function<void(qvx::REALobject, qvx::REALmemoryBlock)>("NSColorSpaceQVX", "Constructor(");
  auto* const data =
      bundle.Function<qvx::REALmemoryBlock(qvx::REALobject)>("NSColorSpaceQVX", "ICCProfileData as");
  const qvx::REALobject space = NewInstance("NSColorSpaceQVX");
  fill(space, block);
  const qvx::REALmemoryBlock first = data(space);
  if (first == nullptr) throw std::runtime_error("wanted profile data of " + size + ", found none");
  Unlock(first);
  const Platform& platform = bundle.GetPlatform();
  const auto selector = [&platform](const char* name) {
    return const_cast<void*>(static_cast<const void*>(platform.sel_registerName(name)));
  };
  const Row path = {.name = "prescribed path: profile data, " + size, .counted = counted};
  AddRow<Pooled::kYes>(
      bundle, path,
      [calls = CallsFor(platform), native = NativeOf(space), get = selector("ICCProfileData"),
       bytes = selector("bytes"),
       length = selector("length")] { Unlock(PrescribedBlock(&calls, native, get, bytes, length)); });
  AddRow<Pooled::kYes>(bundle,
                       {.name = "profile data, " + size,
                        .limit = limit,
                        .target = target,
                        .path = path.name,
                        .counted = counted,
                        .guard = Guard::kNo},
                       [=] { Unlock(data(space)); });
}

void AddIn(Bundle& bundle, const std::string& size, const char* limit, qvx::REALmemoryBlock block,
           bool counted) {
  auto* const make = bundle.Function<qvx::REALobject(qvx::REALmemoryBlock)>(
      "NSColorSpaceQVX", "ColorSpaceWithICCProfileData(ICCProfileData");
  const Platform& platform = bundle.GetPlatform();
  AddRow(bundle, {.name = "space from data, " + size, .limit = limit, .counted = counted}, [=, &platform] {
    // A pool for each call: the data waits in it.
    const Pool pool(platform);
    Unlock(make(block));
  });
}

void AddSize(Bundle& bundle, std::int32_t size, const char* name, const char* limit, double target) {
  const bool counted = size == kSmall;
  const std::vector<unsigned char> profile = Profile(bundle, size);
  const qvx::REALmemoryBlock block = NewBlock(profile.data(), static_cast<std::int32_t>(profile.size()));
  AddLimit(bundle, limit, profile, counted);
  AddOut(bundle, name, limit, block, target, counted);
  AddIn(bundle, name, limit, block, counted);
}

}  // namespace

void AddBlockRows(Bundle& bundle) {
  AddSize(bundle, kSmall, "3 KiB", "malloc + memcpy, 3 KiB", 0);
}

void AddLargeBlockRows(Bundle& bundle) {
  AddSize(bundle, kLarge, "16 MiB", "malloc + memcpy, 16 MiB", 1.05);
}

}  // namespace bench
