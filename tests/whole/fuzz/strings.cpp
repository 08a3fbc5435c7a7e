// tests/whole/fuzz/strings.cpp - host strings in any encoding, both ways through the string bridge.
//
// An input is: one byte of settings, one that chooses the encoding, one that chooses the encoding asked for,
// then the text. QVX_FUZZ_HOST=sparse runs against a host without the newer services, which the bundle asks
// for only once.
#include <cstdlib>
#include <cstring>

#include "bundle/bridge/holdings.h"
#include "bundle/bridge/strings.h"
#include "bundle/host/services.h"
#include "tests/bundle/scripted/allocation.h"
#include "tests/bundle/scripted/balance.h"
#include "tests/bundle/scripted/bundle.h"
#include "tests/bundle/scripted/exception_frames.h"
#include "tests/bundle/scripted/platform.h"
#include "tests/bundle/scripted/text.h"
#include "tests/whole/fuzz/target.h"

namespace {

using namespace scripted;  // NOLINT(google-build-using-namespace): the scripted host's vocabulary

struct Settings {
  bool oldHost;
  bool noCopy;  // "REALGetStringCFString" answers null
  std::uint32_t encoding;
  std::uint32_t wanted;
};

std::uint32_t EncodingFor(std::uint8_t byte) {
  constexpr std::uint32_t kKnown[] = {
      qvx::kEncodingMacRoman, qvx::kEncodingUTF16, qvx::kEncodingWindowsLatin1, qvx::kEncodingASCII,
      qvx::kEncodingUnknown,  qvx::kEncodingUTF8,  qvx::kEncodingUTF32};
  if (byte < 224) return kKnown[byte % 7];
  return std::uint32_t{byte} * 0x01010101U;  // no encoding of anybody's
}

void StartOnce() {
  static const bool started = [] {
    const char* const host = std::getenv("QVX_FUZZ_HOST");
    if (host != nullptr && std::strcmp(host, "sparse") == 0) {
      TheHost().missing = {"REALGetStringCFString", "PluginGetStringData", "PluginDisposeStringData"};
    }
    qvx::gResolver = &Host::Resolve;
    for (const char* const name : {"NSException", "NSString", "NSData"}) ClassNamed(name);
    KeepNatives();
    return true;
  }();
  static_cast<void>(started);
}

void ForgetTheWorld() {
  const auto missing = TheHost().missing;
  Log().Reset();
  ForgetFrames();
  TheHost().ForgetHandles();
  TheHost().missing = missing;
  ForgetNatives();
  FreeBundleBlocks();
}

template <typename Work>
auto InBundle(Work work) {
  const Inside inside;
  return work();
}

void Drop(qvx::REALstring string) {
  if (string == nullptr) return;
  TheHost().Adopt(string);
  TheHost().UnlockString(string);
}

// Text that the host can read comes back as the same text in UTF-8.
void ThereAndBack(qvx::REALstring string, const std::string& bytes, const Settings& settings) {
  qvx::UnguardedHoldings holdings;
  const id platform = InBundle([&] { return qvx::NewNSString(string, holdings); });
  const qvx::REALstring back = InBundle([&] { return qvx::NSStringRB(platform, holdings); });
  const auto text = Decode(bytes, settings.encoding);
  const bool plain = text && !text->empty() && text->find(u'\0') == std::u16string::npos;
  if (plain && !settings.noCopy && std::getenv("QVX_FUZZ_HOST") == nullptr) {
    const auto utf8 = Encode(*text, qvx::kEncodingUTF8);
    if (utf8 && TheHost().Text(back) != *utf8) {
      fuzz::Fail("text " + Quoted(*utf8) + " came back as " + Quoted(TheHost().Text(back)));
    }
  }
  Drop(back);
}

void Build(const std::string& bytes, const Settings& settings) {
  const qvx::REALstring built = InBundle([&] {
    qvx::UnguardedHoldings holdings;
    return qvx::REALBuildUnicodeString(bytes.data(), static_cast<std::int64_t>(bytes.size()),
                                       settings.encoding, holdings);
  });
  if (built != nullptr && bytes.empty()) fuzz::Fail("no bytes became a string");
  Drop(built);
}

void ReadData(qvx::REALstring string, const std::string& bytes, const Settings& settings) {
  qvx::REALstringData data{nullptr, static_cast<std::int32_t>(bytes.size()), 0};
  const bool filled = InBundle([&] {
    qvx::UnguardedHoldings holdings;
    return qvx::REALGetStringData(string, settings.wanted, &data, holdings);
  });
  if (!filled) return;
  if (std::memcmp(data.data + data.length, "\0\0\0\0", 4) != 0)
    fuzz::Fail("string data without four zero bytes");
  if (settings.wanted == qvx::kEncodingUnknown &&
      std::string(data.data, static_cast<std::size_t>(data.length)) != bytes) {
    fuzz::Fail("string data that is not the bytes as stored");
  }
  InBundle([&] {
    if (qvx::REALDisposeStringData.Find() != nullptr) {
      qvx::REALDisposeStringData(&data);
    } else {
      std::free(data.data);
    }
  });
}

}  // namespace

std::vector<std::string> fuzz::Seeds() {
  std::vector<std::string> seeds;
  const std::string texts[] = {"plain",
                               "caf\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80",
                               std::string("a\0b\0\xAC\x20", 6),
                               std::string("\0\xF6\x01\0", 4),
                               std::string(150, 'x'),
                               ""};
  for (char settings = 0; settings < 4; ++settings) {
    for (char encoding = 0; encoding < 7; ++encoding) {
      for (const std::string& text : texts) seeds.push_back(std::string{settings, encoding, encoding} + text);
    }
  }
  return seeds;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 3) return 0;
  StartOnce();
  const Settings settings{(data[0] & 1U) != 0, (data[0] & 2U) != 0, EncodingFor(data[1]),
                          EncodingFor(data[2])};
  const std::string bytes(reinterpret_cast<const char*>(data) + 3, size - 3);
  TheHost().version = settings.oldHost ? 2011.0L : 2015.0L;
  qvx::rbversion = static_cast<double>(TheHost().version);
  Log().SetHook([&](const Event& event) {
    return settings.noCopy && event.name == "REALGetStringCFString" ? Fault::kNull : Fault::kNone;
  });
  const qvx::REALstring string = TheHost().NewString(bytes, settings.encoding);
  ThereAndBack(string, bytes, settings);
  Build(bytes, settings);
  ReadData(string, bytes, settings);
  TheHost().UnlockString(string);
  DrainPool();
  for (const std::string& each : Imbalances()) fuzz::Fail(each);
  if (LiveBundleBlocks() != 0) fuzz::Fail("memory of the bundle's is never freed");
  ForgetTheWorld();
  return 0;
}
