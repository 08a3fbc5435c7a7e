// tests/whole/fuzz/profiles.cpp - colour profiles of any bytes through the colour-space factories on the real
// platform.
#include <cstring>

#include "hostrun/host/host.h"
#include "hostrun/host/memory_blocks.h"
#include "tests/whole/fuzz/target.h"
#include "tests/whole/real/real_host.h"

namespace {

using hostrun::ArgumentWords;
using hostrun::Value;

constexpr const char* kSpace = "NSColorSpaceQVX";
constexpr const char* kColor = "NSColorQVX";

void StartOnce() {
  static const bool started = (real::StartHost(), true);
  static_cast<void>(started);
}

Value Block(const std::string& bytes) {
  hostrun::Object* const block = hostrun::NewMemoryBlock(static_cast<std::int32_t>(bytes.size()));
  if (!bytes.empty()) std::memcpy(hostrun::MemoryBlockBytes(block), bytes.data(), bytes.size());
  return Value::Adopt(block);
}

Value Ask(const char* className, const char* declaration, const Value& self) {
  ArgumentWords words;
  words.PushHandle(self);
  return real::Call(real::MethodOf(className, declaration), words);
}

Value Shared(const char* declaration) {
  return real::Call(real::MethodOf(kSpace, declaration), {});
}

std::string ProfileOf(const Value& space) {
  const Value block = Ask(kSpace, "ICCProfileData as", space);
  if (block.kind() == hostrun::Kind::Nil || block.object() == nullptr) return {};
  const char* const bytes = static_cast<const char*>(hostrun::MemoryBlockBytes(block.object()));
  return {bytes, static_cast<std::size_t>(hostrun::MemoryBlockSize(block.object()))};
}

// A colour taken into the space: what a profile that lies about itself would break.
void UseSpace(const Value& space) {
  for (const char* const declaration :
       {"localizedName", "colorSpaceName", "description", "colorSpaceModel", "numberOfColorComponents"}) {
    Ask(kSpace, declaration, space);
  }
  ArgumentWords rgb;
  for (const double component : {0.25, 0.5, 0.75, 1.0}) rgb.PushDouble(component);
  const Value colour = real::Call(real::MethodOf(kColor, "colorWithCalibratedRGB("), rgb);
  ArgumentWords words;
  words.PushHandle(colour);
  words.PushHandle(space);
  const Value converted =
      real::Call(real::MethodOf(kColor, "colorUsingColorSpace(colorSpace as NSColorSpaceQVX)"), words);
  if (converted.kind() == hostrun::Kind::Nil || converted.object() == nullptr) return;
  Ask(kColor, "Components as", converted);
  ArgumentWords getter;
  getter.PushHandle(converted);
  getter.PushWord(0);
  real::Call(real::GetterOf(kColor, "colorValue"), getter);
}

}  // namespace

std::vector<std::string> fuzz::Seeds() {
  StartOnce();
  std::vector<std::string> seeds{"", "acsp"};
  for (const char* const space : {"sRGBColorSpace", "genericGrayColorSpace", "genericCMYKColorSpace",
                                  "adobeRGB1998ColorSpace", "genericRGBColorSpace"}) {
    const std::string profile = ProfileOf(Shared(space));
    if (!profile.empty() && profile.size() < 65536) seeds.push_back(profile);
  }
  return seeds;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  StartOnce();
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  {
    const Value block = Block(bytes);
    ArgumentWords words;
    words.PushHandle(block);
    const Value space = real::Call(
        real::MethodOf(kSpace, "ColorSpaceWithICCProfileData(ICCProfileData as Memoryblock)"), words);
    if (space.kind() != hostrun::Kind::Nil && space.object() != nullptr) UseSpace(space);
  }
  if (hostrun::CountLive().Any()) fuzz::Fail("still alive:\n" + hostrun::DescribeLive(hostrun::CountLive()));
  if (real::CachedInstances() != 0) fuzz::Fail("the instance cache is not empty");
  return 0;
}
