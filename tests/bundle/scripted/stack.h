// tests/bundle/scripted/stack.h - the alignment of the stack at the bundle's border: any that a host may come
// with goes in, only 16 bytes may come out.
#pragma once

#include <cstddef>
#include <cstdint>

namespace scripted {

inline constexpr std::uint32_t kStackAlignment = 16;
// How far from that alignment a host's stack may be when it calls.
inline constexpr std::uint32_t kStackOffsets[] = {0, 4, 8, 12};

// A violation unless `arguments`, where the arguments of a call to `function` start, is aligned. A function
// that the bundle calls passes its __builtin_dwarf_cfa(). Calls from outside the bundle are not looked at.
void CheckStack(const char* function, const void* arguments);

}  // namespace scripted

// Calls a function with `count` words of arguments on a stack that is `offset` bytes past the alignment, and
// answers what it leaves in EAX or on the floating-point stack.
extern "C" std::uint32_t scripted_call_at_offset(const void* function, const std::uint32_t* words,
                                                 std::size_t count, std::uint32_t offset);
extern "C" double scripted_call_for_double_at_offset(const void* function, const std::uint32_t* words,
                                                     std::size_t count, std::uint32_t offset);
