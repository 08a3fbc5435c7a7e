// tests/whole/fuzz/desktop_bundles.cpp - files of any bytes for the loader of desktop bundles.
#include "hostrun/macho/image.h"
#include "tests/hostrun/macho/test_file.h"
#include "tests/whole/fuzz/target.h"

namespace {

int anything = 0;
// Stands for every symbol: no code of the file runs.
void* FindAnything(const std::string& /*symbol*/) {
  return &anything;
}

std::string SeedOf(const TestFile& file) {
  const std::vector<std::uint8_t> bytes = file.Bytes();
  return {bytes.begin(), bytes.end()};
}

}  // namespace

// Small files, in which a larger part of the bytes means something to the loader.
std::vector<std::string> fuzz::Seeds() {
  TestFile lazy;
  lazy.lazyBinds = Codes({0x71, 12, 0x11, 0x40}) + Text("_lazy") + Codes({0x90, 0});
  TestFile counted;
  counted.rebases = Codes({0x11, 0x21, 8, 0x60, 3, 0x80, 4, 8, 0x70, 4, 0});
  counted.binds =
      Codes({0x11, 0x40}) + Text("_symbol") + Codes({0x51, 0x71, 4, 0xC0, 5, 8, 0xA0, 4, 0xB2, 0});
  TestFile frames;
  frames.frameBytes =
      CommonRecord(Codes({0x0C, 5, 4, 0x88, 1, 0x0A, 0x85, 2, 0x0B, 0x09, 4, 5})) + Raw(std::uint32_t{0});
  frames.frames.size = static_cast<std::uint32_t>(frames.frameBytes.size());
  return {SeedOf(TestFile()), SeedOf(lazy), SeedOf(counted), SeedOf(frames)};
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using hostrun::macho::FormatError;
  try {
    const hostrun::macho::File file = hostrun::macho::ReadFile({data, data + size});
    const hostrun::macho::Image image(file, &FindAnything);
    for (const hostrun::macho::Export& one : file.exports) {
      if (image.Exported(one.symbol) == nullptr) fuzz::Fail(one.symbol + " is exported and has no address");
    }
  } catch (const FormatError& error) {
    const std::string_view line = error.what();
    if (!line.starts_with("wanted ") || line.find_first_of("\n\r\x1B") != line.npos)
      fuzz::Fail("not what a refusal says: " + std::string(line));
  }
  return 0;
}
