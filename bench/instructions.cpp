// bench/instructions.cpp - counting instructions: by the processor where it counts, or under callgrind.
#include "bench/instructions.h"

#include <linux/perf_event.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace bench {

InstructionCounter::InstructionCounter() {
  perf_event_attr attributes = {};
  attributes.type = PERF_TYPE_HARDWARE;
  attributes.size = sizeof attributes;
  attributes.config = PERF_COUNT_HW_INSTRUCTIONS;
  attributes.exclude_kernel = 1;
  attributes.exclude_hv = 1;
  descriptor_ = static_cast<int>(syscall(SYS_perf_event_open, &attributes, 0, -1, -1, 0UL));
}

InstructionCounter::~InstructionCounter() {
  if (descriptor_ != -1) close(descriptor_);
}

std::uint64_t InstructionCounter::Read() const {
  std::uint64_t count = 0;
  if (descriptor_ == -1 || read(descriptor_, &count, sizeof count) != sizeof count) return 0;
  return count;
}

}  // namespace bench

extern "C" [[gnu::noinline]] void CountedCalls(void (*call)(void* context), void* context, int times) {
  for (int i = 0; i < times; ++i) call(context);
}
