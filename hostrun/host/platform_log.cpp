// hostrun/host/platform_log.cpp - the platform's log lines, held back until it is known whether they matter.
#include "hostrun/host/platform_log.h"

#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <mutex>
#include <utility>
#include <vector>

#include "hostrun/host/crash.h"
#include "hostrun/host/output.h"
#include "hostrun/host/platform_library.h"

namespace hostrun {
namespace {

constexpr std::uint32_t kEncodingUtf8 = 0x08000100;
constexpr long kMostBytesOfUnit = 3;  // of a UTF-16 unit in UTF-8

long (*lengthOf)(const void* string) = nullptr;
unsigned char (*bytesOf)(const void* string, char* bytes, long size, std::uint32_t encoding) = nullptr;

std::mutex mutex;  // the platform logs from any thread
std::string held;
std::atomic<bool> anythingHeld = false;  // looked at after every call into the bundle

void Hold(const void* line) {
  std::vector<char> bytes(static_cast<std::size_t>(lengthOf(line) * kMostBytesOfUnit + 1));
  if (bytesOf(line, bytes.data(), static_cast<long>(bytes.size()), kEncodingUtf8) == 0) return;
  const std::scoped_lock lock(mutex);
  held += bytes.data();
  anythingHeld = true;
}

void WriteAtCrash() {
  [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, held.data(), held.size());
}

template <class F>
F* Find(const char* name) {
  return reinterpret_cast<F*>(GlobalSymbol(name));
}

// Out of the way of every call that logs nothing.
[[gnu::noinline, gnu::cold]] void WriteHeld() {
  const std::string lines = TakePlatformLog();
  FlushOutput();
  std::fputs(lines.c_str(), stderr);
}

}  // namespace

void HoldPlatformLog() {
  auto* const handler = Find<void (*)(const void* line)>("_NSLog_printf_handler");
  lengthOf = Find<long(const void*)>("CFStringGetLength");
  bytesOf = Find<unsigned char(const void*, char*, long, std::uint32_t)>("CFStringGetCString");
  if (handler == nullptr || lengthOf == nullptr || bytesOf == nullptr) return;
  *handler = &Hold;
  AtCrash(&WriteAtCrash);
}

void WritePlatformLog() {
  if (anythingHeld) WriteHeld();
}

std::string TakePlatformLog() {
  if (!anythingHeld) return {};
  const std::scoped_lock lock(mutex);
  anythingHeld = false;
  return std::exchange(held, {});
}

}  // namespace hostrun
