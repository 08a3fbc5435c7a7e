// tests/bundle/scripted/stack.h - the alignment of the stack at the bundle's border: any that a host may come
// with goes in, only 16 bytes may come out.
#pragma once

namespace scripted {

// A violation unless `arguments`, where the arguments of a call to `function` start, is aligned. A function
// that the bundle calls passes its __builtin_dwarf_cfa(). Calls from outside the bundle are not looked at.
void CheckStack(const char* function, const void* arguments);

}  // namespace scripted
