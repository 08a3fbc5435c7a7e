// tests/bundle/desktop/good_object.cpp - writes the good object into a file: good_object FILE.
#include <fstream>

#include "tests/bundle/desktop/small_object.h"

int main(int /*count*/, char** arguments) {
  const desktop::Bytes bytes = small::GoodObject().Bytes();
  std::ofstream file(arguments[1], std::ios::binary);
  file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  return file ? 0 : 1;
}
