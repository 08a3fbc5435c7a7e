// tests/bundle/scripted/stack_call.h - calls on any stack that a host may come with.
#pragma once

#include <cstddef>
#include <cstdint>

namespace scripted {

inline constexpr std::uint32_t kStackAlignment = 16;
// How far from that alignment a host's stack may be when it calls.
#ifdef __SANITIZE_ADDRESS__
// AddressSanitizer marks a function's stack in steps of 8 bytes: half a step beside them it takes the
// function's own variables for overflows.
inline constexpr std::uint32_t kStackOffsets[] = {0, 8};
#else
inline constexpr std::uint32_t kStackOffsets[] = {0, 4, 8, 12};
#endif

}  // namespace scripted

// Calls a function with `count` words of arguments on a stack that is `offset` bytes past the alignment, and
// answers what it leaves in EAX or on the floating-point stack.
extern "C" std::uint32_t scripted_call_at_offset(const void* function, const std::uint32_t* words,
                                                 std::size_t count, std::uint32_t offset);
extern "C" double scripted_call_for_double_at_offset(const void* function, const std::uint32_t* words,
                                                     std::size_t count, std::uint32_t offset);
