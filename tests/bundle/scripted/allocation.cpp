// tests/bundle/scripted/allocation.cpp - what the bundle itself allocates on the heap.
#include "tests/bundle/scripted/allocation.h"

#include <array>
#include <cstdlib>
#include <new>
#include <string>

#include "tests/bundle/scripted/event_log.h"
#include "tests/bundle/scripted/host.h"

namespace scripted {
namespace {

// A plain table: it must not allocate while it watches allocation.
std::array<void*, 4096> live{};
int liveCount = 0;

void Remember(void* block) {
  if (block == nullptr || liveCount == static_cast<int>(live.size())) return;
  live.at(static_cast<std::size_t>(liveCount++)) = block;
}

bool Forget(const void* block) {
  for (int i = 0; i < liveCount; ++i) {
    if (live.at(static_cast<std::size_t>(i)) == block) {
      live.at(static_cast<std::size_t>(i)) = live.at(static_cast<std::size_t>(--liveCount));
      return true;
    }
  }
  return false;
}

bool Fails(const char* name, std::size_t size) {
  const Outside outside;
  const Fault fault =
      Log().Record(EventKind::kAllocation, name, std::string(name) + "(" + std::to_string(size) + ")");
  return fault == Fault::kNull;
}

}  // namespace

int LiveBundleBlocks() {
  return liveCount;
}
void ForgetBundleBlocks() {
  liveCount = 0;
}

}  // namespace scripted

extern "C" void __real_free(void* block);

void scripted::FreeBundleBlocks() {
  while (liveCount > 0) __real_free(live.at(static_cast<std::size_t>(--liveCount)));
}

using scripted::EventKind;

extern "C" {

// The C library's own, by the names that --wrap gives them.
void* __real_malloc(std::size_t size);
void* __real_calloc(std::size_t count, std::size_t size);
void* __real_realloc(void* block, std::size_t size);

void* __wrap_malloc(std::size_t size) {
  if (!scripted::InsideBundle()) return __real_malloc(size);
  if (scripted::Fails("malloc", size)) return nullptr;
  void* const block = __real_malloc(size);
  scripted::Remember(block);
  return block;
}

void* __wrap_calloc(std::size_t count, std::size_t size) {
  if (!scripted::InsideBundle()) return __real_calloc(count, size);
  if (scripted::Fails("calloc", count * size)) return nullptr;
  void* const block = __real_calloc(count, size);
  scripted::Remember(block);
  return block;
}

void* __wrap_realloc(void* block, std::size_t size) {
  if (!scripted::InsideBundle()) return __real_realloc(block, size);
  if (scripted::Fails("realloc", size)) return nullptr;
  scripted::Forget(block);
  void* const moved = __real_realloc(block, size);
  scripted::Remember(moved);
  return moved;
}

void __wrap_free(void* block) {
  if (scripted::liveCount > 0 && block != nullptr && scripted::Forget(block) && scripted::InsideBundle()) {
    const scripted::Outside outside;
    scripted::Log().Record(EventKind::kFree, "free", "free");
  }
  // Without "PluginDisposeStringData" whoever owes string data frees its bytes.
  if (scripted::InsideBundle()) std::erase(scripted::TheHost().liveStringData, block);
  __real_free(block);
}

}  // extern "C"

void* operator new(std::size_t size) {
  void* const block = __wrap_malloc(size == 0 ? 1 : size);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}
void* operator new[](std::size_t size) {
  return operator new(size);
}
void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
  return __wrap_malloc(size == 0 ? 1 : size);
}
void* operator new[](std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
  return __wrap_malloc(size == 0 ? 1 : size);
}
void operator delete(void* block) noexcept {
  __wrap_free(block);
}
void operator delete[](void* block) noexcept {
  __wrap_free(block);
}
void operator delete(void* block, std::size_t /*size*/) noexcept {
  __wrap_free(block);
}
void operator delete[](void* block, std::size_t /*size*/) noexcept {
  __wrap_free(block);
}
