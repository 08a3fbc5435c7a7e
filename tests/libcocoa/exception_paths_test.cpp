// tests/libcocoa/exception_paths_test.cpp - what an exception passes, runs and stops at on its way to a
// frame.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <unwind.h>

#include <array>
#include <thread>

#include "libcocoa/runtime/host_support.h"
#include "tests/libcocoa/guarded.h"
#include "tests/libcocoa/raising.h"

namespace {

int walks = 0;  // of the compiler's unwinder

}  // namespace

// Takes the place of the unwinder's own, which it counts and calls.
extern "C" _Unwind_Reason_Code _Unwind_Backtrace(_Unwind_Trace_Fn step, void* argument) {
  ++walks;
  static const auto own =
      reinterpret_cast<decltype(&_Unwind_Backtrace)>(dlsym(RTLD_NEXT, "_Unwind_Backtrace"));
  return own(step, argument);
}

namespace {

using qvx::Message;
using qvx::PlatformClass;

TEST(Exception, PassesPlainCWithoutUnwindTables) {
  EXPECT_EQ(NameOf(Guarded([] { ThroughPlainC(&RaiseBang, nullptr); })), "Bang");
}

TEST(Exception, PassesCPlusPlusWithoutStoppingAtACatchAll) {
  int caught = 0;
  const id exception = Guarded([&] {
    try {
      RaiseBang(nullptr);
    } catch (...) {
      ++caught;
      throw;
    }
  });
  EXPECT_EQ(NameOf(exception), "Bang");
  EXPECT_EQ(caught, 0);
}

void Nothing(void*) {}

// How often the compiler's unwinder walked while the body ran in a frame, which has to take "Bang".
template <typename Body>
int WalksToDeliver(const Body& body) {
  walks = 0;
  EXPECT_EQ(NameOf(Guarded(body)), "Bang");
  return walks;
}

[[gnu::noinline]] void LeaveAFrame() {
  ObjCExceptionFrame frame;
  objc_exception_try_enter(&frame);
  if (_setjmp(frame.buffer) != 0) ADD_FAILURE() << "delivered to a frame that is gone";
}

TEST(Exception, PastPlainFunctionsNeedsNoUnwinder) {
  const id bang = NewException("Bang", "");
  EXPECT_EQ(WalksToDeliver([&] { objc_exception_throw(bang); }), 0);
  EXPECT_EQ(WalksToDeliver([] { RaiseBang(nullptr); }), 0);
  EXPECT_EQ(
      WalksToDeliver([&] { Through([](Body body, void* context) { body(context); }, [&] { Raise(bang); }); }),
      0);
  EXPECT_EQ(WalksToDeliver([&] {
              LeaveAFrame();
              objc_exception_throw(bang);
            }),
            0);
  EXPECT_EQ(WalksToDeliver([&] {
              GuardedInC(&Nothing, nullptr);
              objc_exception_throw(bang);
            }),
            0);
}

// With more of the stack than a frame takes.
[[gnu::noinline]] void RaiseBangFarBelow(void*) {
  std::array<volatile char, 1024> room;
  room[0] = 0;
  RaiseBang(nullptr);
  room[1] = 0;
}

// In a thread of its own: other tests leave frames behind.
TEST(Exception, WithoutAFrameIsTheRuntimesAtOnce) {
  walks = 0;
  std::thread([] {
    void* const pool = objc_autoreleasePoolPush();
    EXPECT_EQ(Guarded([] {}), nullptr);  // one that was left is none
    EXPECT_EQ(NameOf(ThroughCatch(&RaiseBangFarBelow, nullptr)), "Bang");
    objc_autoreleasePoolPop(pool);
  }).join();
  EXPECT_EQ(walks, 0);
}

TEST(Exception, PastWhatNoRuleIsKnownForNeedsTheUnwinder) {
  int ran = 0;
  EXPECT_GT(WalksToDeliver([&] { ThroughFinally(&RaiseBang, nullptr, &ran); }), 0);
  EXPECT_GT(WalksToDeliver([] { ThroughPlainC(&RaiseBang, nullptr); }), 0);
}

void RaiseBangPastAFinally(void* context) {
  int ran = 0;
  ThroughFinally(&RaiseBang, context, &ran);
}

struct Counter {
  int& count;
  ~Counter() { ++count; }
};

TEST(Exception, PassesCPlusPlusWithoutRunningDestructors) {
  int destroyed = 0;
  const id exception = Guarded([&] {
    const Counter counter{destroyed};
    RaiseBang(nullptr);
  });
  EXPECT_EQ(NameOf(exception), "Bang");
  EXPECT_EQ(destroyed, 0);
}

TEST(Exception, RunsTheFinallyBlocksOnItsWay) {
  int ran = 0;
  EXPECT_EQ(NameOf(Guarded([&] { ThroughFinally(&RaiseBang, nullptr, &ran); })), "Bang");
  EXPECT_EQ(ran, 1);
}

TEST(Exception, RunsTheFinallyBlockInsideOfPlainC) {
  int ran = 0;
  Through([&](Body body,
              void* context) { EXPECT_EQ(NameOf(Guarded([&] { ThroughPlainC(body, context); })), "Bang"); },
          [&] { ThroughFinally(&RaiseBang, nullptr, &ran); });
  EXPECT_EQ(ran, 1);
}

TEST(Exception, RunsNestedFinallyBlocksFromTheInsideOut) {
  int ran = 0;
  EXPECT_EQ(NameOf(Guarded([&] { ThroughTwoFinallys(&RaiseBang, nullptr, &ran); })), "Bang");
  EXPECT_EQ(ran, 12);
}

TEST(Exception, RunsFinallyBlocksOnBothSidesOfACPlusPlusFunction) {
  int inner = 0;
  int outer = 0;
  int destroyed = 0;
  const id exception = Guarded([&] {
    Through([&](Body body, void* context) { ThroughFinally(body, context, &outer); },
            [&] {
              const Counter counter{destroyed};
              ThroughFinally(&RaiseBang, nullptr, &inner);
            });
  });
  EXPECT_EQ(NameOf(exception), "Bang");
  EXPECT_EQ(inner, 1);
  EXPECT_EQ(outer, 1);
  EXPECT_EQ(destroyed, 0);
}

TEST(Exception, RunsNoFinallyBlockBeyondTheFrame) {
  int ran = 0;
  id inner = nullptr;
  Through([&](Body body, void* context) { ThroughFinally(body, context, &ran); },
          [&] {
            inner = Guarded([] { RaiseBang(nullptr); });
            EXPECT_EQ(ran, 0);
          });
  EXPECT_EQ(NameOf(inner), "Bang");
  EXPECT_EQ(ran, 1);  // left normally
}

TEST(Exception, RunsNoFinallyBlockBeyondTheFrameAfterOneBeforeIt) {
  int inner = 0;
  int outer = 0;
  id exception = nullptr;
  Through([&](Body body, void* context) { ThroughFinally(body, context, &outer); },
          [&] {
            exception = Guarded([&] { ThroughFinally(&RaiseBang, nullptr, &inner); });
            EXPECT_EQ(outer, 0);
          });
  EXPECT_EQ(NameOf(exception), "Bang");
  EXPECT_EQ(inner, 1);
  EXPECT_EQ(outer, 1);  // left normally
}

TEST(Exception, RunsNoFinallyBlockBeyondAFrameOfAFunctionWithoutCleanUps) {
  // No function between the two @finally blocks has clean-ups that would end the unwinding.
  struct State {
    int inner = 0;
    int outer = 0;
    int outer_at_delivery = -1;
    id exception = nullptr;
  } state;
  ThroughFinally(
      [](void* context) {
        State& here = *static_cast<State*>(context);
        here.exception = GuardedInC(
            [](void* ran) { ThroughFinally(&RaiseBang, nullptr, static_cast<int*>(ran)); }, &here.inner);
        here.outer_at_delivery = here.outer;
      },
      &state, &state.outer);
  EXPECT_EQ(NameOf(state.exception), "Bang");
  EXPECT_EQ(state.inner, 1);
  EXPECT_EQ(state.outer_at_delivery, 0);
  EXPECT_EQ(state.outer, 1);  // left normally
}

TEST(Exception, LeavesTheFinallyBlockOfTheFramesOwnFunctionForLater) {
  for (const Body before : {&RaiseBang, &RaiseBangPastAFinally}) {
    int ran = 0;
    int ranAtDelivery = -1;
    EXPECT_EQ(NameOf(GuardedInFinally(before, nullptr, &ran, &ranAtDelivery)), "Bang");
    EXPECT_EQ(ranAtDelivery, 0);
    EXPECT_EQ(ran, 1);
  }
}

TEST(Exception, RunsTheFinallyBlockOfACallThatNeverReturns) {
  int ran = 0;
  EXPECT_EQ(NameOf(Guarded([&] { ThroughFinallyWithoutReturn(&RaiseBang, nullptr, &ran); })), "Bang");
  EXPECT_EQ(ran, 1);
}

TEST(Exception, UnlocksWhatASynchronizedBlockHeld) {
  const id lock = Message<"new", id()>()(PlatformClass<"NSObject">());
  EXPECT_EQ(NameOf(Guarded([&] { ThroughSynchronized(&RaiseBang, nullptr, lock); })), "Bang");
  EXPECT_TRUE(IsUnlocked(lock));
}

TEST(Exception, PassesACatchThatTakesOtherThings) {
  int ran = 0;
  EXPECT_EQ(NameOf(Guarded([&] { ThroughUnrelatedCatch(&RaiseBang, nullptr, &ran); })), "Bang");
  EXPECT_EQ(ran, 1);
}

TEST(Exception, StopsAtACatchThatIsNearerThanTheFrame) {
  id caught = nullptr;
  int after = 0;
  const id exception = Guarded([&] {
    caught = ThroughCatch(&RaiseBang, nullptr);
    ++after;
  });
  EXPECT_EQ(NameOf(caught), "Bang");
  EXPECT_EQ(exception, nullptr);
  EXPECT_EQ(after, 1);
}

TEST(Exception, StopsAtTheFrameThatIsNearerThanACatch) {
  id inner = nullptr;
  id caught = nullptr;
  Through([&](Body body, void* context) { caught = ThroughCatch(body, context); },
          [&] { inner = Guarded([] { RaiseBang(nullptr); }); });
  EXPECT_EQ(NameOf(inner), "Bang");
  EXPECT_EQ(caught, nullptr);
}

TEST(Exception, CaughtAndThrownAgainReachesTheFrame) {
  int ran = 0;
  EXPECT_EQ(NameOf(Guarded([&] { ThroughRethrow(&RaiseBang, nullptr, &ran); })), "Bang");
  EXPECT_EQ(ran, 1);
}

TEST(Exception, ThrownByAFinallyBlockTakesThePlaceOfTheFirst) {
  const id second = NewException("Second", "");
  EXPECT_EQ(Guarded([&] { ThroughFinallyThatThrows(&RaiseBang, nullptr, second); }), second);
}

TEST(Exception, MayBeRaisedAndCaughtInsideAFinallyBlockOnTheWay) {
  int ran = 0;
  EXPECT_EQ(NameOf(Guarded([&] { ThroughFinallyThatThrowsAndCatches(&RaiseBang, nullptr, &ran); })), "Bang");
  EXPECT_EQ(ran, 1);
}

TEST(Exception, MayBeDeliveredToAnotherFrameInsideAFinallyBlockOnTheWay) {
  struct Finally {
    id inner = nullptr;
    int ran = 0;
  } state;
  const id exception = Guarded([&] {
    Through([](Body body, void* context) { ThroughFinallyCalling(&RaiseBang, nullptr, body, context); },
            [&] {
              int ran = 0;
              state.inner = Guarded(
                  [&] { ThroughFinally([](void*) { Raise(NewException("Inner", "")); }, nullptr, &ran); });
              state.ran += ran;
            });
  });
  EXPECT_EQ(NameOf(exception), "Bang");
  EXPECT_EQ(NameOf(state.inner), "Inner");
  EXPECT_EQ(state.ran, 1);
}

TEST(Exception, EndsAtAFinallyBlockThatReturns) {
  int result = 0;
  EXPECT_EQ(Guarded([&] { result = ThroughFinallyThatReturns(&RaiseBang, nullptr); }), nullptr);
  EXPECT_EQ(result, 7);
  // And the frame that it was meant for is still in order.
  id second = nullptr;
  const id exception = Guarded([&] {
    ThroughFinallyThatReturns(&RaiseBang, nullptr);
    second = NewException("Second", "");
    Raise(second);
  });
  EXPECT_EQ(exception, second);
}

}  // namespace
