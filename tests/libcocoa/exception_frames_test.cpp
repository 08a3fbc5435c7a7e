// tests/libcocoa/exception_frames_test.cpp - frames that are not in order, and what frames and deliveries
// leave behind.
#include <alloca.h>
#include <gtest/gtest.h>
#include <malloc.h>

#include <array>
#include <bit>
#include <cstring>
#include <stdexcept>

#include "tests/libcocoa/guarded.h"
#include "tests/libcocoa/raising.h"

namespace {

void Nothing(void*) {}

// Enters a frame and returns without leaving it, as a function does that was left by longjmp.
[[gnu::noinline]] void LeaveAStaleFrame() {
  ObjCExceptionFrame frame;
  objc_exception_try_enter(&frame);
  if (_setjmp(frame.buffer) != 0)
    ADD_FAILURE() << "an exception was delivered into a function that had returned";
}

// Throws from a stack that spans the memory of LeaveAStaleFrame's frame without changing it.
[[gnu::noinline]] void ThrowAcrossTheSameMemory() {
  std::array<volatile char, 1024> room;
  room[0] = 0;
  RaiseBang(nullptr);
  room[1] = 0;
}

TEST(StaleFrame, IsSkippedWhenItsFunctionHasReturned) {
  const id exception = Guarded([] {
    LeaveAStaleFrame();
    ThrowAcrossTheSameMemory();
  });
  EXPECT_EQ(NameOf(exception), "Bang");
}

TEST(StaleFrame, IsForgottenWhenAnotherIsEnteredAtOrAboveItsPlace) {
  const id exception = Guarded([] {
    for (int i = 0; i < 1000; ++i) LeaveAStaleFrame();
    EXPECT_EQ(NameOf(Guarded([] { RaiseBang(nullptr); })), "Bang");
    RaiseBang(nullptr);
  });
  EXPECT_EQ(NameOf(exception), "Bang");
}

TEST(StaleFrame, MayBeLeftAfterTheOneOutsideIt) {
  ObjCExceptionFrame frames[2];  // the second lies higher: it is the outer one
  objc_exception_try_enter(&frames[1]);
  objc_exception_try_enter(&frames[0]);
  objc_exception_try_exit(&frames[1]);
  objc_exception_try_exit(&frames[0]);
  EXPECT_EQ(NameOf(Guarded([] { RaiseBang(nullptr); })), "Bang");
}

// As an outer and an inner @try of one function lie, where a compiler makes frames of them. Counts
// deliveries.
template <std::size_t Outer>
[[gnu::noinline]] void RaiseInTwoFrames(int (&delivered)[2]) {
  ObjCExceptionFrame frames[2];
  ObjCExceptionFrame& outer = frames[Outer];
  ObjCExceptionFrame& inner = frames[1 - Outer];
  objc_exception_try_enter(&outer);
  if (_setjmp(outer.buffer) != 0) {
    ++delivered[0];
    return;
  }
  objc_exception_try_enter(&inner);
  if (_setjmp(inner.buffer) != 0) {
    ++delivered[1];
    objc_exception_throw(objc_exception_extract(&inner));
  }
  RaiseBang(nullptr);
}

TEST(NestedFrames, MayLieInOneFunctionInAnyOrder) {
  int upwards[2] = {};
  RaiseInTwoFrames<0>(upwards);
  EXPECT_EQ(upwards[0], 1);
  EXPECT_EQ(upwards[1], 1);
  int downwards[2] = {};
  RaiseInTwoFrames<1>(downwards);
  EXPECT_EQ(downwards[0], 1);
  EXPECT_EQ(downwards[1], 1);
}

// Leaves the inner of two frames of one function, which takes nothing from then on. Counts deliveries.
template <std::size_t Outer>
[[gnu::noinline]] void RaiseAfterTheInnerFrame(int (&delivered)[2]) {
  ObjCExceptionFrame frames[2];
  ObjCExceptionFrame& outer = frames[Outer];
  ObjCExceptionFrame& inner = frames[1 - Outer];
  objc_exception_try_enter(&outer);
  if (_setjmp(outer.buffer) != 0) {
    ++delivered[0];
    return;
  }
  objc_exception_try_enter(&inner);
  if (_setjmp(inner.buffer) != 0) {
    ++delivered[1];
    return;
  }
  objc_exception_try_exit(&inner);
  RaiseBang(nullptr);
}

TEST(NestedFrames, GiveTheOuterWhatIsRaisedAfterTheInner) {
  int upwards[2] = {};
  RaiseAfterTheInnerFrame<0>(upwards);
  EXPECT_EQ(upwards[0], 1);
  EXPECT_EQ(upwards[1], 0);
  int downwards[2] = {};
  RaiseAfterTheInnerFrame<1>(downwards);
  EXPECT_EQ(downwards[0], 1);
  EXPECT_EQ(downwards[1], 0);
}

// Leaves the outer of two frames of one function. Counts deliveries to either.
[[gnu::noinline]] void RaiseAfterTheOuterFrame(int& delivered) {
  ObjCExceptionFrame frames[2];
  objc_exception_try_enter(&frames[1]);
  if (_setjmp(frames[1].buffer) != 0) {
    ++delivered;
    return;
  }
  objc_exception_try_enter(&frames[0]);
  if (_setjmp(frames[0].buffer) != 0) {
    ++delivered;
    return;
  }
  objc_exception_try_exit(&frames[1]);
  RaiseBang(nullptr);
}

TEST(NestedFrames, AreLeftWithTheOuter) {
  int delivered = 0;
  EXPECT_EQ(NameOf(Guarded([&] { RaiseAfterTheOuterFrame(delivered); })), "Bang");
  EXPECT_EQ(delivered, 0);
}

TEST(StaleFrame, IsWhatAnEnteredFrameWithoutSetjmpCountsAs) {
  const id exception = Guarded([] {
    ObjCExceptionFrame frame;
    std::memset(&frame, 0x5A, sizeof frame);
    objc_exception_try_enter(&frame);
    RaiseBang(nullptr);
  });
  EXPECT_EQ(NameOf(exception), "Bang");
}

// Enters a frame again whose buffer holds the registers of the first time.
[[gnu::noinline]] void RaiseInAReenteredFrame() {
  ObjCExceptionFrame frame;
  objc_exception_try_enter(&frame);
  if (_setjmp(frame.buffer) != 0) {
    ADD_FAILURE() << "delivered to an earlier use of the frame";
    return;
  }
  objc_exception_try_exit(&frame);
  objc_exception_try_enter(&frame);
  RaiseBang(nullptr);
}

TEST(StaleFrame, IsWhatAReenteredFrameWithoutSetjmpCountsAs) {
  EXPECT_EQ(NameOf(Guarded([] { RaiseInAReenteredFrame(); })), "Bang");
}

TEST(StaleFrame, IsWhatAReenteredFrameWithoutSetjmpCountsAsWithoutUnwindTablesToo) {
  int delivered = 0;
  EXPECT_EQ(NameOf(Guarded([&] { delivered = InAReenteredPlainFrame(&RaiseBang, nullptr); })), "Bang");
  EXPECT_EQ(delivered, 0);
}

// Enters the first of two frames, the second, and the first once more, which stands on the list twice then.
// Leaves the first, by itself or by a delivery, and the second, and raises.
[[gnu::noinline]] void RaiseAfterAFrameThatWasEnteredTwice(bool byDelivery, int (&delivered)[2]) {
  ObjCExceptionFrame frames[2];
  objc_exception_try_enter(&frames[0]);
  if (_setjmp(frames[0].buffer) != 0) ++delivered[0];
  if (delivered[0] > 1) return;
  if (delivered[0] == 0) {
    objc_exception_try_enter(&frames[1]);
    if (_setjmp(frames[1].buffer) != 0) {
      ++delivered[1];
      return;
    }
    objc_exception_try_enter(&frames[0]);
    if (_setjmp(frames[0].buffer) != 0) ++delivered[0];
    if (delivered[0] > 1) return;
    if (byDelivery && delivered[0] == 0) RaiseBang(nullptr);
    if (!byDelivery) objc_exception_try_exit(&frames[0]);
  }
  objc_exception_try_exit(&frames[1]);
  RaiseBang(nullptr);
}

TEST(StaleFrame, IsWhatAFrameOnTheListTwiceCountsAsOnceItWasLeft) {
  for (const bool byDelivery : {false, true}) {
    int delivered[2] = {};
    EXPECT_EQ(NameOf(Guarded([&] { RaiseAfterAFrameThatWasEnteredTwice(byDelivery, delivered); })), "Bang");
    EXPECT_EQ(delivered[0], byDelivery ? 1 : 0);
    EXPECT_EQ(delivered[1], 0);
  }
}

// The first time it leaves a stale frame behind, the second time it uses the same memory for something else.
[[gnu::noinline]] void EnterOrScribble(bool enter) {
  ObjCExceptionFrame frame;
  if (enter) {
    objc_exception_try_enter(&frame);
    if (_setjmp(frame.buffer) != 0) ADD_FAILURE() << "delivered to a frame that is gone";
    return;
  }
  // All but what _setjmp left there.
  constexpr std::size_t kWritten = sizeof(__jmp_buf) + sizeof(int);
  std::memset(reinterpret_cast<char*>(&frame) + kWritten, 0x11, sizeof frame - kWritten);
  __asm__ volatile("" : : "r"(&frame) : "memory");
  RaiseBang(nullptr);
}

TEST(StaleFrame, IsSkippedWhenItsMemoryHoldsSomethingElse) {
  const id exception = Guarded([] {
    EnterOrScribble(true);
    EnterOrScribble(false);
  });
  EXPECT_EQ(NameOf(exception), "Bang");
}

// The first time it leaves two stale frames behind, one far below the other. The second time it raises from
// between the two.
[[gnu::noinline]] void EnterBelowOrScribble(bool enter) {
  ObjCExceptionFrame frame;
  if (enter) {
    auto* const below = static_cast<ObjCExceptionFrame*>(alloca(std::size_t{1} << 16U));
    objc_exception_try_enter(below);
    if (_setjmp(below->buffer) != 0) ADD_FAILURE() << "delivered below the stack";
    objc_exception_try_enter(&frame);
    if (_setjmp(frame.buffer) != 0) ADD_FAILURE() << "delivered to a frame that is gone";
    return;
  }
  std::memset(&frame, 0x11, sizeof frame);
  __asm__ volatile("" : : "r"(&frame) : "memory");
  RaiseBang(nullptr);
}

TEST(StaleFrame, IsWhatLiesBelowTheStackPointerBeforeOneThatDoesNot) {
  const id exception = Guarded([] {
    EnterBelowOrScribble(true);
    EnterBelowOrScribble(false);
  });
  EXPECT_EQ(NameOf(exception), "Bang");
}

TEST(Delivery, ComesWithTheNumberOne) {
  ObjCExceptionFrame frame;
  objc_exception_try_enter(&frame);
  const int number = _setjmp(frame.buffer);
  if (number == 0) RaiseBang(nullptr);
  EXPECT_EQ(number, 1);
}

// Writes a stack pointer as _setjmp does: exclusive or with the thread's guard word, rotated left by 9.
void SaveStackPointer(ObjCExceptionFrame& frame, std::uintptr_t stackPointer) {
  std::uintptr_t guard;
  __asm__("movl %%gs:0x18, %0" : "=r"(guard));
  frame.buffer[0].__jmpbuf[4] = static_cast<int>(std::rotl(stackPointer ^ guard, 9));
}

[[gnu::noinline]] void RaiseInAFrameWithAStackPointer(std::ptrdiff_t fromTheFrame) {
  ObjCExceptionFrame frame;
  objc_exception_try_enter(&frame);
  if (_setjmp(frame.buffer) != 0)
    ADD_FAILURE() << "delivered with a stack pointer that is none of its function";
  SaveStackPointer(frame,
                   reinterpret_cast<std::uintptr_t>(&frame) + static_cast<std::uintptr_t>(fromTheFrame));
  RaiseBang(nullptr);
}

TEST(StaleFrame, IsWhatHasAStackPointerAboveItOrBelowTheStack) {
  for (const std::ptrdiff_t fromTheFrame : {1000, -1000000})
    EXPECT_EQ(NameOf(Guarded([&] { RaiseInAFrameWithAStackPointer(fromTheFrame); })), "Bang") << fromTheFrame;
}

[[gnu::cold, gnu::noinline]] void RaiseRarely() {
  RaiseBang(nullptr);
}

TEST(StaleFrame, IsNotWhatAFrameWithAnUnlikelyBlockIs) {
  // The compiler moves the block out of the function, to a place with unwind tables of its own.
  volatile bool unlikely = true;
  const id exception = Guarded([&] {
    Nothing(nullptr);
    if (unlikely) {
      RaiseRarely();
      Nothing(nullptr);
      RaiseRarely();
    }
    Nothing(nullptr);
  });
  EXPECT_EQ(NameOf(exception), "Bang");
}

std::size_t HeapInUse() {
  const struct mallinfo2 use = ::mallinfo2();
  return use.uordblks + use.hblkhd;
}

TEST(StaleFrame, TakesNoMemoryHoweverManyThereAre) {
  LeaveAStaleFrame();
  const std::size_t before = HeapInUse();
  for (int i = 0; i < 200000; ++i) LeaveAStaleFrame();
  EXPECT_LT(HeapInUse(), before + 10000);
}

TEST(Delivery, TakesNoMemoryThatStays) {
  int ran = 0;
  const id exception = NewException("Bang", "");
  const auto deliver = [&] {
    Guarded([&] {
      Through([&](Body body, void* context) { ThroughFinally(body, context, &ran); },
              [&] { objc_exception_throw(exception); });
    });
  };
  deliver();
  const std::size_t before = HeapInUse();
  for (int i = 0; i < 10000; ++i) deliver();
  EXPECT_EQ(ran, 10001);
  EXPECT_LT(HeapInUse(), before + 10000);
}

TEST(Delivery, ThatAFinallyBlockEndedIsFreedByALaterOne) {
  const id exception = NewException("Bang", "");
  const auto end_and_deliver = [&] {
    Guarded([&] {
      Through([](Body body, void* context) { ThroughFinallyThatReturns(body, context); },
              [&] { objc_exception_throw(exception); });
      objc_exception_throw(exception);
    });
  };
  end_and_deliver();
  const std::size_t before = HeapInUse();
  for (int i = 0; i < 10000; ++i) end_and_deliver();
  EXPECT_LT(HeapInUse(), before + 10000);
}

// A guard left by a C++ exception, as a bundle's is.
[[gnu::noinline]] void ThrowOutOfAFrame() {
  struct FrameExit {
    ObjCExceptionFrame& frame;
    ~FrameExit() { objc_exception_try_exit(&frame); }
  };
  ObjCExceptionFrame frame;
  objc_exception_try_enter(&frame);
  if (_setjmp(frame.buffer) != 0) return;
  [[maybe_unused]] const FrameExit exit{frame};
  throw std::runtime_error("C++");
}

TEST(CPlusPlusException, LeavesTheFrameAndGoesOn) {
  const id outer = Guarded([] {
    EXPECT_THROW(ThrowOutOfAFrame(), std::runtime_error);
    RaiseBang(nullptr);
  });
  EXPECT_EQ(NameOf(outer), "Bang");
}

}  // namespace
