// tests/whole/fuzz/colour_lists.cpp - colour-list files of any bytes on the real platform.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "hostrun/host/host.h"
#include "hostrun/host/strings.h"
#include "tests/whole/fuzz/target.h"
#include "tests/whole/real/real_host.h"

namespace {

using hostrun::ArgumentWords;
using hostrun::Value;

constexpr const char* kList = "NSColorListQVX";

const std::filesystem::path& Folder() {
  static const std::filesystem::path folder = [] {
    std::string pattern = (std::filesystem::temp_directory_path() / "fuzz-lists-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) fuzz::Fail("wanted a temporary folder, could not make one");
    return pattern;
  }();
  return folder;
}

struct RemoveFolder {
  ~RemoveFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(Folder(), ignored);
  }
} const removeFolder;

void StartOnce() {
  static const bool started = (real::StartHost(), true);
  static_cast<void>(started);
}

Value NewList() {
  return Value::Adopt(hostrun::NewObject(*hostrun::TheRegistry().FindClass(kList)));
}

template <typename... Arguments>
Value Ask(const Value& list, const char* declaration, const Arguments&... arguments) {
  ArgumentWords words;
  words.PushHandle(list);
  (words.PushHandle(arguments), ...);
  return real::Call(real::MethodOf(kList, declaration), words);
}

void Insert(const Value& list, const char* key) {
  const Value colour = real::Call(real::MethodOf("NSColorQVX", "redColor"), {});
  const Value name = Value::Text(key);
  ArgumentWords words;
  words.PushHandle(list);
  words.PushHandle(colour);
  words.PushHandle(name);
  words.PushWord(0);
  real::Call(real::MethodOf(kList, "insertColor("), words);
}

std::string Read(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace

std::vector<std::string> fuzz::Seeds() {
  StartOnce();
  const std::filesystem::path path = Folder() / "seed.clr";
  {
    const Value list = NewList();
    Ask(list, "Create(name as string) as boolean", Value::Text("seed"));
    for (const char* const key : {"one", "two", "three"}) Insert(list, key);
    Ask(list, "writeToFile(", Value::Text(path.string()));
  }
  return {"", "junk", Read(path)};
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  StartOnce();
  const std::filesystem::path path = Folder() / "input.clr";
  std::ofstream(path, std::ios::binary)
      .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
  {
    const Value list = NewList();
    Ask(list, "Create(name as string, path as string)", Value::Text("input"), Value::Text(path.string()));
    for (const char* const declaration : {"isEditable", "name as"}) Ask(list, declaration);
    for (const char* const key : {"one", "two", "three", ""}) Ask(list, "colorWithKey(", Value::Text(key));
    Insert(list, "new");
    Ask(list, "removeColorWithKey(", Value::Text("one"));
    Ask(list, "writeToFile(", Value::Text((Folder() / "output.clr").string()));
  }
  std::filesystem::remove(path);
  if (hostrun::CountLive().Any()) fuzz::Fail("still alive:\n" + hostrun::DescribeLive(hostrun::CountLive()));
  return 0;
}
