// bench/instructions.h - counting instructions: by the processor where it counts, or under callgrind.
#pragma once

#include <cstdint>

namespace bench {

// The processor's own count of this thread's instructions outside of the kernel. Works only where the machine
// has such a counter and lets it be used.
class InstructionCounter {
 public:
  InstructionCounter();
  InstructionCounter(const InstructionCounter&) = delete;
  InstructionCounter& operator=(const InstructionCounter&) = delete;
  ~InstructionCounter();

  bool Works() const { return descriptor_ != -1; }
  void Start() { start_ = Read(); }
  void Stop() { stop_ = Read(); }
  std::uint64_t Count() const { return stop_ - start_; }

 private:
  std::uint64_t Read() const;

  int descriptor_;
  std::uint64_t start_ = 0;
  std::uint64_t stop_ = 0;
};

}  // namespace bench

// Makes the call so many times. A function of its own with a plain name, so that callgrind can be told to
// count between its entry and its end.
extern "C" void CountedCalls(void (*call)(void* context), void* context, int times);
