// tests/libcocoa/exception_test.cpp - exceptions delivered into setjmp frames.
#include <gtest/gtest.h>
#include <malloc.h>
#include <pthread.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "libcocoa/runtime/host_support.h"
#include "tests/libcocoa/guarded.h"
#include "tests/libcocoa/paths.h"

namespace {

using qvx::Message;
using qvx::PlatformClass;

void RaiseBang(void*) {
  Raise(NewException("Bang", "for a test"));
}
void Nothing(void*) {}
void Call(void* context) {
  (*static_cast<const std::function<void()>*>(context))();
}

// A body that calls `path` around `inner`, as a function and a context.
template <typename Path>
void Through(const Path& path, const std::function<void()>& inner) {
  path(&Call, const_cast<void*>(static_cast<const void*>(&inner)));
}

TEST(Exception, LeavesAFrameAloneWhenNothingIsRaised) {
  int ran = 0;
  EXPECT_EQ(Guarded([&] { ++ran; }), nullptr);
  EXPECT_EQ(ran, 1);
}

TEST(Exception, IsDeliveredAsTheVeryObjectThatWasRaised) {
  const id exception = NewException("Bang", "for a test");
  EXPECT_EQ(Guarded([&] { Raise(exception); }), exception);
}

TEST(Exception, IsDeliveredFromDeepInsideThePlatform) {
  const id array = Message<"array", id()>()(PlatformClass<"NSArray">());
  const id exception = Guarded([&] { Message<"objectAtIndex:", id(NSUInteger)>()(array, 5); });
  EXPECT_EQ(NameOf(exception), "NSRangeException");
}

TEST(Exception, IsDeliveredForAnUnknownSelector) {
  const id exception = Guarded([] { Message<"noSuchSelectorAtAll", void()>()(PlatformClass<"NSColor">()); });
  EXPECT_EQ(NameOf(exception), "NSInvalidArgumentException");
  EXPECT_NE(ReasonOf(exception).find("noSuchSelectorAtAll"), std::string::npos) << ReasonOf(exception);
}

TEST(Exception, IsDeliveredFromTheFirstMessageThatInitialisesAClass) {
  const id exception = Guarded([] { Message<"class", id()>()(PlatformClass<"RaisesInInitialize">()); });
  EXPECT_EQ(NameOf(exception), "InInitialize");
}

TEST(Exception, LeavesTheRuntimeUnlockedWhenItComesFromAnInitializer) {
  // A class's first message runs its initializer under the runtime's lock. Another thread would wait for it
  // forever.
  static constexpr const char* kFresh[] = {"RaisesInInitializeToo", "FreshA"};
  EXPECT_EQ(NameOf(Guarded([] { Message<"class", id()>()(reinterpret_cast<id>(objc_getClass(kFresh[0]))); })),
            "InInitialize");
  bool done = false;
  std::thread([&] {
    Message<"misalignmentOfInitialize", std::uintptr_t()>()(reinterpret_cast<id>(objc_getClass(kFresh[1])));
    done = true;
  }).join();
  EXPECT_TRUE(done);
}

TEST(Exception, GoesToTheInnermostFrameOnly) {
  id inner = nullptr;
  int after = 0;
  const id outer = Guarded([&] {
    inner = Guarded([] { RaiseBang(nullptr); });
    ++after;
  });
  EXPECT_EQ(NameOf(inner), "Bang");
  EXPECT_EQ(outer, nullptr);
  EXPECT_EQ(after, 1);
}

TEST(Exception, ThrownOnFromAFrameReachesTheNextOne) {
  id inner = nullptr;
  const id outer = Guarded([&] {
    inner = Guarded([] { RaiseBang(nullptr); });
    objc_exception_throw(inner);
  });
  EXPECT_NE(inner, nullptr);
  EXPECT_EQ(outer, inner);
}

TEST(Exception, ThatIsNoNSExceptionIsDeliveredAndThrownOnUnchanged) {
  const id string = Message<"stringWithUTF8String:", id(const char*)>()(PlatformClass<"NSString">(), "text");
  id inner = nullptr;
  const id outer = Guarded([&] {
    inner = Guarded([&] { objc_exception_throw(string); });
    if (objc_exception_match(objc_getClass("NSException"), inner) == 0) objc_exception_throw(inner);
  });
  EXPECT_EQ(inner, string);
  EXPECT_EQ(outer, string);
}

TEST(Exception, MayBeNil) {
  bool delivered = true;
  const id exception = Guarded([&] {
    Guarded([] { objc_exception_throw(nullptr); });
    delivered = true;
  });
  EXPECT_EQ(exception, nullptr);
  EXPECT_TRUE(delivered);
  EXPECT_EQ(objc_exception_match(objc_getClass("NSException"), nullptr), 0);
}

TEST(Exception, MatchesItsClassAndWhatThatDerivesFrom) {
  const id exception = NewException("Bang", "");
  EXPECT_NE(objc_exception_match(objc_getClass("NSException"), exception), 0);
  EXPECT_NE(objc_exception_match(objc_getClass("NSObject"), exception), 0);
  EXPECT_EQ(objc_exception_match(objc_getClass("NSString"), exception), 0);
}

TEST(Exception, MatchesWithoutSendingAMessage) {
  const id bare = NewRootObject();
  EXPECT_NE(objc_exception_match(objc_getClass("BareRoot"), bare), 0);
  EXPECT_EQ(objc_exception_match(objc_getClass("NSException"), bare), 0);
  EXPECT_EQ(Guarded([&] { objc_exception_throw(bare); }), bare);
}

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

TEST(Exception, CanBeDeliveredAThousandTimesAndThroughAThousandFrames) {
  for (int i = 0; i < 1000; ++i) ASSERT_EQ(NameOf(Guarded([] { RaiseBang(nullptr); })), "Bang");
  int depth = 0;
  int delivered = 0;
  const std::function<void()> descend = [&] {
    if (++depth == 1000) RaiseBang(nullptr);
    const id exception = Guarded([&] { descend(); });
    if (exception == nullptr) return;
    ++delivered;
    objc_exception_throw(exception);
  };
  EXPECT_EQ(NameOf(Guarded([&] { descend(); })), "Bang");
  EXPECT_EQ(delivered, 999);
}

TEST(Exception, KeepsTheRegistersThatTheGuardsCallerOwns) {
  // Values that the compiler keeps in registers over the call.
  volatile int seed = 3;
  const int a = seed * 5;
  const int b = seed * 7;
  const int c = seed * 11;
  int ran = 0;
  Guarded([&] { ThroughTwoFinallys(&RaiseBang, nullptr, &ran); });
  EXPECT_EQ(a + b + c, 69);
}

// ---- frames that are not in order

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

// ---- no frame

TEST(NoFrame, LeavesTheExceptionToAnObjectiveCCatch) {
  EXPECT_EQ(NameOf(ThroughCatch(&RaiseBang, nullptr)), "Bang");
}

// Throws where no C++ function is on the stack: one would stop the exception.
void ThrowOnABareThread(void* (*start)(void*)) {
  pthread_t thread;
  pthread_create(&thread, nullptr, start, nullptr);
  pthread_join(thread, nullptr);
}

TEST(NoFrameDeathTest, EndsTheProcessAndNamesTheException) {
  EXPECT_DEATH(ThrowOnABareThread([](void*) -> void* {
                 RaiseBang(nullptr);
                 return nullptr;
               }),
               "Bang.*for a test");
}

TEST(NoFrameDeathTest, EndsTheProcessForAThrownObjectThatIsNoException) {
  EXPECT_DEATH(ThrowOnABareThread([](void*) -> void* {
                 objc_exception_throw(Message<"new", id()>()(PlatformClass<"NSObject">()));
               }),
               "");
}

// ---- threads

// A thread with a pool of its own, as the platform wants it.
class PooledThread {
 public:
  template <typename Body>
  explicit PooledThread(const Body& body)
      : thread_([body] {
          void* const pool = objc_autoreleasePoolPush();
          body();
          objc_autoreleasePoolPop(pool);
        }) {}
  void Join() { thread_.join(); }

