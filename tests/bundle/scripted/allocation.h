// tests/bundle/scripted/allocation.h - what the bundle itself allocates on the heap.
//
// malloc, calloc, realloc and free are wrapped by the linker (--wrap), operator new and delete are replaced.
// Only what happens inside the bundle is noted; a kNull fault makes an allocation fail.
#pragma once

namespace scripted {

// Blocks that the bundle allocated and that nobody has freed.
int LiveBundleBlocks();
// Counts afresh: the shrunk tables of an old host live as long as the process.
void ForgetBundleBlocks();

// Frees those blocks: for whoever sets the bundle back to an earlier state, in which it does not know them.
void FreeBundleBlocks();

}  // namespace scripted
