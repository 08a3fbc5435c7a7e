// tests/bundle/scripted/bundle.cpp - finds the bundle's functions by the records that it registered.
#include "tests/bundle/scripted/bundle.h"

#include <array>
#include <cstdio>
#include <cstdlib>

#include "tests/bundle/scripted/allocation.h"

extern "C" void REALPluginMain(void* (*resolver)(const char*));

namespace scripted {

void* FunctionOf(Table table, std::string_view className, std::string_view declaration) {
  const RegisteredClass& registered = TheHost().Class(className);
  const auto& entries = table == Table::kMethods         ? registered.methods
                        : table == Table::kSharedMethods ? registered.sharedMethods
                                                         : registered.properties;
  void* named = nullptr;
  int count = 0;
  for (const RegisteredClass::Entry& entry : entries) {
    const std::string_view found = entry.declaration;
    if (found == declaration) return entry.function;
    if (found.substr(0, found.find_first_of("( ")) == declaration) {
      named = entry.function;
      ++count;
    }
  }
  if (count == 1) return named;
  std::fprintf(stderr, "wanted one record %.*s of %.*s, found %d; give the whole declaration of one\n",
               static_cast<int>(declaration.size()), declaration.data(), static_cast<int>(className.size()),
               className.data(), count);
  std::abort();
}

bool FloatingPointStackIsEmpty() {
  std::array<std::uint32_t, 7> environment{};
  asm volatile("fnstenv %0; fldenv %0" : "+m"(environment));
  return (environment[2] & 0xFFFFU) == 0xFFFFU;
}

void Start(long double version) {
  TheHost().version = version;
  Call(&REALPluginMain, &Host::Resolve);
  Log().Clear();
  ForgetBundleBlocks();
}

}  // namespace scripted