 private:
  std::thread thread_;
};

TEST(Threads, HaveFramesOfTheirOwn) {
  // The outer frame of this thread is none of the other's: there the exception goes to the other's own frame,
  // and a @catch.
  std::string on_thread;
  std::string caught_on_thread;
  const id here = Guarded([&] {
    PooledThread([&] {
      on_thread = NameOf(Guarded([] { RaiseBang(nullptr); }));
      caught_on_thread = NameOf(ThroughCatch(&RaiseBang, nullptr));
    }).Join();
  });
  EXPECT_EQ(on_thread, "Bang");
  EXPECT_EQ(caught_on_thread, "Bang");
  EXPECT_EQ(here, nullptr);
}

// Runs among the destructors of an ending thread, after that of the library: takes the memory that the
// library has just given back, and raises.
struct AtTheEnd {
  std::array<unsigned char, 128> zeros{};  // of the size of the library's first list of frames
  bool wasDelivered = false, isUntouched = false;

  static void Run(void* self) {
    auto& end = *static_cast<AtTheEnd*>(self);
    auto* const block = static_cast<unsigned char*>(std::calloc(1, end.zeros.size()));
    void* const pool = objc_autoreleasePoolPush();
    end.wasDelivered = GuardedInC(&RaiseBang, nullptr) != nullptr;
    objc_autoreleasePoolPop(pool);
    end.isUntouched = std::memcmp(block, end.zeros.data(), end.zeros.size()) == 0;
    std::free(block);
  }
};

TEST(Threads, MayRaiseWhileTheyEnd) {
  GuardedInC(&Nothing, nullptr);  // the library has its key: destructors run in the order of the keys
  pthread_key_t key = 0;
  ASSERT_EQ(pthread_key_create(&key, &AtTheEnd::Run), 0);
  AtTheEnd end;
  PooledThread([&] {
    GuardedInC(&Nothing, nullptr);
    pthread_setspecific(key, &end);
  }).Join();
  pthread_key_delete(key);
  EXPECT_TRUE(end.wasDelivered);
  EXPECT_TRUE(end.isUntouched);
}

TEST(Threads, RaisePastPlainFunctionsAtTheSameTime) {
  constexpr std::size_t kThreads = 4;
  std::array<int, kThreads> delivered{};
  std::vector<PooledThread> threads;
  threads.reserve(kThreads);
  for (std::size_t i = 0; i < kThreads; ++i) {
    threads.emplace_back([&delivered, i] {
      const id mine = NewException("Mine", "");
      for (int round = 0; round < 5000; ++round) {
        if (Guarded([&] { objc_exception_throw(mine); }) == mine) ++delivered[i];
      }
    });
  }
  for (PooledThread& thread : threads) thread.Join();
  for (const int count : delivered) EXPECT_EQ(count, 5000);
}

TEST(Threads, RaiseAndCatchAtTheSameTime) {
  constexpr int kThreads = 4;
  constexpr int kRounds = 2000;
  std::array<int, kThreads> delivered{};
  std::array<int, kThreads> finallys{};
  std::vector<PooledThread> threads;
  threads.reserve(kThreads);
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&, index = static_cast<std::size_t>(i)] {
      const id mine = NewException("Mine", "");
      for (int round = 0; round < kRounds; ++round) {
        const id exception = Guarded([&] {
          Through([&](Body body, void* context) { ThroughFinally(body, context, &finallys[index]); },
                  [&] { objc_exception_throw(mine); });
        });
        if (exception == mine) ++delivered[index];
      }
    });
  }
  for (PooledThread& thread : threads) thread.Join();
  for (std::size_t i = 0; i < kThreads; ++i) {
    EXPECT_EQ(delivered[i], kRounds);
    EXPECT_EQ(finallys[i], kRounds);
  }
}

}  // namespace
