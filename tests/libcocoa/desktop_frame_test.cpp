// tests/libcocoa/desktop_frame_test.cpp - exception frames of a guard that was compiled for the desktop,
// whose jmp_buf is smaller than this C library's.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <iterator>

#include "tests/libcocoa/guarded.h"
#include "tests/libcocoa/paths.h"

namespace {

constexpr std::size_t kJumpBuffer = 72;
constexpr unsigned char kUntouched = 0xA5;

// A frame of the desktop's size, and what lies behind it on the guard's stack.
struct DesktopFrame {
  unsigned char frame[kJumpBuffer + 4 * sizeof(void*)];
  unsigned char behind[128];

  DesktopFrame() { std::memset(behind, kUntouched, sizeof behind); }
  bool KeptInside() const {
    return std::all_of(std::begin(behind), std::end(behind),
                       [](unsigned char byte) { return byte == kUntouched; });
  }
};

// As Guarded does it, in a frame of the desktop's size. `keptInside`: whether nothing else was written to.
[[gnu::noinline]] id GuardedOnDesktop(const std::function<void()>& body, bool& keptInside) {
  DesktopFrame frame;
  objc_exception_try_enter(frame.frame);
  if (_setjmp(reinterpret_cast<__jmp_buf_tag*>(frame.frame)) == 0) {
    body();
    objc_exception_try_exit(frame.frame);
    keptInside = frame.KeptInside();
    return nullptr;
  }
  keptInside = frame.KeptInside();
  return objc_exception_extract(frame.frame);
}

TEST(DesktopFrame, IsLeftWithoutAnException) {
  bool keptInside = false;
  int ran = 0;
  EXPECT_EQ(GuardedOnDesktop([&] { ++ran; }, keptInside), nullptr);
  EXPECT_EQ(ran, 1);
  EXPECT_TRUE(keptInside);
}

TEST(DesktopFrame, TakesAnException) {
  bool keptInside = false;
  const id exception = NewException("Bang", "for a test");
  EXPECT_EQ(GuardedOnDesktop([&] { Raise(exception); }, keptInside), exception);
  EXPECT_TRUE(keptInside);
}

TEST(DesktopFrame, NestsWithFramesOfThisSystem) {
  bool inner = false;
  bool outer = false;
  const id first = NewException("First", "inside");
  const id second = NewException("Second", "between");
  id taken = nullptr;
  const auto between = [&] {
    taken = GuardedOnDesktop([&] { Raise(first); }, inner);
    Raise(second);
  };
  id outside = nullptr;
  EXPECT_EQ(GuardedOnDesktop([&] { outside = Guarded(between); }, outer), nullptr);
  EXPECT_EQ(taken, first);
  EXPECT_EQ(outside, second);
  EXPECT_TRUE(inner);
  EXPECT_TRUE(outer);
}

}  // namespace
