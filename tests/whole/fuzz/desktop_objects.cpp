// tests/whole/fuzz/desktop_objects.cpp - objects of any bytes, as a broken compiler may leave them.
#include <string>

#include "bundle/desktop/final_link/link.h"
#include "bundle/desktop/final_link/refusal.h"
#include "tests/bundle/desktop/small_object.h"
#include "tests/whole/fuzz/target.h"

namespace {

// Linked objects are small: what an object asks for in memory it must have in its file, but for zeros.
constexpr std::size_t kLargestBundle = 1U << 25;

void CheckRefusal(const std::string& line) {
  if (line.rfind("wanted ", 0) != 0 || line.find(", found ") == std::string::npos) {
    fuzz::Fail("\"" + line + "\" does not say what was wanted and found");
  }
  for (const char letter : line) {
    if (letter < ' ' || letter > '~') fuzz::Fail("\"" + line + "\" is not one line of plain letters");
  }
}

std::string Text(const small::Object& object) {
  const desktop::Bytes bytes = object.Bytes();
  return {bytes.begin(), bytes.end()};
}

}  // namespace

std::vector<std::string> fuzz::Seeds() {
  small::Object textOnly = small::GoodObject();
  textOnly.sections.resize(1);
  textOnly.sections.front().relocations.clear();
  textOnly.symbols.resize(1);
  textOnly.indirect.clear();
  small::Object withDebug = small::GoodObject();
  small::AddDebug(withDebug);
  return {Text(small::GoodObject()), Text(textOnly), Text(withDebug)};
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  try {
    const desktop::Linked linked = desktop::Link({data, size}, "_Entry");
    if (linked.bundle.size() > kLargestBundle)
      fuzz::Fail("a bundle of " + std::to_string(linked.bundle.size()) + " bytes");
    const desktop::Linked again = desktop::Link({data, size}, "_Entry");
    if (linked.bundle != again.bundle || linked.debug != again.debug) fuzz::Fail("two bundles of one object");
  } catch (const desktop::Refusal& refusal) {
    CheckRefusal(refusal.what());
  }
  return 0;
}
