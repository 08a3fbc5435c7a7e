// bundle/bridge/memory_blocks.h - bytes between host memory blocks and platform data. Both conversions copy.
#pragma once

#include "bundle/bridge/holdings.h"
#include "bundle/host/types.h"
#include "bundle/platform/cocoa.h"

namespace qvx {

// An NSData with a copy of the block's bytes, autoreleased; nil for null, for an empty block and for one
// whose bytes can't be had. The block is locked while it is read.
id NewNSData(REALmemoryBlock block, Holdings& holdings);

// A new memory block with a copy of the data's bytes; the caller owns its one reference. Null for nil and for
// empty data. Raises "OutOfMemoryException" and answers null when the host can't make the block.
REALmemoryBlock NSDataRB(id data, Holdings& holdings);

}  // namespace qvx
