// bundle/desktop/final_link/main.cpp - the command that links an object into a bundle.
//
//   final_link OBJECT BUNDLE DEBUG SYMBOL    the bundle exports SYMBOL and nothing else; DEBUG is for
//   debuggers
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <system_error>

#include "bundle/desktop/final_link/link.h"

namespace {

namespace fs = std::filesystem;

desktop::Bytes ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error("wanted an object to read, found none");
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

// Whoever may read the file may execute it.
constexpr fs::perms kExecutable = fs::perms::owner_exec | fs::perms::group_exec | fs::perms::others_exec;

[[noreturn]] void RefuseToWrite(const fs::path& path, const std::string& found) {
  throw std::runtime_error("wanted to write " + path.native() + ", found " + found);
}

// Writes the whole file, or leaves what is there: it is written beside its place and then takes it. Of the
// rights `more`, those who may read the file get theirs.
void WriteFile(const fs::path& path, const desktop::Bytes& bytes, fs::perms more = fs::perms::none) {
  std::error_code error;
  const fs::file_status before = fs::status(path, error);
  if (fs::exists(before) && !fs::is_regular_file(before)) RefuseToWrite(path, "something that is no file");

  const fs::path fresh = path.native() + ".new";
  std::ofstream file(fresh, std::ios::binary);
  if (!file) RefuseToWrite(path, std::strerror(errno));
  file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  file.close();
  error.clear();
  if (!file) error.assign(errno, std::generic_category());
  if (!error) {
    const auto readers = static_cast<unsigned>(fs::status(fresh, error).permissions()) >> 2;
    fs::permissions(fresh, more & static_cast<fs::perms>(readers), fs::perm_options::add, error);
  }
  if (!error) fs::rename(fresh, path, error);
  if (!error) return;
  std::error_code ignored;
  fs::remove(fresh, ignored);
  RefuseToWrite(path, error.message());
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 5) {
    std::fprintf(stderr, "usage: final_link OBJECT BUNDLE DEBUG SYMBOL\n");
    return 2;
  }
  const std::string object = arguments[1];
  try {
    const desktop::Linked linked = desktop::Link(ReadFile(object), std::string("_") + arguments[4]);
    WriteFile(arguments[3], linked.debug);
    WriteFile(arguments[2], linked.bundle, kExecutable);
  } catch (const std::exception& problem) {
    std::fprintf(stderr, "final_link: %s: %s\n", object.c_str(), problem.what());
    return 1;
  }
}
