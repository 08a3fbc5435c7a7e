// bundle/desktop/final_link/main.cpp - the command that links an object into a bundle.
//
//   final_link OBJECT BUNDLE DEBUG SYMBOL    the bundle exports SYMBOL and nothing else; DEBUG is for
//   debuggers
#include <cstdio>
#include <exception>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

#include "bundle/desktop/final_link/link.h"

namespace {

desktop::Bytes ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error("wanted an object to read, found none");
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

// Writes the whole file or none.
void WriteFile(const std::string& path, const desktop::Bytes& bytes) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  file.close();
  if (!file) {
    std::remove(path.c_str());
    throw std::runtime_error("wanted to write " + path + ", found that it can't be written");
  }
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
    WriteFile(arguments[2], linked.bundle);
    WriteFile(arguments[3], linked.debug);
  } catch (const std::exception& problem) {
    std::fprintf(stderr, "final_link: %s: %s\n", object.c_str(), problem.what());
    return 1;
  }
}
