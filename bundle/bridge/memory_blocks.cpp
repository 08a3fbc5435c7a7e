// bundle/bridge/memory_blocks.cpp - bytes between host memory blocks and platform data.
#include "bundle/bridge/memory_blocks.h"

#include <cstdio>
#include <cstring>
#include <new>

#include "bundle/bridge/exceptions.h"
#include "bundle/bridge/strings.h"
#include "bundle/host/services.h"
#include "bundle/platform/messages.h"

namespace qvx {

namespace {

// The largest block that the host is asked for: 2^31 - 2 bytes.
constexpr std::int32_t kLargestBlock = 0x7FFFFFFE;

// A new block filled with `length` bytes, or null.
REALmemoryBlock MakeBlock(const void* bytes, std::int32_t length, Holdings& holdings) {
  Held block(holdings, REALNewMemoryBlockOriginal(length));
  if (!block) return nullptr;
  void* const target = REALMemoryBlockGetPtr(block.Get());
  if (target == nullptr) {
    block.Release();
    return nullptr;
  }
  std::memcpy(target, bytes, static_cast<std::size_t>(length));
  return block.Detach();
}

}  // namespace

id NewNSData(REALmemoryBlock block, Holdings& holdings) {
  if (block == nullptr) return nullptr;
  HostDataScope scope(holdings);
  scope.LockObject(AsObject(block));
  const std::int32_t size = REALMemoryBlockGetSize(block);
  const auto* const bytes = static_cast<const char*>(REALMemoryBlockGetPtr(block));
  if (bytes != nullptr) {
    scope.bytes = bytes;
    scope.length = size;
  }
  id data = nullptr;
  if (scope.length > 0) {
    data = msg::dataWithBytes(PlatformClass<"NSData">(), scope.bytes, static_cast<NSUInteger>(scope.length));
  }
  scope.Release();
  return data;
}

REALmemoryBlock NSDataRB(id data, Holdings& holdings) {
  if (data == nullptr) return nullptr;
  const void* const bytes = msg::bytes(data);
  const auto length = static_cast<std::int32_t>(msg::length(data));
  if (bytes == nullptr || length <= 0) return nullptr;

  // Below, the program is told of a block that can't be made, for want of memory too.
  if (length <= kLargestBlock) {
    const unsigned heldBefore = holdings.Count();
    try {
      if (const REALmemoryBlock block = MakeBlock(bytes, length, holdings)) return block;
    } catch (const std::bad_alloc&) {
      holdings.GiveBackDownTo(heldBefore);
    }
  }
  char message[200] = {};
  std::snprintf(message, sizeof message, "Failed to allocate a memoryblock with %lld bytes in size.",
                static_cast<long long>(length));
  RaiseException("OutOfMemoryException", message, holdings);
  return nullptr;
}

}  // namespace qvx
