// bench/bare_frame.h - the least that a guard can be: the limit that the bundle's guard is compared with.
#pragma once

#include "bench/platform.h"

namespace bench {

// Runs the body between entering and leaving an exception frame; answers the exception that ended it, or nil.
template <typename Body>
[[gnu::noinline]] id InBareFrame(const Platform& platform, Body& body) {
  ObjCExceptionFrame frame;
  platform.objc_exception_try_enter(&frame);
  if (_setjmp(frame.buffer) == 0) {
    body();
    platform.objc_exception_try_exit(&frame);
    return nullptr;
  }
  return platform.objc_exception_extract(&frame);
}

}  // namespace bench
