// tests/platform/exception_test.cpp - exceptions delivered into setjmp frames.
#include <gtest/gtest.h>
#include <pthread.h>

#include <array>
#include <cstring>
#include <functional>
#include <stdexcept>
#include <string>
#include <thread>

#include "tests/platform/guarded.h"
#include "tests/platform/paths.h"

namespace {

using qvx::Message;
using qvx::PlatformClass;

void RaiseBang(void*) { Raise(NewException("Bang", "for a test")); }
void Nothing(void*) {}
void Call(void* context) { (*static_cast<const std::function<void()>*>(context))(); }

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
              state.inner = Guarded([&] { ThroughFinally([](void*) { Raise(NewException("Inner", "")); }, nullptr, &ran); });
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
  if (_setjmp(frame.buffer) != 0) ADD_FAILURE() << "an exception was delivered into a function that had returned";
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

TEST(StaleFrame, IsWhatAnEnteredFrameWithoutSetjmpCountsAs) {
  const id exception = Guarded([] {
    ObjCExceptionFrame frame;
    std::memset(&frame, 0x5A, sizeof frame);
    objc_exception_try_enter(&frame);
    RaiseBang(nullptr);
  });
  EXPECT_EQ(NameOf(exception), "Bang");
}

TEST(StaleFrame, IsNotWhatAFrameWithAnUnlikelyBlockIs) {
  // The compiler moves the block out of the function, to a place with unwind tables of its own.
  volatile bool unlikely = true;
  const id exception = Guarded([&] {
    if (__builtin_expect(unlikely, 0)) {
      Nothing(nullptr);
      RaiseBang(nullptr);
      Nothing(nullptr);
    }
  });
  EXPECT_EQ(NameOf(exception), "Bang");
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
  const FrameExit exit{frame};
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

TEST(NoFrameDeathTest, EndsTheProcessAndNamesTheException) {
  EXPECT_DEATH(RaiseBang(nullptr), "Bang.*for a test");
}

TEST(NoFrameDeathTest, EndsTheProcessForAThrownObjectThatIsNoException) {
  EXPECT_DEATH(objc_exception_throw(Message<"new", id()>()(PlatformClass<"NSObject">())), "");
}

// ---- threads

TEST(Threads, HaveFramesOfTheirOwn) {
  // The outer frame of this thread is none of the other's: there the exception goes to the other's own frame, and a @catch.
  id on_thread = nullptr;
  id caught_on_thread = nullptr;
  const id here = Guarded([&] {
    std::thread([&] {
      on_thread = Guarded([] { RaiseBang(nullptr); });
      caught_on_thread = ThroughCatch(&RaiseBang, nullptr);
    }).join();
  });
  EXPECT_EQ(NameOf(on_thread), "Bang");
  EXPECT_EQ(NameOf(caught_on_thread), "Bang");
  EXPECT_EQ(here, nullptr);
}

TEST(Threads, RaiseAndCatchAtTheSameTime) {
  constexpr int kThreads = 4;
  constexpr int kRounds = 2000;
  std::array<int, kThreads> delivered{};
  std::array<int, kThreads> finallys{};
  std::array<std::thread, kThreads> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads[static_cast<std::size_t>(i)] = std::thread([&, index = static_cast<std::size_t>(i)] {
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
  for (std::thread& thread : threads) thread.join();
  for (std::size_t i = 0; i < kThreads; ++i) {
    EXPECT_EQ(delivered[i], kRounds);
    EXPECT_EQ(finallys[i], kRounds);
  }
}

}  // namespace
