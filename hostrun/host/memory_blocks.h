// hostrun/host/memory_blocks.h - the host's "MemoryBlock": a buffer of bytes that is an object.
#pragma once

#include <cstdint>

#include "hostrun/host/objects.h"

namespace hostrun {

void RegisterMemoryBlockClass();

// Throws OutOfMemoryException; a negative size counts as 0.
Object* NewMemoryBlock(std::int32_t size);
void* MemoryBlockBytes(Object* block);  // null when it is empty
std::int32_t MemoryBlockSize(Object* block);

}  // namespace hostrun
