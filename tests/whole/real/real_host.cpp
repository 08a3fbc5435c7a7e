// tests/whole/real/real_host.cpp - the bundle over the real platform, called by class and name as a program
// would.
#include "tests/whole/real/real_host.h"

#include <malloc.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "hostrun/commands/start.h"
#include "hostrun/host/exceptions.h"
#include "hostrun/host/platform_library.h"

namespace real {
namespace {

int raised = 0;

[[noreturn]] void Fail(const std::string& line) {
  std::fprintf(stderr, "%s\n", line.c_str());
  std::exit(2);
}

std::string BesideExecutable(const char* file) {
  return (std::filesystem::read_symlink("/proc/self/exe").parent_path() / file).string();
}

template <typename Function>
Function Symbol(const char* name) {
  void* const address = hostrun::GlobalSymbol(name);
  if (address == nullptr) Fail(std::string("wanted ") + name + " of the platform, found no such symbol");
  return reinterpret_cast<Function>(address);
}

}  // namespace

std::string BundlePath() {
  const char* const other = std::getenv("QVX_BUNDLE");
  return other != nullptr ? other : BesideExecutable("QVXColor.so");
}

void StartHost(double version) {
  hostrun::HostOptions options;
  options.bundle = BundlePath();
  options.platform = BesideExecutable("libcocoa.so");
  options.identity.version = version;
  const hostrun::Problem problem = hostrun::StartHost(options);
  if (problem) Fail(*problem);
}

const hostrun::Method& MethodOf(std::string_view className, std::string_view declaration) {
  hostrun::Class* const found = hostrun::TheRegistry().FindClass(className);
  if (found == nullptr) Fail("wanted the class " + std::string(className) + ", found none");
  for (const auto* const methods : {&found->methods, &found->sharedMethods}) {
    for (const hostrun::Method& method : *methods) {
      if (method.declaration.starts_with(declaration)) return method;
    }
  }
  Fail("wanted " + std::string(declaration) + " in " + std::string(className) + ", found none");
}

const hostrun::Method& GetterOf(std::string_view className, std::string_view property) {
  const hostrun::Property* const found =
      hostrun::TheRegistry().FindClass(className)->PropertyNamed(property, false);
  if (found == nullptr) Fail("wanted the property " + std::string(property) + ", found none");
  return found->getter;
}

hostrun::Value Call(const hostrun::Method& method, const hostrun::ArgumentWords& words) {
  try {
    return hostrun::CallFunction(method, words);
  } catch (const hostrun::HostException&) {
    ++raised;
    return hostrun::Value::Nil();
  }
}

int RaisedSoFar() {
  return raised;
}

long CachedInstances() {
  using Send = void* (*)(void* receiver, const void* selector);
  static const auto send = Symbol<Send>("objc_msgSend");
  static const auto classNamed = Symbol<void* (*)(const char*)>("objc_getClass");
  static const auto selector = Symbol<const void* (*)(const char*)>("sel_registerName");
  static const auto count = Symbol<long (*)(const void*)>("CFDictionaryGetCount");
  return count(send(classNamed("NSException"), selector("GetInstancesDictionaryQVX")));
}

long long ResidentBytes() {
  malloc_trim(0);
  long long total = 0;
  long long resident = 0;
  FILE* const file = std::fopen("/proc/self/statm", "r");
  if (file == nullptr || std::fscanf(file, "%lld %lld", &total, &resident) != 2) {
    Fail("wanted the process's own memory in /proc/self/statm, found none");
  }
  std::fclose(file);
  return resident * sysconf(_SC_PAGESIZE);
}

}  // namespace real
