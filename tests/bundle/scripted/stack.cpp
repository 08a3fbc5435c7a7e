// tests/bundle/scripted/stack.cpp - the alignment of the stack at the bundle's border.
#include "tests/bundle/scripted/stack.h"

#include <string>

#include "tests/bundle/scripted/event_log.h"
#include "tests/bundle/scripted/stack_call.h"

namespace scripted {

void CheckStack(const char* function, const void* arguments) {
  const auto offset = reinterpret_cast<std::uintptr_t>(arguments) % kStackAlignment;
  if (!InsideBundle() || offset == 0) return;
  const Outside outside;
  Log().Violation(std::string(function) + " was called with a stack " + std::to_string(offset) +
                  " bytes past its alignment");
}

}  // namespace scripted
